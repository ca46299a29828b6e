# shellcheck shell=bash
# Programs in the background, a virtual display, and the windows on it. Source it after common.sh. First set
# PLACE to the absolute path of a folder for logs and sockets; the folder must exist before `start` is used.

: "${PLACE:?}"
started=()

stop_all() {
  local i
  for ((i = ${#started[@]} - 1; i >= 0; i--)); do kill "${started[i]}" 2>/dev/null || true; done
  for i in "${started[@]}"; do wait "$i" 2>/dev/null || true; done
  started=()
}
trap stop_all EXIT
trap 'exit 130' INT TERM HUP

# start NAME COMMAND...: runs it in the background with output to $PLACE/NAME.log; sets $last to its process id.
start() {
  local name=$1
  shift
  "$@" >"$PLACE/$name.log" 2>&1 &
  last=$!
  started+=("$last")
}

# stop PID: ends one of them and waits for its end.
stop() {
  local i
  kill "$1" 2>/dev/null || true
  wait "$1" 2>/dev/null || true
  for i in "${!started[@]}"; do
    if [[ ${started[i]} == "$1" ]]; then unset "started[i]"; fi
  done
  started=("${started[@]}")
}

# Names of ports and files may be in any script.
use_utf8() { [[ ${LC_ALL:-${LC_CTYPE:-${LANG:-}}} == *[Uu][Tt][Ff]* ]] || export LC_ALL=C.UTF-8; }

# start_instrument LINK: starts a simulated instrument with the link LINK; sets $instrument to its
# process id.
start_instrument() {
  : >"$PLACE/instrument.log"
  start instrument build/release/bin/quarn-device --link "$1"
  # shellcheck disable=SC2034  # for the scripts that source this
  instrument=$last
  wait_until 10 "the simulated instrument" test -s "$PLACE/instrument.log"
  [[ -c $1 ]] || fail "the simulated instrument did not start: $(<"$PLACE/instrument.log")"
}

#--- The display -----------------------------------------------------------------------------------------

# start_display WIDTH HEIGHT
start_display() {
  # A separate folder for locks and sockets, so that a running Quarn of the same user does not interfere.
  export XDG_RUNTIME_DIR=$PLACE/runtime
  mkdir -m 700 "$XDG_RUNTIME_DIR"
  export QT_QPA_PLATFORM=xcb
  unset WAYLAND_DISPLAY
  start display Xvfb ":$((100 + BASHPID % 50000))" -displayfd 3 -screen 0 "$1x$2x24" -nolisten tcp 3>"$PLACE/display"
  wait_until 20 "the virtual display" test -s "$PLACE/display"
  DISPLAY=:$(<"$PLACE/display")
  export DISPLAY
  start window-manager openbox
  wait_until 20 "the window manager" window_manager_is_there
  display_width=$1
  display_height=$2
}

window_manager_is_there() { xprop -root _NET_SUPPORTING_WM_CHECK | grep -q '# 0x'; }

# Moves the pointer away from everything that changes under it.
rest_pointer() { xdotool mousemove $((display_width - 1)) $((display_height - 1)); }

#--- Windows ---------------------------------------------------------------------------------------------

# window_titled TITLE: the visible window whose title matches the expression, or nothing.
window_titled() { xdotool search --onlyvisible --name "$1" 2>/dev/null | tail -n 1; }

# find_window TITLE: sets $window to it.
find_window() { window=$(window_titled "$1") && [[ -n $window ]]; }

window_is_gone() { ! xdotool search --onlyvisible --name "$1" >/dev/null 2>&1; }

window_is_active() { [[ $(xdotool getactivewindow 2>/dev/null) == "$1" ]]; }

visible_windows() { { xdotool search --onlyvisible --class quarn 2>/dev/null || true; } | sort; }

# A window without a title, for example a menu, is recognised because it is new.
remember_windows() { windows_before=$(visible_windows); }

new_window_is_there() {
  window=$(comm -13 <(echo "$windows_before") <(visible_windows) | tail -n 1)
  [[ -n $window ]]
}

# activate WINDOW
activate() {
  xdotool windowactivate "$1"
  wait_until 10 "the window to be the active one" window_is_active "$1"
}

# press_keys KEY...: with a pause of KEY_DELAY_MS (default: 30) after each.
press_keys() { xdotool key --clearmodifiers --delay "${KEY_DELAY_MS:-30}" "$@"; }

number_after() { sed -n "s/.*$1: *\([0-9]*\)$/\1/p" <<<"$2"; }

# outer_geometry WINDOW: "LEFT TOP RIGHT BOTTOM" on the screen, with the frame; right and bottom are the
# first points outside.
outer_geometry() {
  local facts x y left=0 right=0 top=0 bottom=0 frame
  facts=$(xwininfo -id "$1" -stats)
  frame=$(xprop -id "$1" _NET_FRAME_EXTENTS)
  if [[ $frame == *=* ]]; then read -r left right top bottom <<<"$(sed 's/.*= //; s/,//g' <<<"$frame")"; fi
  x=$(number_after 'Absolute upper-left X' "$facts")
  y=$(number_after 'Absolute upper-left Y' "$facts")
  echo "$((x - left)) $((y - top)) $((x + $(number_after Width "$facts") + right))" \
    "$((y + $(number_after Height "$facts") + bottom))"
}

# What is behind the windows in pictures that show the desktop.
DESKTOP_COLOUR='#c9d3dd'

# has_moved WINDOW LEFT TOP
has_moved() {
  local left top rest
  read -r left top rest < <(outer_geometry "$1")
  ((left == $2 && top == $3))
}

# move_window WINDOW LEFT TOP: the corner of its frame.
move_window() {
  xdotool windowmove "$1" "$2" "$3"
  wait_until 60 "the window to stand at $2, $3" has_moved "$1" "$2" "$3"
}

# arrange TERMINAL WINDOW...: the windows one below the other, and the Terminal Screen beside them.
arrange() {
  local terminal=$1 window left top right bottom next=20 widest=0
  shift
  for window in "$@"; do
    read -r left top right bottom < <(outer_geometry "$window")
    move_window "$window" 20 "$next"
    next=$((next + bottom - top + 16))
    widest=$((right - left > widest ? right - left : widest))
  done
  move_window "$terminal" $((20 + widest + 16)) 20
}

# desktop_picture FILE TO: the picture of some windows in the middle of a desktop. It has the shape of a screen.
desktop_picture() {
  local width height
  read -r width height < <(identify -format '%w %h\n' "$1")
  ((width <= 1440 && height <= 810)) || fail "$1 is larger than the desktop: $width x $height"
  convert "$1" -background "$DESKTOP_COLOUR" -gravity center -extent 1440x810 "$2"
}

# shown_geometry WINDOW: the same for the part of it that is on the screen.
shown_geometry() {
  local left top right bottom
  read -r left top right bottom < <(outer_geometry "$1")
  echo "$((left > 0 ? left : 0)) $((top > 0 ? top : 0)) $((right < display_width ? right : display_width))" \
    "$((bottom < display_height ? bottom : display_height))"
}

# picture FILE WINDOW...: one picture of the windows with their frames, as shown on the screen.
picture() {
  local file=$1 window left top right bottom place=()
  shift
  for window in "$@"; do
    read -r left top right bottom < <(shown_geometry "$window")
    if ((${#place[@]} == 0)); then place=("$left" "$top" "$right" "$bottom"); fi
    place[0]=$((left < place[0] ? left : place[0]))
    place[1]=$((top < place[1] ? top : place[1]))
    place[2]=$((right > place[2] ? right : place[2]))
    place[3]=$((bottom > place[3] ? bottom : place[3]))
  done
  maim --hidecursor --geometry \
    "$((place[2] - place[0]))x$((place[3] - place[1]))+${place[0]}+${place[1]}" "$file"
  [[ -s $file ]] || fail "there is no picture $file"
}

#--- The Terminal Screen ---------------------------------------------------------------------------------

# find_terminal PORT: sets $terminal.
find_terminal() {
  local window
  find_window "^Quarn - Terminal Screeen \\($1\\)" && terminal=$window
}

# The title ends with the lines on the screen: "[ 1-2  ]".
lines_in_log() { xdotool getwindowname "$terminal" | sed -n 's/.*\[ *[0-9]*-\([0-9]*\) *\]$/\1/p'; }

log_has_lines() { (($(lines_in_log) + 0 == $1)); }

log_has_grown() { (($(lines_in_log) + 0 > $1)); }

# send KEY...: types the keys and Enter, and waits for the response.
send() {
  local before
  before=$(lines_in_log)
  press_keys "$@" Return
  wait_until 20 "the response to the keys $* in the log" log_has_grown "${before:-0}"
}

# open_terminal_menu: sets $window to it.
open_terminal_menu() {
  remember_windows
  xdotool mousemove --window "$terminal" 400 300 click 3
  wait_until 10 "the Terminal Screen's menu" new_window_is_there
}
