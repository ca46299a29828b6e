# shellcheck shell=bash
# Debian's kernel with its modules, and what starts it in a virtual machine. Source it after common.sh.

# The package with the system's current kernel: "NAME VERSION".
kernel_package() {
  apt-cache show --no-all-versions linux-image-amd64 2>/dev/null |
    sed -n 's/^Depends: \(linux-image-[^ ]*\) (= \([^)]*\)).*/\1 \2/p'
}

# unpack_kernel PACKAGE VERSION FOLDER
unpack_kernel() {
  local making=$3.making
  rm -rf "$making"
  mkdir -p "$making/package"
  echo "downloading $1 $2"
  # As this user, who may write there.
  (cd "$making" && apt-get -qq -o APT::Sandbox::User= -o Acquire::Retries=3 download "$1=$2")
  dpkg-deb -x "$making"/*.deb "$making/package"
  rm "$making"/*.deb
  depmod -b "$making/package" "$(ls "$making/package/lib/modules")"
  mv "$making/package" "$3"
  rmdir "$making"
}

# Sets $kernel to its folder, which is kept for all clones; $release to the kernel's name for itself.
find_kernel() {
  local package version lock
  read -r package version < <(kernel_package) || true
  if [[ -z $package ]]; then
    apt update
    read -r package version < <(kernel_package) || fail "this system has no package of the kernel"
  fi
  kernel=${XDG_CACHE_HOME:-$HOME/.cache}/quarn/$package-$version
  mkdir -p "$(dirname "$kernel")"
  exec {lock}>"$kernel.lock"
  flock "$lock"
  [[ -d $kernel ]] || unpack_kernel "$package" "$version" "$kernel"
  exec {lock}>&-
  release=$(ls "$kernel/lib/modules")
}

# make_initrd FILE INIT MODULE...: busybox, the program INIT, a file `place`, and these modules with what they need, in
# the order in which they are to be loaded.
make_initrd() {
  local file=$1 init=$2 root path
  shift 2
  root=$file.root
  rm -rf "$root"
  mkdir -p "$root/bin" "$root/modules"
  cp /bin/busybox "$root/bin/busybox"
  cp "$init" "$root/init"
  printf 'MODULES=%q\nTESTS=%q\n' "$kernel/lib/modules/$release" "$(dirname "$(realpath "$init")")" >"$root/place"
  for path in $(modprobe --show-depends -a -S "$release" -d "$kernel" "$@" | awk '$1 == "insmod" && !seen[$2]++ { print $2 }'); do
    cp "$path" "$root/modules/"
    basename "$path" >>"$root/modules/order"
  done
  (cd "$root" && find . | cpio --quiet -o -H newc) >"$file"
  rm -rf "$root"
}
