// crt_stream.h - the C library's byte streams as the text-file registry uses them: opened
// close-on-exec, and the whole-second modification time of a path and of an open stream.
#pragma once

#include <cstdint>
#include <cstdio>

namespace qz::os {

// fopen for reading ("r") or for writing with truncation ("w", created 0666 less the umask), with a
// descriptor that no child inherits. Null on failure (errno set).
std::FILE* OpenStream(const char* path, bool write) noexcept;

// Modification time in whole seconds since 1970: of `path`, and of an open stream.
bool PathModifiedTime(const char* path, int64_t* seconds) noexcept;
bool StreamModifiedTime(std::FILE* stream, int64_t* seconds) noexcept;

}  // namespace qz::os
