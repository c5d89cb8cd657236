// lib_manager.h - CQZLibManager: the stateless home of loading, closing and searching libraries.
//
// It holds no lock: concurrency of loading is the platform loader's. Failures are thrown as
// EQZCoreException with the translation of the platform's last error.
#pragma once

#include "qzcore/qztypes.h"

class CQZLibManager {
 public:
  // Loads the library at `path` (16-bit text, reaching the system as UTF-8) into *result.
  void Open(const QZWCHAR* path, QZLibHandle* result);
  // Drops one open.
  void Close(QZLibHandle library);
  // The entry point `name` (converted to the system's byte text) into *result.
  void GetSymbol(QZLibHandle library, const QZWCHAR* name, void** result);
};
