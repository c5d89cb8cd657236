// rwlock_test.cpp - the recursive reader/writer lock between threads: a writer waits for the
// readers inside, new readers queue behind it, re-entry never blocks, upgrades alone and beside
// other readers, parked reads, the gaps kept on purpose, the tries, and a randomised stress run
// that checks the lock's invariants throughout and its counts at the end.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "qzcore.h"
#include "sync/mutex.h"
#include "sync/rwlock.h"

namespace {

using namespace std::chrono_literals;

// A thread that runs the calls it is given, one after another, so that each lock hold belongs to
// the thread the test means. Call() hands back a future of the call's result.
class Actor {
 public:
  Actor() : m_thread([this] { Run(); }) {}
  ~Actor() {
    Call([this] { return m_stop = true, QZRESULT{0}; });
    m_thread.join();
  }
  std::shared_future<QZRESULT> Call(std::function<QZRESULT()> call) {
    auto task = std::make_shared<std::packaged_task<QZRESULT()>>(std::move(call));
    std::shared_future<QZRESULT> result = task->get_future().share();
    {
      std::lock_guard<std::mutex> guard(m_mutex);
      m_calls.push_back([task] { (*task)(); });
    }
    m_wake.notify_one();
    return result;
  }
  QZRESULT Do(std::function<QZRESULT()> call) { return Call(std::move(call)).get(); }

 private:
  void Run() {
    while (!m_stop) {
      std::function<void()> call;
      {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_wake.wait(lock, [this] { return !m_calls.empty(); });
        call = std::move(m_calls.front());
        m_calls.pop_front();
      }
      call();
    }
  }

  std::mutex m_mutex;
  std::condition_variable m_wake;
  std::deque<std::function<void()>> m_calls;
  bool m_stop = false;  // set by the actor's own thread
  std::thread m_thread;
};

// Still blocked after a pause: what "waits" means without a timed assertion.
bool StillWaiting(const std::shared_future<QZRESULT>& result) { return result.wait_for(50ms) == std::future_status::timeout; }
bool Finished(const std::shared_future<QZRESULT>& result) { return result.wait_for(5s) == std::future_status::ready; }

class RWLock : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(QZRWLockCreate("test", 0, &m_handle), 0); }
  void TearDown() override { QZRWLockDestroy(m_handle); }
  CQZRWLockImpl& Impl() { return *reinterpret_cast<CQZRWLockImpl*>(m_handle); }
  std::function<QZRESULT()> Read() { return [h = m_handle] { return QZRWLockAcquireRead(h); }; }
  std::function<QZRESULT()> Write() { return [h = m_handle] { return QZRWLockAcquireWrite(h); }; }
  std::function<QZRESULT()> ReleaseRead() { return [h = m_handle] { return QZRWLockReleaseRead(h); }; }
  std::function<QZRESULT()> ReleaseWrite() { return [h = m_handle] { return QZRWLockReleaseWrite(h); }; }
  void ExpectIdle() {
    EXPECT_EQ(Impl().m_holdCount.load(), 0u);
    EXPECT_EQ(Impl().m_parkedReadCount.load(), 0);
    EXPECT_EQ(Impl().m_readers.Length(), 0u);
    EXPECT_EQ(Impl().m_waitingWriter.load(), 0u);
    EXPECT_FALSE(Impl().m_writeActive.load());
  }

  QZRWLockHandle m_handle = nullptr;
};

TEST_F(RWLock, NewReaderWaitsBehindArrivedWriterWhileReentryPasses) {
  Actor first, second, writer, late;
  ASSERT_EQ(first.Do(Read()), 0);
  ASSERT_EQ(second.Do(Read()), 0);
  EXPECT_EQ(Impl().m_holdCount.load(), 2u);
  const auto written = writer.Call(Write());
  EXPECT_TRUE(StillWaiting(written));  // two readers inside
  EXPECT_NE(Impl().m_waitingWriter.load(), 0u);
  const auto lateRead = late.Call(Read());
  EXPECT_TRUE(StillWaiting(lateRead));  // arrived after the writer: queues behind it
  EXPECT_EQ(first.Do(Read()), 0);       // a re-entry never blocks
  EXPECT_EQ(first.Do(ReleaseRead()), 0);
  EXPECT_EQ(first.Do(ReleaseRead()), 0);
  EXPECT_TRUE(StillWaiting(written));  // one reader is still inside
  EXPECT_EQ(second.Do(ReleaseRead()), 0);
  ASSERT_TRUE(Finished(written));
  EXPECT_EQ(written.get(), 0);
  EXPECT_TRUE(StillWaiting(lateRead));  // the writer is inside now
  EXPECT_EQ(writer.Do(ReleaseWrite()), 0);
  ASSERT_TRUE(Finished(lateRead));
  EXPECT_EQ(late.Do(ReleaseRead()), 0);
  ExpectIdle();
}

