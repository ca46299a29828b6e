# shellcheck shell=bash
# Programs that are one file each: what is packed with them, and what they may need of the system. Source it after
# common.sh and qt.sh.

# configure_with_qt PRESET [OPTION...]: from the start if it was configured with another Qt, which CMake remembers.
configure_with_qt() {
  local preset=$1 start=()
  shift
  if ! grep -qsx "CMAKE_PREFIX_PATH:[A-Z]*=$QT" "build/$preset/CMakeCache.txt"; then start=(--fresh); fi
  configure "$preset" "${start[@]}" -DCMAKE_PREFIX_PATH="$QT" "$@"
}

# add_licences SYSTEM FOLDER: the texts of Quarn and of what is inside its programs.
add_licences() {
  local system=$1 place=$2 documents=/usr/share/doc texts=/usr/share/common-licenses
  mkdir "$place"
  cp LICENSE "$place/Quarn.txt"
  sed "s/@QT_VERSION@/$(qt_version)/; s#@COMMAND@#scripts/${ONE_FILE_COMMAND[$system]}#" packaging/licences.txt \
    "packaging/$system/licences.txt" >"$place/README.txt"
  cp "$documents/qt6-base-dev/copyright" "$place/Qt.txt"
  cp "$texts/LGPL-3" "$place/LGPL-3.txt"
  cp "$texts/GPL-3" "$place/GPL-3.txt"
  "add_licences_of_$system" "$place" "$documents"
}

declare -A ONE_FILE_COMMAND=([windows]=windows [linux]=portable)

add_licences_of_windows() {
  cp "$2/g++-mingw-w64-x86-64-posix/copyright" "$1/GCC.txt"
  cp "$2/mingw-w64-common/copyright" "$1/MinGW-w64.txt"
  cp "$2/nsis-common/copyright" "$1/NSIS.txt"
}

add_licences_of_linux() {
  local name
  cp "$2/$(dpkg-query --search "$(gcc -print-file-name=libstdc++.a)" | cut -d: -f1)/copyright" "$1/GCC.txt"
  for name in "${QT_LINKED_IN[@]}"; do
    cp "$2/$(dpkg-query --search "$(linked_in_archive "$name")" | cut -d: -f1)/copyright" "$1/libxcb-$name.txt"
  done
}

# libraries_of PROGRAM: the libraries that the system loads with it, one a line.
libraries_of() {
  case $1 in
    *.exe | *.com) x86_64-w64-mingw32-objdump -p "$1" | sed -n 's/^\tDLL Name: //p' | tr '[:upper:]' '[:lower:]' ;;
    *) readelf -dW "$1" | sed -n 's/.*(NEEDED).*\[\(.*\)\]$/\1/p' ;;
  esac | sort -u
}

# require_only PROGRAM LIBRARY...: fails if it needs other libraries.
require_only() {
  local program=$1 needed others
  shift
  needed=$(libraries_of "$program")
  [[ -n $needed ]] || fail "$program names no libraries; it cannot be read"
  others=$(comm -23 <(echo "$needed") <(printf '%s\n' "$@" | sort -u))
  [[ -z $others ]] || fail "$(basename "$program") is not one file, it needs also:"$'\n'"$others"
  echo "$(basename "$program") is one file of $(($(stat -c %s "$program") / 1024)) KiB, and needs of the system:" \
    "$(tr '\n' ' ' <<<"$needed")"
}
