// library_test.cpp - loading libraries by path and finding entry points, the open counts, and the
// module set with the guard that refuses unknown keys, on one thread and on several.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "component_test_support.h"
#include "qzcore/qzcom.h"
#include "qzcore/qzlibrary.h"
#include "support/test_support.h"

namespace {

using qztest::IsMapped;
using qztest::kSamplePath;
using qztest::Wide;

const QZLibHandle kUntouched = reinterpret_cast<QZLibHandle>(0x1234);

TEST(LibOpen, WhatCannotBeLoadedFailsWithMinusOne) {
  qztest::TempDir dir;
  std::ofstream(dir.File("notes.txt")) << "not a library\n";
  const std::string cases[] = {dir.File("missing.so"), dir.File("notes.txt"), dir.path(), "",
                               "libqzcore-no-such-library.so"};
  for (const std::string& path : cases) {
    QZLibHandle handle = kUntouched;
    EXPECT_EQ(QZLibOpen(Wide(path).c_str(), &handle), QZ_E_FAIL) << path;
    EXPECT_EQ(handle, reinterpret_cast<QZLibHandle>(-1)) << path;
  }
}

TEST(LibOpen, TwoOpensNeedTwoClosesAndSymbolsAreFoundByName) {
  ASSERT_FALSE(IsMapped(kSamplePath));
  QZLibHandle first = nullptr;
  QZLibHandle second = nullptr;
  ASSERT_EQ(QZLibOpen(Wide(kSamplePath).c_str(), &first), 0);
  ASSERT_EQ(QZLibOpen(Wide(kSamplePath).c_str(), &second), 0);
  EXPECT_EQ(first, second);

  void* entry = kUntouched;
  EXPECT_EQ(QZLibGetSymbol(first, u"DllGetClassObject", &entry), 0);
  EXPECT_NE(entry, nullptr);
  EXPECT_NE(entry, kUntouched);
  entry = kUntouched;
  EXPECT_EQ(QZLibGetSymbol(first, u"DllCanUnloadNow", &entry), QZ_E_FAIL);
  EXPECT_EQ(entry, nullptr);
  entry = kUntouched;
  EXPECT_EQ(QZLibGetSymbol(first, u"", &entry), QZ_E_FAIL);
  EXPECT_EQ(entry, nullptr);
  for (const char16_t* inDependency : {u"malloc", u"strlen"}) {  // the C library's, not its own
    entry = kUntouched;
    EXPECT_EQ(QZLibGetSymbol(first, inDependency, &entry), QZ_E_FAIL);
    EXPECT_EQ(entry, nullptr);
  }

  EXPECT_EQ(QZLibClose(first), 0);
  EXPECT_TRUE(IsMapped(kSamplePath));
  EXPECT_EQ(QZLibClose(second), 0);
  EXPECT_FALSE(IsMapped(kSamplePath));
}

// -1 ("no handle") and null name no library: the close refuses and the look-up finds nothing, even
// for an entry point that a loaded library exports.
TEST(LibClose, NoHandleValuesAreRefusedNotPassedOver) {
  QZLibHandle loaded = nullptr;
  ASSERT_EQ(QZLibOpen(Wide(kSamplePath).c_str(), &loaded), 0);
  const QZLibHandle cases[] = {reinterpret_cast<QZLibHandle>(-1), nullptr};
  for (const QZLibHandle handle : cases) {
    EXPECT_EQ(QZLibClose(handle), QZ_E_HANDLE) << handle;
    void* entry = kUntouched;
    EXPECT_EQ(QZLibGetSymbol(handle, u"DllGetClassObject", &entry), QZ_E_FAIL) << handle;
    EXPECT_EQ(entry, nullptr) << handle;
  }
  EXPECT_TRUE(IsMapped(kSamplePath));
  EXPECT_EQ(QZLibClose(loaded), 0);
  EXPECT_FALSE(IsMapped(kSamplePath));
}

TEST(ModuleSet, TheGuardRefusesKeysThatAreNotEntered) {
  const uintptr_t key = reinterpret_cast<uintptr_t>(&kUntouched);
  QZLibHandle handle = kUntouched;
  void* object = kUntouched;
  const QZGUID clsid = QZ_CLSID_SAMPLE_ADDER_INIT;
  const QZGUID iid = QZ_IID_IQZUNKNOWN_INIT;
  auto refusedEverywhere = [&](const char* when) {
    EXPECT_EQ(QZModuleLibOpen(key, Wide(kSamplePath).c_str(), &handle), QZ_E_MODULE_NOT_INITIALIZED) << when;
    EXPECT_EQ(QZModuleLibClose(key, kUntouched), QZ_E_MODULE_NOT_INITIALIZED) << when;
    EXPECT_EQ(QZModuleComGetClassObject(key, &clsid, &iid, &object), QZ_E_MODULE_NOT_INITIALIZED) << when;
    EXPECT_EQ(QZModuleComCreateObject(key, &clsid, nullptr, &iid, &object), QZ_E_MODULE_NOT_INITIALIZED) << when;
    EXPECT_EQ(handle, kUntouched) << when;  // unlike QZLibOpen, nothing is stored
    EXPECT_EQ(object, kUntouched) << when;
    EXPECT_FALSE(IsMapped(kSamplePath)) << when;
  };
  refusedEverywhere("never entered");

  // The set has no counts: in twice, out once, and it is out.
  EXPECT_EQ(QZModuleSetInitialized(key, 1), 0);
  EXPECT_EQ(QZModuleSetInitialized(key, 7), 0);
  EXPECT_EQ(QZModuleSetInitialized(key, 0), 0);
  refusedEverywhere("entered twice, left once");
  EXPECT_EQ(QZModuleSetInitialized(key, 0), 0);  // leaving again is no failure

  // Entered, the guarded calls reach the plain ones.
  ASSERT_EQ(QZModuleSetInitialized(key, 1), 0);
  ASSERT_EQ(QZModuleLibOpen(key, Wide(kSamplePath).c_str(), &handle), 0);
  EXPECT_TRUE(IsMapped(kSamplePath));
  EXPECT_EQ(QZModuleLibOpen(key, u"/nonexistent/lib.so", &handle), QZ_E_FAIL);
  EXPECT_EQ(handle, reinterpret_cast<QZLibHandle>(-1));
  ASSERT_EQ(QZLibOpen(Wide(kSamplePath).c_str(), &handle), 0);
  EXPECT_EQ(QZModuleLibClose(key, handle), 0);
  EXPECT_EQ(QZModuleSetInitialized(key, 0), 0);
  EXPECT_EQ(QZModuleLibClose(key, handle), QZ_E_MODULE_NOT_INITIALIZED);  // its open stays in force
  EXPECT_TRUE(IsMapped(kSamplePath));
  EXPECT_EQ(QZLibClose(handle), 0);
  EXPECT_FALSE(IsMapped(kSamplePath));
}

TEST(ModuleSet, ModulesOnManyThreadsKeepTheirOwnKeysAndCounts) {
  constexpr int kThreads = 6;
  constexpr int kRounds = 40;
  std::vector<std::thread> threads;
  std::vector<int> failures(kThreads, 0);
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, &failures] {
      const uintptr_t key = 0x5000 + static_cast<uintptr_t>(t);
      for (int round = 0; round < kRounds; ++round) {
        QZLibHandle handle = kUntouched;
        if (QZModuleSetInitialized(key, 1) != 0) ++failures[t];
        if (QZModuleLibOpen(key, Wide(kSamplePath).c_str(), &handle) != 0) ++failures[t];
        if (QZModuleSetInitialized(key, 0) != 0) ++failures[t];
        // Out of the set, this module can no longer close; the plain close still can.
        if (QZModuleLibClose(key, handle) != QZ_E_MODULE_NOT_INITIALIZED) ++failures[t];
        if (QZLibClose(handle) != 0) ++failures[t];
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(failures, std::vector<int>(kThreads, 0));
  EXPECT_FALSE(IsMapped(kSamplePath));  // every open was matched by a close
}

}  // namespace
