// tour_thread.cpp - tour step: threads created, joined and detached, with their exit codes; the
// join of an id the library no longer knows; and the calls on the calling thread.
#include <cstdint>
#include <string>

#include "qzcore.h"
#include "tour.h"

namespace {

using qztool::Hex;
using qztool::Show;

std::string Code(QZRESULT hr) { return qztool::Result(hr); }

uintptr_t Square(void* argument) {
  const auto n = reinterpret_cast<uintptr_t>(argument);
  return n * n;
}

uintptr_t Wide(void*) { return static_cast<uintptr_t>(0x100000007ull); }

void TourThreads() {
  QZThreadHandle thread;
  uint32_t id = 0;
  QZRESULT hr = QZThreadCreate(&Square, reinterpret_cast<void*>(12), nullptr, 0, &thread, &id);
  Show("QZThreadCreate(square of 12)", Code(hr) + ", id " + std::to_string(id) + ", handle " + std::to_string(thread));
  uint64_t code = 0;
  hr = QZThreadJoin(thread, &code);
  Show("QZThreadJoin", Code(hr) + ", exit code " + std::to_string(code));
  Show("QZThreadJoin again (the record went with the join)", Code(QZThreadJoin(thread, &code)));

  QZThreadCreate(&Wide, nullptr, nullptr, 64 * 1024, &thread, &id);
  QZThreadJoin(thread, &code);
  Show("thread returning 0x100000007, 64 KiB stack: exit code", Hex(code));

  QZThreadCreate(&Square, reinterpret_cast<void*>(3), nullptr, 0, &thread, &id);
  Show("QZThreadDetach (the exit code is dropped)", Code(QZThreadDetach(thread)));
  QZSleep(20);
  Show("QZThreadJoin of the detached thread", Code(QZThreadJoin(thread, &code)));

  Show("QZThreadGetID", std::to_string(QZThreadGetID()));
  uint64_t previous = 0;
  const uint64_t cpu0 = 1;
  hr = QZGetSetCpuAffinity(&previous, &cpu0);
  Show("QZGetSetCpuAffinity(CPU 0)", Code(hr) + ", previous mask " + Hex(previous));
  QZSetCpuAffinity(&previous);
  const uint64_t none = 0;
  Show("QZSetCpuAffinity(no CPU)", Code(QZSetCpuAffinity(&none)));
}

}  // namespace

QZ_TOUR_STEP(34, "Threads", TourThreads);
