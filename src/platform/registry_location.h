// registry_location.h - where the files of the platform's registry store live, and whether this
// process may write them.
//
// Portable declarations; the platform folder decides the directories (on Linux:
// $QZCORE_REGISTRY_DIR, else /var/lib/qzcore for the machine file and
// ${XDG_CONFIG_HOME:-$HOME/.config}/qzcore for the user's own file).
#pragma once

#include <string>

namespace qz::os {

struct RegistryFiles {
  std::string machine;  // the machine hives' file
  std::string user;     // the calling user's file; empty when no home directory can be found
};

// The files as the environment names them now. Cheap enough to ask on every operation, so a
// process that changes the environment reaches the new files.
RegistryFiles GetRegistryFiles();

// Makes the directory that holds `file`, with missing parents (private to the user when `userOnly`).
// True when it exists afterwards.
bool MakeRegistryDirectory(const std::string& file, bool userOnly) noexcept;

// Whether this process may write `file`, or create it where it is missing.
bool MayWriteRegistryFile(const std::string& file) noexcept;

}  // namespace qz::os
