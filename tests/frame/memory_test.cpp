// memory_test.cpp - heap blocks with result codes, atomics, access at any address, byte swaps.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <thread>
#include <vector>

#include "qzcore.h"

TEST(HeapBlocks, AllocationResultsAndSizes) {
  void* block = reinterpret_cast<void*>(1);
  ASSERT_EQ(QZMalloc(100, &block), 0);
  EXPECT_GE(QZMallocSize(block), 100u);
  EXPECT_EQ(QZFree(block), 0);
  EXPECT_EQ(QZFree(nullptr), 0);

  // A failed allocation stores what malloc returned (null) and says out of memory.
  block = reinterpret_cast<void*>(1);
  EXPECT_EQ(QZMalloc(std::numeric_limits<size_t>::max() / 2, &block), QZ_E_OUTOFMEMORY);
  EXPECT_EQ(block, nullptr);
  block = reinterpret_cast<void*>(1);
  EXPECT_EQ(QZCalloc(std::numeric_limits<size_t>::max() / 4, 8, &block), QZ_E_OUTOFMEMORY);
  EXPECT_EQ(block, nullptr);

  ASSERT_EQ(QZCalloc(10, 4, &block), 0);
  EXPECT_EQ(std::memcmp(block, std::vector<char>(40, 0).data(), 40), 0);
  QZFree(block);
  EXPECT_EQ(QZMallocSize(nullptr), 0u);

  EXPECT_EQ(QZGetAlignedSize(0), 0u);
  EXPECT_EQ(QZGetAlignedSize(1), 8u);
  EXPECT_EQ(QZGetAlignedSize(8), 8u);
  EXPECT_EQ(QZGetAlignedSize(9), 16u);
}

TEST(HeapBlocks, ReallocKeepsTheBlockOnFailureAndFreesOnZero) {
  void* block = nullptr;
  ASSERT_EQ(QZRealloc(&block, 16), 0);  // null block: an allocation
  ASSERT_NE(block, nullptr);
  std::memset(block, 0x5A, 16);
  void* const before = block;
  EXPECT_EQ(QZRealloc(&block, std::numeric_limits<size_t>::max() / 2), QZ_E_OUTOFMEMORY);
  EXPECT_EQ(block, before);
  EXPECT_EQ(static_cast<unsigned char*>(block)[15], 0x5A);
  EXPECT_EQ(QZRealloc(&block, 0), 0);
  EXPECT_EQ(block, nullptr);
}

TEST(HeapBlocks, RecallocZeroesOnlyWhatIsNew) {
  void* block = nullptr;
  ASSERT_EQ(QZRecalloc(&block, 0), 0);  // null block: calloc of the size, here nothing
  QZFree(block);

  block = nullptr;
  ASSERT_EQ(QZMalloc(16, &block), 0);
  const size_t oldUsable = QZMallocSize(block);
  std::memset(block, 0xEE, oldUsable);
  ASSERT_EQ(QZRecalloc(&block, 4096), 0);
  const auto* bytes = static_cast<unsigned char*>(block);
  for (size_t i = 0; i < oldUsable; ++i) ASSERT_EQ(bytes[i], 0xEE) << i;
  for (size_t i = oldUsable; i < QZMallocSize(block); ++i) ASSERT_EQ(bytes[i], 0) << i;

  // Shrinking zeroes nothing.
  std::memset(block, 0x11, 64);
  ASSERT_EQ(QZRecalloc(&block, 32), 0);
  for (size_t i = 0; i < 32; ++i) ASSERT_EQ(static_cast<unsigned char*>(block)[i], 0x11);

  // Size 0 frees the block and leaves the caller's pointer as it was.
  void* const stale = block;
  EXPECT_EQ(QZRecalloc(&block, 0), 0);
  EXPECT_EQ(block, stale);
}

TEST(Atomics, ResultsAndArgumentOrder) {
  volatile int32_t word = 0;
  EXPECT_EQ(QZAtomicDecrement(&word), -1);
  word = static_cast<int32_t>(0xFFFFFFFF);
  EXPECT_EQ(QZAtomicIncrement(&word), 0);
  EXPECT_EQ(QZAtomicAdd32(&word, 40), 40);
  EXPECT_EQ(QZAtomicExchange(&word, 7), 40);
  EXPECT_EQ(word, 7);
  // The value to store comes before the expected one; the result is the old value either way.
  EXPECT_EQ(QZAtomicCompareExchange(&word, 9, 6), 7);
  EXPECT_EQ(word, 7);
  EXPECT_EQ(QZAtomicCompareExchange(&word, 9, 7), 7);
  EXPECT_EQ(word, 9);
  volatile intptr_t wide = 1;
  EXPECT_EQ(QZAtomicAddSZ(&wide, intptr_t{1} << 40), (intptr_t{1} << 40) + 1);
}

TEST(Atomics, IncrementsFromManyThreadsAreNotLost) {
  volatile int32_t counter = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 50000; ++i) QZAtomicIncrement(&counter);
    });
  }
  for (auto& t : threads) t.join();
  EXPECT_EQ(counter, 200000);
}

TEST(ByteOrder, UnalignedAccessAndSwaps) {
  alignas(8) unsigned char buffer[32] = {};
  QZPutUnalignedInt32(buffer + 3, 0xDEADBEEF);
  EXPECT_EQ(QZGetUnalignedInt32(buffer + 3), 0xDEADBEEFu);
  QZPutUnalignedInt16(buffer + 9, 0xBEEF);
  EXPECT_EQ(QZGetUnalignedInt16(buffer + 9), 0xBEEF);
  QZPutUnalignedInt64(buffer + 13, 0x0123456789ABCDEFull);
  EXPECT_EQ(QZGetUnalignedInt64(buffer + 13), 0x0123456789ABCDEFull);
  uint32_t host;
  std::memcpy(&host, buffer + 3, 4);
  EXPECT_EQ(host, 0xDEADBEEFu);  // host byte order, no swapping

  EXPECT_EQ(QZSwapInt16(0x1234), 0x3412);
  EXPECT_EQ(QZSwapInt32(0x12345678), 0x78563412u);
  EXPECT_EQ(QZSwapInt64(0x0102030405060708ull), 0x0807060504030201ull);
}
