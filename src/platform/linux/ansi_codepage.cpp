// ansi_codepage.cpp - the ANSI code page conversions on iconv: the code page is the codeset of the
// current C locale (nl_langinfo(CODESET)).
//
// Each thread keeps its two conversion descriptors and the codeset they were opened for, so a run of
// conversions costs one iconv_open per direction until the locale's codeset changes.
#include "platform/ansi_codepage.h"

#include <iconv.h>
#include <langinfo.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "errno_map.h"
#include "platform/last_error.h"
#include "platform/native_error.h"

namespace qz::os {
namespace {

#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
constexpr const char* kUtf16Native = "UTF-16LE";
#else
constexpr const char* kUtf16Native = "UTF-16BE";
#endif

const iconv_t kNoDescriptor = reinterpret_cast<iconv_t>(-1);

// One direction's descriptor, reopened when the locale's codeset changes.
class CachedIconv {
 public:
  CachedIconv(bool toWide) : m_toWide(toWide) {}
  ~CachedIconv() {
    if (m_cd != kNoDescriptor) iconv_close(m_cd);
  }
  CachedIconv(const CachedIconv&) = delete;
  CachedIconv& operator=(const CachedIconv&) = delete;

  // The descriptor for the current codeset, reset to its initial state; kNoDescriptor on failure.
  iconv_t Get() {
    const char* codeset = nl_langinfo(CODESET);
    if (m_cd == kNoDescriptor || m_codeset != codeset) {
      if (m_cd != kNoDescriptor) iconv_close(m_cd);
      m_codeset = codeset;
      m_cd = m_toWide ? iconv_open(kUtf16Native, codeset) : iconv_open(codeset, kUtf16Native);
      if (m_cd == kNoDescriptor) {
        m_codeset.clear();
        return kNoDescriptor;
      }
    }
    iconv(m_cd, nullptr, nullptr, nullptr, nullptr);
    return m_cd;
  }

 private:
  bool m_toWide;                  // bytes to UTF-16, or the reverse
  iconv_t m_cd = kNoDescriptor;   // open descriptor, or kNoDescriptor
  std::string m_codeset;          // codeset that m_cd converts
};

thread_local CachedIconv t_toWide(true);
thread_local CachedIconv t_toBytes(false);

// Where converted bytes go: the caller's buffer, or a scratch area that only counts.
class Sink {
 public:
  Sink(char* out, size_t size) : m_out(out), m_left(size), m_counting(out == nullptr) {
    if (m_counting) {
      m_out = m_scratch;
      m_left = sizeof m_scratch;
    }
  }
  char** Cursor() { return &m_out; }
  size_t* Left() { return &m_left; }
  // After E2BIG: true if counting may go on (the scratch was drained), false if the buffer is full.
  bool Drain() {
    if (!m_counting) return false;
    m_total += sizeof m_scratch - m_left;
    m_out = m_scratch;
    m_left = sizeof m_scratch;
    return true;
  }
  bool Put(const void* bytes, size_t n) {
    if (m_left < n && !Drain()) return false;
    memcpy(m_out, bytes, n);
    m_out += n;
    m_left -= n;
    return true;
  }
  size_t Produced(size_t size) const { return m_counting ? m_total + (sizeof m_scratch - m_left) : size - m_left; }

