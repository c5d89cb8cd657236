#!/usr/bin/env bash
# check_layers.sh - fails when a source file under src/ includes upward, or reaches the operating
# system outside the platform folder.
#
# The library has one direction. Each folder under src/ has a rank; a file may include headers of
# its own folder and of folders of a lower rank only:
#
#   platform (0)  the portable declarations (src/platform/*.h) and their bodies (src/platform/linux/)
#   frame    (1)  results, the exception, the export frame, reporting, heap, the global pointers
#   sync     (2)  mutexes and every other synchronisation object: everything else leans on them
#   text     (3)  strings, conversions, locale, UTF-16 text files
#   options  (3)  the option parser
#   thread, system (4)          threads and processes; files, time, system information
#   host, registry (5)          host identity; the registry (on strings and named objects)
#   component (6)               the component model (on the registry and libraries)
#   start    (9)  start and stop, which build every family's global objects
#
# One exception: a family's exports.cpp (or <concept>_exports.cpp) may include
# start/client_data.h, to reach the managers the start built. A new folder must be given a rank
# here before it builds.
#
# Second rule: outside src/platform/linux/ no file includes an operating-system header, or a
# platform-folder header that carries one. Allowed angle includes are the C++ standard headers
# (names without a dot), the C standard headers, ICU (unicode/...) and SQLite (sqlite3.h).
# Known exception, to be folded away: platform/host_network.h still carries host_network_native.h,
# because host identity hands out the system's own address records (struct addrinfo).
set -uo pipefail
cd "$(dirname "$0")/.."

declare -A RANK=([platform]=0 [frame]=1 [sync]=2 [text]=3 [options]=3 [thread]=4 [system]=4
                 [host]=5 [registry]=5 [component]=6 [start]=9)
C_HEADERS=" assert.h complex.h ctype.h errno.h fenv.h float.h inttypes.h iso646.h limits.h locale.h
  math.h setjmp.h signal.h stdalign.h stdarg.h stdatomic.h stdbool.h stddef.h stdint.h stdio.h
  stdlib.h stdnoreturn.h string.h tgmath.h threads.h time.h uchar.h wchar.h wctype.h sqlite3.h "
PLATFORM_DIR=src/platform/linux

failures=0
fail() {
  echo "check_layers: $1" >&2
  failures=$((failures + 1))
}

while IFS= read -r file; do
  rel=${file#src/}
  folder=${rel%%/*}
  if [[ -z ${RANK[$folder]+set} ]]; then
    fail "$file: folder src/$folder has no rank (add it at the top of tools/check_layers.sh)"
    continue
  fi
  own=${RANK[$folder]}
  in_platform_dir=0
  [[ $file == $PLATFORM_DIR/* ]] && in_platform_dir=1
  while IFS= read -r line; do
    if [[ $line =~ ^[[:space:]]*#[[:space:]]*include[[:space:]]*\"([^\"]+)\" ]]; then
      target=${BASH_REMATCH[1]}
      if [[ $target == */* ]]; then
        tfolder=${target%%/*}
        [[ $tfolder == qzcore ]] && continue  # the public headers
        if [[ -z ${RANK[$tfolder]+set} ]]; then
          fail "$file includes \"$target\": unknown folder"
        elif [[ $tfolder != "$folder" && ${RANK[$tfolder]} -ge $own ]]; then
          if [[ $target == start/client_data.h && $file == src/*/*exports.cpp ]]; then continue; fi
          fail "$file includes \"$target\": $folder may not include $tfolder"
        fi
        if [[ $in_platform_dir == 0 && $target == platform/linux/* ]]; then
          fail "$file includes \"$target\": the platform folder's own headers stay inside it"
        fi
      elif [[ $file == src/platform/host_network.h && $target == host_network_native.h ]]; then
        continue
      elif [[ $in_platform_dir == 0 && -e $PLATFORM_DIR/$target && ! -e $(dirname "$file")/$target ]]; then
        fail "$file includes \"$target\" from the platform folder: native types stay inside it"
      fi
    elif [[ $line =~ ^[[:space:]]*#[[:space:]]*include[[:space:]]*\<([^\>]+)\> ]]; then
      target=${BASH_REMATCH[1]}
      [[ $in_platform_dir == 1 ]] && continue
      [[ $target != *.* && $target != */* ]] && continue  # C++ standard header
      [[ $target == unicode/* ]] && continue
      [[ $C_HEADERS == *" $target "* ]] && continue
      fail "$file includes <$target>: operating-system headers belong in $PLATFORM_DIR/"
    fi
  done <"$file"
done < <(find src -type f \( -name '*.h' -o -name '*.cpp' -o -name '*.h.in' \) | sort)

if [[ $failures -ne 0 ]]; then
  echo "check_layers: $failures violation(s)" >&2
  exit 1
fi
echo "check_layers: ok"
