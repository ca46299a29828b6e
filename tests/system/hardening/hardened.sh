#!/usr/bin/env bash
# hardened.sh PROGRAM [fortified]: fails unless the program is built as SECURITY.md says; `fortified` for a
# build that optimises, where the C library's checked calls are used. Says what is missing.
set -euo pipefail
export LC_ALL=C

program=$1
fortified=${2:-no}
missing=()

# has WHAT PATTERN OPTION...: something in what readelf says of the program with these options fits.
has() {
  local what=$1 pattern=$2
  shift 2
  # Read to its end: readelf must not find its reader gone.
  [[ $(readelf -W "$@" "$program" | grep -cE "$pattern") -gt 0 ]] || missing+=("$what")
}

has "position-independent" '^ *Type: +DYN ' -h
has "marked as position-independent" '\(FLAGS_1\).* PIE( |$)' -d
has "relocations that become read-only" '^ *GNU_RELRO ' -l
has "all symbols bound at the start" '\(FLAGS\).* BIND_NOW( |$)|\(FLAGS_1\).* NOW( |$)' -d
has "a stack that cannot be executed" '^ *GNU_STACK .* RW +0x' -l
has "a stack protector" ' UND __stack_chk_fail(@|$)' --dyn-syms
# Inside the program, or in the library that it needs.
has "checked access in the C++ library" ' _ZSt21__glibcxx_assert_fail' --syms
if [[ $fortified == fortified ]]; then
  # Any checked call; the stack protector's own name ends in _fail.
  has "checked calls of the C library" ' UND __[a-z_0-9]+_chk(@|$)' --dyn-syms
fi

if ((${#missing[@]} > 0)); then
  printf '%s lacks:\n' "$(basename "$program")"
  printf '  %s\n' "${missing[@]}"
  exit 1
fi
echo "$(basename "$program") is hardened"
