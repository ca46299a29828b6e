#!/usr/bin/env bash
# portable.sh DISPLAY VERSION: unpacks /var/tmp/quarn.tar.gz on a system that is thrown away afterwards, and uses the
# programs. When the file window-wanted is there, the program with windows waits for keys; when window-seen is there, the
# keys have been pressed.
set -euo pipefail
cd /var/tmp
export DISPLAY=$1
VERSION=$2
# shellcheck source=tests/system/package/inside.sh
source /var/tmp/inside.sh

SETTINGS=$HOME/.config/Halvo/Quarn
export XDG_RUNTIME_DIR=/var/tmp/runtime
mkdir -m 700 "$XDG_RUNTIME_DIR"
export QT_QPA_PLATFORM=xcb

# Nothing here can stand in for what is to be inside.
check_system() {
  local found
  found=$(find / -xdev -name 'libQt*' -o -xdev -name 'libxcb-icccm*' -o -xdev -name 'libxcb-image*')
  expect "libraries of the kind that is inside" "" "$found"
  # The system's own tools need the C++ library.
  mkdir away
  mv /lib/*/libstdc++.so.* away
}

unpack() {
  tar --extract --file quarn.tar.gz
  TREE=$(echo quarn-*)
  [[ -d $TREE ]] || fail "the archive has no folder of its own, or several: $TREE"
  PROGRAMS=$PWD/$TREE/bin
}

check_files() {
  local file
  for file in README.txt licences/README.txt licences/Qt.txt licences/LGPL-3.txt share/doc/quarn/guide.md \
    share/man/man1/quarn.1.gz share/man/man1/quarn-send.1.gz share/man/man1/quarn-device.1.gz \
    share/applications/quarn.desktop share/doc/quarn/examples/demo.qrn share/doc/quarn/html/index.html \
    share/bash-completion/completions/quarn share/bash-completion/completions/quarn-send; do
    [[ -s $TREE/$file ]] || fail "$file is not in the archive"
  done
}

start_device() {
  mkdir -p "$SETTINGS/ports"
  "$PROGRAMS/quarn-device" --link "$SETTINGS/ports/COM7" >device.log &
  device=$!
  wait_until 10 "the simulated instrument" test -s device.log
}

check_command() {
  local answer
  answer=$("$PROGRAMS/quarn-send" --settings "$DEMO" --raw '*IDN?')
  expect "the answer to a command" "HALVO,SIM-1,0001,1.00" "${answer%$'\r'}"
}

# The libraries that are loaded into the program with windows.
libraries_in_memory() { sed -n 's/.* \(\/.*\.so.*\)/\1/p' "/proc/$quarn/maps" | sort -u; }

check_window() {
  cp "$DEMO" demo.qrn
  "$PROGRAMS/quarn" demo.qrn &
  quarn=$!
  touch window-wanted
  wait_until 120 "the window to be seen" test -e window-seen
  kill -0 "$quarn" || fail "the program has ended"
  libraries_in_memory >libraries
  expect_in "the libraries in memory" libxcb.so "$(<libraries)"
  if grep -E 'libQt|libstdc|libgcc' libraries; then fail "these libraries should be inside"; fi
  kill "$quarn" "$device"
  wait "$device"
}

step "what should be inside is not outside"
check_system
step "unpacking"
unpack
DEMO=$TREE/share/doc/quarn/examples/demo.qrn
check_files
check_programs "$PROGRAMS" "$VERSION"
step "a command"
start_device
check_command
step "the window"
check_window
step "the programs needed nothing else"
