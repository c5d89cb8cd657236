// tour_rwlock.cpp - tour step: two readers inside a reader/writer lock, a writer that arrives and
// waits for them, a late reader that queues behind the writer while an early reader re-enters,
// and a reader that upgrades to the write lock and keeps its read hold.
#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "qzcore.h"
#include "tour.h"

namespace {

using qztool::Hex;
using qztool::Show;

std::string Code(QZRESULT hr) { return qztool::Result(hr); }
void Pause() { std::this_thread::sleep_for(std::chrono::milliseconds(40)); }

void TourRWLock() {
  QZRWLockHandle lock;
  Show("QZRWLockCreate(\"tour\")", Code(QZRWLockCreate("tour", 0, &lock)));
  std::atomic<bool> writerIn{false}, lateIn{false}, releaseFirst{false}, releaseSecond{false};
  std::atomic<int> readersIn{0};
  auto reader = [&](std::atomic<bool>& release) {
    QZRWLockAcquireRead(lock);
    ++readersIn;
    while (!release) std::this_thread::yield();
    QZRWLockReleaseRead(lock);
  };
  std::thread first(reader, std::ref(releaseFirst)), second(reader, std::ref(releaseSecond));
  while (readersIn < 2) std::this_thread::yield();
  Show("two readers inside", "both hold a read lock");
  std::thread writer([&] {
    QZRWLockAcquireWrite(lock);
    writerIn = true;
    Pause();
    QZRWLockReleaseWrite(lock);
  });
  Pause();
  Show("a writer arrives", writerIn ? "entered (unexpected)" : "waits for the readers inside");
  std::thread late([&] {
    QZRWLockAcquireRead(lock);
    lateIn = true;
    QZRWLockReleaseRead(lock);
  });
  Pause();
  Show("a new reader arrives after the writer", lateIn ? "entered (unexpected)" : "queues behind the writer");
  releaseFirst = true;
  first.join();
  Pause();
  Show("the first reader leaves", writerIn ? "writer entered (unexpected)" : "the writer still waits for the second");
  releaseSecond = true;
  second.join();
  writer.join();
  late.join();
  Show("the second reader leaves", std::string(writerIn ? "the writer entered, " : "") + "then the late reader");

  // An upgrade alone: the read holds are parked during the write and come back after it.
  QZRWLockAcquireRead(lock);
  QZRWLockAcquireRead(lock);
  Show("one thread: read, read, then QZRWLockAcquireWrite (upgrade, alone)", Code(QZRWLockAcquireWrite(lock)));
  Show("QZRWLockReleaseWrite", Code(QZRWLockReleaseWrite(lock)));
  const QZRESULT r1 = QZRWLockReleaseRead(lock), r2 = QZRWLockReleaseRead(lock), r3 = QZRWLockReleaseRead(lock);
  Show("its read holds after the write: three releases", Code(r1) + " " + Code(r2) + " " + Code(r3));
  Show("QZRWLockReleaseWrite with no writer", Code(QZRWLockReleaseWrite(lock)));
  QZRWLockDestroy(lock);
}

}  // namespace

QZ_TOUR_STEP(23, "Reader/writer lock", TourRWLock);
