# shellcheck shell=bash
# Runs the tests of a preset. Source it after common.sh.

# run_tests PRESET [LAUNCHER [CTEST-OPTION...]]: also fails if a test did not run.
run_tests() {
  local preset=$1 launcher=${2:-} report=$TOP/build/$1/tests.xml log=$TOP/build/$1/tests.log
  shift
  if (($# > 0)); then shift; fi
  rm -rf "$report" "$log" "build/$preset/reports"
  # The tests mostly wait: for a splash to close, for a line to fall silent.
  $launcher ctest --preset "$preset" --parallel "$((5 * JOBS))" --no-tests=error --output-junit "$report" --output-log "$log" "$@"
  # CTest calls a run with skipped tests a success.
  local unrun
  unrun=$(grep -E '^[[:space:]]*<testcase .*status="(notrun|disabled)"' "$report" | sed 's/.*<testcase name="\([^"]*\)".*/  \1/') || true
  [[ -z $unrun ]] || fail "tests of preset $preset did not run:"$'\n'"$unrun"
}

# From the line "100% tests passed" to the end.
summary_of() { sed -n '/% tests passed/,$p' "build/$1/tests.log"; }

# cases_of PRESET: the cases reported by the test programs, one per line: "SECONDS NAME".
cases_of() {
  sed -n 's/.*<testcase name="\([^"]*\)".* status="run".* time="\([0-9.]*\)".* classname="\([^"]*\)".*/\2 \3.\1/p' \
    "build/$1"/reports/*.xml
}

slowest_of() {
  echo "The ten slowest cases, in seconds:"
  cases_of "$1" | sort -rn | sed -n '1,10s/^/  /p'
}
