// export_frame.h - the export frame: the one place where exceptions become result codes.
//
// Every export that does real work runs its body through QZExportFrame (or QZCreateFrame for a
// create export, which first stores -1 in its out-argument). Deeper routines throw; nothing else in
// the library catches to produce a QZRESULT.
#pragma once

#include <cstdint>
#include <new>
#include <string>
#include <type_traits>

#include "frame/core_exception.h"

template <class Body>
QZRESULT QZExportFrame(Body&& body) noexcept {
  try {
    return body();
  } catch (const EQZCoreException& e) {
    return e.m_result;
  } catch (const std::bad_alloc&) {
    return QZ_E_OUTOFMEMORY;
  } catch (...) {
    return QZ_E_FAIL;
  }
}

namespace qz::core {

// Marks a create export's out-argument as "no object" (all bits set) before any work.
template <class Handle>
inline void StoreInvalidHandle(Handle* out) noexcept {
  if constexpr (std::is_pointer_v<Handle>) {
    *out = reinterpret_cast<Handle>(static_cast<intptr_t>(-1));
  } else {
    *out = static_cast<Handle>(-1);
  }
}

// The private copy of an object name: a null name is the empty name.
inline std::string NameOrEmpty(const char* name) { return name != nullptr ? std::string(name) : std::string(); }

}  // namespace qz::core
