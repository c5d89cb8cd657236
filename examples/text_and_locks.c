/* text_and_locks.c - a C caller of QZCore: bounded byte-string copies, UTF-8 <-> UTF-16 with the
 * measure-then-convert pattern, a 16-bit case mapping with its doubled buffer, heap blocks with
 * result codes, and a mutex with statistics. Prints what it did; exits 1 at the first surprise. */
#include <qzcore.h>
#include <stdio.h>
#include <string.h>

static int failures = 0;

static void check(int ok, const char* what) {
  printf("%-58s %s\n", what, ok ? "ok" : "FAILED");
  if (!ok) ++failures;
}

int main(void) {
  /* Byte strings: the bounded copy always terminates and never writes past `size`. */
  char small[8];
  QZStrNZCpyA(small, sizeof small, "a longer text than fits", (size_t)-1);
  check(strcmp(small, "a longe") == 0, "QZStrNZCpyA cuts to the buffer and terminates");

  /* UTF-8 to UTF-16: measure (NULL, 0), then convert into a buffer one unit longer. */
  const char* utf8 = "Gr\xC3\xBC\xC3\x9F" "e";  /* "Gr\u00FC\u00DFe": 5 units */
  int64_t units = QZUTF8ToUTF16(NULL, utf8, 0);
  QZWCHAR wide[32];
  check(units == 5 && QZUTF8ToUTF16(wide, utf8, 32) == units, "QZUTF8ToUTF16 measures, then converts 5 units");

  /* Case mapping of 16-bit text writes up to twice the length: give it 2L units. */
  QZWCHAR upper[2 * 32];
  memset(upper, 0, sizeof upper);
  memcpy(upper, wide, (size_t)(units + 1) * sizeof(QZWCHAR));
  QZStrToUpperUTF16(upper);
  char back[64];
  int64_t bytes = QZUTF16ToUTF8(back, upper, sizeof back);
  check(bytes > 0 && bytes < (int64_t)sizeof back && strcmp(back, "GR\xC3\x9CSSE") == 0,
        "QZStrToUpperUTF16 maps sharp s to SS (the text grows)");

  /* Heap blocks report through result codes. */
  void* block = NULL;
  QZRESULT hr = QZMalloc(100, &block);
  check(QZ_SUCCEEDED(hr) && block != NULL && QZMallocSize(block) >= 100, "QZMalloc(100) succeeds");
  check(QZFree(block) == QZ_S_OK, "QZFree gives it back");

  /* A mutex with statistics counts its own use. */
  QZMutexHandle mutex;
  check(QZMutexCreate("example.counter", QZ_MUTEX_STATS, &mutex) == QZ_S_OK, "QZMutexCreate with statistics");
  for (int i = 0; i < 3; ++i) {
    QZMutexAcquire(mutex);
    QZMutexRelease(mutex);
  }
  QZMutexStats stats;
  check(QZGetLockStats(mutex, &stats) == QZ_S_OK && stats.acquireCount == 3 && stats.heldCount == 3,
        "QZGetLockStats counts 3 acquires and 3 releases");
  QZMutexDestroy(mutex);

  printf("%s\n", failures == 0 ? "all checks passed" : "some checks FAILED");
  return failures == 0 ? 0 : 1;
}
