#!/usr/bin/env bash
# guide_examples.sh GUIDE QUARN_SEND QUARN_DEVICE SETTINGS: runs the examples of the guide's section "Commands from
# scripts" with the simulated instrument. Each "sh" block must print what the "text" block after it says.
set -euo pipefail
guide=$1 send=$2 device=$3 settings=$4

place=$(mktemp -d)
instruments=()
leave() {
  local each
  for each in "${instruments[@]}"; do
    kill "$each"
    wait "$each" || true
  done
  rm -rf "$place"
}
trap leave EXIT
fail() { echo "$*" >&2; exit 1; }

# The examples as 1.sh, 1.text, 2.sh and so on.
awk -v place="$place" '
  /^## / { inside = $0 == "## Commands from scripts" }
  inside && /^```(sh|text)$/ { kind = substr($0, 4); if (kind == "sh") ++n; file = place "/" n "." kind; printf "" >file; next }
  /^```$/ { file = ""; next }
  file != "" { print >file }' "$guide"

mkdir -p "$place/config/Halvo/Quarn/ports" "$place/bin" "$place/work"
cp "$settings" "$place/config/Halvo/Quarn/Quarn.ini"
export XDG_CONFIG_HOME=$place/config
ln -s "$send" "$place/bin/quarn-send"
# start_instrument PORT: it says where it is when it is there.
start_instrument() {
  mkfifo "$place/$1"
  "$device" --link "$place/config/Halvo/Quarn/ports/$1" >"$place/$1" &
  instruments+=("$!")
  read -r -t 30 _ <"$place/$1" || fail "the instrument does not start"
}
start_instrument COM7
start_instrument COM8

count=0
while [[ -e $place/$((count + 1)).sh ]]; do
  count=$((count + 1))
  [[ -s $place/$count.text ]] || fail "example $count does not say what it prints"
  echo "example $count"
  (cd "$place/work" && PATH=$place/bin:$PATH bash "$place/$count.sh" >"$place/$count.printed") ||
    fail "example $count fails"
  diff -u "$place/$count.text" "$place/$count.printed" || fail "example $count prints something else"
done
((count == 8)) || fail "$count examples instead of 8"