 private:
  char m_scratch[512];  // output area of a measuring run
  char* m_out;          // next byte to write
  size_t m_left;        // room behind m_out
  bool m_counting;      // measuring only
  size_t m_total = 0;   // bytes counted in drained scratch areas
};

// What to do with input that iconv refuses: the bytes to put out instead, and how far to skip.
struct Replacement {
  const void* bytes;  // replacement in the output encoding
  size_t size;        // its length in bytes
  size_t skip;        // input bytes it stands for
};

template <class Replace>
int64_t Convert(iconv_t cd, const char* in, size_t inSize, char* out, size_t outSize, Replace replace) {
  char* src = const_cast<char*>(in);
  size_t srcLeft = inSize;
  Sink sink(out, outSize);
  for (;;) {
    // Once the input is used up, one more call puts out what a stateful encoding still holds.
    const bool flushing = srcLeft == 0;
    const size_t rc = flushing ? iconv(cd, nullptr, nullptr, sink.Cursor(), sink.Left())
                               : iconv(cd, &src, &srcLeft, sink.Cursor(), sink.Left());
    if (rc != static_cast<size_t>(-1)) {
      if (flushing) return static_cast<int64_t>(sink.Produced(outSize));
      continue;
    }
    if (errno == E2BIG) {
      if (!sink.Drain()) return -1;
      continue;
    }
    if (errno != EILSEQ && errno != EINVAL) return -2;
    const Replacement r = replace(src, srcLeft, errno == EINVAL);
    if (!sink.Put(r.bytes, r.size)) return -1;
    src += r.skip;
    srcLeft -= r.skip;
  }
}

int32_t Finish(int64_t produced, size_t unit) {
  if (produced == -1) {
    SetLastError(kErrorInsufficientBuffer);
    return 0;
  }
  if (produced < 0 || produced / static_cast<int64_t>(unit) > INT32_MAX) {
    SetLastError(kErrorInvalidParameter);
    return 0;
  }
  return static_cast<int32_t>(produced / static_cast<int64_t>(unit));
}

// The checks both conversions start with: arguments the platform accepts (a source of at least one
// unit; no output and size 0 to measure, or both), then a converter for the current codeset. On
// failure the last error is set and kNoDescriptor comes back.
iconv_t Prepare(bool haveText, int32_t length, bool haveOut, int32_t outSize, CachedIconv& cache) {
  if (!haveText || length < 1 || outSize < 0 || !haveOut != (outSize == 0)) {
    SetLastError(kErrorInvalidParameter);
    return kNoDescriptor;
  }
  const iconv_t cd = cache.Get();
  if (cd == kNoDescriptor) SetLastErrorFromErrno(EINVAL);
  return cd;
}

bool IsLead(char16_t u) { return u >= 0xD800 && u <= 0xDBFF; }
bool IsTrail(char16_t u) { return u >= 0xDC00 && u <= 0xDFFF; }

}  // namespace

int32_t MultiByteToWideChar(const char* text, int32_t length, char16_t* out, int32_t outSize) noexcept {
  const iconv_t cd = Prepare(text != nullptr, length, out != nullptr, outSize, t_toWide);
  if (cd == kNoDescriptor) return 0;
  static const char16_t kFffd = 0xFFFD;
  const int64_t produced = Convert(cd, text, static_cast<size_t>(length), reinterpret_cast<char*>(out),
                                   static_cast<size_t>(outSize) * 2, [](const char*, size_t left, bool atEnd) {
                                     // One U+FFFD per refused byte; a sequence cut off by the end is one.
                                     return Replacement{&kFffd, 2, atEnd ? left : 1};
                                   });
  return Finish(produced, 2);
}

int32_t WideCharToMultiByte(const char16_t* text, int32_t length, char* out, int32_t outSize) noexcept {
  const iconv_t cd = Prepare(text != nullptr, length, out != nullptr, outSize, t_toBytes);
  if (cd == kNoDescriptor) return 0;
  const int64_t produced = Convert(cd, reinterpret_cast<const char*>(text), static_cast<size_t>(length) * 2, out,
                                   static_cast<size_t>(outSize), [](const char* at, size_t left, bool) {
                                     // "?" for one character: a whole pair, or a single unit.
                                     char16_t units[2];
                                     memcpy(units, at, left >= 4 ? 4 : 2);
                                     const bool pair = left >= 4 && IsLead(units[0]) && IsTrail(units[1]);
                                     return Replacement{"?", 1, pair ? 4u : 2u};
                                   });
  return Finish(produced, 1);
}

}  // namespace qz::os
