// load_hook.h - the hook through which the platform's loader enters the library.
//
// The platform folder reaches the hook once at load and once at unload (on ELF systems from a
// constructor and a destructor of the shared object); the start layer defines it. This is the one
// call the platform layer makes upward, and it makes it through this declaration only.
#pragma once

#include <cstdint>

// Load hook reasons.
inline constexpr uint32_t QZ_DLL_PROCESS_DETACH = 0;
inline constexpr uint32_t QZ_DLL_PROCESS_ATTACH = 1;

// Called once at load (attach) and once at unload (detach), with no other thread inside the library.
// Always returns 1. Defined above every family, by the start.
int32_t QZDllMain(void* moduleHandle, uint32_t reason, void* reserved) noexcept;
