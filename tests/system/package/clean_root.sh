# shellcheck shell=bash
# A clean Debian to install the package on. Sourced after common.sh; CLEAN is the folder for it.

: "${CLEAN:?}"

# Debian's smallest system with apt, of this system's release and from the same place. Its lists of packages are
# kept: the installation needs them next.
make_clean_root() {
  headline "A clean Debian"
  as_root rm -rf --one-file-system "$CLEAN"
  mkdir -p "$CLEAN"
  debian_sources deb >"$CLEAN/sources.list"
  apt-config dump Acquire::http Acquire::https >"$CLEAN/apt.conf"
  as_root mmdebstrap --mode=root --variant=apt --skip=cleanup/apt/lists --aptopt="$CLEAN/apt.conf" \
    --aptopt='Acquire::Languages "none"' --aptopt='Acquire::Retries "3"' --dpkgopt=force-unsafe-io \
    '' "$CLEAN/root" "$CLEAN/sources.list" >"$CLEAN/mmdebstrap.log" 2>&1 || {
    cat "$CLEAN/mmdebstrap.log"
    fail "a clean Debian cannot be made"
  }
}

# enter_clean_root COMMAND...: as root in there, with pseudo-terminals and processes of its own, which are gone
# with the command. Displays of this system can be reached.
enter_clean_root() {
  # shellcheck disable=SC2016  # for the inner shell
  as_root unshare --mount --pid --fork --kill-child bash -euc '
    root=$1
    shift
    mount -t proc proc "$root/proc"
    mount -t devpts -o newinstance,ptmxmode=0666 devpts "$root/dev/pts"
    mkdir -p "$root/tmp/.X11-unix"
    if [[ -d /tmp/.X11-unix ]]; then mount --bind /tmp/.X11-unix "$root/tmp/.X11-unix"; fi
    exec env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive \
      chroot "$root" "$@"' enter "$CLEAN/root" "$@"
}

# test_on_clean_root PACKAGE
test_on_clean_root() {
  local version
  make_clean_root
  headline "The package on the clean Debian"
  version=$(dpkg-deb --field "$1" Version)
  as_root cp "$1" "$CLEAN/root/var/tmp/quarn.deb"
  as_root cp tests/system/package/{installation,inside}.sh "$CLEAN/root/var/tmp"
  as_root cp --dereference /etc/resolv.conf "$CLEAN/root/etc/resolv.conf"
  enter_clean_root bash /var/tmp/installation.sh "${version%-*}"
  as_root rm -rf --one-file-system "$CLEAN/root"
}
