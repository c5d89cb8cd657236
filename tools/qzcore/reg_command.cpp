// reg_command.cpp - `qzcore reg`: query, add and delete keys and values of the registry, import a
// text file through the migration, export a key tree to a text file of the same format.
//
// A key is written HIVE\path, the hive as CLASSES, CONFIG, USER, CLASSES_64 or CONFIG_64 (with or
// without the prefix QZ_HKEY_). Values are shown with their types. Failures print a message and
// exit 1; a wrong command line exits 2.
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "qzcore.h"
#include "command.h"
#include "tour.h"

namespace {

using qztool::Hex;
using qztool::Utf8;

struct CHive {
  const char* name;
  int32_t number;
};
constexpr CHive kHives[] = {{"CLASSES_64", QZ_HKEY_CLASSES_64}, {"CLASSES", QZ_HKEY_CLASSES},
                            {"CONFIG_64", QZ_HKEY_CONFIG_64},   {"CONFIG", QZ_HKEY_CONFIG},
                            {"USER", QZ_HKEY_USER}};

struct CType {
  const char* name;
  uint32_t number;
};
constexpr CType kTypes[] = {{"REG_SZ", QZ_REG_SZ},
                            {"REG_DWORD", QZ_REG_DWORD},
                            {"REG_BINARY", QZ_REG_BINARY},
                            {"REG_EXPAND_SZ", QZ_REG_EXPAND_SZ},
                            {"REG_MULTI_SZ", QZ_REG_MULTI_SZ}};

const char* TypeName(uint32_t type) {
  for (const auto& t : kTypes) {
    if (t.number == type) return t.name;
  }
  return "REG_UNKNOWN";
}

std::u16string Wide(const std::string& text) {
  const int64_t length = QZUTF8ToUTF16(nullptr, text.c_str(), 0);
  if (length < 0) return {};
  std::u16string out(static_cast<size_t>(length) + 1, u'\0');
  QZUTF8ToUTF16(out.data(), text.c_str(), out.size());
  out.resize(static_cast<size_t>(length));
  return out;
}

std::string Utf8Of(const std::u16string& text) { return Utf8(text.c_str()); }

int Fail(const std::string& what, QZRESULT hr) {
  const char* why = hr == QZ_E_FILE_NOT_FOUND ? " (not found)"
                    : hr == QZ_E_ACCESSDENIED ? " (access denied)"
                    : hr == QZ_E_HANDLE       ? " (no such hive)"
                                              : "";
  std::fprintf(stderr, "qzcore reg: %s failed: %s%s\n", what.c_str(), qztool::Result(hr).c_str(), why);
  return 1;
}

int Usage(FILE* to = stderr) {
  std::fprintf(to,
               "usage: qzcore reg query  KEY [-v NAME] [-s]\n"
               "       qzcore reg add    KEY [-v NAME] [-t TYPE] [-d DATA]\n"
               "       qzcore reg delete KEY [-v NAME]\n"
               "       qzcore reg import FILE\n"
               "       qzcore reg export KEY FILE\n"
               "KEY is HIVE\\path with HIVE one of CLASSES, CONFIG, USER, CLASSES_64, CONFIG_64;\n"
               "TYPE one of REG_SZ (default), REG_EXPAND_SZ, REG_MULTI_SZ (items split at \\0),\n"
               "REG_DWORD (a number), REG_BINARY (hexadecimal digits).\n");
  return to == stderr ? qztool::kExitUsage : 0;
}

// "CONFIG_64\Vendor\App" into its hive and path; false for an unknown hive.
bool ParseKey(const std::string& text, int32_t* hive, std::string* hiveName, std::u16string* path) {
  const size_t slash = text.find('\\');
  std::string head = text.substr(0, slash);
  for (auto& c : head) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  if (head.rfind("QZ_HKEY_", 0) == 0) head.erase(0, 8);
  for (const auto& h : kHives) {
    if (head == h.name) {
      *hive = h.number;
      *hiveName = h.name;
      *path = slash == std::string::npos ? std::u16string() : Wide(text.substr(slash + 1));
      return true;
    }
  }
  return false;
}

// One value as text: strings as they are, numbers in decimal, bytes in hexadecimal.
std::string ValueText(uint32_t type, const std::vector<uint8_t>& data) {
  std::string out;
  if (type == QZ_REG_DWORD && data.size() == 4) {
    uint32_t number;
    std::memcpy(&number, data.data(), 4);
    return std::to_string(number);
  }
  if (type == QZ_REG_SZ || type == QZ_REG_EXPAND_SZ || type == QZ_REG_MULTI_SZ) {
    std::u16string text(data.size() / 2, u'\0');
    std::memcpy(text.data(), data.data(), text.size() * 2);
    while (!text.empty() && text.back() == 0) text.pop_back();
    std::string result;
    size_t start = 0;
    for (;;) {
      const size_t end = text.find(u'\0', start);
      result += Utf8Of(text.substr(start, end == std::u16string::npos ? std::u16string::npos : end - start));
      if (end == std::u16string::npos) break;
      result += "\\0";
      start = end + 1;
    }
    return result;
  }
  static const char kHex[] = "0123456789ABCDEF";
  for (const uint8_t b : data) {
    out += kHex[b >> 4];
    out += kHex[b & 15];
  }
  return out;
}

struct CValue {
  std::u16string name;
  uint32_t type = 0;
  std::vector<uint8_t> data;
};

// Every value of a key in the order of their creation, through the enumeration.
QZRESULT ReadValues(int32_t hive, const std::u16string& path, std::vector<CValue>* values) {
  QZRegEnumHandle e;
  const QZRESULT hr = QZRegistryOpenValueEnum(hive, path.c_str(), &e);
  if (hr != 0) return hr;
  std::vector<QZWCHAR> name(16384);
  std::vector<uint8_t> data(1 << 20);
  for (;;) {
    uint32_t size = static_cast<uint32_t>(name.size());
    uint32_t dataSize = static_cast<uint32_t>(data.size());
    uint32_t type = 0;
    if (QZRegistryEnumNextValue(e, name.data(), &size, &type, data.data(), &dataSize) != 0) break;
    values->push_back({std::u16string(name.data(), size), type, std::vector<uint8_t>(data.begin(), data.begin() + dataSize)});
  }
  QZRegistryCloseEnum(e);
  return 0;
}

std::vector<std::u16string> ReadSubKeys(int32_t hive, const std::u16string& path) {
  std::vector<std::u16string> names;
  QZRegEnumHandle e;
  if (QZRegistryOpenKeyEnum(hive, path.c_str(), &e) != 0) return names;
  QZWCHAR name[256];
  for (uint32_t size = 256; QZRegistryEnumNextKey(e, name, &size) == 0; size = 256) names.emplace_back(name, size);
  QZRegistryCloseEnum(e);
  return names;
}

std::u16string Join(const std::u16string& path, const std::u16string& name) { return path.empty() ? name : path + u'\\' + name; }

int Query(int32_t hive, const std::string& hiveName, const std::u16string& path, const char* valueName, bool recurse) {
  std::vector<CValue> values;
  const QZRESULT hr = ReadValues(hive, path, &values);
  if (hr != 0) return Fail("query " + hiveName + "\\" + Utf8Of(path), hr);
  std::printf("%s%s%s\n", hiveName.c_str(), path.empty() ? "" : "\\", Utf8Of(path).c_str());
  bool found = valueName == nullptr;
  for (const auto& v : values) {
    if (valueName != nullptr && QZStrICmpW(v.name.c_str(), Wide(valueName).c_str()) != 0) continue;
    found = true;
    std::printf("    %s    %s    %s\n", v.name.empty() ? "(Default)" : Utf8Of(v.name).c_str(), TypeName(v.type),
                ValueText(v.type, v.data).c_str());
  }
  if (!found) return Fail("query of the value " + std::string(valueName), QZ_E_FILE_NOT_FOUND);
  if (valueName != nullptr) return 0;
  for (const auto& sub : ReadSubKeys(hive, path)) {
    if (recurse) {
      std::printf("\n");
      if (Query(hive, hiveName, Join(path, sub), nullptr, true) != 0) return 1;
    } else {
      std::printf("%s\\%s\n", hiveName.c_str(), Utf8Of(Join(path, sub)).c_str());
    }
  }
  return 0;
}

// The bytes of DATA for TYPE; false when DATA does not fit the type.
bool EncodeData(uint32_t type, const std::string& text, std::vector<uint8_t>* out) {
  if (type == QZ_REG_DWORD) {
    char* end = nullptr;
    errno = 0;
    const unsigned long long n = std::strtoull(text.c_str(), &end, 0);
    if (text.empty() || *end != '\0' || errno != 0 || n > 0xFFFFFFFFull) return false;
    const auto number = static_cast<uint32_t>(n);
    out->assign(reinterpret_cast<const uint8_t*>(&number), reinterpret_cast<const uint8_t*>(&number) + 4);
    return true;
  }
  if (type == QZ_REG_BINARY) {
    if (text.size() % 2 != 0) return false;
    for (size_t i = 0; i < text.size(); i += 2) {
      char* end = nullptr;
      const std::string pair = text.substr(i, 2);
      const long b = std::strtol(pair.c_str(), &end, 16);
      if (*end != '\0' || !std::isxdigit(static_cast<unsigned char>(pair[0]))) return false;
      out->push_back(static_cast<uint8_t>(b));
    }
    return true;
  }
  std::u16string wide;
  if (type == QZ_REG_MULTI_SZ) {
    size_t start = 0;
    for (;;) {
      const size_t at = text.find("\\0", start);
      wide += Wide(text.substr(start, at == std::string::npos ? std::string::npos : at - start));
      wide += u'\0';
      if (at == std::string::npos) break;
      start = at + 2;
    }
  } else {
    wide = Wide(text);
  }
  wide += u'\0';
  out->assign(reinterpret_cast<const uint8_t*>(wide.data()), reinterpret_cast<const uint8_t*>(wide.data() + wide.size()));
  return true;
}

// Writes the tree under `path` as the text file's writer does: sections in the order of their
// lowered names, "[section]", "name=value" lines in the same order, and a blank line after each.
struct CLoweredLess {
  bool operator()(const std::u16string& a, const std::u16string& b) const {
    const size_t n = std::min(a.size(), b.size());
    for (size_t i = 0; i < n; ++i) {
      const auto x = static_cast<uint16_t>(QZToLowerW(a[i]));
      const auto y = static_cast<uint16_t>(QZToLowerW(b[i]));
      if (x != y) return x < y;
    }
    return a.size() < b.size();
  }
};
using CSections = std::map<std::u16string, std::map<std::u16string, std::string, CLoweredLess>, CLoweredLess>;

void Collect(int32_t hive, const std::u16string& prefix, const std::u16string& path, CSections* sections, int* warnings) {
  std::vector<CValue> values;
  ReadValues(hive, path, &values);
  if (!values.empty()) {
    auto& keys = (*sections)[Join(prefix, path)];
    for (const auto& v : values) {
      std::string text = ValueText(v.type, v.data);
      if (text.find('\n') != std::string::npos || (!v.name.empty() && v.name[0] == u' ') ||
          Utf8Of(v.name).size() + 1 + text.size() > 509) {
        std::fprintf(stderr, "qzcore reg: warning: %s\\%s: the text file cannot carry this value as it is\n",
                     Utf8Of(path).c_str(), Utf8Of(v.name).c_str());
        ++*warnings;
      }
      keys[v.name] = text;
    }
  }
  for (const auto& sub : ReadSubKeys(hive, path)) Collect(hive, prefix, Join(path, sub), sections, warnings);
}

int Export(int32_t hive, const std::string& hiveName, const std::u16string& path, const std::string& file) {
  QZRegEnumHandle e;
  const QZRESULT hr = QZRegistryOpenValueEnum(hive, path.c_str(), &e);
  if (hr != 0) return Fail("export of " + hiveName + "\\" + Utf8Of(path), hr);
  QZRegistryCloseEnum(e);
  std::u16string prefix = u"QZ_HKEY_" + Wide(hiveName);
  if (hive == QZ_HKEY_USER) {
    QZWCHAR user[127];
    const QZRESULT named = QZGetUserName(user, 127);
    if (named != 0) return Fail("the user's name", named);
    prefix += u'\\';
    prefix += user;
  }
  CSections sections;
  int warnings = 0;
  Collect(hive, prefix, path, &sections, &warnings);
  FILE* out = std::fopen(file.c_str(), "we");
  if (out == nullptr) {
    std::fprintf(stderr, "qzcore reg: cannot write %s: %s\n", file.c_str(), std::strerror(errno));
    return 1;
  }
  size_t count = 0;
  for (const auto& [section, keys] : sections) {
    std::fprintf(out, "[%s]\n", Utf8Of(section).c_str());
    for (const auto& [name, text] : keys) std::fprintf(out, "%s=%s\n", Utf8Of(name).c_str(), text.c_str());
    std::fputs("\n", out);
    count += keys.size();
  }
  if (std::fclose(out) != 0) {
    std::fprintf(stderr, "qzcore reg: cannot write %s: %s\n", file.c_str(), std::strerror(errno));
    return 1;
  }
  std::printf("%zu values in %zu keys written to %s\n", count, sections.size(), file.c_str());
  return 0;
}

// The migration reads "qzregistry.ini" in the current directory and deletes it afterwards, so the
// import works on a copy in a directory of its own and the caller's file stays.
int Import(const std::string& file) {
  std::error_code ec;
  const auto source = std::filesystem::absolute(file, ec);
  if (ec || !std::filesystem::is_regular_file(source, ec)) {
    std::fprintf(stderr, "qzcore reg: cannot read %s\n", file.c_str());
    return 1;
  }
  std::string work = (std::filesystem::temp_directory_path(ec) / "qzcore-reg-import-XXXXXX").string();
  if (mkdtemp(work.data()) == nullptr) {
    std::fprintf(stderr, "qzcore reg: cannot make a work directory: %s\n", std::strerror(errno));
    return 1;
  }
  const auto here = std::filesystem::current_path(ec);
  std::filesystem::copy_file(source, std::filesystem::path(work) / "qzregistry.ini", ec);
  QZRESULT hr = QZ_E_FAIL;
  if (!ec) {
    std::filesystem::current_path(work, ec);
    if (!ec) hr = QZRegistryMigrate(QZ_REGKIND_INI, nullptr, QZ_REGKIND_NATIVE, nullptr);
    std::filesystem::current_path(here, ec);
  }
  std::filesystem::remove_all(work, ec);
  if (hr != 0) return Fail("import of " + file, hr);
  std::printf("imported %s\n", file.c_str());
  return 0;
}

int RunReg(int argc, char** argv) {
  if (argc < 2) return Usage();
  const std::string verb = argv[0];
  std::vector<std::string> operands;
  const char* valueName = nullptr;
  const char* typeName = "REG_SZ";
  const char* data = nullptr;
  bool recurse = false;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if ((arg == "-v" || arg == "-t" || arg == "-d") && i + 1 < argc) {
      (arg == "-v" ? valueName : arg == "-t" ? typeName : data) = argv[++i];
    } else if (arg == "-s") {
      recurse = true;
    } else if (!arg.empty() && arg[0] == '-') {
      return Usage();
    } else {
      operands.push_back(arg);
    }
  }
  if (verb == "import") return operands.size() == 1 ? Import(operands[0]) : Usage();

