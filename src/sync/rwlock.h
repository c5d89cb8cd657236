// rwlock.h - CQZRWLockImpl, the recursive reader/writer lock: two mutexes, a gate, and the list of
// reader threads with their read holds.
//
// Because the lock knows by thread who holds how many read locks, a reader re-enters without ever
// blocking, a reader that is the only one left can take the write lock (an upgrade), and a writer
// can take read locks inside its write lock (they are parked until its last write release). A
// writer takes the turnstile m_lock on arrival and keeps it, so readers that arrive after it
// queue behind it, while the readers already inside go on and finish; it then sleeps on the gate
// until they have gone.
//
// Kept as they are on purpose (callers may rely on them):
// - Two readers that both ask for the write lock deadlock; nothing detects it.
// - After an upgrade with company, the gate stays open while the upgrader keeps its read hold, so
//   a later writer enters beside it. Only the first reader after an empty count closes the gate.
// - A writer without a read entry that takes a read lock and then gives up the write lock first
//   is not downgraded: the hold count stays 1 with no entry, and its read release fails.
// - Neither release checks who calls it in write mode: a read release takes a parked hold
//   whoever the caller is, and a write release runs in full on any thread.
// - A try can fail with no writer anywhere, when m_arrayLock was busy for a moment.
// - Nothing undoes held locks when a gate operation fails: the lock is lost for other threads.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "qzcore/qztypes.h"

// One reader thread and its read holds (at least 1).
struct QZRWLockReader {
  uint32_t threadId;
  uint32_t count;
};

// The readers in order of arrival. Room for 8 from the start; a full array grows by half of its
// room. Lookup scans from the front, removal closes the gap and keeps the order.
class CQZReaderArray {
 public:
  static constexpr uint32_t kInitialRoom = 8;

  CQZReaderArray() : m_slots(kInitialRoom) {}

  uint32_t Length() const noexcept { return m_length; }
  uint32_t Room() const noexcept { return static_cast<uint32_t>(m_slots.size()); }
  // The index of `threadId`'s entry, or Length() when it has none.
  uint32_t Find(uint32_t threadId) const noexcept;
  QZRWLockReader& operator[](uint32_t index) noexcept { return m_slots[index]; }
  const QZRWLockReader& operator[](uint32_t index) const noexcept { return m_slots[index]; }
  // Makes room for one more entry (may throw std::bad_alloc, and then nothing changed).
  void MakeRoom();
  // Appends after MakeRoom.
  void Append(uint32_t threadId, uint32_t count) noexcept { m_slots[m_length++] = {threadId, count}; }
  void Remove(uint32_t index) noexcept;
  // Stores `count` into the entry at `index`; at Length() that is the slot after the last entry,
  // kept while the room has one, and the length does not change.
  void StoreCount(uint32_t index, uint32_t count) noexcept {
    if (index < Room()) m_slots[index].count = count;
  }

 private:
  std::vector<QZRWLockReader> m_slots;  // the room; the first m_length slots are entries
  uint32_t m_length = 0;                // entries in use
};

class CQZRWLockImpl {
 public:
  // Makes the gate "N::CQZRWLockImpl::m_writerGate", then m_lock and m_arrayLock ("N::..." too,
  // plain recursive mutexes, their results ignored), and opens the gate. Throws the gate's failure.
  CQZRWLockImpl(std::string name, uint32_t flags);
  // Destroys m_arrayLock, m_lock, then the gate. Holders are not looked for.
  ~CQZRWLockImpl();
  CQZRWLockImpl(const CQZRWLockImpl&) = delete;
  CQZRWLockImpl& operator=(const CQZRWLockImpl&) = delete;

  // Blocks only a new reader, and only behind a writer that has arrived or is inside; a thread
  // with a read hold, or the writer, never blocks. Throws the gate's failure.
  void AcquireRead();
  // Blocks until no other thread holds a read or write lock; the writer itself and a reader that
  // is the only one left enter at once. Throws the gate's failure (m_lock stays held).
  void AcquireWrite();
  // False when the caller had nothing to give back (in write mode: no parked hold left).
  bool ReleaseRead();
  // False when no write lock is held.
  bool ReleaseWrite();
  // Never block; false when the lock, or one of its mutexes for a moment, is busy.
  bool TryAcquireRead();
  bool TryAcquireWrite();

  // Lock order: m_lock before m_arrayLock. No path takes m_lock while it holds m_arrayLock; gate
  // operations run with m_arrayLock held, except the writer's wait (m_lock held, m_arrayLock free).
  QZMutexHandle m_lock = nullptr;         // the turnstile; a writer holds one level per write lock
  QZGateHandle m_writerGate = nullptr;    // closed while readers other than a waiting writer are in
  std::atomic<uint32_t> m_holdCount{0};   // read mode: sum of read holds; write mode: write depth
  std::atomic<int32_t> m_parkedReadCount{0};  // write mode: read holds waiting for its end
  CQZReaderArray m_readers;               // one entry per reader thread; under m_arrayLock
  std::atomic<uint32_t> m_waitingWriter{0};   // the writer between arrival and entry, or 0
  QZMutexHandle m_arrayLock = nullptr;    // guards m_readers
  std::atomic<bool> m_writeActive{false}; // write mode; read without a lock by the releases
  std::string m_name;                     // the name given at creation (null as empty)
  uint32_t m_flags;                       // stored, never read

 private:
  // Destroys the mutexes, then the gate.
  void DestroyParts() noexcept;
  // With m_arrayLock held: `id` is not 0 and is the only reader, or there is none.
  bool OnlyHolder(uint32_t id) const noexcept;
  // With m_lock and m_arrayLock held: a first read hold of `id` (parked in write mode).
  void AddReader(uint32_t id);
  // With m_arrayLock held: the caller's re-entry, if it has an entry; false otherwise.
  bool ReenterRead(uint32_t id);
};
