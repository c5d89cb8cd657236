// factory_test.cpp - class objects end to end: the example component registered in a private
// registry, found, cached, created and flushed; what each bad registration answers; ProgIDs; and
// many threads asking for one class at once.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <fstream>
#include <thread>
#include <vector>

#include "component_test_support.h"
#include "qzcore/qzcom.h"
#include "qzcore/qzlibrary.h"
#include "qzcore/qzregistry.h"
#include "support/test_support.h"

namespace {

using qztest::IsMapped;
using qztest::kNoEntryPath;
using qztest::kSamplePath;
using qztest::Register;
using qztest::SetDefault;
using qztest::Text;
using qztest::Wide;

const QZGUID kClsid = QZ_CLSID_SAMPLE_ADDER_INIT;
const QZGUID kIidFactory = QZ_IID_IQZCLASSFACTORY_INIT;
const QZGUID kIidUnknown = QZ_IID_IQZUNKNOWN_INIT;
const QZGUID kIidAdder = QZ_IID_SAMPLE_ADDER_INIT;
void* const kUntouched = reinterpret_cast<void*>(0x1234);

// The whole binary shares one private registry; each test registers what it needs.
class Factory : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    s_dir = new qztest::TempDir();
    setenv("QZCORE_REGISTRY_DIR", s_dir->path().c_str(), 1);
  }
  static void TearDownTestSuite() {
    QZComFlushFactoryCache();
    delete s_dir;
    s_dir = nullptr;
  }
  void SetUp() override { ASSERT_EQ(Register(kClsid, kSamplePath), 0); }
  void TearDown() override { EXPECT_EQ(QZComFlushFactoryCache(), 0); }

  using Counters = qztest::SampleCounters;

  static inline qztest::TempDir* s_dir = nullptr;
};

TEST_F(Factory, LookupsHitTheCacheUntilAFlush) {
  Counters counters;
  const int before = counters.entryCalls();  // the library may have stayed loaded from an earlier test
  void* factory = kUntouched;
  ASSERT_EQ(QZComGetClassObject(&kClsid, &kIidFactory, &factory), 0);
  ASSERT_NE(factory, nullptr);
  EXPECT_EQ(counters.entryCalls() - before, 1);
  EXPECT_EQ(counters.factoryRefs(), 2);  // the caller's and the cache's
  IQZUnknown_Release(static_cast<IQZUnknown*>(factory));

  // A changed registration is not read while the class is cached.
  ASSERT_EQ(Register(kClsid, "/nonexistent/libgone.so"), 0);
  ASSERT_EQ(QZComGetClassObject(&kClsid, &kIidUnknown, &factory), 0);
  EXPECT_EQ(counters.entryCalls() - before, 1);
  IQZUnknown_Release(static_cast<IQZUnknown*>(factory));

  // After a flush the whole way is taken again: the registration now names a missing file.
  EXPECT_EQ(QZComFlushFactoryCache(), 0);
  EXPECT_EQ(counters.factoryRefs(), 0);
  EXPECT_EQ(QZComGetClassObject(&kClsid, &kIidFactory, &factory), QZ_E_FAIL);
  EXPECT_EQ(factory, nullptr);
  ASSERT_EQ(Register(kClsid, kSamplePath), 0);
  ASSERT_EQ(QZComGetClassObject(&kClsid, &kIidFactory, &factory), 0);
  EXPECT_EQ(counters.entryCalls() - before, 2);
  IQZUnknown_Release(static_cast<IQZUnknown*>(factory));
  EXPECT_EQ(counters.factoryRefs(), 1);
}

TEST_F(Factory, CreatesObjectsAndAFlushUnloadsTheLibrary) {
  EXPECT_EQ(QZComFlushFactoryCache(), 0);  // an empty cache
  ASSERT_FALSE(IsMapped(kSamplePath));
  IQZSampleAdder* adder = nullptr;
  ASSERT_EQ(QZComCreateObject(&kClsid, nullptr, &kIidAdder, reinterpret_cast<void**>(&adder)), 0);
  EXPECT_EQ(adder->lpVtbl->Add(adder, 40, 2), 42);
  EXPECT_EQ(adder->lpVtbl->Release(adder), 0u);
  EXPECT_TRUE(IsMapped(kSamplePath));  // the cache's open keeps it

  // The component's own refusal comes back as it is, and the caller's pointer is its to write.
  void* object = kUntouched;
  IQZUnknown* outer = reinterpret_cast<IQZUnknown*>(&object);
  EXPECT_EQ(QZComCreateObject(&kClsid, outer, &kIidAdder, &object), static_cast<QZRESULT>(0x80040110));
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(QZComCreateObject(&kClsid, nullptr, &kIidFactory, &object), QZ_E_NOINTERFACE);

  EXPECT_EQ(QZComFlushFactoryCache(), 0);
  EXPECT_FALSE(IsMapped(kSamplePath));
}

