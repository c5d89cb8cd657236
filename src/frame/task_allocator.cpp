// task_allocator.cpp - the process's task allocator: a counted, static IMalloc over malloc.
#include "frame/task_allocator.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "platform/heap.h"

namespace {

constexpr QZGUID kIidUnknown = {0x00000000, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr QZGUID kIidMalloc = {0x00000002, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

bool SameGuid(const QZGUID& a, const QZGUID& b) noexcept { return std::memcmp(&a, &b, sizeof a) == 0; }

class CQZTaskAllocator final : public IMalloc {
 public:
  QZRESULT QueryInterface(const QZGUID& iid, void** object) override {
    if (SameGuid(iid, kIidUnknown) || SameGuid(iid, kIidMalloc)) {
      AddRef();
      *object = static_cast<IMalloc*>(this);
      return QZ_S_OK;
    }
    *object = nullptr;
    return static_cast<QZRESULT>(0x80004002);  // no such interface
  }
  uint32_t AddRef() override { return m_refs.fetch_add(1) + 1; }
  uint32_t Release() override { return m_refs.fetch_sub(1) - 1; }  // static: never freed
  void* Alloc(size_t size) override { return std::malloc(size); }
  void* Realloc(void* block, size_t size) override {
    if (size == 0 && block != nullptr) {
      std::free(block);
      return nullptr;
    }
    return std::realloc(block, size);
  }
  void Free(void* block) override { std::free(block); }
  size_t GetSize(void* block) override { return block == nullptr ? static_cast<size_t>(-1) : qz::os::HeapUsableSize(block); }
  int32_t DidAlloc(void* block) override { return block == nullptr ? 0 : -1; }
  void HeapMinimize() override {}

 private:
  std::atomic<uint32_t> m_refs{0};  // references handed out and not yet released
};

CQZTaskAllocator s_taskAllocator;

}  // namespace

QZRESULT CoGetMalloc(uint32_t context, IMalloc** allocator) noexcept {
  if (context != QZ_MEMCTX_TASK) {
    *allocator = nullptr;
    return QZ_E_INVALIDARG;
  }
  s_taskAllocator.AddRef();
  *allocator = &s_taskAllocator;
  return QZ_S_OK;
}
