# shellcheck shell=bash
# Running the tests of a preset. Sourced after common.sh.

# run_tests PRESET [LAUNCHER [CTEST-OPTION...]]: a test that did not run fails them too.
run_tests() {
  local preset=$1 launcher=${2:-} report=$TOP/build/$1/tests.xml log=$TOP/build/$1/tests.log
  shift
  if (($# > 0)); then shift; fi
  rm -rf "$report" "$log" "build/$preset/reports"
  # Most of the time the tests wait: for a splash to go, for a line to fall silent.
  $launcher ctest --preset "$preset" --parallel "$((5 * JOBS))" --no-tests=error --output-junit "$report" --output-log "$log" "$@"
  # CTest calls a run with skipped tests a success.
  local unrun
  unrun=$(grep -E '^[[:space:]]*<testcase .*status="(notrun|disabled)"' "$report" | sed 's/.*<testcase name="\([^"]*\)".*/  \1/') || true
  [[ -z $unrun ]] || fail "tests of preset $preset did not run:"$'\n'"$unrun"
}

# From the line "100% tests passed" to the end.
summary_of() { sed -n '/% tests passed/,$p' "build/$1/tests.log"; }

# cases_of PRESET: what the test programs reported, a case a line: "SECONDS NAME".
cases_of() {
  sed -n 's/.*<testcase name="\([^"]*\)".* status="run".* time="\([0-9.]*\)".* classname="\([^"]*\)".*/\2 \3.\1/p' \
    "build/$1"/reports/*.xml
}

slowest_of() {
  echo "The ten slowest cases, in seconds:"
  cases_of "$1" | sort -rn | sed -n '1,10s/^/  /p'
}