  int32_t hive = 0;
  std::string hiveName;
  std::u16string path;
  if (operands.empty() || !ParseKey(operands[0], &hive, &hiveName, &path)) return Usage();
  const std::string keyText = hiveName + (path.empty() ? "" : "\\") + Utf8Of(path);
  const std::u16string name = valueName != nullptr ? Wide(valueName) : std::u16string();
  if (verb == "query" && operands.size() == 1) return Query(hive, hiveName, path, valueName, recurse);
  if (verb == "export" && operands.size() == 2) return Export(hive, hiveName, path, operands[1]);
  if (verb == "add" && operands.size() == 1) {
    uint32_t type = 0xFFFFFFFF;
    for (const auto& t : kTypes) {
      if (strcasecmp(typeName, t.name) == 0) type = t.number;
    }
    std::vector<uint8_t> bytes;
    if (type == 0xFFFFFFFF || !EncodeData(type, data != nullptr ? data : "", &bytes)) {
      std::fprintf(stderr, "qzcore reg: \"%s\" is not data of type %s\n", data != nullptr ? data : "", typeName);
      return 2;
    }
    const QZRESULT hr = QZRegistrySetValue(hive, path.c_str(), name.c_str(), type, bytes.data(), static_cast<uint32_t>(bytes.size()));
    if (hr != 0) return Fail("add " + keyText, hr);
    std::printf("added %s    %s\n", keyText.c_str(), valueName != nullptr ? valueName : "(Default)");
    return 0;
  }
  if (verb == "delete" && operands.size() == 1) {
    if (valueName != nullptr) {
      const QZRESULT hr = QZRegistryDeleteValue(hive, path.c_str(), name.c_str());
      if (hr != 0) return Fail("delete of the value " + std::string(valueName), hr);
    } else {
      // Not a result code: 0, the general failure, or the store's own error numbers or-ed together.
      const QZRESULT hr = QZRegistryDeleteKey(hive, path.c_str());
      if (hr != 0) {
        std::fprintf(stderr, "qzcore reg: delete %s failed: %s\n", keyText.c_str(),
                     hr < 0 ? (qztool::Result(hr) + " (no such key, or not writable)").c_str()
                            : ("error " + std::to_string(hr) + " (part of the tree stays)").c_str());
        return 1;
      }
    }
    std::printf("deleted %s%s%s\n", keyText.c_str(), valueName != nullptr ? "    " : "", valueName != nullptr ? valueName : "");
    return 0;
  }
  return Usage();
}

// `qzcore reg VERB ...`: argv[0] is "reg".
int RunRegCommand(const qztool::Command&, int argc, char** argv) {
  if (argc >= 2 && (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0)) {
    return Usage(stdout);
  }
  return RunReg(argc - 1, argv + 1);
}

}  // namespace

QZ_COMMAND("reg", "query|add|delete|import|export ...", "read and write the registry (reg --help: how)",
           RunRegCommand);
