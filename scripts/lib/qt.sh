# shellcheck shell=bash
# Qt without shared libraries, built from Debian's source package, for the programs that are one file each. Source it
# after common.sh. SYSTEM is windows or linux.
#
# Environment variables:
#   QUARN_WINDOWS_QT=FOLDER, QUARN_LINUX_QT=FOLDER
#                             its folder (default: in the user's cache folder, one folder for each system, source,
#                             compiler and set of options, and shared by all clones)
#   QUARN_QT_PATCH=FILE       a change to Qt's source, as diff writes it for the folder of the source

QT_TOOLCHAIN=$TOP/cmake/mingw-w64.cmake

# Parts that Quarn does not use are left out, so that they are not built.
QT_WITHOUT=(
  sql network xml printsupport opengl vulkan concurrent icu zstd jpeg gif ico
  graphicsview mdiarea dockwidget wizard calendarwidget fontcombobox syntaxhighlighter pdf movie fontdialog
  columnview undoview splashscreen systemtrayicon dial lcdnumber keysequenceedit errormessage
  progressdialog datawidgetmapper datetimeedit
  textmarkdownreader textmarkdownwriter textodfwriter)
# The source package lacks a header for tablets, and directwrite3 does not link with this compiler.
QT_WITHOUT_ON_WINDOWS=(testlib_selfcover dbus gestures tabletevent direct2d directwrite3)
# D-Bus is needed for screen readers, and is loaded at run time where it exists.
QT_WITHOUT_ON_LINUX=(
  dbus_linked testlib glib egl eglfs kms linuxfb vnc vkkhrdisplay evdev libinput mtdev tslib xcb_sm gtk3
  system_doubleconversion system_harfbuzz system_libb2 system_pcre2 system_png system_zlib)

# On Linux these belong to the system, because they must fit its screen, keyboard and fonts. The small libraries around
# libxcb are not on every system, so they are linked into the program.
QT_ON_LINUX=(
  -DFEATURE_accessibility_atspi_bridge=ON -DFEATURE_fontconfig=ON -DFEATURE_system_freetype=ON
  -DFEATURE_xcb=ON -DFEATURE_system_xcb_xinput=ON -DFEATURE_xkbcommon_x11=ON)
QT_LINKED_IN=(icccm image keysyms render-util util)

# As for Quarn's own code: cmake/QuarnCompiler.cmake.
QT_HARDENING="-fstack-protector-strong -fstack-clash-protection -fcf-protection -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2"

qt_options_of_windows() { printf -- '-DFEATURE_%s=OFF\n' "${QT_WITHOUT_ON_WINDOWS[@]}"; }

library_folder() { echo "/usr/lib/$(gcc -print-multiarch)"; }

# linked_in_archive NAME: the file of a library that is linked into the Linux programs.
linked_in_archive() { echo "$(library_folder)/libxcb-$1.a"; }

# Where CMake finds these libraries. Who links with Qt needs these options too.
linked_in_options() {
  local name upper
  for name in "${QT_LINKED_IN[@]}"; do
    upper=${name^^}
    echo "-DXCB_${upper//-/}_LIBRARY=$(linked_in_archive "$name")"
  done
}

qt_options_of_linux() {
  printf '%s\n' "${QT_ON_LINUX[@]}" "-DCMAKE_C_FLAGS=$QT_HARDENING" "-DCMAKE_CXX_FLAGS=$QT_HARDENING" \
    -DCMAKE_POSITION_INDEPENDENT_CODE=ON -DQT_FORCE_FIND_TOOLS=ON -DQT_HOST_PATH=/usr \
    "-DQT_HOST_PATH_CMAKE_DIR=$(library_folder)/cmake"
  linked_in_options
  printf -- '-DFEATURE_%s=OFF\n' "${QT_WITHOUT_ON_LINUX[@]}"
}

# qt_options SYSTEM
qt_options() {
  printf '%s\n' -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF -DFEATURE_optimize_size=ON -DINPUT_opengl=no \
    -DQT_BUILD_TESTS=OFF -DQT_BUILD_EXAMPLES=OFF
  printf -- '-DFEATURE_%s=OFF\n' "${QT_WITHOUT[@]}"
  "qt_options_of_$1"
}

# The source must have the version of this system's Qt tools, which the build uses.
qt_version() { dpkg-query -W -f='${source:Version}' qt6-base-dev; }