TEST_F(RWLock, UpgradeAloneKeepsTheReadHolds) {
  ASSERT_EQ(QZRWLockAcquireRead(m_handle), 0);
  ASSERT_EQ(QZRWLockAcquireRead(m_handle), 0);
  ASSERT_EQ(QZRWLockAcquireWrite(m_handle), 0);  // alone: at once
  EXPECT_EQ(Impl().m_parkedReadCount.load(), 2);
  Actor other;
  const auto blocked = other.Call(Read());
  EXPECT_TRUE(StillWaiting(blocked));
  EXPECT_EQ(QZRWLockReleaseWrite(m_handle), 0);
  ASSERT_TRUE(Finished(blocked));
  EXPECT_EQ(other.Do(ReleaseRead()), 0);
  EXPECT_EQ(QZRWLockReleaseRead(m_handle), 0);
  EXPECT_EQ(QZRWLockReleaseRead(m_handle), 0);
  EXPECT_EQ(QZRWLockReleaseRead(m_handle), QZ_E_FAIL);  // exactly as many as before
  ExpectIdle();
}

TEST_F(RWLock, UpgradeInCompanyWaitsForTheOthersAndLeavesTheGateOpen) {
  Actor upgrader, reader, laterWriter;
  ASSERT_EQ(upgrader.Do(Read()), 0);
  ASSERT_EQ(reader.Do(Read()), 0);
  const auto upgraded = upgrader.Call(Write());
  EXPECT_TRUE(StillWaiting(upgraded));
  EXPECT_EQ(reader.Do(ReleaseRead()), 0);  // leaves only the upgrader: opens the gate
  ASSERT_TRUE(Finished(upgraded));
  EXPECT_EQ(upgrader.Do(ReleaseWrite()), 0);
  EXPECT_EQ(Impl().m_holdCount.load(), 1u);  // its read hold is back
  // Kept as it is: the gate stays open, so a later writer enters beside the upgrader's read hold.
  const auto beside = laterWriter.Call(Write());
  ASSERT_TRUE(Finished(beside));
  EXPECT_EQ(laterWriter.Do(ReleaseWrite()), 0);
  EXPECT_EQ(upgrader.Do(ReleaseRead()), 0);
  ExpectIdle();
}

TEST_F(RWLock, ReadsInsideTheWriteLock) {
  // Taken and given back before the write release: no trace.
  ASSERT_EQ(QZRWLockAcquireWrite(m_handle), 0);
  ASSERT_EQ(QZRWLockAcquireRead(m_handle), 0);
  ASSERT_EQ(QZRWLockTryAcquireRead(m_handle), 0);
  EXPECT_EQ(Impl().m_parkedReadCount.load(), 2);
  EXPECT_EQ(Impl().m_readers.Length(), 0u);
  EXPECT_EQ(QZRWLockReleaseRead(m_handle), 0);
  EXPECT_EQ(QZRWLockReleaseRead(m_handle), 0);
  EXPECT_EQ(QZRWLockReleaseRead(m_handle), QZ_E_FAIL);
  EXPECT_EQ(QZRWLockReleaseWrite(m_handle), 0);
  ExpectIdle();

  // Kept as it is: the write lock given back first is no downgrade; the hold is counted for ever.
  ASSERT_EQ(QZRWLockAcquireWrite(m_handle), 0);
  ASSERT_EQ(QZRWLockAcquireRead(m_handle), 0);
  EXPECT_EQ(QZRWLockReleaseWrite(m_handle), 0);
  EXPECT_EQ(Impl().m_holdCount.load(), 1u);
  EXPECT_EQ(Impl().m_readers.Length(), 0u);
  EXPECT_EQ(QZRWLockReleaseRead(m_handle), QZ_E_FAIL);
  EXPECT_EQ(Impl().m_holdCount.load(), 1u);
}

