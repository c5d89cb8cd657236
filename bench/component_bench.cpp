// component_bench.cpp - class objects: a lookup of a cached class beside a direct call of the
// component's entry point, and object creation through the library beside a direct call of the
// component's own factory. The example component is registered in a private registry.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <filesystem>
#include <string>
#include <thread>

#include "qzcore.h"
#include "qzcore/qzregistry.h"
#include "sample_component.h"

namespace {

const QZGUID kClsid = QZ_CLSID_SAMPLE_ADDER_INIT;
const QZGUID kIidFactory = QZ_IID_IQZCLASSFACTORY_INIT;
const QZGUID kIidAdder = QZ_IID_SAMPLE_ADDER_INIT;

std::u16string Wide(const std::string& text) { return std::u16string(text.begin(), text.end()); }

// A second thread has existed (glibc's locks take their multi-threaded paths from then on), the
// registry lives in a directory of its own, and the component is registered there.
struct Setup {
  Setup() {
    std::thread([] {}).join();
    char pattern[] = "/tmp/qzcore-bench-XXXXXX";
    dir = mkdtemp(pattern);
    setenv("QZCORE_REGISTRY_DIR", dir.c_str(), 1);
    char16_t text[39];
    QZComStringFromGUID(&kClsid, text, 39);
    const std::u16string key = u"CLSID\\" + std::u16string(text) + u"\\InprocServer32";
    const std::u16string path = Wide(QZ_SAMPLE_COMPONENT);
    ok = QZRegistrySetValue(QZ_HKEY_CLASSES_64, key.c_str(), u"", QZ_REG_SZ, path.c_str(),
                            static_cast<uint32_t>((path.size() + 1) * 2)) == 0;
  }
  ~Setup() {
    QZComFlushFactoryCache();
    std::error_code ignored;
    std::filesystem::remove_all(dir, ignored);
  }
  std::string dir;
  bool ok = false;
};

Setup& Ready() {
  static Setup setup;
  return setup;
}

// The component's entry point and class object, reached without the library's cache.
struct Direct {
  Direct() {
    QZLibOpen(Wide(QZ_SAMPLE_COMPONENT).c_str(), &library);
    void* entry = nullptr;
    QZLibGetSymbol(library, u"DllGetClassObject", &entry);
    getClassObject = reinterpret_cast<QZDllGetClassObjectFn>(entry);
    getClassObject(&kClsid, &kIidFactory, reinterpret_cast<void**>(&factory));
  }
  ~Direct() {
    factory->lpVtbl->Release(factory);
    QZLibClose(library);
  }
  QZLibHandle library = nullptr;
  QZDllGetClassObjectFn getClassObject = nullptr;
  IQZClassFactory* factory = nullptr;
};

void BM_ComGetClassObjectCached(benchmark::State& state) {
  if (!Ready().ok) return state.SkipWithError("registration failed");
  void* object = nullptr;
  QZComGetClassObject(&kClsid, &kIidFactory, &object);  // the first use loads and caches
  static_cast<IQZUnknown*>(object)->lpVtbl->Release(static_cast<IQZUnknown*>(object));
  for (auto _ : state) {
    QZComGetClassObject(&kClsid, &kIidFactory, &object);
    static_cast<IQZUnknown*>(object)->lpVtbl->Release(static_cast<IQZUnknown*>(object));
  }
}
BENCHMARK(BM_ComGetClassObjectCached);

void BM_DirectEntryPoint(benchmark::State& state) {
  Direct direct;
  void* object = nullptr;
  for (auto _ : state) {
    direct.getClassObject(&kClsid, &kIidFactory, &object);
    static_cast<IQZUnknown*>(object)->lpVtbl->Release(static_cast<IQZUnknown*>(object));
  }
}
BENCHMARK(BM_DirectEntryPoint);

void BM_ComCreateObject(benchmark::State& state) {
  if (!Ready().ok) return state.SkipWithError("registration failed");
  IQZSampleAdder* adder = nullptr;
  for (auto _ : state) {
    QZComCreateObject(&kClsid, nullptr, &kIidAdder, reinterpret_cast<void**>(&adder));
    adder->lpVtbl->Release(adder);
  }
}
BENCHMARK(BM_ComCreateObject);

void BM_DirectFactoryCreateInstance(benchmark::State& state) {
  Direct direct;
  IQZSampleAdder* adder = nullptr;
  for (auto _ : state) {
    direct.factory->lpVtbl->CreateInstance(direct.factory, nullptr, &kIidAdder, reinterpret_cast<void**>(&adder));
    adder->lpVtbl->Release(adder);
  }
}
BENCHMARK(BM_DirectFactoryCreateInstance);

}  // namespace
