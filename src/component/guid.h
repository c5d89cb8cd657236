// guid.h - identifiers: the text form both ways, the two comparisons, and generation.
//
// The work behind the identifier exports. Nothing here allocates or takes a lock; reading the text
// form stores nothing until the whole pattern has matched.
#pragma once

#include <cstdint>

#include "qzcore/qztypes.h"

namespace qz::core {

// Identifier of the class-object interface, 00000001-0000-0000-C000-000000000046.
inline constexpr QZGUID kIidClassFactory = {0x00000001, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

// The platform status of an identifier that could not be made at all.
inline constexpr uint32_t kRpcUuidNoAddress = 1739;

// 0 with *result written, or QZ_E_INVALIDARG with *result untouched.
QZRESULT GuidFromString(const QZWCHAR* text, QZGUID* result) noexcept;

// The braced upper-case text widened into `buffer` of `size` units (terminated from 39 on).
void StringFromGuid(const QZGUID& guid, QZWCHAR* buffer, int32_t size) noexcept;

// -1, 0 or 1 in the fixed byte order of the comparison export.
int32_t CompareGuid(const QZGUID& first, const QZGUID& second) noexcept;

bool IsEqualGuid(const QZGUID& first, const QZGUID& second) noexcept;

// Fills *result with a random version 4 identifier: the platform status, 0 or kRpcUuidNoAddress
// (when the random source failed, *result untouched).
uint32_t UuidCreate(QZGUID* result) noexcept;

// memcmp order over the 16 raw bytes: the order of the class cache.
struct GuidBytesLess {
  bool operator()(const QZGUID& first, const QZGUID& second) const noexcept;
};

}  // namespace qz::core
