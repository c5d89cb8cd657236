// tour_registry.cpp - tour step: typed values in the platform's store, the read of an expandable
// string, enumeration orders, a tree removed in platform numbers, and a text file migrated in.
//
// The step works on the default store under CONFIG_64\QZCoreTour and the user's hive, and removes
// what it made; where the machine file cannot be written it moves to a temporary store first.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "qzcore.h"
#include "tour.h"

namespace {

using qztool::Hex;
using qztool::Show;
using qztool::Utf8;

std::string Code(QZRESULT hr) { return qztool::Result(hr); }

void Enumerate(const char* what, int32_t hive, const char16_t* path, bool values) {
  QZRegEnumHandle e;
  const QZRESULT hr = values ? QZRegistryOpenValueEnum(hive, path, &e) : QZRegistryOpenKeyEnum(hive, path, &e);
  std::string names;
  QZWCHAR name[256];
  uint32_t type = 0, dataSize = 0;
  for (uint32_t size = 256;
       hr == 0 && (values ? QZRegistryEnumNextValue(e, name, &size, &type, nullptr, &dataSize) : QZRegistryEnumNextKey(e, name, &size)) == 0;
       size = 256) {
    names += (names.empty() ? "" : ", ") + Utf8(name) + (values ? " (type " + std::to_string(type) + ")" : "");
  }
  if (hr == 0) QZRegistryCloseEnum(e);
  Show(what, hr == 0 ? names : Code(hr));
}

void TourRegistry() {
  std::string temp;
  const uint32_t probe = 1;
  if (QZRegistrySetValue(QZ_HKEY_CONFIG_64, u"QZCoreTour", u"probe", QZ_REG_DWORD, &probe, 4) == QZ_E_ACCESSDENIED) {
    temp = (std::filesystem::temp_directory_path() / ("qzcore-tour-registry-" + std::to_string(std::rand()))).string();
    setenv("QZCORE_REGISTRY_DIR", temp.c_str(), 1);
    Show("machine file not writable", "using a temporary store in " + temp);
  }
  const uint32_t number = 0x2A;
  const uint8_t bytes[] = {0xC0, 0xFF, 0xEE};
  Show("QZRegistrySetValue(CONFIG_64, QZCoreTour\\App, Name, SZ)",
       Code(QZRegistrySetValue(QZ_HKEY_CONFIG_64, u"QZCoreTour\\App", u"Name", QZ_REG_SZ, u"QZCore", 14)));
  Show("QZRegistrySetValue(.., Count, DWORD 42)",
       Code(QZRegistrySetValue(QZ_HKEY_CONFIG_64, u"QZCoreTour\\App", u"Count", QZ_REG_DWORD, &number, 4)));
  Show("QZRegistrySetValue(.., Blob, BINARY)",
       Code(QZRegistrySetValue(QZ_HKEY_CONFIG_64, u"QZCoreTour\\App", u"Blob", QZ_REG_BINARY, bytes, 3)));
  Show("QZRegistrySetValue(.., Home, EXPAND_SZ)",
       Code(QZRegistrySetValue(QZ_HKEY_CONFIG_64, u"QZCoreTour\\App", u"Home", QZ_REG_EXPAND_SZ, u"%HOME%", 14)));
  Show("QZRegistrySetValue(.., type 2)",
       Code(QZRegistrySetValue(QZ_HKEY_CONFIG_64, u"QZCoreTour\\App", u"Bad", 2, &number, 4)));

  QZWCHAR text[64];
  uint32_t size = sizeof text, type = 99;
  QZRESULT hr = QZRegistryGetValue(QZ_HKEY_CONFIG_64, u"qzcoretour\\APP", u"NAME", &type, text, &size);
  Show("QZRegistryGetValue(other case) Name", Code(hr) + " type " + std::to_string(type) + " \"" + Utf8(text) + "\"");
  size = sizeof text, type = 99;
  hr = QZRegistryGetValue(QZ_HKEY_CONFIG_64, u"QZCoreTour\\App", u"Home", &type, text, &size);
  Show("QZRegistryGetValue Home (expandable)", Code(hr) + " type " + std::to_string(type) + " \"" + Utf8(text) + "\" unexpanded");
  size = 2;
  hr = QZRegistryGetValue(QZ_HKEY_CONFIG_64, u"QZCoreTour\\App", u"Count", &type, text, &size);
  Show("QZRegistryGetValue Count, 2-byte buffer", Code(hr) + ", needs " + std::to_string(size));
  size = sizeof text;
  Show("QZRegistryGetValue(CONFIG, same path) (other view)",
       Code(QZRegistryGetValue(QZ_HKEY_CONFIG, u"QZCoreTour\\App", u"Name", nullptr, text, &size)));

  for (const char16_t* sub : {u"QZCoreTour\\b", u"QZCoreTour\\A", u"QZCoreTour\\c"}) {
    QZRegistrySetValue(QZ_HKEY_CONFIG_64, sub, u"", QZ_REG_SZ, u"", 2);
  }
  Enumerate("subkeys of QZCoreTour (folded order)", QZ_HKEY_CONFIG_64, u"QZCoreTour", false);
  Enumerate("values of QZCoreTour\\App (creation order)", QZ_HKEY_CONFIG_64, u"QZCoreTour\\App", true);

  // A text file migrated into the store, then gone.
  const auto here = std::filesystem::current_path();
  const auto work = std::filesystem::temp_directory_path() / ("qzcore-tour-ini-" + std::to_string(std::rand()));
  std::filesystem::create_directories(work);
  std::filesystem::current_path(work);
  std::ofstream(work / "qzregistry.ini") << "[QZ_HKEY_CONFIG_64\\QZCoreTour\\FromFile]\nGreeting = hello \n\n";
  Show("QZRegistryMigrate(INI, NATIVE)", Code(QZRegistryMigrate(QZ_REGKIND_INI, nullptr, QZ_REGKIND_NATIVE, nullptr)));
  Show("  qzregistry.ini afterwards", std::filesystem::exists(work / "qzregistry.ini") ? "still there" : "deleted");
  std::filesystem::current_path(here);
  std::filesystem::remove_all(work);
  size = sizeof text;
  hr = QZRegistryGetValue(QZ_HKEY_CONFIG_64, u"QZCoreTour\\FromFile", u"Greeting", &type, text, &size);
  Show("QZRegistryGetValue FromFile\\Greeting", Code(hr) + " \"" + Utf8(text) + "\"");

  Show("QZRegistryDeleteKey(QZCoreTour)", Code(QZRegistryDeleteKey(QZ_HKEY_CONFIG_64, u"QZCoreTour")));
  Show("QZRegistryDeleteKey(QZCoreTour) again", Code(QZRegistryDeleteKey(QZ_HKEY_CONFIG_64, u"QZCoreTour")));
  if (!temp.empty()) {
    unsetenv("QZCORE_REGISTRY_DIR");
    std::error_code ec;
    std::filesystem::remove_all(temp, ec);
  }
}

}  // namespace

QZ_TOUR_STEP(60, "Registry", TourRegistry);
