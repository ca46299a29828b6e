# shellcheck shell=bash
# Qt for Windows, built from Debian's source package. Source it after common.sh.
#
# Environment variable:
#   QUARN_WINDOWS_QT=FOLDER   its folder (default: in the user's cache folder, one folder for each source,
#                             compiler and set of options, and shared by all clones)

QT_TOOLCHAIN=$TOP/cmake/mingw-w64.cmake

# Parts that Quarn does not use are left out, so that they are not built, shipped and loaded. The source package lacks
# a header for tablets, and directwrite3 does not link with this compiler.
QT_WITHOUT=(
  sql network dbus xml printsupport opengl vulkan concurrent icu zstd jpeg gif
  tabletevent direct2d directwrite3
  graphicsview mdiarea dockwidget wizard calendarwidget fontcombobox syntaxhighlighter pdf movie fontdialog
  columnview undoview splashscreen systemtrayicon dial lcdnumber keysequenceedit errormessage
  progressdialog datawidgetmapper datetimeedit gestures
  textmarkdownreader textmarkdownwriter textodfwriter
  testlib_selfcover)

qt_options() {
  local feature
  printf '%s\n' -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=ON -DFEATURE_optimize_size=ON -DINPUT_opengl=no \
    -DQT_BUILD_TESTS=OFF -DQT_BUILD_EXAMPLES=OFF
  for feature in "${QT_WITHOUT[@]}"; do echo "-DFEATURE_$feature=OFF"; done
}

# The source must have the version of this system's Qt tools, which the build uses.
qt_version() { dpkg-query -W -f='${source:Version}' qt6-base-dev; }

# The values that a finished build depends on.
qt_key() {
  printf 'qt6-base %s\ncompiler %s\n' "$(qt_version)" \
    "$(dpkg-query -W -f='${Version}' g++-mingw-w64-x86-64-posix)"
  grep -v '^#' "$QT_TOOLCHAIN"
  qt_options
}

default_qt_folder() {
  local key
  key=$(qt_key | sha256sum)
  echo "${XDG_CACHE_HOME:-$HOME/.cache}/quarn/windows-qt-${key:0:16}"
}

# Sets $QT to an absolute path.
find_qt_folder() { QT=$(realpath -m "${QUARN_WINDOWS_QT:-$(default_qt_folder)}"); }

qt_is_there() { [[ -f $QT/quarn-key && $(<"$QT/quarn-key") == "$(qt_key)" ]]; }

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
}

# build_qt FOLDER: fetches and builds it in that folder; the result is in its subfolder root, under its final path.
build_qt() {
  local place=$1 options
  headline "Fetching the source of Qt $(qt_version)"
  fetch_qt "$place"
  headline "Building Qt for Windows, which takes a while and is done once"
  mapfile -t options < <(qt_options)
  cmake -S "$place/source" -B "$place/build" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$QT_TOOLCHAIN" \
    -DCMAKE_INSTALL_PREFIX="$QT" "${options[@]}" >"$place/configure.log" 2>&1 || {
    cat "$place/configure.log"
    fail "Qt cannot be configured"
  }
  cmake --build "$place/build" >"$place/build.log" || {
    tail -n 100 "$place/build.log"
    fail "Qt cannot be built"
  }
  DESTDIR=$place/root cmake --install "$place/build" --strip >"$place/install.log"
  qt_key >"$place/root$QT/quarn-key"
}

# Sets $QT and builds it if it is missing. If several processes need it, one builds and the others wait. It gets its
# name when it is complete, so an unfinished build is never used.
provide_qt() {
  local making lock
  find_qt_folder
  if ! qt_is_there; then
    making=$QT.making
    mkdir -p "$(dirname "$QT")"
    exec {lock}>"$QT.lock"
    flock --nonblock "$lock" || {
      echo "Qt for Windows is being built by another; waiting for it"
      flock "$lock"
    }
    if ! qt_is_there; then
      rm -rf "$making"
      mkdir "$making"
      build_qt "$making"
      rm -rf "$QT"
      mv "$making/root$QT" "$QT"
      rm -rf "$making"
    fi
    exec {lock}>&-
  fi
  echo "Qt for Windows is in $QT"
}