TEST_F(RWLock, TriesAndReleasesOfWhatIsNotHeld) {
  EXPECT_EQ(QZRWLockReleaseWrite(m_handle), QZ_E_FAIL);
  EXPECT_EQ(QZRWLockReleaseRead(m_handle), QZ_E_FAIL);
  ExpectIdle();
  Actor reader;
  ASSERT_EQ(reader.Do(Read()), 0);
  EXPECT_EQ(QZRWLockTryAcquireWrite(m_handle), QZ_E_FAIL);  // another reader inside
  EXPECT_EQ(Impl().m_waitingWriter.load(), 0u);
  EXPECT_EQ(QZRWLockTryAcquireRead(m_handle), 0);
  EXPECT_EQ(QZRWLockReleaseRead(m_handle), 0);
  EXPECT_EQ(reader.Do(ReleaseRead()), 0);

  ASSERT_EQ(QZRWLockTryAcquireWrite(m_handle), 0);
  ASSERT_EQ(QZRWLockTryAcquireWrite(m_handle), 0);  // a second level with its own release
  EXPECT_EQ(reader.Do([h = m_handle] { return QZRWLockTryAcquireRead(h); }), QZ_E_FAIL);
  EXPECT_EQ(reader.Do([h = m_handle] { return QZRWLockTryAcquireWrite(h); }), QZ_E_FAIL);
  EXPECT_EQ(QZRWLockReleaseWrite(m_handle), 0);
  EXPECT_TRUE(Impl().m_writeActive.load());
  EXPECT_EQ(QZRWLockReleaseWrite(m_handle), 0);
  EXPECT_EQ(QZRWLockReleaseWrite(m_handle), QZ_E_FAIL);
  ExpectIdle();
}

TEST_F(RWLock, NinthReaderGrowsTheListAndNamesFollowTheLock) {
  std::vector<std::unique_ptr<Actor>> readers(9);
  for (auto& reader : readers) {
    reader = std::make_unique<Actor>();
    ASSERT_EQ(reader->Do(Read()), 0);
  }
  EXPECT_EQ(Impl().m_readers.Length(), 9u);
  EXPECT_EQ(Impl().m_readers.Room(), 12u);
  for (auto& reader : readers) EXPECT_EQ(reader->Do(ReleaseRead()), 0);
  ExpectIdle();

  QZRWLockHandle unnamed;
  ASSERT_EQ(QZRWLockCreate(nullptr, 0xFFFFFFFF, &unnamed), 0);
  auto& impl = *reinterpret_cast<CQZRWLockImpl*>(unnamed);
  EXPECT_EQ(MutexFromHandle(impl.m_lock)->GetName(), "::CQZRWLockImpl::m_lock");
  EXPECT_EQ(MutexFromHandle(impl.m_arrayLock)->GetName(), "::CQZRWLockImpl::m_arrayLock");
  EXPECT_EQ(MutexFromHandle(Impl().m_lock)->GetName(), "test::CQZRWLockImpl::m_lock");
  EXPECT_EQ(QZRWLockDestroy(unnamed), 0);
  EXPECT_EQ(QZRWLockDestroy(nullptr), 0);
}

// Several threads take read locks (some nested), write locks (some with reads or a second level
// inside) and tries at random. Nobody may ever be inside beside a writer; at the end the lock is
// idle. Bounded by time and by iterations, whichever ends first.
TEST_F(RWLock, RandomisedStressKeepsTheInvariants) {
  constexpr int kThreads = 4, kIterations = 100000;
  const auto deadline = std::chrono::steady_clock::now() + 1500ms;
  std::atomic<int> readersInside{0}, writersInside{0}, violations{0}, failures{0};
  auto enterRead = [&] {
    ++readersInside;
    if (writersInside.load() != 0) ++violations;
  };
  auto enterWrite = [&] {
    if (++writersInside != 1 || readersInside.load() != 0) ++violations;
  };
  auto check = [&](QZRESULT result) {
    if (result != 0) ++failures;
  };
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      std::mt19937 random(1234 + t);
      for (int i = 0; i < kIterations && std::chrono::steady_clock::now() < deadline; ++i) {
        const unsigned choice = random() % 8;
        if (choice < 4) {  // read, sometimes nested
          check(QZRWLockAcquireRead(m_handle));
          enterRead();
          if (choice == 0) check(QZRWLockAcquireRead(m_handle)), check(QZRWLockReleaseRead(m_handle));
          --readersInside;
          check(QZRWLockReleaseRead(m_handle));
        } else if (choice < 6) {  // write, with a read or a second level inside
          check(QZRWLockAcquireWrite(m_handle));
          enterWrite();
          if (choice == 4) check(QZRWLockAcquireRead(m_handle)), check(QZRWLockReleaseRead(m_handle));
          if (choice == 5) check(QZRWLockAcquireWrite(m_handle)), check(QZRWLockReleaseWrite(m_handle));
          --writersInside;
          check(QZRWLockReleaseWrite(m_handle));
        } else if (choice == 6) {
          if (QZRWLockTryAcquireRead(m_handle) == 0) {
            enterRead();
            --readersInside;
            check(QZRWLockReleaseRead(m_handle));
          }
        } else if (QZRWLockTryAcquireWrite(m_handle) == 0) {
          enterWrite();
          --writersInside;
          check(QZRWLockReleaseWrite(m_handle));
        }
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(violations.load(), 0);
  EXPECT_EQ(failures.load(), 0);
  ExpectIdle();
}

}  // namespace