TEST_F(Factory, FailuresAreNotCachedAndLeaveOnlyWhatWasOpened) {
  qztest::TempDir dir;
  std::ofstream(dir.File("notes.txt")) << "not a library\n";
  struct Case {
    const char* what;
    std::string path;      // registered path; empty with `type` 99: no registration at all
    uint32_t type;
    QZRESULT result;
    std::string stays;     // a library that stays loaded after the failure, by design
  };
  const Case cases[] = {
      {"not registered", "", 99, QZ_E_CLASSNOTREG, ""},
      {"empty path", "", QZ_REG_SZ, QZ_E_FAIL, ""},
      {"missing file", dir.File("missing.so"), QZ_REG_SZ, QZ_E_FAIL, ""},
      {"not a library", dir.File("notes.txt"), QZ_REG_SZ, QZ_E_FAIL, ""},
      {"expandable string", kSamplePath, QZ_REG_EXPAND_SZ, QZ_E_CLASSNOTREG, ""},
      {"no entry point", kNoEntryPath, QZ_REG_SZ, QZ_E_FAIL, kNoEntryPath},
      {"entry point refuses", kSamplePath, QZ_REG_SZ, QZ_CLASS_E_CLASSNOTAVAILABLE, kSamplePath},
  };
  Counters counters;
  int entryCalls = counters.entryCalls();
  QZGUID clsid;
  for (const Case& c : cases) {
    ASSERT_EQ(QZComGenerateGUID(&clsid), 0);  // a class of its own that the component does not serve
    if (c.type != 99) {
      ASSERT_EQ(Register(clsid, c.path, c.type), 0) << c.what;
    }
    for (int attempt = 0; attempt < 2; ++attempt) {
      void* object = kUntouched;
      EXPECT_EQ(QZComGetClassObject(&clsid, &kIidFactory, &object), c.result) << c.what;
      EXPECT_EQ(object, nullptr) << c.what;
      object = kUntouched;
      EXPECT_EQ(QZComCreateObject(&clsid, nullptr, &kIidAdder, &object), c.result) << c.what;
      EXPECT_EQ(object, kUntouched) << c.what;
    }
    if (c.path == kSamplePath && c.type == QZ_REG_SZ) {
      EXPECT_EQ(counters.entryCalls(), entryCalls += 4) << "each attempt asks the entry point again";
    }
    if (!c.stays.empty()) {
      EXPECT_TRUE(IsMapped(c.stays)) << c.what;
    }
  }
  EXPECT_EQ(counters.entryCalls(), entryCalls);
  for (const char* file : {"missing.so", "notes.txt"}) EXPECT_FALSE(IsMapped(dir.File(file)));

  // Byte order matters: the same text fields in another byte order are another class.
  QZGUID swapped = kClsid;
  swapped.Data1 = __builtin_bswap32(kClsid.Data1);
  void* object = kUntouched;
  EXPECT_EQ(QZComGetClassObject(&swapped, &kIidFactory, &object), QZ_E_CLASSNOTREG);
}

TEST_F(Factory, AnInterfaceRefusalLeavesTheCacheAsItWas) {
  Counters counters;
  const int before = counters.entryCalls();
  void* object = kUntouched;
  // First request: the entry point refuses, nothing is cached, and the next request asks again.
  EXPECT_EQ(QZComGetClassObject(&kClsid, &kIidAdder, &object), QZ_E_NOINTERFACE);
  EXPECT_EQ(QZComGetClassObject(&kClsid, &kIidAdder, &object), QZ_E_NOINTERFACE);
  EXPECT_EQ(counters.entryCalls() - before, 2);
  // Cached: QueryInterface refuses, and the entry stays.
  ASSERT_EQ(QZComGetClassObject(&kClsid, &kIidUnknown, &object), 0);
  IQZUnknown_Release(static_cast<IQZUnknown*>(object));
  EXPECT_EQ(QZComGetClassObject(&kClsid, &kIidAdder, &object), QZ_E_NOINTERFACE);
  EXPECT_EQ(object, nullptr);
  ASSERT_EQ(QZComGetClassObject(&kClsid, &kIidFactory, &object), 0);
  IQZUnknown_Release(static_cast<IQZUnknown*>(object));
  EXPECT_EQ(counters.entryCalls() - before, 3);
}

