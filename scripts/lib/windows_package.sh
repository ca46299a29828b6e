# shellcheck shell=bash
# The installer and the portable zip. Source it after common.sh, qt.sh, one_file.sh and wine.sh.

PACKAGE=$TOP/build/windows/package

# What Windows itself has. A program needs nothing else, so it loads nothing from its own folder.
WINDOWS_LIBRARIES=(
  advapi32.dll authz.dll comdlg32.dll d3d11.dll d3d9.dll dwmapi.dll dxgi.dll gdi32.dll imm32.dll kernel32.dll
  msvcrt.dll netapi32.dll ole32.dll oleaut32.dll setupapi.dll shcore.dll shell32.dll shlwapi.dll user32.dll userenv.dll
  uxtheme.dll version.dll winmm.dll ws2_32.dll wtsapi32.dll
  api-ms-win-core-synch-l1-2-0.dll api-ms-win-core-winrt-l1-1-0.dll api-ms-win-core-winrt-string-l1-1-0.dll)

with_windows_line_ends() { sed -i 's/\r*$/\r/' "$@"; }

# check_windows_files FOLDER: each program in it is one file.
check_windows_files() {
  local program
  [[ -z $(find "$1" -iname '*.dll') ]] || fail "the package has libraries beside the programs"
  for program in "$1"/quarn.exe "$1"/quarn.com "$1"/quarn-send.exe; do
    require_only "$program" "${WINDOWS_LIBRARIES[@]}"
  done
}

# Writes a macro for the installer that does something for each line of its input.
for_each() {
  echo "!macro $1 DO"
  # shellcheck disable=SC1003,SC2016  # a backslash, and the installer's own variable
  tr / '\\' | sed 's/.*/  !insertmacro ${DO} "&"/'
  echo '!macroend'
}

# list_for_installer FOLDER: lists every installed file, the programs among them, and the folders, inner ones first.
list_for_installer() {
  local LC_ALL=C
  (cd "$1" && find . -type f -printf '%P\n' | sort | for_each EachFile)
  (cd "$1" && find . -maxdepth 1 -type f \( -name '*.exe' -o -name '*.com' \) -printf '%P\n' | sort | for_each EachProgram)
  (cd "$1" && find . -mindepth 1 -type d -printf '%P\n' | sort --reverse | for_each EachFolder)
}

# kib_of FOLDER: what its files hold, whatever they take on this disk.
kib_of() { find "$1" -type f -printf '%s\n' | awk '{ sum += int(($1 + 1023) / 1024) } END { print sum }'; }

# make_repeatable FOLDER: packing it gives the same bytes for the same files. Their time is that of the release.
make_repeatable() {
  chmod -R u=rwX,go=rX "$1"
  find "$1" -exec touch --no-dereference "--date=@$SOURCE_DATE_EPOCH" {} +
}

# Sets $ZIP and $SETUP.
pack_windows() {
  local name version
  headline "Packing"
  name=$(identity windows NAME)
  version=$(identity windows VERSION)
  ZIP=$TOP/build/windows/quarn-$version-windows.zip
  SETUP=$TOP/build/windows/quarn-$version-setup.exe
  rm -rf "$PACKAGE" "$ZIP" "$SETUP"
  # Also for what strips the programs, which writes the time into them.
  SOURCE_DATE_EPOCH=$(date --utc --date="$(identity windows BUILD_DATE)" +%s)
  export SOURCE_DATE_EPOCH
  cmake --install build/windows --prefix "$PACKAGE/$name" --strip >build/windows/install.log
  check_windows_files "$PACKAGE/$name"
  add_licences windows "$PACKAGE/$name/licences"
  with_windows_line_ends "$PACKAGE/$name"/licences/*
  make_repeatable "$PACKAGE/$name"
  # An archive has times of day, without a zone.
  (cd "$PACKAGE" && find "$name" | LC_ALL=C sort | TZ=UTC zip -q -9 -X -@ "$ZIP")
  list_for_installer "$PACKAGE/$name" >"$PACKAGE/files.nsh"
  makensis -V2 -WX "-DIDENTITY=$TOP/build/windows/generated/identity.nsh" "-DFILES=$PACKAGE/$name" \
    "-DLISTS=$PACKAGE/files.nsh" "-DSIZE=$(kib_of "$PACKAGE/$name")" "-DOUTPUT=$SETUP" \
    packaging/windows/quarn.nsi >"$PACKAGE/makensis.log" || {
    cat "$PACKAGE/makensis.log"
    fail "the installer cannot be made"
  }
  du -k "$SETUP" "$ZIP"
  (($(stat -c %s "$SETUP") <= 15 * 1024 * 1024)) || fail "the installer is larger than 15 MB"
}