# The values that a finished build depends on.
# qt_key SYSTEM
qt_key() {
  printf 'qt6-base %s\n' "$(qt_version)"
  if [[ $1 == windows ]]; then
    printf 'compiler %s\n' "$(dpkg-query -W -f='${Version}' g++-mingw-w64-x86-64-posix)"
    grep -v '^#' "$QT_TOOLCHAIN"
  else
    printf 'compiler %s\n' "$(c++ --version | head -n 1)"
  fi
  qt_options "$1"
  if [[ -n ${QUARN_QT_PATCH:-} ]]; then sha256sum <"$QUARN_QT_PATCH" | sed 's/^/patch /'; fi
}

# default_qt_folder SYSTEM
default_qt_folder() {
  local key
  key=$(qt_key "$1" | sha256sum)
  echo "${XDG_CACHE_HOME:-$HOME/.cache}/quarn/$1-qt-${key:0:16}"
}

# find_qt_folder SYSTEM: sets $QT to an absolute path.
find_qt_folder() {
  local named=QUARN_${1^^}_QT
  QT=$(realpath -m "${!named:-$(default_qt_folder "$1")}")
}

# qt_is_there SYSTEM
qt_is_there() { [[ -f $QT/quarn-key && $(<"$QT/quarn-key") == "$(qt_key "$1")" ]]; }

# fetch_qt FOLDER: unpacks the source into FOLDER/source. Does not change this system's package lists.
fetch_qt() {
  local place=$1 version options
  version=$(qt_version)
  mkdir -p "$place/lists/partial"
  debian_sources deb-src >"$place/sources.list"
  options=(-qq -o "Dir::Etc::SourceList=$place/sources.list" -o Dir::Etc::SourceParts=/dev/null
    -o "Dir::State::Lists=$place/lists" -o APT::Get::List-Cleanup=0 -o APT::Sandbox::User= -o Acquire::Retries=3)
  # Written only to that folder, so no special permission is needed.
  apt-get "${options[@]}" -o Dir::Cache::srcpkgcache= -o Dir::Cache::pkgcache= update
  (cd "$place" && apt-get "${options[@]}" -o Dir::Cache::srcpkgcache= -o Dir::Cache::pkgcache= \
    --download-only source "qt6-base=$version")
  dpkg-source --no-check --extract "$place"/qt6-base_*.dsc "$place/source" >"$place/unpack.log" 2>&1 || {
    cat "$place/unpack.log"
    fail "the source of Qt cannot be unpacked"
  }
  if [[ -n ${QUARN_QT_PATCH:-} ]]; then patch -p1 -d "$place/source" <"$QUARN_QT_PATCH"; fi
}

# build_qt SYSTEM FOLDER: fetches and builds it in that folder; the result is in its subfolder root, under its final
# path.
build_qt() {
  local system=$1 place=$2 options
  headline "Fetching the source of Qt $(qt_version)"
  fetch_qt "$place"
  headline "Building Qt for ${system^}, which takes a while and is done once"
  mapfile -t options < <(qt_options "$system")
  if [[ $system == windows ]]; then options+=("-DCMAKE_TOOLCHAIN_FILE=$QT_TOOLCHAIN"); fi
  cmake -S "$place/source" -B "$place/build" -G Ninja -DCMAKE_INSTALL_PREFIX="$QT" "${options[@]}" \
    >"$place/configure.log" 2>&1 || {
    cat "$place/configure.log"
    fail "Qt cannot be configured"
  }
  cmake --build "$place/build" >"$place/build.log" || {
    tail -n 100 "$place/build.log"
    fail "Qt cannot be built"
  }
  DESTDIR=$place/root cmake --install "$place/build" --strip >"$place/install.log"
  qt_key "$system" >"$place/root$QT/quarn-key"
}

# provide_qt SYSTEM: sets $QT and builds it if it is missing. If several processes need it, one builds and the others
# wait. It gets its name when it is complete, so an unfinished build is never used.
provide_qt() {
  local making lock
  find_qt_folder "$1"
  if ! qt_is_there "$1"; then
    making=$QT.making
    mkdir -p "$(dirname "$QT")"
    exec {lock}>"$QT.lock"
    flock --nonblock "$lock" || {
      echo "Qt for ${1^} is being built by another; waiting for it"
      flock "$lock"
    }
    if ! qt_is_there "$1"; then
      rm -rf "$making"
      mkdir "$making"
      build_qt "$1" "$making"
      rm -rf "$QT"
      mv "$making/root$QT" "$QT"
      rm -rf "$making"
    fi
    exec {lock}>&-
  fi
  echo "Qt for ${1^} is in $QT"
}
