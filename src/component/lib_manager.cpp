// lib_manager.cpp - libraries through the platform's loader.
#include "component/lib_manager.h"

#include <string>

#include "frame/core_exception.h"
#include "platform/library.h"
#include "platform/utf8.h"
#include "text/ansi_string.h"

void CQZLibManager::Open(const QZWCHAR* path, QZLibHandle* result) {
  const std::string utf8 = qz::os::Utf16ToUtf8Replacing(path);
  void* handle = qz::os::LoadLibrary(utf8.c_str());
  if (handle == nullptr) qz::core::ThrowLastError();
  *result = handle;
}

void CQZLibManager::Close(QZLibHandle library) {
  if (!qz::os::FreeLibrary(library)) qz::core::ThrowLastError();
}

void CQZLibManager::GetSymbol(QZLibHandle library, const QZWCHAR* name, void** result) {
  const std::string bytes = qz::text::WideToAnsiString(name);
  void* address = qz::os::GetProcAddress(library, bytes.c_str());
  if (address == nullptr) qz::core::ThrowLastError();
  *result = address;
}
