// com_command.cpp - `qzcore com register CLSID PATH [PROGID]` writes the registration the class
// lookup reads (CLSID\{...}\InprocServer32 and PROGID\CLSID in the classes hive);
// `qzcore com create CLSID|PROGID` creates an object through it and says what came back.
#include "com_command.h"
#include "command.h"

#include <cstdio>
#include <cstring>
#include <string>

#include "qzcore/qzcom.h"
#include "qzcore/qzregistry.h"
#include "qzcore/qzunicode.h"
#include "tour.h"

namespace qztool {
namespace {

std::u16string Wide(const char* text) {
  const int64_t units = QZUTF8ToUTF16(nullptr, text, 0);
  if (units < 0) return u"";
  std::u16string out(static_cast<size_t>(units) + 1, u'\0');
  QZUTF8ToUTF16(out.data(), text, out.size());
  out.resize(static_cast<size_t>(units));
  return out;
}

QZRESULT SetDefault(const std::u16string& key, const std::u16string& value) {
  return QZRegistrySetValue(QZ_HKEY_CLASSES_64, key.c_str(), u"", QZ_REG_SZ, value.c_str(),
                            static_cast<uint32_t>((value.size() + 1) * sizeof(char16_t)));
}

int Report(const char* what, QZRESULT result) {
  std::printf("%s: %s\n", what, Result(result).c_str());
  return result < 0 ? 1 : 0;
}

int Register(const char* clsidText, const char* path, const char* progId) {
  QZGUID clsid;
  if (QZComGUIDFromString(Wide(clsidText).c_str(), &clsid) != 0) {
    std::fprintf(stderr, "qzcore com: not a class identifier: %s\n", clsidText);
    return 2;
  }
  char16_t text[QZ_GUID_STRING_LENGTH + 1];
  QZComStringFromGUID(&clsid, text, QZ_GUID_STRING_LENGTH + 1);
  QZRESULT result = SetDefault(u"CLSID\\" + std::u16string(text) + u"\\InprocServer32", Wide(path));
  if (result >= 0 && progId != nullptr) result = SetDefault(Wide(progId) + u"\\CLSID", text);
  return Report(("register " + Utf8(text)).c_str(), result);
}

int Create(const char* name) {
  const QZGUID unknown = QZ_IID_IQZUNKNOWN_INIT;
  QZGUID clsid;
  IQZUnknown* object = nullptr;
  const std::u16string wide = Wide(name);
  const QZRESULT result =
      QZComGUIDFromString(wide.c_str(), &clsid) == 0
          ? QZComCreateObject(&clsid, nullptr, &unknown, reinterpret_cast<void**>(&object))
          : QZComCreateObjectByProgID(wide.c_str(), nullptr, &unknown, reinterpret_cast<void**>(&object));
  if (result >= 0 && object != nullptr) IQZUnknown_Release(object);
  return Report((std::string("create ") + name).c_str(), result);
}

}  // namespace

int RunCom(int argc, char** argv) {
  if ((argc == 4 || argc == 5) && std::strcmp(argv[1], "register") == 0)
    return Register(argv[2], argv[3], argc == 5 ? argv[4] : nullptr);
  if (argc == 3 && std::strcmp(argv[1], "create") == 0) return Create(argv[2]);
  return UsageError(nullptr, "usage: qzcore com register CLSID PATH [PROGID] | qzcore com create CLSID|PROGID");
}

namespace {

int RunComCommand(const Command&, int argc, char** argv) {
  if (argc >= 2 && (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0)) {
    std::printf("usage: qzcore com register CLSID PATH [PROGID]   register a component library\n"
                "       qzcore com create CLSID|PROGID            create an object of a registered class\n");
    return 0;
  }
  return RunCom(argc, argv);
}

}  // namespace

QZ_COMMAND("com", "register CLSID PATH [PROGID] | create CLSID|PROGID",
           "register a component library, or create an object of a registered class", RunComCommand);

}  // namespace qztool
