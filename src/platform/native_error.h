// native_error.h - the platform error numbers that the library's logic is written against.
//
// The logic of every family speaks the first platform's error numbers; each platform layer keeps a
// per-thread last error in these numbers (last_error.h) and translates its own codes into them.
#pragma once

#include <cstdint>

namespace qz::os {

inline constexpr uint32_t kErrorSuccess = 0;
inline constexpr uint32_t kErrorInvalidFunction = 1;
inline constexpr uint32_t kErrorFileNotFound = 2;
inline constexpr uint32_t kErrorPathNotFound = 3;
inline constexpr uint32_t kErrorTooManyOpenFiles = 4;
inline constexpr uint32_t kErrorAccessDenied = 5;
inline constexpr uint32_t kErrorInvalidHandle = 6;
inline constexpr uint32_t kErrorNotEnoughMemory = 8;
inline constexpr uint32_t kErrorOutOfMemory = 14;
inline constexpr uint32_t kErrorNotSameDevice = 17;
inline constexpr uint32_t kErrorNoMoreFiles = 18;
inline constexpr uint32_t kErrorSharingViolation = 32;
inline constexpr uint32_t kErrorLockViolation = 33;
inline constexpr uint32_t kErrorHandleEof = 38;
inline constexpr uint32_t kErrorNotSupported = 50;
inline constexpr uint32_t kErrorFileExists = 80;
inline constexpr uint32_t kErrorInvalidParameter = 87;
inline constexpr uint32_t kErrorBrokenPipe = 109;
inline constexpr uint32_t kErrorDiskFull = 112;
inline constexpr uint32_t kErrorInsufficientBuffer = 122;
inline constexpr uint32_t kErrorInvalidName = 123;
inline constexpr uint32_t kErrorNegativeSeek = 131;
inline constexpr uint32_t kErrorModNotFound = 126;
inline constexpr uint32_t kErrorProcNotFound = 127;
inline constexpr uint32_t kErrorDirNotEmpty = 145;
inline constexpr uint32_t kErrorBusy = 170;
inline constexpr uint32_t kErrorBadExeFormat = 193;
inline constexpr uint32_t kErrorAlreadyExists = 183;
inline constexpr uint32_t kErrorFilenameExcedRange = 206;
inline constexpr uint32_t kErrorFileTooLarge = 223;
inline constexpr uint32_t kErrorMoreData = 234;
inline constexpr uint32_t kErrorWaitTimeout = 258;
inline constexpr uint32_t kErrorNoMoreItems = 259;
inline constexpr uint32_t kErrorDirectory = 267;
inline constexpr uint32_t kErrorNotOwner = 288;
inline constexpr uint32_t kErrorArithmeticOverflow = 534;
inline constexpr uint32_t kErrorTooManyPosts = 298;
inline constexpr uint32_t kErrorOperationAborted = 995;
inline constexpr uint32_t kErrorNoaccess = 998;
inline constexpr uint32_t kErrorBadDb = 1009;             // the registry's file is damaged
inline constexpr uint32_t kErrorRegistryIoFailed = 1016;  // the registry's file cannot be read or written
inline constexpr uint32_t kErrorKeyDeleted = 1018;        // the open key was removed meanwhile
inline constexpr uint32_t kErrorPossibleDeadlock = 1131;
inline constexpr uint32_t kErrorTimeout = 1460;
inline constexpr uint32_t kErrorCantResolveFilename = 1921;

}  // namespace qz::os
