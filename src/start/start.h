// start.h - the library's start and stop, which build and destroy every family's global objects.
//
// The load hook (platform/load_hook.h) is the only caller of both.
#pragma once

#include "qzcore/qztypes.h"

QZRESULT QZLibraryStart() noexcept;
QZRESULT QZLibraryStop() noexcept;
