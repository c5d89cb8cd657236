// global_data.cpp - the process-wide variables. The load hook runs under the loader's lock, one
// call at a time, so they are plain data.
#include "frame/global_data.h"

#include "platform/load_hook.h"

int32_t g_initCount = 0;
uint32_t g_platformReady = 0;
void* g_moduleHandle = nullptr;
IMalloc* g_comMalloc = nullptr;
void* g_moduleId = reinterpret_cast<void*>(&QZDllMain);
