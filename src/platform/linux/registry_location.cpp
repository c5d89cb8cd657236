// registry_location.cpp - the directories of the registry store on Linux, and the write test.
//
// Both files sit in $QZCORE_REGISTRY_DIR when it is set. Otherwise the machine hives live in
// /var/lib/qzcore (shared by all users, written by administrators) and each user's hive under
// ${XDG_CONFIG_HOME:-$HOME/.config}/qzcore. The user file carries the effective uid in its name,
// so users that share one registry directory still keep a hive each.
#include "platform/registry_location.h"

#include <cstdlib>

#include "io.h"

namespace qz::os {
namespace {

const char* NonEmptyEnv(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && *value != '\0' ? value : nullptr;
}

std::string HomeDirectory() {
  if (const char* home = NonEmptyEnv("HOME")) return home;
  struct passwd record;
  struct passwd* found = nullptr;
  char buffer[4096];
  if (sys::getpwuid_r(sys::geteuid(), &record, buffer, sizeof buffer, &found) == 0 && found != nullptr &&
      found->pw_dir != nullptr && found->pw_dir[0] != '\0') {
    return found->pw_dir;
  }
  return {};
}

}  // namespace

RegistryFiles GetRegistryFiles() {
  RegistryFiles files;
  const std::string userFile = "user-" + std::to_string(sys::geteuid()) + ".db";
  if (const char* dir = NonEmptyEnv("QZCORE_REGISTRY_DIR")) {
    files.machine = std::string(dir) + "/machine.db";
    files.user = std::string(dir) + "/" + userFile;
    return files;
  }
  files.machine = "/var/lib/qzcore/machine.db";
  if (const char* config = NonEmptyEnv("XDG_CONFIG_HOME")) {
    files.user = std::string(config) + "/qzcore/" + userFile;
  } else if (std::string home = HomeDirectory(); !home.empty()) {
    files.user = home + "/.config/qzcore/" + userFile;
  }
  return files;
}

bool MakeRegistryDirectory(const std::string& file, bool userOnly) noexcept {
  const size_t slash = file.rfind('/');
  if (slash == std::string::npos || slash == 0) return true;
  const std::string dir = file.substr(0, slash);
  struct stat st;
  if (sys::stat(dir.c_str(), &st) == 0) return S_ISDIR(st.st_mode);
  // Parents first, each made only where missing; a directory made by another process meanwhile
  // is as good as our own.
  for (size_t at = dir.find('/', 1);; at = dir.find('/', at + 1)) {
    const std::string part = at == std::string::npos ? dir : dir.substr(0, at);
    if (sys::mkdir(part.c_str(), userOnly ? 0700 : 0755) != 0 && errno != EEXIST) return false;
    if (at == std::string::npos) break;
  }
  return sys::stat(dir.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool MayWriteRegistryFile(const std::string& file) noexcept {
  if (sys::access(file.c_str(), W_OK) == 0) return true;
  if (errno != ENOENT) return false;
  const size_t slash = file.rfind('/');
  const std::string dir = slash == std::string::npos ? "." : slash == 0 ? "/" : file.substr(0, slash);
  return sys::access(dir.c_str(), W_OK | X_OK) == 0;
}

}  // namespace qz::os
