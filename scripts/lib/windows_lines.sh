# shellcheck shell=bash
# The line scripts of tests/wine/line_scripts, played on this system's line and on the Windows one under Wine, and
# compared. Sourced after wine_ports.sh.

LINE_SCRIPTS=tests/wine/line_scripts/line_scripts.rules
# How far the two ends of a script may lie apart. Both systems wait in whole milliseconds and wake up a little
# late; a pause that is taken for its neighbour is at least 40 ms off.
LINE_TOLERANCE_MS=30

# instrument_at FOLDER PORT: starts a new instrument that answers by the scripts.
instrument_at() {
  rm -f "$1/port-$2.rules"
  wait_until 20 "the instrument at $2 to go" eval '[[ ! -f '"'$1/port-$2.ready'"' ]]'
  cp "$LINE_SCRIPTS" "$1/port-$2.new"
  mv "$1/port-$2.new" "$1/port-$2.rules"
  wait_until 20 "the instrument at $2" test -f "$1/port-$2.ready"
  [[ ! -s $1/port-$2.ready ]] || fail "no instrument at $2: $(<"$1/port-$2.ready")"
}

# Of all scripts.
script_names() {
  awk -F '"' '/^#! / { begins = 1; next } begins && /^"/ { print $2; begins = 0 }' "$LINE_SCRIPTS"
}

# play_at PORT NAME...: runs both lines at the same time, because they mostly wait; results in here.PORT and wine.PORT.
play_at() {
  local here=$PLACE/native_lines port=$1 player
  shift
  instrument_at "$here" "$port"
  instrument_at "$LINES" "${port,,}"
  build/release/bin/quarn-line-scripts "$LINE_SCRIPTS" "$port" "$here/ports" "$@" >"$PLACE/here.$port" &
  player=$!
  wine build/windows/bin/quarn-line-scripts.exe "$LINE_SCRIPTS" "$port" unused "$@" | tr -d '\r' >"$PLACE/wine.$port"
  wait "$player"
}

# play_both NAME...: half of them at one port, half at another, at the same time; results in here.txt and wine.txt.
play_both() {
  local half=$((($# + 1) / 2)) other
  rm -f "$PLACE"/{here,wine}.COM?
  play_at COM8 "${@:1:half}" &
  other=$!
  if (($# > half)); then play_at COM9 "${@:half+1}"; fi
  wait "$other"
  cat "$PLACE"/here.COM? >"$PLACE/here.txt"
  cat "$PLACE"/wine.COM? >"$PLACE/wine.txt"
}

# The differences without a reason in the scripts: one name per line, with both outcomes.
differing() { outcomes | grep -vF -f <(known_differences | sed 's/$/|/') | awk "${1:-$DIFFERS}" || true; }

outcomes() { paste -d '|' "$PLACE/here.txt" "$PLACE/wine.txt"; }

known_differences() { sed -n 's/^#~ \([^:]*\):.*/\1/p' "$LINE_SCRIPTS"; }

# shellcheck disable=SC2016  # fields of awk, here and below
DIFFERS='BEGIN { FS = "|" } { apart = $4 - $8; if (apart < 0) apart = -apart }
  $1 != $5 || $2 != $6 || $3 != $7 || apart > '$LINE_TOLERANCE_MS' { print }'

furthest_apart() {
  # shellcheck disable=SC2016
  differing 'BEGIN { FS = "|" } { apart = $4 - $8; if (apart < 0) apart = -apart; if (apart > most) most = apart }
    END { print most + 0 }'
}

# Some of them depend on how the two computers' processes take turns, and are not there every time.
tell_known_differences() {
  local name
  while read -r name; do
    grep "^#~ $name:" "$LINE_SCRIPTS"
    outcomes | grep "^$name|" | awk "$DIFFERS" | grep -q . || echo "   but $name did not differ this time"
  done < <(known_differences)
}

compare_line_scripts() {
  local count names
  headline "The line scripts, here and under Wine"
  build release quarn-line-scripts
  mkdir -p "$PLACE/native_lines/ports"
  start native_lines build/windows/lines/quarn-line-server "$PLACE/native_lines" "$PLACE/native_lines/ports"
  mapfile -t names < <(script_names)
  play_both "${names[@]}"
  count=$(grep -c '^#! ' "$LINE_SCRIPTS")
  [[ $(wc -l <"$PLACE/here.txt") == "$count" && $(wc -l <"$PLACE/wine.txt") == "$count" ]] ||
    fail "not all $count line scripts were played; see $PLACE/here.txt and $PLACE/wine.txt"
  echo "$count line scripts, their ends at most $(furthest_apart) ms apart"
  tell_known_differences
  # A busy computer makes a pause longer than it is, now here and now there. What is different for another reason stays
  # different.
  for _ in {1..12}; do
    mapfile -t names < <(differing | cut -d '|' -f 1)
    ((${#names[@]} > 0)) || return 0
    echo "played again: ${names[*]}"
    play_both "${names[@]}"
  done
  [[ -z $(differing) ]] || fail "the lines differ (here, then Wine):"$'\n'"$(differing)"
}
