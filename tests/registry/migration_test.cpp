// migration_test.cpp - the text-file registry (sections by hive and user, its results), the key
// objects' walk, QZRegistryMigrate in both working directions, and a read-only machine file.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>

#include "frame/core_exception.h"
#include "platform/system_calls.h"
#include "qzcore/qzmutex.h"
#include "qzcore/qzsysinfo.h"
#include "registry/ini_registry.h"
#include "registry/reg_key.h"
#include "registry_helpers.h"

namespace {

using qztest::GetString;
using qztest::SetString;
using qztest::SubKeys;
using qztest::ValueNames;

std::u16string UserName() {
  QZWCHAR name[127];
  return QZGetUserName(name, 127) == 0 ? std::u16string(name) : std::u16string();
}

// Each test in a directory of its own, which is also the current directory ("qzregistry.ini").
class Migration : public qztest::RegistryDirTest {
 protected:
  void SetUp() override {
    m_cwd = std::filesystem::current_path();
    std::filesystem::current_path(m_dir.path());
  }
  void TearDown() override {
    std::filesystem::current_path(m_cwd);
    qz::os::ResetSystemCalls();
  }
  void WriteIni(const std::string& text) { std::ofstream(m_dir.File("qzregistry.ini"), std::ios::binary) << text; }
  bool IniExists() const { return std::filesystem::exists(m_dir.File("qzregistry.ini")); }
  std::filesystem::path m_cwd;
};

// The text-file layer alone, with the process-wide lock made as the migration makes it.
class IniRegistry : public Migration {
 protected:
  void SetUp() override {
    Migration::SetUp();
    ASSERT_EQ(QZMutexCreate("registry::s_pInitLock", 0, &registry::s_pInitLock), 0);
  }
  void TearDown() override {
    delete registry::s_pIniFile;
    registry::s_pIniFile = nullptr;
    QZMutexDestroy(registry::s_pInitLock);
    registry::s_pInitLock = nullptr;
    Migration::TearDown();
  }
};

TEST_F(IniRegistry, SectionNamesByHive) {
  const std::u16string user = UserName();
  ASSERT_FALSE(user.empty());
  struct Case {
    int32_t hive;
    const char16_t* path;
    std::u16string section;
  } cases[] = {
      {QZ_HKEY_CLASSES, u"", u"QZ_HKEY_CLASSES"},
      {QZ_HKEY_CONFIG, u"Soft\\App", u"QZ_HKEY_CONFIG\\Soft\\App"},
      {QZ_HKEY_USER, u"", u"QZ_HKEY_USER\\" + user},
      {QZ_HKEY_USER, u"A", u"QZ_HKEY_USER\\" + user + u"\\A"},
      {QZ_HKEY_CLASSES_64, u"a//b\\\\", u"QZ_HKEY_CLASSES_64\\a//b\\\\"},  // as it stands
      {QZ_HKEY_CONFIG_64, nullptr, u"QZ_HKEY_CONFIG_64"},
  };
  for (const auto& c : cases) EXPECT_EQ(registry::MakeSectionName(c.hive, c.path), c.section);
  for (int32_t bad : {-1, 5}) {
    try {
      registry::MakeSectionName(bad, u"");
      ADD_FAILURE() << bad;
    } catch (const EQZCoreException& e) {
      EXPECT_EQ(e.m_result, QZ_E_INVALIDARG);
    }
  }
}

TEST_F(IniRegistry, OperationsAnswerAsTheTextFileCan) {
  WriteIni("[QZ_HKEY_CONFIG\\Soft]\nName=Value\nLonger=twelve chars\n\n[QZ_HKEY_CONFIG\\Soft\\Sub\\Leaf]\n\n");
  QZWCHAR data[64];
  uint32_t type = 99, size = 0;
  // Found whatever the case of path and name; type and size of the string with its terminator.
  EXPECT_EQ(registry::IniRegistryGetValue(QZ_HKEY_CONFIG, u"SOFT", u"name", &type, data, &size), 0);
  EXPECT_EQ(std::u16string(data), u"Value");
  EXPECT_EQ(type, static_cast<uint32_t>(QZ_REG_SZ));
  EXPECT_EQ(size, 12u);
  type = 99, size = 99;
  EXPECT_EQ(registry::IniRegistryGetValue(QZ_HKEY_CONFIG, u"Soft", u"none", &type, data, &size), QZ_E_FILE_NOT_FOUND);
  EXPECT_EQ(type, 99u);
  EXPECT_EQ(size, 99u);
  // Only strings are written, and that is told before the hive is looked at.
  const uint32_t number = 1;
  EXPECT_EQ(registry::IniRegistrySetValue(9, u"", u"n", QZ_REG_DWORD, &number, 4), QZ_E_NOTIMPL);
  EXPECT_EQ(registry::IniRegistrySetValue(9, u"", u"n", QZ_REG_SZ, u"x", 4), QZ_E_INVALIDARG);
  EXPECT_EQ(registry::IniRegistrySetValue(QZ_HKEY_CONFIG, u"Soft", u"New", QZ_REG_SZ, u"x", 0), 0);
  EXPECT_NE(qztest::ReadFile(m_dir.File("qzregistry.ini")).find("New=x"), std::string::npos);

  // Values of a missing section fail; its subkeys are an empty walk.
  registry::IniEnumHandle e = nullptr;
  EXPECT_EQ(registry::IniRegistryOpenValueEnum(QZ_HKEY_CONFIG, u"Nothing", &e), QZ_E_FILE_NOT_FOUND);
  EXPECT_EQ(e, reinterpret_cast<registry::IniEnumHandle>(-1));
  ASSERT_EQ(registry::IniRegistryOpenKeyEnum(QZ_HKEY_CONFIG, u"Nothing", &e), 0);
  QZWCHAR name[8];
  uint32_t room = 8;
  EXPECT_EQ(registry::IniRegistryEnumNextKey(e, name, &room), QZ_E_HANDLE_EOF);
  EXPECT_EQ(registry::IniRegistryCloseEnum(e), 0);
  EXPECT_EQ(registry::IniRegistryCloseEnum(nullptr), 0);

  // A name of exactly the buffer's size is too large, and used up all the same.
  ASSERT_EQ(registry::IniRegistryOpenKeyEnum(QZ_HKEY_CONFIG, u"Soft", &e), 0);
  room = 3;
  EXPECT_EQ(registry::IniRegistryEnumNextKey(e, name, &room), QZ_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(room, 3u);
  EXPECT_EQ(registry::IniRegistryEnumNextKey(e, name, &room), QZ_E_HANDLE_EOF);
  registry::IniRegistryCloseEnum(e);

  // Values with their data; the data replaces a short name's failure.
  ASSERT_EQ(registry::IniRegistryOpenValueEnum(QZ_HKEY_CONFIG, u"Soft", &e), 0);
  struct Step {
    uint32_t room;
    bool withData;
    QZRESULT result;
    const char16_t* name;
    uint32_t dataSize;
  } steps[] = {
      {8, true, 0, u"Longer", 26},
      {4, false, QZ_E_BUFFER_TOO_SMALL, nullptr, 0},  // "Name" in 4 units, no data asked
      {2, true, 0, nullptr, 4},                        // "New": short name, but data was asked
      {8, true, QZ_E_HANDLE_EOF, nullptr, 0},
  };
  for (const auto& s : steps) {
    room = s.room;
    uint32_t dataSize = 0;
    type = 99;
    EXPECT_EQ(registry::IniRegistryEnumNextValue(e, name, &room, &type, s.withData ? data : nullptr, &dataSize), s.result);
    if (s.name != nullptr) {
      EXPECT_EQ(std::u16string(name), s.name);
    }
    EXPECT_EQ(dataSize, s.dataSize);
  }
  registry::IniRegistryCloseEnum(e);
}

// A file as an operator would write it, with hives, comments and a stranger's tree.
const char* const kRealisticFile =
    "# exported settings\n"
    "[QZ_HKEY_CLASSES_64\\CLSID\\{00000000-0000-0000-0000-000000000001}\\InprocServer32]\n"
    "=/opt/app/lib/libcomponent.so\n"
    "ThreadingModel=Both\n"
    "\n"
    "[QZ_HKEY_CONFIG\\Vendor\\App]\n"
    "Version = 5.2 \n"
    "Empty=\n"
    "\n"
    "[QZ_HKEY_CONFIG\\Vendor\\App\\NoValues]\n"
    "\n"
    "[QZ_HKEY_CONFIG_64\\Vendor\\App\\Paths]\n"
    "Data=/var/lib/app\n"
    "\n"
    "[QZ_HKEY_USER\\someone-else\\Secret]\n"
    "k=v\n"
    "\n";

TEST_F(Migration, TextFileIntoTheNativeStoreThenGone) {
  const std::string user = qztest::Narrow(UserName());
  WriteIni(std::string(kRealisticFile) + "[QZ_HKEY_USER\\" + user + "\\Prefs]\nColour=blue\n\n");
  EXPECT_EQ(QZRegistryMigrate(QZ_REGKIND_INI, reinterpret_cast<void*>(1), QZ_REGKIND_NATIVE, reinterpret_cast<void*>(-1)), 0);
  EXPECT_FALSE(IniExists());
  EXPECT_EQ(GetString(QZ_HKEY_CLASSES_64, u"CLSID\\{00000000-0000-0000-0000-000000000001}\\InprocServer32", u""), u"/opt/app/lib/libcomponent.so");
  EXPECT_EQ(GetString(QZ_HKEY_CLASSES_64, u"CLSID\\{00000000-0000-0000-0000-000000000001}\\InprocServer32", u"ThreadingModel"), u"Both");
  EXPECT_EQ(GetString(QZ_HKEY_CONFIG, u"Vendor\\App", u"Version"), u"5.2");
  EXPECT_EQ(GetString(QZ_HKEY_CONFIG_64, u"Vendor\\App\\Paths", u"Data"), u"/var/lib/app");
  EXPECT_EQ(GetString(QZ_HKEY_USER, u"Prefs", u"Colour"), u"blue");
  // An empty value is a string of one terminator.
  uint32_t type = 99, size = 16;
  QZWCHAR data[8];
  EXPECT_EQ(QZRegistryGetValue(QZ_HKEY_CONFIG, u"Vendor\\App", u"Empty", &type, data, &size), 0);
  EXPECT_EQ(size, 2u);
  EXPECT_EQ(type, static_cast<uint32_t>(QZ_REG_SZ));
  // A section without keys makes nothing; other users' trees are not read; the views stay apart.
  EXPECT_EQ(SubKeys(QZ_HKEY_CONFIG, u"Vendor\\App"), std::vector<std::u16string>{});
  EXPECT_EQ(SubKeys(QZ_HKEY_USER, u""), std::vector<std::u16string>{u"Prefs"});
  EXPECT_EQ(SubKeys(QZ_HKEY_CLASSES, u""), std::vector<std::u16string>{});
  EXPECT_EQ(SubKeys(QZ_HKEY_CONFIG_64, u"Vendor\\App"), std::vector<std::u16string>{u"Paths"});
}

TEST_F(Migration, TextFileIntoItselfAndEdges) {
  WriteIni(kRealisticFile);
  EXPECT_EQ(QZRegistryMigrate(QZ_REGKIND_INI, nullptr, QZ_REGKIND_INI, nullptr), 0);
  EXPECT_FALSE(IniExists());  // each value written back over itself, then the file deleted
  EXPECT_EQ(SubKeys(QZ_HKEY_CONFIG, u""), std::vector<std::u16string>{});

  // No file at all: nothing to walk, nothing written, nothing to delete.
  EXPECT_EQ(QZRegistryMigrate(QZ_REGKIND_INI, nullptr, QZ_REGKIND_NATIVE, nullptr), 0);
  EXPECT_FALSE(IniExists());
  EXPECT_EQ(SubKeys(QZ_HKEY_CONFIG, u""), std::vector<std::u16string>{});
  // Unknown kinds stop at the first key that cannot be made, and keep the file.
  WriteIni(kRealisticFile);
  EXPECT_EQ(QZRegistryMigrate(2, nullptr, QZ_REGKIND_NATIVE, nullptr), QZ_E_BAD_KEY_KIND);
  EXPECT_EQ(QZRegistryMigrate(QZ_REGKIND_INI, nullptr, 7, nullptr), QZ_E_BAD_KEY_KIND);
  EXPECT_TRUE(IniExists());
  EXPECT_EQ(registry::s_pIniFile, nullptr);
  EXPECT_EQ(registry::s_pInitLock, nullptr);
}

TEST_F(Migration, NativeValuesIntoTheTextFileAreRefusedOneByOne) {
  // Into the text file only strings go; the key objects copy what they can and say nothing.
  ASSERT_EQ(QZMutexCreate("registry::s_pInitLock", 0, &registry::s_pInitLock), 0);
  {
    const uint32_t number = 42;
    ASSERT_EQ(QZRegistrySetValue(QZ_HKEY_CONFIG, u"Src\\Deep", u"s", QZ_REG_SZ, u"text", 10), 0);
    ASSERT_EQ(QZRegistrySetValue(QZ_HKEY_CONFIG, u"Src\\Deep", u"n", QZ_REG_DWORD, &number, 4), 0);
    qz::core::CRegKeyPtr source = qz::core::CreateRegKey(QZ_HKEY_CONFIG, u"Src\\Deep", QZ_REGKIND_NATIVE);
    qz::core::CRegKeyPtr destination = qz::core::CreateRegKey(QZ_HKEY_CONFIG, u"", QZ_REGKIND_INI);
    EXPECT_EQ(source->m_refCount.load(), 1u);
    qz::core::CopyValue(*source, u"s", *destination);
    qz::core::CopyValue(*source, u"n", *destination);
    qz::core::CopyValue(*source, u"missing", *destination);
  }
  delete registry::s_pIniFile;
  registry::s_pIniFile = nullptr;
  QZMutexDestroy(registry::s_pInitLock);
  registry::s_pInitLock = nullptr;
  EXPECT_EQ(qztest::ReadFile(m_dir.File("qzregistry.ini")), "[QZ_HKEY_CONFIG\\Src\\Deep]\ns=text\n\n");
}

TEST_F(Migration, WalkOfTheNativeStoreEndsTheProcess) {
  ASSERT_EQ(SetString(QZ_HKEY_CLASSES_64, u"K", u"v", u"1"), 0);
  // The native value walk passes null sizes to an export that writes through them.
  EXPECT_DEATH(QZRegistryMigrate(QZ_REGKIND_NATIVE, nullptr, QZ_REGKIND_INI, nullptr), "");
}

// A machine file this process may not write is opened read-only: reads work, writes are denied.
TEST_F(Migration, ReadOnlyMachineFileRefusesWrites) {
  ASSERT_EQ(SetString(QZ_HKEY_CONFIG, u"Ro", u"v", u"before"), 0);
  qztest::TempDir copy;  // a fresh look at the same files, as another process would open them
  for (const auto& entry : std::filesystem::directory_iterator(m_dir.path())) {
    std::filesystem::copy(entry.path(), copy.File(entry.path().filename().string()));
  }
  qztest::ScopedEnv env("QZCORE_REGISTRY_DIR", copy.path().c_str());
  ASSERT_TRUE(qz::os::FailSystemCall("access", EACCES, 1));  // the machine file's write test
  EXPECT_EQ(GetString(QZ_HKEY_CONFIG, u"Ro", u"v"), u"before");
  qz::os::ResetSystemCalls();
  EXPECT_EQ(SetString(QZ_HKEY_CONFIG, u"Ro", u"v", u"after"), QZ_E_ACCESSDENIED);
  EXPECT_EQ(SetString(QZ_HKEY_CONFIG_64, u"New", u"v", u"x"), QZ_E_ACCESSDENIED);
  EXPECT_EQ(QZRegistryDeleteValue(QZ_HKEY_CONFIG, u"Ro", u"v"), QZ_E_ACCESSDENIED);
  EXPECT_EQ(QZRegistryDeleteValue(QZ_HKEY_CONFIG, u"Ro", u"none"), QZ_E_ACCESSDENIED);
  EXPECT_EQ(QZRegistryDeleteValue(QZ_HKEY_CONFIG, u"Missing", u"v"), QZ_E_FILE_NOT_FOUND);
  EXPECT_EQ(QZRegistryDeleteKey(QZ_HKEY_CONFIG, u"Ro"), QZ_E_FAIL);
  EXPECT_EQ(GetString(QZ_HKEY_CONFIG, u"Ro", u"v"), u"before");
  EXPECT_EQ(SetString(QZ_HKEY_USER, u"Mine", u"v", u"x"), 0);  // the user's own file is writable
}

}  // namespace
