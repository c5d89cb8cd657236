// mutex_provider.cpp - the choice of mutex class by flags.
#include "sync/mutex_provider.h"

#include "frame/export_frame.h"
#include "sync/mutex_checked.h"

namespace qz::core {

QZRESULT CQZMutexProvider::Create(const char* name, uint32_t flags, IMutex** out) {
  return QZExportFrame([&]() -> QZRESULT {
    uint32_t effective = flags;
    if ((effective & QZ_MUTEX_NOSTATS) != 0) effective &= ~QZ_MUTEX_STATS;
    IMutex* mutex;
    if ((effective & (QZ_MUTEX_CHECKED | QZ_MUTEX_STATS)) != 0) {
      mutex = new CQZCoreMutexChecked(NameOrEmpty(name), effective);
    } else {
      mutex = new CQZCoreMutexImpl(NameOrEmpty(name), effective);
    }
    AddRef(mutex);
    *out = mutex;
    return QZ_S_OK;
  });
}

}  // namespace qz::core
