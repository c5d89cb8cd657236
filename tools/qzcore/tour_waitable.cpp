// tour_waitable.cpp - tour step: events, a gate and a semaphore at work between two threads, and a
// condition's timed wait.
#include <chrono>
#include <string>
#include <thread>

#include "qzcore.h"
#include "tour.h"

namespace {

using qztool::Hex;
using qztool::Show;

std::string Code(QZRESULT hr) { return Hex(static_cast<uint32_t>(hr)); }

void TourWaitables() {
  // A producer hands ten items to a consumer through a semaphore; an auto-reset event reports back.
  QZSemaphoreHandle items;
  QZEventHandle done;
  QZGateHandle start;
  QZSemaphoreCreate(0, "tour.items", 0, &items);
  QZEventCreate("tour.done", 0, &done);
  QZGateCreate("tour.start", 0, &start);
  Show("QZGateTryWait on a new gate (born closed)", Code(QZGateTryWait(start)));
  int consumed = 0;
  std::thread consumer([&] {
    QZGateWait(start);
    for (int i = 0; i < 10; ++i) {
      QZSemaphoreWait(items);
      ++consumed;
    }
    QZEventSignal(done);
  });
  QZGateOpen(start);
  for (int i = 0; i < 10; ++i) QZSemaphorePost(items);
  const QZRESULT hr = QZEventWait(done);
  consumer.join();
  Show("consumer: gate opened, 10 posts", "QZEventWait(done) " + Code(hr) + ", consumed " + std::to_string(consumed));
  Show("QZEventTimedWait(done, 0): auto reset closed it", Code(QZEventTimedWait(done, 0)));
  Show("QZSemaphoreTryWait on an empty semaphore", Code(QZSemaphoreTryWait(items)));
  int32_t value = 0;
  QZSemaphoreGetValue(items, &value);
  Show("QZSemaphoreGetValue (always -1)", std::to_string(value));
  QZSemaphoreHandle full;
  QZSemaphoreCreate(QZ_SEMAPHORE_MAX_COUNT, "tour.full", 0, &full);
  Show("QZSemaphorePost at the maximum 32767", Code(QZSemaphorePost(full)));

  QZConditionHandle condition;
  QZConditionCreate("tour.condition", 0, &condition);
  QZConditionAcquire(condition);
  const auto begin = std::chrono::steady_clock::now();
  const QZRESULT timedOut = QZConditionTimedWait(condition, 25);
  const auto waited = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
  QZConditionRelease(condition);
  Show("QZConditionTimedWait(25 ms), nobody signals", Code(timedOut) + " after " + std::to_string(waited.count()) + " ms");

  QZSemaphoreDestroy(items);
  QZSemaphoreDestroy(full);
  QZEventDestroy(done);
  QZGateDestroy(start);
  QZConditionDestroy(condition);
}

}  // namespace

QZ_TOUR_STEP(22, "Conditions, events, gates and semaphores", TourWaitables);
