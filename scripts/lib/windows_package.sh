# shellcheck shell=bash
# The installer and the portable zip. Source it after common.sh, windows_qt.sh and wine.sh.

PACKAGE=$TOP/build/windows/package

# identity NAME: prints one of the shared values of CMakeLists.txt.
identity() { sed -n "s/^!define $1 \"\(.*\)\"/\1/p" build/windows/generated/identity.nsh; }

with_windows_line_ends() { sed 's/\r*$/\r/' "$1" >"$2"; }

add_licences() {
  local place=$1/licences documents=/usr/share/doc texts=/usr/share/common-licenses
  mkdir "$place"
  with_windows_line_ends LICENSE "$place/Quarn.txt"
  with_windows_line_ends <(sed "s/@QT_VERSION@/$(qt_version)/" packaging/windows/licences.txt) "$place/README.txt"
  with_windows_line_ends "$documents/qt6-base-dev/copyright" "$place/Qt.txt"
  with_windows_line_ends "$documents/g++-mingw-w64-x86-64-posix/copyright" "$place/GCC.txt"
  with_windows_line_ends "$documents/mingw-w64-common/copyright" "$place/MinGW-w64.txt"
  with_windows_line_ends "$texts/LGPL-3" "$place/LGPL-3.txt"
  with_windows_line_ends "$texts/GPL-3" "$place/GPL-3.txt"
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
  (cd "$1" && find . -type f -printf '%P\n' | sort | for_each EachFile)
  (cd "$1" && find . -maxdepth 1 -type f \( -name '*.exe' -o -name '*.com' \) -printf '%P\n' | sort | for_each EachProgram)
  (cd "$1" && find . -mindepth 1 -depth -type d -printf '%P\n' | for_each EachFolder)
}

# Sets $ZIP and $SETUP.
pack_windows() {
  local name version
  headline "Packing"
  name=$(identity NAME)
  version=$(identity VERSION)
  ZIP=$TOP/build/windows/quarn-$version-windows.zip
  SETUP=$TOP/build/windows/quarn-$version-setup.exe
  rm -rf "$PACKAGE" "$ZIP" "$SETUP"
  cmake --install build/windows --prefix "$PACKAGE/$name" --strip >build/windows/install.log
  # Files from the compiler still have their debugging information.
  find "$PACKAGE/$name" -name '*.dll' -exec x86_64-w64-mingw32-strip --strip-unneeded {} +
  add_licences "$PACKAGE/$name"
  (cd "$PACKAGE" && zip -q -9 -X -r "$ZIP" "$name")
  list_for_installer "$PACKAGE/$name" >"$PACKAGE/files.nsh"
  makensis -V2 -WX "-DIDENTITY=$TOP/build/windows/generated/identity.nsh" "-DFILES=$PACKAGE/$name" \
    "-DLISTS=$PACKAGE/files.nsh" "-DSIZE=$(du -sk "$PACKAGE/$name" | cut -f1)" "-DOUTPUT=$SETUP" \
    packaging/windows/quarn.nsi >"$PACKAGE/makensis.log" || {
    cat "$PACKAGE/makensis.log"
    fail "the installer cannot be made"
  }
  du -k "$SETUP" "$ZIP"
  (($(stat -c %s "$SETUP") <= 15 * 1024 * 1024)) || fail "the installer is larger than 15 MB"
}
