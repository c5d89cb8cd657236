// task_allocator.h - IMalloc, the allocator shared by components, and the process's instance.
//
// The table has the first platform's IMalloc shape (QueryInterface, AddRef, Release, Alloc,
// Realloc, Free, GetSize, DidAlloc, HeapMinimize), so a component written in C can call it
// through its first pointer. Blocks come from malloc and may be freed by any component.
#pragma once

#include <cstddef>
#include <cstdint>

#include "qzcore/qztypes.h"

struct IMalloc {
  virtual QZRESULT QueryInterface(const QZGUID& iid, void** object) = 0;
  virtual uint32_t AddRef() = 0;
  virtual uint32_t Release() = 0;  // returns the references left
  virtual void* Alloc(size_t size) = 0;
  virtual void* Realloc(void* block, size_t size) = 0;
  virtual void Free(void* block) = 0;
  virtual size_t GetSize(void* block) = 0;     // usable size, (size_t)-1 for null
  virtual int32_t DidAlloc(void* block) = 0;   // 1 yes, 0 no, -1 cannot tell
  virtual void HeapMinimize() = 0;

 protected:
  ~IMalloc() = default;
};

inline constexpr uint32_t QZ_MEMCTX_TASK = 1;

// The task allocator of the process, with one more reference, in *allocator. Context must be
// QZ_MEMCTX_TASK, else QZ_E_INVALIDARG and *allocator is null.
QZRESULT CoGetMalloc(uint32_t context, IMalloc** allocator) noexcept;
