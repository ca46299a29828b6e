# shellcheck shell=bash
# A short session with the demonstration file and the simulated instrument as COM7. Source it after common.sh and
# display.sh.

clipboard_has_log() { xclip -o -selection clipboard -t UTF8_STRING 2>/dev/null | tr '\r' '\n' >"$PLACE/log.txt" && [[ -s $PLACE/log.txt ]]; }

# The log as it is now, in $PLACE/log.txt.
copy_log() {
  open_terminal_menu
  # The second entry: "Copy Log - All".
  press_keys Down Down Return
  wait_until 10 "the log on the clipboard" clipboard_has_log
}

check_log() {
  local expected
  for expected in '[id]' 'SIM-1 bench instrument' '[list]' 'CH3' '[bytes]' '<ACK>' '[temp?]' '23.5 C' 'Response Timeout' 'HALVO,SIM-1,0001,1.00'; do
    grep -qF -- "$expected" "$PLACE/log.txt" || fail "the log lacks \"$expected\":"$'\n'"$(<"$PLACE/log.txt")"
  done
}

# shellcheck disable=SC2154  # terminal is set by scripts/lib/display.sh
# Types commands into the program that has been started, and checks its log. Sets $terminal.
play_demo() {
  # The splash and a slow first start are part of that time.
  wait_until 60 "the main dialog" find_window '^Quarn   \(COM7\)$'
  wait_until 30 "the Terminal Screen" find_terminal COM7
  activate "$terminal"
  send i d
  wait_until 5 "the title to show two lines" log_has_lines 2
  send F5
  send F6
  send F3
  send F2
  send F9
  send F10
  copy_log
  check_log
}
