// file_exports.cpp - the exports of files and directories: each a direct call of the family's
// functions, with no frame (none of them throws) and no state.
#include "qzcore/qzfile.h"
#include "system/directory.h"
#include "system/file.h"

extern "C" {

QZ_API QZRESULT QZFileOpen(const QZWCHAR* path, uint32_t flags, int32_t permissions, QZFileHandle* result) {
  return qz::core::OpenFile(path, flags, permissions, result);
}

QZ_API QZRESULT QZFileClose(QZFileHandle file) { return qz::core::CloseFile(file); }

QZ_API QZRESULT QZFileRead(QZFileHandle file, void* buffer, uint32_t size, uint32_t* read) {
  return qz::core::ReadFile(file, buffer, size, read);
}

QZ_API QZRESULT QZFileWrite(QZFileHandle file, const void* buffer, uint32_t size, uint32_t* written) {
  return qz::core::WriteFile(file, buffer, size, written);
}

QZ_API QZRESULT QZFileSeek(QZFileHandle file, int32_t offset, uint32_t origin, uint32_t* position) {
  return qz::core::SeekFile(file, offset, origin, position);
}

QZ_API QZRESULT QZFileFlush(QZFileHandle file) { return qz::core::FlushFile(file); }

QZ_API QZRESULT QZFileGetSize(QZFileHandle file, uint64_t* size) { return qz::core::GetFileSize(file, size); }

QZ_API QZRESULT QZFileLock(QZFileHandle file, uint32_t offset, uint32_t length, uint32_t flags) {
  return qz::core::LockFileRange(file, offset, length, flags);
}

QZ_API QZRESULT QZFileUnlock(QZFileHandle file, uint32_t offset, uint32_t length) {
  return qz::core::UnlockFileRange(file, offset, length);
}

QZ_API QZRESULT QZFileDelete(const QZWCHAR* path) { return qz::core::DeleteFile(path); }

QZ_API QZRESULT QZFileCopy(const QZWCHAR* source, const QZWCHAR* destination, uint32_t flags,
                           uint32_t permissions, QZFileHandle* destination_handle) {
  return qz::core::CopyFile(source, destination, flags, permissions, destination_handle);
}

QZ_API QZRESULT QZDirCreate(const QZWCHAR* path, uint32_t permissions) {
  (void)permissions;  // the umask decides, as the first platform's default security does
  return qz::core::CreateDirectory(path);
}

QZ_API QZRESULT QZDirRemove(const QZWCHAR* path) { return qz::core::RemoveDirectory(path); }

QZ_API QZRESULT QZDirOpen(const QZWCHAR* path, QZDirHandle* result) { return qz::core::OpenDirectory(path, result); }

QZ_API QZRESULT QZDirRead(QZDirHandle dir, QZDirEntry* entry, uint32_t size) {
  (void)size;  // the caller gives a whole entry
  return qz::core::ReadDirectory(dir, entry);
}

QZ_API QZRESULT QZDirClose(QZDirHandle dir) { return qz::core::CloseDirectory(dir); }

QZ_API QZRESULT QZPathExpand(const QZWCHAR* path, QZWCHAR* buffer, uint32_t size) {
  return qz::core::ExpandPath(path, buffer, size);
}

}  // extern "C"