TEST_F(Factory, ProgIdsLeadToTheirClasses) {
  const std::u16string progId = Wide(QZ_SAMPLE_PROGID);
  ASSERT_EQ(SetDefault(progId + u"\\CLSID", Text(kClsid)), 0);
  ASSERT_EQ(SetDefault(u"QZCore.Bad.1\\CLSID", u"not an identifier"), 0);
  ASSERT_EQ(SetDefault(u"QZCore.Long.1\\CLSID", Text(kClsid) + u"-and-more-after-it"), 0);
  struct Case {
    std::u16string progId;
    QZRESULT result;
  };
  const Case cases[] = {
      {progId, 0},
      {u"QZCore.Unknown.1", QZ_E_CLASSNOTREG},
      {u"QZCore.Bad.1", QZ_E_INVALIDARG},
      {u"QZCore.Long.1", QZ_E_FAIL},  // does not fit the 39 units of the read
      {std::u16string(300, u'P'), QZ_E_CLASSNOTREG},
  };
  for (const Case& c : cases) {
    QZGUID clsid;
    std::memset(&clsid, 0xA5, sizeof clsid);
    EXPECT_EQ(QZComClassIDFromProgID(c.progId.c_str(), &clsid), c.result) << qztest::Narrow(c.progId);
    if (c.result == 0) {
      EXPECT_EQ(QZComIsEqualGUID(&clsid, &kClsid), 1);
    }
  }

  IQZSampleAdder* adder = nullptr;
  ASSERT_EQ(QZComCreateObjectByProgID(progId.c_str(), nullptr, &kIidAdder, reinterpret_cast<void**>(&adder)), 0);
  EXPECT_EQ(adder->lpVtbl->Add(adder, -7, 7), 0);
  adder->lpVtbl->Release(adder);
  void* object = kUntouched;
  EXPECT_EQ(QZComCreateObjectByProgID(u"QZCore.Unknown.1", nullptr, &kIidAdder, &object), QZ_E_CLASSNOTREG);
  EXPECT_EQ(object, kUntouched);
}

TEST_F(Factory, ModuleKeyedCreationPassesTheGuard) {
  const uintptr_t key = reinterpret_cast<uintptr_t>(&kClsid);
  void* object = kUntouched;
  ASSERT_EQ(QZModuleSetInitialized(key, 1), 0);
  ASSERT_EQ(QZModuleComCreateObject(key, &kClsid, nullptr, &kIidAdder, &object), 0);
  static_cast<IQZSampleAdder*>(object)->lpVtbl->Release(static_cast<IQZSampleAdder*>(object));
  ASSERT_EQ(QZModuleComGetClassObject(key, &kClsid, &kIidFactory, &object), 0);
  IQZUnknown_Release(static_cast<IQZUnknown*>(object));
  EXPECT_EQ(QZModuleSetInitialized(key, 0), 0);
}

TEST_F(Factory, ManyThreadsLoadAClassOnce) {
  Counters counters;
  const int before = counters.entryCalls();
  constexpr int kThreads = 8;
  constexpr int kRounds = 200;
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, &wrong] {
      for (int i = 0; i < kRounds; ++i) {
        IQZSampleAdder* adder = nullptr;
        if (QZComCreateObject(&kClsid, nullptr, &kIidAdder, reinterpret_cast<void**>(&adder)) != 0) {
          ++wrong;
          continue;
        }
        if (adder->lpVtbl->Add(adder, t, i) != t + i) ++wrong;
        adder->lpVtbl->Release(adder);
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(wrong.load(), 0);
  EXPECT_EQ(counters.entryCalls() - before, 1);
  EXPECT_EQ(counters.liveObjects(), 0);
  EXPECT_EQ(counters.factoryRefs(), 1);  // the cache's
}

}  // namespace
