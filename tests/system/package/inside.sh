# shellcheck shell=bash
# For scripts that run on the clean Debian. Sourced there.

step() { printf '%4d s  %s\n' "$SECONDS" "$*"; }

fail() {
  printf '%s: %s\n' "$(basename "$0")" "$*" >&2
  exit 1
}

# expect WHAT EXPECTED ACTUAL
expect() { [[ $2 == "$3" ]] || fail "$1: expected \"$2\", found \"$3\""; }

# expect_in WHAT EXPECTED TEXT
expect_in() { [[ $3 == *"$2"* ]] || fail "$1: \"$2\" is not in:"$'\n'"$3"; }

wait_until() {
  local deadline=$((SECONDS + $1)) what=$2
  shift 2
  until "$@"; do
    ((SECONDS < deadline)) || fail "gave up waiting for $what"
    sleep 0.05
  done
}

# check_programs FOLDER VERSION: the programs in the folder find their libraries and say who they are.
check_programs() {
  local program
  for program in quarn quarn-send quarn-device; do
    if ldd "$1/$program" | grep 'not found'; then fail "$program lacks libraries"; fi
    expect_in "$program --help" "usage: $program " "$("$1/$program" --help)"
  done
  expect_in "quarn --version" "Quarn  (Ver. $2)" "$("$1/quarn" --version)"
  expect "quarn-send --version" "quarn-send $2" "$("$1/quarn-send" --version)"
  expect "quarn-device --version" "quarn-device $2" "$("$1/quarn-device" --version)"
}
