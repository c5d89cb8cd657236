// mutex_provider.cpp - the choice of mutex class by flags.
#include "sync/mutex_provider.h"

#include "sync/mutex_checked.h"

namespace qz::core {

QZRESULT CQZMutexProvider::Create(const char* name, uint32_t flags, IMutex** out) {
  uint32_t effective = flags;
  if ((effective & QZ_MUTEX_NOSTATS) != 0) effective &= ~QZ_MUTEX_STATS;
  const std::string localName = name != nullptr ? std::string(name) : std::string();
  IMutex* mutex;
  if ((effective & (QZ_MUTEX_CHECKED | QZ_MUTEX_STATS)) != 0) {
    mutex = new CQZCoreMutexChecked(localName, effective);
  } else {
    mutex = new CQZCoreMutexImpl(localName, effective);
  }
  AddRef(mutex);
  *out = mutex;
  return QZ_S_OK;
}

}  // namespace qz::core
