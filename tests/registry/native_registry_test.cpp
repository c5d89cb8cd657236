// native_registry_test.cpp - the QZRegistry* exports over the platform's store: types, sizes,
// orders, case, removal of trees, hostile names and damaged files.
#include <gtest/gtest.h>

#include <sqlite3.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <filesystem>
#include <fstream>

#include "registry_helpers.h"

namespace {

using qztest::GetString;
using qztest::SetString;
using qztest::SubKeys;
using qztest::ValueNames;

class NativeRegistry : public qztest::RegistryDirTest {};

std::u16string Digits(int i) {
  const std::string text = std::to_string(i);
  return {text.begin(), text.end()};
}

std::vector<uint8_t> Bytes(const void* data, size_t n) {
  const auto* p = static_cast<const uint8_t*>(data);
  return {p, p + n};
}

TEST_F(NativeRegistry, EveryTypeReadsBackAsWritten) {
  const char16_t text[] = u"C:\\%QZ_TEST_UNSET%\\x";  // an expandable string stays unexpanded
  const char16_t multi[] = u"one\0two\0";
  const uint32_t number = 0xDEADBEEF;
  const uint8_t blob[] = {0, 1, 2, 0xFF, 0};
  struct Case {
    const char16_t* name;
    uint32_t type;
    const void* data;
    uint32_t size;
    QZRESULT read;     // result of QZRegistryGetValue with a type
    uint32_t typeOut;  // the type it reports
  } cases[] = {
      {u"sz", QZ_REG_SZ, text, sizeof text, 0, QZ_REG_SZ},
      {u"dword", QZ_REG_DWORD, &number, 4, 0, QZ_REG_DWORD},
      {u"binary", QZ_REG_BINARY, blob, sizeof blob, 0, QZ_REG_BINARY},
      {u"empty binary", QZ_REG_BINARY, blob, 0, 0, QZ_REG_BINARY},
      {u"multi", QZ_REG_MULTI_SZ, multi, sizeof multi, 0, QZ_REG_MULTI_SZ},
      {u"expand", QZ_REG_EXPAND_SZ, text, sizeof text, QZ_E_FAIL, QZ_REG_SZ},
      {u"odd string", QZ_REG_SZ, "abc", 3, 0, QZ_REG_SZ},  // stored as given, not measured
      {u"", QZ_REG_SZ, text, sizeof text, 0, QZ_REG_SZ},   // the key's default value
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(qztest::Narrow(c.name));
    ASSERT_EQ(QZRegistrySetValue(QZ_HKEY_CONFIG_64, u"Types\\Deep\\Key", c.name, c.type, c.data, c.size), 0);
    uint8_t buffer[128];
    std::memset(buffer, 0xCC, sizeof buffer);
    uint32_t size = sizeof buffer;
    uint32_t type = 77;
    EXPECT_EQ(QZRegistryGetValue(QZ_HKEY_CONFIG_64, u"Types\\Deep\\Key", c.name, &type, buffer, &size), c.read);
    EXPECT_EQ(type, c.typeOut);
    EXPECT_EQ(Bytes(buffer, size), Bytes(c.data, c.size));
    // Without a type nothing is translated, and an expandable string reads without failure.
    size = sizeof buffer;
    EXPECT_EQ(QZRegistryGetValue(QZ_HKEY_CONFIG_64, u"Types\\Deep\\Key", c.name, nullptr, buffer, &size), 0);
  }
  // Types that cannot be written change nothing, not even the key.
  for (uint32_t bad : {2u, 6u, 7u, 0xFFFFFFFFu}) {
    EXPECT_EQ(QZRegistrySetValue(QZ_HKEY_CONFIG_64, u"Refused", u"v", bad, &number, 4), QZ_E_INVALIDARG) << bad;
  }
  EXPECT_EQ(SubKeys(QZ_HKEY_CONFIG_64, u"Refused"), std::vector<std::u16string>{u"!"});
}

TEST_F(NativeRegistry, SizesAndShortBuffers) {
  const uint32_t number = 7;
  ASSERT_EQ(QZRegistrySetValue(QZ_HKEY_USER, u"Sizes", u"n", QZ_REG_DWORD, &number, 4), 0);
  ASSERT_EQ(SetString(QZ_HKEY_USER, u"Sizes", u"s", u"hello"), 0);
  struct Case {
    const char16_t* name;
    bool withData;
    uint32_t room;
    QZRESULT result;
    uint32_t sizeOut;
    uint32_t typeOut;  // a failure leaves the store's own number untranslated
  } cases[] = {
      {u"n", false, 0, 0, 4, QZ_REG_DWORD},
      {u"n", true, 3, QZ_E_FAIL, 4, 4},
      {u"n", true, 4, 0, 4, QZ_REG_DWORD},
      {u"s", true, 11, QZ_E_FAIL, 12, 1},
      {u"s", false, 0, 0, 12, QZ_REG_SZ},
      {u"missing", true, 64, QZ_E_FILE_NOT_FOUND, 64, 99},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(qztest::Narrow(c.name) + " room " + std::to_string(c.room));
    uint8_t buffer[64];
    uint32_t size = c.room;
    uint32_t type = 99;
    EXPECT_EQ(QZRegistryGetValue(QZ_HKEY_USER, u"Sizes", c.name, &type, c.withData ? buffer : nullptr, &size), c.result);
    EXPECT_EQ(size, c.sizeOut);
    EXPECT_EQ(type, c.typeOut);
  }
  uint32_t size = 4;
  EXPECT_EQ(QZRegistryGetValue(QZ_HKEY_USER, u"No\\Such", u"n", nullptr, nullptr, &size), QZ_E_FILE_NOT_FOUND);
}

TEST_F(NativeRegistry, SubkeysInFoldedOrderValuesInCreationOrder) {
  for (const char16_t* key : {u"b", u"A", u"c", u"B2", u"ä", u"Z"}) ASSERT_EQ(SetString(QZ_HKEY_USER, std::u16string(u"Ord\\") + key, u"v", u"x"), 0);
  EXPECT_EQ(SubKeys(QZ_HKEY_USER, u"Ord"), (std::vector<std::u16string>{u"A", u"b", u"B2", u"c", u"Z", u"ä"}));

  for (const char16_t* value : {u"zeta", u"Alpha", u"mid"}) ASSERT_EQ(SetString(QZ_HKEY_USER, u"Ord", value, u"1"), 0);
  ASSERT_EQ(SetString(QZ_HKEY_USER, u"Ord", u"ALPHA", u"2"), 0);  // replaced: keeps place and spelling
  ASSERT_EQ(QZRegistryDeleteValue(QZ_HKEY_USER, u"Ord", u"zeta"), 0);
  ASSERT_EQ(SetString(QZ_HKEY_USER, u"Ord", u"Zeta", u"3"), 0);  // made again: goes last
  EXPECT_EQ(ValueNames(QZ_HKEY_USER, u"Ord"), (std::vector<std::u16string>{u"Alpha", u"mid", u"Zeta"}));
  EXPECT_EQ(GetString(QZ_HKEY_USER, u"ord", u"alpha"), u"2");
  EXPECT_EQ(QZRegistryDeleteValue(QZ_HKEY_USER, u"Ord", u"zeta"), 0);
  EXPECT_EQ(QZRegistryDeleteValue(QZ_HKEY_USER, u"Ord", u"zeta"), QZ_E_FILE_NOT_FOUND);
}

TEST_F(NativeRegistry, EnumerationMovesOnEvenWhenAnEntryDoesNotFit) {
  for (const char16_t* key : {u"a", u"bbbbbbbb", u"c"}) ASSERT_EQ(SetString(QZ_HKEY_CONFIG, std::u16string(u"E\\") + key, u"v", u"x"), 0);
  QZRegEnumHandle e = reinterpret_cast<QZRegEnumHandle>(1);
  ASSERT_EQ(QZRegistryOpenKeyEnum(QZ_HKEY_CONFIG, u"E", &e), 0);
  char16_t name[16];
  struct Step {
    uint32_t room;
    QZRESULT result;
    uint32_t sizeOut;
    const char16_t* name;
  } steps[] = {
      {16, 0, 1, u"a"},
      {8, QZ_E_FAIL, 8, nullptr},  // 8 units and no room for the terminator: passed over
      {16, 0, 1, u"c"},
      {16, QZ_E_FAIL, 16, nullptr},  // the end looks like any failure
      {16, QZ_E_FAIL, 16, nullptr},
  };
  for (const auto& s : steps) {
    uint32_t size = s.room;
    EXPECT_EQ(QZRegistryEnumNextKey(e, name, &size), s.result);
    EXPECT_EQ(size, s.sizeOut);
    if (s.name != nullptr) {
      EXPECT_EQ(std::u16string(name), s.name);
    }
  }
  EXPECT_EQ(QZRegistryCloseEnum(e), 0);
  EXPECT_EQ(QZRegistryCloseEnum(nullptr), 0);

  // A change during the walk moves the entries under the index: each call sees the store as it is.
  ASSERT_EQ(QZRegistryOpenKeyEnum(QZ_HKEY_CONFIG, u"E", &e), 0);
  uint32_t size = 16;
  EXPECT_EQ(QZRegistryEnumNextKey(e, name, &size), 0);
  EXPECT_EQ(std::u16string(name), u"a");
  ASSERT_EQ(QZRegistryDeleteKey(QZ_HKEY_CONFIG, u"E\\a"), 0);
  size = 16;
  EXPECT_EQ(QZRegistryEnumNextKey(e, name, &size), 0);
  EXPECT_EQ(std::u16string(name), u"c");  // index 1 now
  QZRegistryCloseEnum(e);

  // Opening: a missing key is a general failure for subkeys and "not found" for values.
  e = reinterpret_cast<QZRegEnumHandle>(1);
  EXPECT_EQ(QZRegistryOpenKeyEnum(QZ_HKEY_CONFIG, u"E\\none", &e), QZ_E_FAIL);
  EXPECT_EQ(e, reinterpret_cast<QZRegEnumHandle>(-1));
  EXPECT_EQ(QZRegistryOpenValueEnum(QZ_HKEY_CONFIG, u"E\\none", &e), QZ_E_FILE_NOT_FOUND);
  EXPECT_EQ(e, reinterpret_cast<QZRegEnumHandle>(-1));
}

TEST_F(NativeRegistry, ValueEnumerationGivesTypesAndData) {
  const uint32_t number = 5;
  ASSERT_EQ(SetString(QZ_HKEY_USER, u"V", u"text", u"abc", QZ_REG_EXPAND_SZ), 0);
  ASSERT_EQ(QZRegistrySetValue(QZ_HKEY_USER, u"V", u"num", QZ_REG_DWORD, &number, 4), 0);
  QZRegEnumHandle e;
  ASSERT_EQ(QZRegistryOpenValueEnum(QZ_HKEY_USER, u"V", &e), 0);
  char16_t name[8];
  uint8_t data[8];
  uint32_t size = 8, type = 99, dataSize = 8;
  // An expandable string is a plain string here, without failure.
  EXPECT_EQ(QZRegistryEnumNextValue(e, name, &size, &type, data, &dataSize), 0);
  EXPECT_EQ(std::u16string(name), u"text");
  EXPECT_EQ(type, static_cast<uint32_t>(QZ_REG_SZ));
  EXPECT_EQ(dataSize, 8u);
  EXPECT_EQ(std::u16string(reinterpret_cast<char16_t*>(data)), u"abc");
  size = 8, type = 99, dataSize = 2;  // data that does not fit: a failure, with the size needed
  EXPECT_EQ(QZRegistryEnumNextValue(e, name, &size, &type, data, &dataSize), QZ_E_FAIL);
  EXPECT_EQ(dataSize, 4u);
  EXPECT_EQ(type, static_cast<uint32_t>(QZ_REG_DWORD));
  size = 8;
  EXPECT_EQ(QZRegistryEnumNextValue(e, name, &size, &type, nullptr, &dataSize), QZ_E_FAIL);
  QZRegistryCloseEnum(e);
}

TEST_F(NativeRegistry, NamesDifferingInCaseAreOneName) {
  struct Case {
    const char16_t* first;   // spelling that creates
    const char16_t* second;  // spelling that finds it
  } cases[] = {
      {u"Case\\MixedKey", u"CASE\\mixedkey"},
      {u"Case\\Straße", u"case\\STRASSE"},  // full folding: one letter becomes two
      {u"Case\\Ωmega", u"case\\ωMEGA"},
      {u"Case\\ǅ", u"case\\ǆ"},
      {u"Case\\𐐀", u"CASE\\𐐨"},  // above the 16-bit range
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(qztest::Narrow(c.first));
    ASSERT_EQ(SetString(QZ_HKEY_CONFIG_64, c.first, u"Name", u"1"), 0);
    ASSERT_EQ(SetString(QZ_HKEY_CONFIG_64, c.second, u"NAME", u"2"), 0);
    EXPECT_EQ(GetString(QZ_HKEY_CONFIG_64, c.first, u"name"), u"2");
    EXPECT_EQ(ValueNames(QZ_HKEY_CONFIG_64, c.second), std::vector<std::u16string>{u"Name"});
  }
  // One key each, under the spelling that made it.
  EXPECT_EQ(SubKeys(QZ_HKEY_CONFIG_64, u"case"),
            (std::vector<std::u16string>{u"MixedKey", u"Straße", u"ǅ", u"Ωmega", u"𐐀"}));
  // Different letters stay different: dotless and dotted i, and the sharp s against one s.
  ASSERT_EQ(SetString(QZ_HKEY_CONFIG_64, u"Case\\ı", u"v", u"dotless"), 0);
  EXPECT_EQ(GetString(QZ_HKEY_CONFIG_64, u"Case\\I", u"v"), u"<0x80070002>");
  EXPECT_EQ(GetString(QZ_HKEY_CONFIG_64, u"Case\\Strase", u"Name"), u"<0x80070002>");
}

TEST_F(NativeRegistry, HivesAreSeparateTrees) {
  for (int32_t hive = 0; hive < 5; ++hive) {
    ASSERT_EQ(SetString(hive, u"Shared\\Key", u"v", std::u16string(1, static_cast<char16_t>(u'0' + hive))), 0);
  }
  for (int32_t hive = 0; hive < 5; ++hive) {
    EXPECT_EQ(GetString(hive, u"Shared\\Key", u"v"), std::u16string(1, static_cast<char16_t>(u'0' + hive)));
  }
  ASSERT_EQ(QZRegistryDeleteKey(QZ_HKEY_CONFIG, u"Shared"), 0);
  EXPECT_EQ(GetString(QZ_HKEY_CONFIG, u"Shared\\Key", u"v"), u"<0x80070002>");
  EXPECT_EQ(GetString(QZ_HKEY_CONFIG_64, u"Shared\\Key", u"v"), u"4");
  // The user's hive has a file of its own.
  EXPECT_TRUE(std::filesystem::exists(m_dir.File("machine.db")));
  bool userFile = false;
  for (const auto& entry : std::filesystem::directory_iterator(m_dir.path())) {
    userFile |= entry.path().filename().string().rfind("user-", 0) == 0;
  }
  EXPECT_TRUE(userFile);
}

TEST_F(NativeRegistry, DeleteKeyRemovesATreeAndAnswersInPlatformNumbers) {
  for (const char16_t* path : {u"T\\a\\x\\1", u"T\\a\\x\\2", u"T\\a\\y", u"T\\b", u"T"}) {
    ASSERT_EQ(SetString(QZ_HKEY_USER, path, u"v", u"1"), 0);
  }
  EXPECT_EQ(QZRegistryDeleteKey(QZ_HKEY_USER, u"t\\A"), 0);
  EXPECT_EQ(SubKeys(QZ_HKEY_USER, u"T"), std::vector<std::u16string>{u"b"});
  EXPECT_EQ(GetString(QZ_HKEY_USER, u"T", u"v"), u"1");
  EXPECT_EQ(QZRegistryDeleteKey(QZ_HKEY_USER, u"T"), 0);
  EXPECT_EQ(SubKeys(QZ_HKEY_USER, u""), std::vector<std::u16string>{});
  EXPECT_EQ(QZRegistryDeleteKey(QZ_HKEY_USER, u"T"), QZ_E_FAIL);  // missing

  // A subkey of 255 units ends the walk, stays, and its parent with it: the or of two refusals.
  const std::u16string longName(255, u'L');
  ASSERT_EQ(SetString(QZ_HKEY_USER, u"R\\" + longName, u"v", u"1"), 0);
  ASSERT_EQ(SetString(QZ_HKEY_USER, u"R\\short", u"v", u"1"), 0);
  EXPECT_EQ(QZRegistryDeleteKey(QZ_HKEY_USER, u"R"), 5);
  EXPECT_EQ(SubKeys(QZ_HKEY_USER, u"R"), (std::vector<std::u16string>{longName, u"short"}));
  // The hive's top stays whatever is beneath it.
  ASSERT_EQ(SetString(QZ_HKEY_USER, u"Top", u"v", u"1"), 0);
  EXPECT_EQ(QZRegistryDeleteKey(QZ_HKEY_USER, u""), 5);
  EXPECT_EQ(SubKeys(QZ_HKEY_USER, u""), std::vector<std::u16string>{u"R"});
}

TEST_F(NativeRegistry, HostilePathsAndNames) {
  const std::u16string tooLong(256, u'x');
  const char16_t lone[] = {u'a', 0xD800, u'b', 0};     // unpaired lead surrogate
  const char16_t loneTrail[] = {0xDC01, 0};            // unpaired trail surrogate
  struct Case {
    const char16_t* what;
    std::u16string path;
    std::u16string name;
    QZRESULT set;
    std::u16string readPath;  // where the value is then found
  } cases[] = {
      {u"empty path: the hive's top", u"", u"top", 0, u""},
      {u"only separators", u"\\\\\\", u"sep", 0, u""},
      {u"leading, doubled, trailing", u"\\A\\\\B\\", u"v", 0, u"a\\b"},
      {u"255-unit component", std::u16string(255, u'k'), u"v", 0, std::u16string(255, u'K')},
      {u"256-unit component", tooLong, u"v", QZ_E_FAIL, u""},  // the platform's "invalid parameter"
      {u"16384-unit value name", u"N", std::u16string(16384, u'n'), QZ_E_FAIL, u""},
      {u"16383-unit value name", u"N", std::u16string(16383, u'n'), 0, u"N"},
      {u"lone surrogates", lone, loneTrail, 0, lone},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(qztest::Narrow(c.what));
    EXPECT_EQ(SetString(QZ_HKEY_USER, c.path, c.name, u"value"), c.set);
    if (c.set == 0) {
      EXPECT_EQ(GetString(QZ_HKEY_USER, c.readPath, c.name), u"value");
    }
  }
  EXPECT_EQ(GetString(QZ_HKEY_USER, tooLong, u"v"), u"<0x80004005>");
  // The surrogate names come back unit for unit.
  const auto top = SubKeys(QZ_HKEY_USER, u"");
  EXPECT_NE(std::find(top.begin(), top.end(), std::u16string(lone)), top.end());
  EXPECT_EQ(ValueNames(QZ_HKEY_USER, lone), std::vector<std::u16string>{loneTrail});

  // Bad hive numbers are refused as a bad root by every export.
  for (int32_t hive : {-1, 5, 1000}) {
    uint32_t size = 0;
    QZRegEnumHandle e;
    EXPECT_EQ(SetString(hive, u"K", u"v", u"1"), QZ_E_HANDLE) << hive;
    EXPECT_EQ(QZRegistryGetValue(hive, u"K", u"v", nullptr, nullptr, &size), QZ_E_HANDLE);
    EXPECT_EQ(QZRegistryDeleteValue(hive, u"K", u"v"), QZ_E_HANDLE);
    EXPECT_EQ(QZRegistryDeleteKey(hive, u"K"), QZ_E_FAIL);
    EXPECT_EQ(QZRegistryOpenKeyEnum(hive, u"", &e), QZ_E_FAIL);
    EXPECT_EQ(QZRegistryOpenValueEnum(hive, u"", &e), QZ_E_HANDLE);
  }
  // Null path and name stand for the top and the default value.
  ASSERT_EQ(QZRegistrySetValue(QZ_HKEY_CLASSES, nullptr, nullptr, QZ_REG_SZ, u"d", 4), 0);
  EXPECT_EQ(GetString(QZ_HKEY_CLASSES, u"", u""), u"d");
  // Data given without a size, and no data with a size.
  uint8_t buffer[4];
  EXPECT_EQ(QZRegistryGetValue(QZ_HKEY_CLASSES, u"", u"", nullptr, buffer, nullptr), QZ_E_FAIL);
  EXPECT_EQ(QZRegistrySetValue(QZ_HKEY_CLASSES, u"", u"x", QZ_REG_BINARY, nullptr, 4), QZ_E_FAIL);
  EXPECT_EQ(QZRegistrySetValue(QZ_HKEY_CLASSES, u"", u"x", QZ_REG_BINARY, nullptr, 0), 0);
  // Sizes no row can hold are refused before the data is touched.
  EXPECT_EQ(QZRegistrySetValue(QZ_HKEY_CLASSES, u"", u"huge", QZ_REG_BINARY, buffer, 0x80000000u), QZ_E_FAIL);
  EXPECT_EQ(QZRegistrySetValue(QZ_HKEY_CLASSES, u"", u"huge", QZ_REG_BINARY, buffer, 0xFFFFFFFFu), QZ_E_FAIL);
  uint32_t size = 0;
  EXPECT_EQ(QZRegistryGetValue(QZ_HKEY_CLASSES, u"", u"huge", nullptr, nullptr, &size), QZ_E_FILE_NOT_FOUND);
}

// Types no export writes (another program's values): a read translates 0 and keeps 5 and 6 and
// anything above 7 as stored; a value walk leaves the caller's type alone for all of them.
TEST_F(NativeRegistry, TypesOnlyAnotherWriterMakes) {
  ASSERT_EQ(SetString(QZ_HKEY_CONFIG, u"Raw", u"seed", u"x"), 0);
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open(m_dir.File("machine.db").c_str(), &db), SQLITE_OK);
  for (int type : {0, 5, 6, 8}) {
    const std::string sql = "INSERT INTO vals(key, name, folded, type, data) SELECT key, 't" + std::to_string(type) +
                            "', 't" + std::to_string(type) + "', " + std::to_string(type) +
                            ", x'01020304' FROM vals WHERE folded='seed'";
    ASSERT_EQ(sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(db);
  }
  sqlite3_close(db);
  struct Case {
    const char16_t* name;
    uint32_t read;  // type from QZRegistryGetValue
  } cases[] = {{u"t0", QZ_REG_BINARY}, {u"t5", 5}, {u"t6", 6}, {u"t8", 8}};
  for (const auto& c : cases) {
    SCOPED_TRACE(qztest::Narrow(c.name));
    uint8_t data[8] = {};
    uint32_t size = sizeof data, type = 99;
    EXPECT_EQ(QZRegistryGetValue(QZ_HKEY_CONFIG, u"Raw", c.name, &type, data, &size), 0);
    EXPECT_EQ(type, c.read);
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(data[3], 4);
  }
  QZRegEnumHandle e;
  ASSERT_EQ(QZRegistryOpenValueEnum(QZ_HKEY_CONFIG, u"Raw", &e), 0);
  char16_t name[8];
  uint8_t data[8];
  uint32_t size = 8, type = 99, dataSize = 8;
  ASSERT_EQ(QZRegistryEnumNextValue(e, name, &size, &type, data, &dataSize), 0);  // the seed
  EXPECT_EQ(type, static_cast<uint32_t>(QZ_REG_SZ));
  for (const auto& c : cases) {
    size = 8, type = 99, dataSize = 8;
    EXPECT_EQ(QZRegistryEnumNextValue(e, name, &size, &type, data, &dataSize), 0);
    EXPECT_EQ(std::u16string(name), c.name);
    EXPECT_EQ(type, 99u) << qztest::Narrow(c.name);
    EXPECT_EQ(dataSize, 4u);
  }
  QZRegistryCloseEnum(e);
}

TEST_F(NativeRegistry, LargeValuesRoundTrip) {
  std::vector<uint8_t> big(3 * 1024 * 1024 + 1);
  for (size_t i = 0; i < big.size(); ++i) big[i] = static_cast<uint8_t>(i * 7);
  ASSERT_EQ(QZRegistrySetValue(QZ_HKEY_USER, u"Big", u"blob", QZ_REG_BINARY, big.data(), static_cast<uint32_t>(big.size())), 0);
  std::vector<uint8_t> back(big.size());
  uint32_t size = static_cast<uint32_t>(back.size());
  uint32_t type = 0;
  ASSERT_EQ(QZRegistryGetValue(QZ_HKEY_USER, u"Big", u"blob", &type, back.data(), &size), 0);
  EXPECT_EQ(size, big.size());
  EXPECT_TRUE(back == big);
}

// A file that is not a database, or one cut short, is a failure of its own hives only; the file
// is left as it was, and the other file answers as before.
TEST_F(NativeRegistry, DamagedFileFailsClearlyAndAlone) {
  ASSERT_EQ(SetString(QZ_HKEY_USER, u"Keep", u"v", u"safe"), 0);
  for (int i = 0; i < 40; ++i) ASSERT_EQ(SetString(QZ_HKEY_CONFIG, u"Many\\K" + Digits(i), u"v", std::u16string(200, u'x')), 0);
  // Everything into the main file, as after a quiet close, so that a cut really cuts data.
  for (const auto& entry : std::filesystem::directory_iterator(m_dir.path())) {
    if (entry.path().extension() != ".db") continue;
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(entry.path().c_str(), &db), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(db, "PRAGMA wal_checkpoint(TRUNCATE)", nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(db);
  }
  const std::string garbage = "this is not a database, only some text that happens to be here\n";
  struct Case {
    const char* what;
    std::function<void(const std::string& file)> damage;
  } cases[] = {
      {"text", [&](const std::string& file) { std::ofstream(file, std::ios::binary | std::ios::trunc) << garbage; }},
      {"cut short", [&](const std::string& file) { std::filesystem::resize_file(file, 4096); }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    // A copy of the directory, its machine file damaged; its user file intact.
    qztest::TempDir copy;
    for (const auto& entry : std::filesystem::directory_iterator(m_dir.path())) {
      const std::string name = entry.path().filename().string();
      if (name.find("-wal") == std::string::npos && name.find("-shm") == std::string::npos) {
        std::filesystem::copy(entry.path(), copy.File(name));
      }
    }
    c.damage(copy.File("machine.db"));
    const std::string before = qztest::ReadFile(copy.File("machine.db"));
    qztest::ScopedEnv env("QZCORE_REGISTRY_DIR", copy.path().c_str());
    uint32_t size = 0;
    EXPECT_EQ(QZRegistryGetValue(QZ_HKEY_CONFIG, u"Many\\Zh", u"v", nullptr, nullptr, &size), QZ_E_FAIL);
    EXPECT_EQ(SetString(QZ_HKEY_CONFIG, u"New", u"v", u"1"), QZ_E_FAIL);
    EXPECT_EQ(QZRegistryDeleteKey(QZ_HKEY_CONFIG, u"Many"), QZ_E_FAIL);
    EXPECT_EQ(SubKeys(QZ_HKEY_CONFIG, u"Many"), std::vector<std::u16string>{u"!"});
    EXPECT_EQ(GetString(QZ_HKEY_USER, u"Keep", u"v"), u"safe");
    EXPECT_EQ(qztest::ReadFile(copy.File("machine.db")), before);
  }
}

}  // namespace
