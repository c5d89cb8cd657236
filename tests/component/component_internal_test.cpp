// component_internal_test.cpp - what the component model does when the system fails it (a random
// source that fails or is interrupted, a loader that refuses), and what the library's stop does with
// its own module key and the class cache.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>

#include "component_test_support.h"
#include "frame/global_data.h"
#include "platform/last_error.h"
#include "platform/load_hook.h"
#include "platform/system_calls.h"
#include "qzcore/qzcom.h"
#include "qzcore/qzlibrary.h"
#include "support/test_support.h"

namespace {

class ComponentSystem : public ::testing::Test {
 protected:
  void TearDown() override { qz::os::ResetSystemCalls(); }
};

TEST_F(ComponentSystem, GenerationFailsOnlyWhenTheRandomSourceFails) {
  QZGUID g;
  std::memset(&g, 0x5A, sizeof g);
  const QZGUID before = g;
  ASSERT_TRUE(qz::os::FailSystemCall("getrandom", ENOSYS));
  EXPECT_EQ(QZComGenerateGUID(&g), QZ_E_FAIL);
  EXPECT_EQ(std::memcmp(&g, &before, sizeof g), 0);  // untouched

  // An interrupted read is asked again, and the identifier is made.
  ASSERT_TRUE(qz::os::FailSystemCall("getrandom", EINTR, 2));
  EXPECT_EQ(QZComGenerateGUID(&g), 0);
  EXPECT_EQ(g.Data3 >> 12, 4);
}

TEST_F(ComponentSystem, ACloseTheLoaderRefusesIsAnInvalidHandle) {
  QZLibHandle handle = nullptr;
  ASSERT_EQ(QZLibOpen(qztest::Wide(qztest::kSamplePath).c_str(), &handle), 0);
  ASSERT_TRUE(qz::os::FailSystemCall("dlclose", 0));
  EXPECT_EQ(QZLibClose(handle), QZ_E_HANDLE);
  EXPECT_TRUE(qztest::IsMapped(qztest::kSamplePath));
  EXPECT_EQ(QZLibClose(handle), 0);
  EXPECT_FALSE(qztest::IsMapped(qztest::kSamplePath));

  ASSERT_TRUE(qz::os::FailSystemCall("dlopen", ENOMEM));
  EXPECT_EQ(QZLibOpen(qztest::Wide(qztest::kSamplePath).c_str(), &handle), QZ_E_FAIL);
  EXPECT_EQ(qz::os::GetLastError(), 126u);  // whatever the loader's reason
}

TEST_F(ComponentSystem, TheStopReleasesCachedClassObjectsButClosesNoLibrary) {
  qztest::TempDir dir;
  qztest::ScopedEnv registry("QZCORE_REGISTRY_DIR", dir.path().c_str());
  const QZGUID clsid = QZ_CLSID_SAMPLE_ADDER_INIT;
  const QZGUID iid = QZ_IID_IQZCLASSFACTORY_INIT;
  ASSERT_EQ(qztest::Register(clsid, qztest::kSamplePath), 0);
  QZLibHandle ours = nullptr;
  {
    qztest::SampleCounters counters;
    void* factory = nullptr;
    ASSERT_EQ(QZComGetClassObject(&clsid, &iid, &factory), 0);
    IQZUnknown_Release(static_cast<IQZUnknown*>(factory));
    EXPECT_EQ(counters.factoryRefs(), 1);  // the cache's

    // The unload hook: the library's own key (its load hook) leaves the set, then the stop
    // destroys the cache; the next load hook enters the key again.
    const auto self = reinterpret_cast<uintptr_t>(g_moduleId);
    EXPECT_EQ(self, reinterpret_cast<uintptr_t>(&QZDllMain));
    QZDllMain(nullptr, QZ_DLL_PROCESS_DETACH, nullptr);
    EXPECT_EQ(counters.factoryRefs(), 0);
    QZDllMain(nullptr, QZ_DLL_PROCESS_ATTACH, nullptr);
    QZLibHandle handle = nullptr;
    EXPECT_EQ(QZModuleLibOpen(self, qztest::Wide(qztest::kSamplePath).c_str(), &handle), 0);
    EXPECT_EQ(QZModuleLibClose(self, handle), 0);
    ours = counters.library;
    counters.library = nullptr;  // closed below, by hand
  }
  // The cache's open was not closed: after our own close the library is still mapped.
  ASSERT_EQ(QZLibClose(ours), 0);
  EXPECT_TRUE(qztest::IsMapped(qztest::kSamplePath));
}

}  // namespace
