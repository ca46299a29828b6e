#!/usr/bin/env bash
# installation.sh VERSION: installs, uses and removes /var/tmp/quarn.deb. Runs as root on a system that is
# thrown away afterwards.
set -euo pipefail
cd /var/tmp
VERSION=$1
PACKAGE=/var/tmp/quarn.deb
MIME_TYPE=application/x-quarn-configuration
SETTINGS=$HOME/.config/Halvo/Quarn
export XDG_RUNTIME_DIR=/var/tmp/runtime
mkdir -m 700 "$XDG_RUNTIME_DIR"
DEMO=/usr/share/doc/quarn/examples/demo.qrn

# shellcheck source=tests/system/package/inside.sh
source /var/tmp/inside.sh

# What apt-get has to say is shown only when it fails; what it fetches, always.
quietly() {
  apt-get "$@" >apt.log 2>&1 || {
    cat apt.log
    fail "apt-get $* has failed"
  }
  grep '^Need to get' apt.log || true
}

#--- Installing and removing -----------------------------------------------------------------------------

# Every file, folder and link, and what is in those that many packages write into; but not what apt and dpkg
# keep for themselves.
snapshot() {
  find / -xdev \( -path /proc -o -path /dev -o -path /tmp -o -path /run -o -path /root -o -path /var/tmp \
    -o -path /var/log -o -path /var/cache -o -path /var/lib/apt -o -path /var/lib/dpkg \) -prune \
    -o -printf '%y %m %u %g %p\n' | sort
  find /etc /usr/share -type f \( -path '/etc/*' -o -path '/usr/share/mime/*' -o -path '/usr/share/applications/*' \
    -o -path '/usr/share/icons/*' \) -exec sha256sum {} + | sort -k 2
}

# Nothing of what the package brought is there, but for folders that others have too.
check_removed() {
  local path folders=()
  while read -r path; do
    if [[ -d $path && ! -L $path ]]; then
      folders+=("$path")
    elif [[ -e $path || -L $path ]]; then
      fail "$path is left behind"
    fi
  done <files.list
  dpkg --search "${folders[@]}" >/dev/null 2>folders.log || fail "left behind: $(<folders.log)"
}

# Everything that it depends on is there.
install_alone() {
  quietly install --yes --no-install-recommends "$PACKAGE"
  expect_in "what apt-get installed" " 1 newly installed, " "$(<apt.log)"
}

# What is left is in before.list; the settings are the user's own and stay.
remove() {
  dpkg --listfiles quarn | sed 's:^/\.$:/:' | grep -v '^/$' >files.list
  quietly purge --yes quarn
  if dpkg --status quarn >/dev/null 2>&1; then fail "dpkg still knows the package"; fi
  check_removed
  snapshot >after.list
  diff before.list after.list || fail "the system is not what it was before"
}

#--- The programs ----------------------------------------------------------------------------------------

start_device() {
  mkdir -p "$SETTINGS/ports"
  : >device.log
  quarn-device --link "$SETTINGS/ports/COM7" >>device.log &
  device=$!
  wait_until 10 "the simulated instrument" test -s device.log
}

check_command() {
  local answer
  start_device
  answer=$(quarn-send --settings "$DEMO" --raw '*IDN?')
  kill "$device"
  wait "$device"
  expect "the answer to a command" "HALVO,SIM-1,0001,1.00" "${answer%$'\r'}"
  [[ ! -e $SETTINGS/ports/COM7 ]] || fail "the simulated instrument has left its link behind"
}

#--- The desktop -----------------------------------------------------------------------------------------

type_of() { gio info --attributes=standard::content-type "$1" | sed -n 's/.*content-type: //p'; }

check_mime_type() {
  local icon
  printf 'no such first line\n' >by-name.qrn
  cp "$DEMO" by-first-line
  printf 'neither\n' >neither
  expect "the type of a .qrn file" "$MIME_TYPE" "$(type_of by-name.qrn)"
  expect "the type of a file that begins like one" "$MIME_TYPE" "$(type_of by-first-line)"
  expect "the type of another file" text/plain "$(type_of neither)"
  icon=$(gio info --attributes=standard::icon by-name.qrn)
  expect_in "the icon of a .qrn file" "${MIME_TYPE/\//-}" "$icon"
  [[ -f /usr/share/icons/hicolor/48x48/mimetypes/${MIME_TYPE/\//-}.png ]] || fail "that icon is not there"
  expect_in "the program for a .qrn file" "quarn.desktop" "$(gio mime "$MIME_TYPE" | head -n 1)"
}

settings_are_loaded() { grep -qs '^MEM9=\*IDN?' "$SETTINGS/Quarn.ini"; }

# What a double click does, on a screen that nobody sees.
check_opening() {
  local opened
  start_device
  cp "$DEMO" bench.qrn
  QT_QPA_PLATFORM=offscreen gio open bench.qrn 2>opened.log
  wait_until 30 "the file to be loaded" settings_are_loaded
  opened=$(pgrep --exact quarn) || fail "the program has ended: $(<opened.log)"
  kill "$opened" "$device"
  wait "$device"
  rm -r "$HOME/.config"
}

#--- The shell -------------------------------------------------------------------------------------------

# At another width than the usual one man keeps no copy of what it shows.
check_manuals() {
  local program
  for program in quarn quarn-send quarn-device; do
    expect_in "the list of manuals" "$program (1)" "$(whatis "$program")"
    expect_in "the manual of $program" "$($program --version | grep -o "[0-9.]*" | head -n 1)" "$(MANWIDTH=100 man "$program" 2>man.log)"
    expect "what man has to say" "" "$(<man.log)"
  done
}

# completed PROGRAM WORD: what bash makes of the word. It asks the file that the package has put where it looks for one.
completed() {
  # shellcheck disable=SC2016  # for the inner shell
  bash -euc 'source "/usr/share/bash-completion/completions/$1"
    COMP_WORDS=("$@")
    COMP_CWORD=1
    read -ra registered < <(complete -p "$1")
    "${registered[2]}" "$1"
    echo "${COMPREPLY[*]}"' completed "$@"
}

check_completion() {
  expect "what quarn --v is completed to" --version "$(completed quarn --v)"
  expect "what quarn-send --se is completed to" --settings "$(completed quarn-send --se)"
  expect "what quarn-device --r is completed to" --rules "$(completed quarn-device --r)"
}

#--- The story -------------------------------------------------------------------------------------------

step "what the package depends on, and nothing else"
quietly satisfy --yes --no-install-recommends "$(dpkg-deb --field "$PACKAGE" Depends)"
snapshot >before.list
step "installing"
install_alone
check_programs /usr/bin "$VERSION"
check_command
step "removing"
remove

step "what a desktop has"
quietly install --yes --no-install-recommends desktop-file-utils hicolor-icon-theme libglib2.0-bin man-db procps
snapshot >before.list
step "installing"
install_alone
check_mime_type
desktop-file-validate /usr/share/applications/quarn.desktop
check_manuals
check_completion
step "opening a file"
check_opening
step "removing"
remove
step "the system is what it was before"
