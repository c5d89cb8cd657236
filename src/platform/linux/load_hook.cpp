// load_hook.cpp - how the library's load hook is reached on ELF systems: a constructor and a
// destructor of the shared object, each run once by the dynamic loader, before any export can be
// called and after the last one returned.
#include <dlfcn.h>

#include "platform/load_hook.h"

namespace {

void* ModuleBase() noexcept {
  Dl_info info;
  if (dladdr(reinterpret_cast<void*>(&QZDllMain), &info) != 0) return info.dli_fbase;
  return nullptr;
}

__attribute__((constructor)) void QZOnLoad() { QZDllMain(ModuleBase(), QZ_DLL_PROCESS_ATTACH, nullptr); }

__attribute__((destructor)) void QZOnUnload() { QZDllMain(ModuleBase(), QZ_DLL_PROCESS_DETACH, nullptr); }

}  // namespace
