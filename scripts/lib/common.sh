# shellcheck shell=bash
# Shared by the scripts. Source it; it changes to the top of the source tree.
#
# Environment variables:
#   QUARN_INSTALL=no               install no packages; a missing one causes an error when it is used
#   CMAKE_BUILD_PARALLEL_LEVEL=N   parallel jobs, for tests and lint too (default: one per processor)
#   CMAKE_CXX_COMPILER_LAUNCHER=X  default: ccache if installed, else none

set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
# shellcheck disable=SC2034  # for the scripts that source this
TOP=$PWD

JOBS=${CMAKE_BUILD_PARALLEL_LEVEL:-$(nproc)}
export CMAKE_BUILD_PARALLEL_LEVEL=$JOBS
if command -v ccache >/dev/null; then
  export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER-ccache}
fi

fail() {
  printf '%s: %s\n' "$(basename "$0")" "$*" >&2
  exit 1
}

headline() { printf '\n=== %s (after %d s) ===\n' "$*" "$SECONDS"; }

# wait_until SECONDS WHAT COMMAND...: runs the command until it succeeds.
wait_until() {
  local deadline=$((SECONDS + $1)) what=$2
  shift 2
  until "$@"; do
    ((SECONDS < deadline)) || fail "gave up waiting for $what"
    sleep 0.05
  done
}

is_installed() { [[ $(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null) == installed ]]; }

as_root() {
  if ((EUID == 0)); then
    "$@"
  else
    command -v sudo >/dev/null || fail "packages are missing and there is no sudo; as root: $*"
    sudo "$@"
  fi
}

apt() { as_root env DEBIAN_FRONTEND=noninteractive apt-get -qq -o DPkg::Lock::Timeout=600 -o Acquire::Retries=3 "$@"; }

# Installs the missing ones of the packages.
install_packages() {
  [[ ${QUARN_INSTALL:-yes} != no ]] || return 0
  local package missing=()
  command -v apt-get >/dev/null ||
    fail "packages can be installed only on Debian and related systems. Install the content of these packages yourself and set QUARN_INSTALL=no: $*"
  for package in "$@"; do is_installed "$package" || missing+=("$package"); done
  ((${#missing[@]} > 0)) || return 0
  echo "installing ${missing[*]}"
  apt update
  apt install --yes --no-install-recommends "${missing[@]}" >/dev/null
}

# need GROUP...: installs the packages of these groups if they are missing.
need() {
  local group packages=()
  for group in "$@"; do
    case $group in
      build) packages+=(g++ cmake ninja-build pkg-config qt6-base-dev libudev-dev libxcb1-dev libwayland-dev lowdown) ;;
      test) packages+=(libgtest-dev libumockdev-dev umockdev fonts-dejavu-core util-linux locales
        # For the examples of the guide and the completion of other shells.
        python3 gnuplot-nox zsh fish) ;;
      window) packages+=(xvfb xauth openbox xdotool wmctrl x11-utils x11-xserver-utils xclip maim dbus-daemon fonts-dejavu-core) ;;
      pictures) packages+=(pngquant imagemagick x11-xserver-utils) ;;
      bench) packages+=(libbenchmark-dev python3) ;;
      windows)
        # The source package of Qt is that of the host tools in qt6-base-dev-tools.
        packages+=(g++-mingw-w64-x86-64-posix qt6-base-dev-tools dpkg-dev xz-utils patch googletest
          wine64 fonts-wine nsis zip)
        ;;
      one-file)
        # What Qt needs of the system, and archives of the small libraries around libxcb.
        packages+=(qt6-base-dev-tools dpkg-dev xz-utils patch libfontconfig-dev libfreetype-dev libx11-dev
          libx11-xcb-dev libxcb-icccm4-dev libxcb-image0-dev libxcb-keysyms1-dev libxcb-randr0-dev
          libxcb-render-util0-dev libxcb-shape0-dev libxcb-shm0-dev libxcb-sync-dev libxcb-util-dev
          libxcb-xfixes0-dev libxcb-xinput-dev libxcb-xkb-dev libxkbcommon-x11-dev libatspi2.0-dev)
        ;;
      # CPack asks file(1) which files are programs.
      package) packages+=(dpkg-dev file lintian doc-base) ;;
      metadata) packages+=(appstream appstream-util desktop-file-utils python3) ;;
      release) packages+=(git gnupg python3 python3-yaml binutils dpkg-dev flatpak-builder) ;;
      clean-root) packages+=(mmdebstrap) ;;
      lint) packages+=(clang-format clang-tidy) ;;
      fuzz) packages+=(clang) ;;
      coverage) packages+=(gcovr) ;;
      *) packages+=("$group") ;;
    esac
  done
  install_packages "${packages[@]}"
  # The sanitizers' run-time library is packaged per version of the compiler.
  if [[ " $* " == *" fuzz "* ]]; then install_packages "libclang-rt-$(clang++ -dumpversion | cut -d. -f1)-dev"; fi
}

# This system's sources of Debian's main packages: address and release, one pair per line.
# shellcheck disable=SC2016  # the names in brackets are apt's
debian_mirrors() {
  apt-get indextargets --format '$(IDENTIFIER)|$(ORIGIN)|$(COMPONENT)|$(REPO_URI) $(RELEASE)' |
    sed -n 's/^Packages|Debian|main|//p' | sort -u
}

# debian_sources TYPE: the same as lines of that type (deb, deb-src) for a list of sources.
debian_sources() {
  local mirrors
  mirrors=$(debian_mirrors)
  if [[ -z $mirrors ]]; then
    apt update
    mirrors=$(debian_mirrors)
  fi
  [[ -n $mirrors ]] || fail "this system has no source of Debian's packages"
  awk -v type="$1" '{ print type, $0, "main" }' <<<"$mirrors"
}

# configure PRESET [OPTION...]: shows CMake's output only if it fails.
configure() {
  local log=build/$1.configure.log
  cmake --preset "$@" >"$log" 2>&1 || {
    cat "$log"
    fail "preset $1 cannot be configured"
  }
}

# identity PRESET NAME: prints one of the shared values of CMakeLists.txt, such as VERSION.
identity() { sed -n "s/^!define $2 \"\(.*\)\"/\1/p" "$TOP/build/$1/generated/identity.nsh"; }

# build PRESET [TARGET...]: configures and builds the targets, or all.
build() {
  local preset=$1 targets=()
  shift
  if (($# > 0)); then targets=(--target "$@"); fi
  configure "$preset"
  cmake --build --preset "$preset" "${targets[@]}"
}

# The programs need none of the tests' packages.
build_programs() {
  headline "Building"
  need build
  if [[ ! -f build/release/build.ninja ]]; then
    configure release -DQUARN_TESTS=OFF -DQUARN_BENCH=OFF
  fi
  cmake --build --preset release --target quarn quarn-send quarn-device
}

# Runs a command without address-space randomisation: with the many random bits of newer kernels a library sometimes
# occupies the sanitizers' shadow memory.
without_randomisation() {
  if setarch -R true 2>/dev/null; then
    setarch -R "$@"
  else
    "$@"
  fi
}

mkdir -p build
