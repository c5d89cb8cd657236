// tour_component.cpp - tour step: identifiers made, written and read back, the component allocator,
// and the example component registered in a private registry, created, cached and flushed.
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "qzcore/qzcom.h"
#include "qzcore/qzlibrary.h"
#include "qzcore/qzregistry.h"
#include "sample_component.h"
#include "tour.h"

namespace {

using qztool::Hex;
using qztool::Show;
using qztool::Utf8;

std::string Code(QZRESULT result) { return qztool::Result(result); }

std::u16string Wide(const std::string& text) { return std::u16string(text.begin(), text.end()); }

std::u16string Text(const QZGUID& guid) {
  char16_t text[QZ_GUID_STRING_LENGTH + 1];
  QZComStringFromGUID(&guid, text, QZ_GUID_STRING_LENGTH + 1);
  return text;
}

QZRESULT SetDefault(const std::u16string& key, const std::u16string& value) {
  return QZRegistrySetValue(QZ_HKEY_CLASSES_64, key.c_str(), u"", QZ_REG_SZ, value.c_str(),
                            static_cast<uint32_t>((value.size() + 1) * sizeof(char16_t)));
}

void TourIdentifiers() {
  QZGUID made{};
  const QZRESULT generated = QZComGenerateGUID(&made);
  Show("QZComGenerateGUID", Code(generated) + " " + Utf8(Text(made).c_str()));
  QZGUID read{};
  const QZRESULT parsed = QZComGUIDFromString(u"6f1d2c3b-8a47-4e59-b3c2-5d0e9a7f1b24", &read);
  Show("QZComGUIDFromString(\"6f1d2c3b-...\")", Code(parsed) + " " + Utf8(Text(read).c_str()));
  Show("QZComGUIDFromString(\"{6f1d2c3b-...\" without \"}\")",
       Code(QZComGUIDFromString(u"{6f1d2c3b-8a47-4e59-b3c2-5d0e9a7f1b24", &read)));
  Show("QZComCompareGUID(made, read)", std::to_string(QZComCompareGUID(&made, &read)));
  void* block = nullptr;
  QZRESULT hr = QZComMalloc(64, &block);
  hr = hr < 0 ? hr : QZComRealloc(&block, 4096);
  Show("QZComMalloc(64), QZComRealloc(4096)", Code(hr));
  Show("QZComRealloc(0) frees", Code(QZComRealloc(&block, 0)) + (block == nullptr ? ", block null" : ""));
}

void TourClasses() {
  // A private registry, so the tour leaves nothing behind in the machine's.
  char dir[] = "/tmp/qzcore-tour-XXXXXX";
  if (mkdtemp(dir) == nullptr) return;
  const char* old = std::getenv("QZCORE_REGISTRY_DIR");
  const std::string saved = old != nullptr ? old : "";
  setenv("QZCORE_REGISTRY_DIR", dir, 1);

  const QZGUID clsid = QZ_CLSID_SAMPLE_ADDER_INIT;
  const QZGUID iidAdder = QZ_IID_SAMPLE_ADDER_INIT;
  const std::u16string key = u"CLSID\\" + Text(clsid) + u"\\InprocServer32";
  Show("register " + Utf8(key.c_str()), Code(SetDefault(key, Wide(QZ_SAMPLE_COMPONENT))));
  Show("register " QZ_SAMPLE_PROGID "\\CLSID", Code(SetDefault(Wide(QZ_SAMPLE_PROGID "\\CLSID"), Text(clsid))));

  IQZSampleAdder* adder = nullptr;
  QZRESULT hr = QZComCreateObjectByProgID(Wide(QZ_SAMPLE_PROGID).c_str(), nullptr, &iidAdder,
                                          reinterpret_cast<void**>(&adder));
  Show("QZComCreateObjectByProgID(\"" QZ_SAMPLE_PROGID "\")", Code(hr));
  if (hr >= 0) {
    Show("  adder->Add(40, 2)", std::to_string(adder->lpVtbl->Add(adder, 40, 2)));
    adder->lpVtbl->Release(adder);
  }
  const QZGUID iidFactory = QZ_IID_IQZCLASSFACTORY_INIT;
  void* factory = nullptr;
  hr = QZComGetClassObject(&clsid, &iidFactory, &factory);
  Show("QZComGetClassObject (cached: no registry, no loader)", Code(hr));
  if (factory != nullptr) IQZUnknown_Release(static_cast<IQZUnknown*>(factory));

  QZGUID unknown;
  QZComGenerateGUID(&unknown);
  Show("QZComGetClassObject(a class nobody registered)", Code(QZComGetClassObject(&unknown, &iidFactory, &factory)));
  const QZGUID stranger = {0x1, 0x2, 0x3, {4, 5, 6, 7, 8, 9, 10, 11}};
  SetDefault(u"CLSID\\" + Text(stranger) + u"\\InprocServer32", u"/nonexistent/libnothing.so");
  Show("QZComGetClassObject(a class whose file is missing)", Code(QZComGetClassObject(&stranger, &iidFactory, &factory)));
  Show("QZComFlushFactoryCache (unloads the component)", Code(QZComFlushFactoryCache()));

  QZLibHandle library = nullptr;
  Show("QZModuleLibOpen(a key never entered, ...)", Code(QZModuleLibOpen(0x51, u"libc.so.6", &library)));

  if (old != nullptr) setenv("QZCORE_REGISTRY_DIR", saved.c_str(), 1);
  else unsetenv("QZCORE_REGISTRY_DIR");
  std::error_code ignored;
  std::filesystem::remove_all(dir, ignored);
}

void TourComponent() {
  TourIdentifiers();
  TourClasses();
}

}  // namespace

QZ_TOUR_STEP(70, "Identifiers and components", TourComponent);
