# shellcheck shell=bash
# The Windows program from its first start to its last, with real keys and clicks, on a display of its own.
# Sourced by scripts/windows, whose functions and variables it uses. What is not as it should be ends the
# script.

# shellcheck disable=SC2154  # window, terminal and last are set by scripts/lib/display.sh
# As the program sees it, the folder of a person's settings.
settings_folder() {
  local folders=("$WINEPREFIX"/drive_c/users/*/AppData/Roaming)
  echo "${folders[0]}/Halvo/Quarn"
}

expect() {
  local what=$1
  shift
  "$@" || fail "$what"
  echo "  $what"
}

# acknowledge TITLE: Enter on a box, which goes.
acknowledge() {
  wait_until 30 "the box \"$1\"" find_window "^$1\$"
  activate "$window"
  press_keys Return
  wait_until 10 "the box \"$1\" to go" window_is_gone "^$1\$"
  echo "  the box \"$1\" came"
}

main_title_is() { find_window "^Quarn   \\($1\\)\$"; }

settings_say() { tr -d '\r' <"$(settings_folder)/Quarn.ini" | grep -qx "$1"; }

# Byte-order mark, and a carriage return before every line feed.
settings_are_in_windows_form() {
  local file
  file=$(settings_folder)/Quarn.ini
  [[ $(head -c 3 "$file" | od -An -tx1) == ' ef bb bf' ]] &&
    (($(grep -c $'\r$' "$file") == $(wc -l <"$file"))) && (($(wc -l <"$file") == 32))
}

program_has_ended() { ! kill -0 "$1" 2>/dev/null; }

# menu X KEY: the menu whose title is there, and the item of that letter.
menu() {
  remember_windows
  xdotool mousemove --window "$main" "$1" 10 click 1
  wait_until 10 "a menu" new_window_is_there
  press_keys "$2"
}

# click_until_box X Y: clicks on the window, at so many hundredths of its size, unless a box is there.
click_until_box() {
  local facts dialog=$window
  if find_window '^Quarn : Information$'; then return; fi
  window=$dialog
  facts=$(xwininfo -id "$dialog" -stats)
  xdotool mousemove --window "$dialog" $(($(number_after Width "$facts") * $1 / 100)) \
    $(($(number_after Height "$facts") * $2 / 100)) click 1
  sleep 0.3
  return 1
}

start_program() {
  start quarn wine "$@"
  program=$last
}

first_start() {
  headline "The first start"
  plug_port com3 "Bench adapter"
  start_program "$1"
  acknowledge 'Quarn : Warning'
  wait_until 30 "the settings to be made" test -s "$(settings_folder)/Quarn.ini"
  acknowledge 'Quarn : Information'
  wait_until 30 "the main dialog" main_title_is NONE
  main=$window
  expect "the settings are UTF-8 with its mark, and their lines end as Windows' do" settings_are_in_windows_form
}

choose_port() {
  headline "Choosing COM3"
  menu 60 n
  wait_until 10 "COM Port Number" find_window '^Quarn - COM Port Number'
  activate "$window"
  # From OK on to the list of ports. SET can be used when the dialog has noticed the choice.
  press_keys Tab Down
  wait_until 20 "the port to be set" click_until_box 85 28
  acknowledge 'Quarn : Information'
  wait_until 20 "the title to name COM3" main_title_is COM3
  expect "the settings name COM3" settings_say COM_PORT=COM3
  find_window '^Quarn - COM Port Number'
  activate "$window"
  press_keys Escape
}

clipboard_is() { [[ $(xclip -o -selection clipboard -t UTF8_STRING 2>/dev/null | tr -d '\n' | tr '\r' '|') == "$1" ]]; }

first_command() {
  headline "The first command"
  wait_until 10 "the Terminal Screen" find_terminal COM3
  activate "$terminal"
  send i d
  expect "the wire had id and CR" wire_has com3 'id<'
  expect "the log has two lines" log_has_lines 2
  open_terminal_menu
  # The second entry: "Copy Log - All".
  press_keys Down Down Return
  wait_until 10 "the log on the clipboard" clipboard_is '[id]|SIM-1 bench instrument, firmware 1.00|'
  echo "  the log was copied"
}

# What was sent stays on the command line.
rub=(BackSpace BackSpace BackSpace BackSpace BackSpace)

# What the instrument has to say.
more_commands() {
  headline "More commands"
  send "${rub[@]}" l i s t
  send "${rub[@]}" b y t e s
  send "${rub[@]}" t e m p question
  send "${rub[@]}" asterisk I D N question
  expect "the wire had them all" wire_has com3 'id<list<bytes<temp?<*IDN?<'
}

second_instance() {
  local status=0
  headline "A second start"
  cp "$(settings_folder)/Quarn.ini" "$PLACE/before.ini"
  start second wine "$1"
  acknowledge Quarn
  wait "$last" || status=$?
  expect "the second program ended, and not well" test "$status" -ne 0
  expect "it left the settings alone" cmp -s "$PLACE/before.ini" "$(settings_folder)/Quarn.ini"
  expect "the first one is still there" main_title_is COM3
  sed $'s/^COM_PORT=.*/COM_PORT=COM3\r/' packaging/demo/demo.qrn >"$WINEPREFIX/drive_c/handed over.qrn"
  start third wine "$1" 'C:\handed over.qrn'
  acknowledge Quarn
  wait_until 20 "the first one to open the file of the third" settings_say MEM0=id
  # The title names COM3 before and after; while it is connected anew, a box says so and goes.
  wait_until 20 "the box that it is connected" find_window '^Quarn : Infomation$'
  wait_until 20 "that box to go" window_is_gone '^Quarn : Infomation$'
  expect "the first one is connected to COM3" main_title_is COM3
}

# A file that is handed over before the main dialog is there.
early_second_start() {
  headline "A second start while a box of the first one waits"
  settings_with "$PLACE/none.ini" COM_PORT=NONE MEM0=other
  cp "$PLACE/none.ini" "$(settings_folder)/Quarn.ini"
  start_program "$1"
  wait_until 60 "the box of the start" find_window '^Quarn : Information$'
  start third wine "$1" 'C:\handed over.qrn'
  acknowledge Quarn
  wait "$last" || true
  acknowledge 'Quarn : Information'
  wait_until 20 "the first one to open the file of the second" settings_say MEM0=id
  wait_until 20 "the title to name COM3" main_title_is COM3
  main=$window
  wait_until 20 "the box that it is connected to go" window_is_gone '^Quarn : Infomation$'
  end_program
}

# Enter on the offer to connect. Under Wine the key that closed the box before can count as held, and a held key does not
# answer. The next press does.
accept_offer() {
  wait_until 30 "the question whether to connect" find_window '^Quarn : Confirmation$'
  activate "$window"
  press_keys Return
  sleep 2
  if find_window '^Quarn : Confirmation$'; then press_keys Return; fi
  wait_until 10 "the question to go" window_is_gone '^Quarn : Confirmation$'
}

unplug_and_plug() {
  headline "Unplugging and plugging in"
  unplug_port com3
  acknowledge 'Quarn : Error'
  wait_until 20 "the title to say that COM3 is not connected" main_title_is COM3-NC
  plug_port com3 "Bench adapter"
  accept_offer
  acknowledge 'Quarn : Information'
  wait_until 20 "the title to name COM3 again" main_title_is COM3
  wait_until 10 "the Terminal Screen" find_terminal COM3
  activate "$terminal"
  send "${rub[@]}" i d
  expect "the instrument answers" wire_has com3 'id<'
}

end_program() {
  local status=0
  headline "The end"
  activate "$main"
  press_keys alt+F4
  wait_until 30 "the program to end" program_has_ended "$program"
  wait "$program" || status=$?
  expect "it ended well" test "$status" -eq 0
}

# is_activated WINDOW: asks for it. While a file dialog goes, a window may miss that.
is_activated() {
  xdotool windowactivate "$1"
  sleep 0.3
  window_is_active "$1"
}

# The program's own instrument, with no port of the system.
demo() {
  headline "The demo"
  cp "$(settings_folder)/Quarn.ini" "$PLACE/before.ini"
  start_program "$1" --demo
  wait_until 30 "the main dialog" main_title_is COM7
  main=$window
  wait_until 10 "the Terminal Screen" find_terminal COM7
  activate "$terminal"
  send m e a s question
  open_terminal_menu
  press_keys Down Down Return
  wait_until 10 "the log on the clipboard" clipboard_is '[meas?]|+1.2345E+00 V|'
  menu 20 o
  wait_until 20 "the file dialog" find_window '^Open Quarn Configuration File$'
  activate "$window"
  press_keys Escape
  wait_until 20 "it to go" window_is_gone '^Open Quarn Configuration File$'
  wait_until 20 "the main dialog to be active again" is_activated "$main"
  end_program
  expect "the settings of the person are as they were" cmp -s "$PLACE/before.ini" "$(settings_folder)/Quarn.ini"
  expect "the file dialog has noted nothing in the registry" registry_lacks 'HKCU\Software\QtProject'
}

# take_picture PROGRAM: for people. With frames by Wine, in the manner of Windows, and in Windows' font: both only here,
# because they move everything that the story clicks on.
take_picture() {
  headline "A picture"
  set_registry 'HKCU\Software\Wine\X11 Driver' Decorated REG_SZ N
  # A server reads the fonts when it starts.
  end_prefix
  cp /usr/share/wine/fonts/*.ttf "$WINEPREFIX/drive_c/windows/Fonts/"
  start_program "$1" --demo
  wait_until 60 "the main dialog" main_title_is COM7
  main=$window
  wait_until 10 "the Terminal Screen" find_terminal COM7
  activate "$terminal"
  send i d
  send F5
  send F6
  send F3
  send F10
  rest_pointer
  picture build/windows/screenshot.png "$terminal"
  end_program
}

# settings_with FILE KEY=VALUE...: the settings in force, with other values.
settings_with() {
  local file=$1 each script=()
  shift
  for each in "$@"; do script+=(-e "s/^${each%%=*}=[^\r]*/$each/"); done
  sed "${script[@]}" "$(settings_folder)/Quarn.ini" >"$file"
}

# ends_within SECONDS STATUS COMMAND...
ends_within() {
  local status=0 longest=$1 wanted=$2 start=$SECONDS
  shift 2
  "$@" || status=$?
  ((status == wanted && SECONDS - start <= longest)) || {
    echo "it ended with $status after $((SECONDS - start)) s" >&2
    return 1
  }
}

interrupted() { wait "$1"; }

# What lasts 82 s where nobody ends it.
silence() {
  local send=${1%quarn.exe}quarn-send.exe sender before
  headline "An instrument that says nothing"
  settings_with "$PLACE/impatient.qrn" COM_BPS=115200 COM_BUF=6K R_TIMEOUT=ON
  settings_with "$PLACE/patient.qrn" R_TIMEOUT=OFF
  expect "quarn-send ends when its time-out says" ends_within 30 1 \
    wine "$send" --port COM3 --settings "Z:$PLACE/impatient.qrn" mute
  expect "and so it does between others" ends_within 40 0 \
    wine "$send" --port COM3 --settings "Z:$PLACE/impatient.qrn" mute id mute id
  before=$(wc -c <"$LINES/port-com3.received")
  "$WINE" "$send" --port COM3 --settings "Z:$PLACE/patient.qrn" mute >"$PLACE/interrupted.log" 2>&1 &
  sender=$!
  started+=("$sender")
  wait_until 30 "the command on the wire" wire_has_more_than com3 "$before"
  kill -INT "$sender"
  expect "Ctrl+C ends it" ends_within 30 4 interrupted "$sender"
}

wire_has_more_than() { (($(wc -c <"$LINES/port-$1.received") > $2)); }

# on_console FOLDER LINE: what the system's command interpreter shows of the line on a terminal, begun in the folder.
on_console() {
  (cd "$1" && timeout 60 script --quiet --command "'$WINE' cmd /c '$2'" /dev/null </dev/null >"$PLACE/console.screen" 2>&1) || true
  # Without what places the cursor, and without blanks at the ends.
  sed 's/\x1b\[[0-9;?]*[A-Za-z]//g; s/[ \r]*$//' "$PLACE/console.screen" | grep .
}

console_says() { [[ $(on_console "$1" "$2") == "$3" ]]; }

# In a console, or redirected, without a window.
answers() {
  headline "What it answers without a window"
  local answer
  answer=$(wine "$1" --version | tr -d '\r')
  expect "the version is told" test "$answer" == "$(identity windows NAME)  (Ver. $(identity windows VERSION)), build $(identity windows BUILD_DATE)"
  expect "the next prompt comes after it" console_says "$(dirname "$1")" 'quarn --version & echo next' "$answer"$'\nnext'
  # More than a pipe holds.
  printf -v long '%6000s' ''
  answer=$(on_console "$(dirname "$1")" "quarn --${long// /x} & echo next")
  expect "a long answer on standard error holds nobody up" test "${answer##*$'\n'}" == next
  answer=$(wine "$1" --help | tr -d '\r')
  expect "the usage is told" test "${answer#*usage: quarn}" != "$answer"
  expect "and that quarn.exe does not read a file's name" test "${answer#*not quarn.exe}" != "$answer"
  answer=$({ wine "${1%quarn.exe}quarn-send.exe" --port COM104 id 2>&1 || echo "status $?"; } | tr -d '\r')
  expect "a number that no port has is told" test "${answer#*COM104: port numbers end at 99. The Device Manager}" != "$answer"
  expect "that is no success" test "${answer##*$'\n'}" == "status 5"
  answer=$(wine "${1%quarn.exe}quarn-send.exe" --port COM3 id | tr -d '\r')
  expect "quarn-send prints the response" test "$answer" == $'[id]\nSIM-1 bench instrument, firmware 1.00'
  settings_with "$PLACE/lf.qrn" DELIMITER=LF
  wine "${1%quarn.exe}quarn-send.exe" --port COM3 --settings "Z:$PLACE/lf.qrn" --raw id >"$PLACE/raw"
  printf 'SIM-1 bench instrument, firmware 1.00\n' >"$PLACE/expected"
  expect "quarn-send --raw leaves line feeds alone" cmp "$PLACE/raw" "$PLACE/expected"
}

# A window is no answer: the prompt does not wait for it. The console stays, because its end would end the program.
prompt_beside_window() {
  local console
  headline "The prompt beside a window"
  mkfifo "$PLACE/no-keys"
  # shellcheck disable=SC2016  # for the inner shell
  start prompt bash -c 'cd "$1" && exec script --quiet --command "$2" /dev/null <>"$3"' bash "$(dirname "$1")" \
    "'$WINE' cmd /c 'quarn --demo & echo next >Z:$PLACE/next & pause'" "$PLACE/no-keys"
  console=$last
  wait_until 60 "the main dialog" main_title_is COM7
  wait_until 20 "the next command while the demo runs" test -s "$PLACE/next"
  expect "the demo runs still" main_title_is COM7
  wmctrl -i -c "$(printf '0x%x' "$window")"
  wait_until 30 "the main dialog to go" window_is_gone '^Quarn   \('
  stop "$console"
}

# quarn-send as scripts use it, with the batch file of the guide. Wine has no PowerShell.
scripts_of_the_guide() {
  local send=${1%quarn.exe}quarn-send.exe folder=$PLACE/batch answer
  headline "Scripts"
  expect "the port is listed" test "$(wine "$send" --list | tr -d '\r')" == 'COM3  \\.\COM3  Bench adapter'
  answer=$(printf 'id\r\nmeas?\r\n' | wine "$send" --port com3 --bps 921600 - | tr -d '\r')
  expect "commands come from standard input" test "$answer" == $'[id]\nSIM-1 bench instrument, firmware 1.00\n[meas?]\n+1.2345E+00 V'
  local driver='HKLM\System\CurrentControlSet\Enum\ROOT\QUARNCOM3\0000\Device Parameters'
  set_registry "$driver" PortName REG_SZ COM3
  set_registry "$driver" LatencyTimer REG_DWORD 16
  wine "$send" --port COM3 --bps 115200 --speed HIGH --every 0.1 --count 3 id >"$PLACE/late" 2>&1 ||
    fail "three readings fail: $(<"$PLACE/late")"
  expect "an adapter that delivers too late is told of once" test "$(grep -c 'every 16 ms' "$PLACE/late")" == 1
  drop_registry "$driver"
  expect "an unexpected answer is 6" ends_within 30 6 wine "$send" --port COM3 --expect 'firmware 2' id
  mkdir -p "$folder"
  awk '/^```bat$/ { on = 1; next } /^```$/ { on = 0 } on' docs/guide.md | sed 's/COM4/COM3/; s/$/\r/' >"$folder/guide.bat"
  (cd "$folder" && WINEPATH=Z:$(dirname "$send") wine cmd /c guide.bat) || fail "the guide's batch file fails"
  expect "the guide's batch file makes a table" test "$(grep -c ',COM3,meas?,received,+1.2345E+00 V,' "$folder/readings.csv")" -eq 3
}

# play_story PROGRAM: with the settings of a person who has never seen it.
play_story() {
  rm -rf "$(settings_folder)"
  # Names without a short one, for as long as all this lasts: they disturb nobody.
  list_device far "USB Serial Port (COM104)"
  list_device pair "pair (COM5->COM6)"
  list_device gadget "Gadget COM7 serial"
  first_start "$1"
  choose_port
  first_command
  more_commands
  second_instance "$1"
  unplug_and_plug
  end_program
  early_second_start "$1"
  demo "$1"
  answers "$1"
  prompt_beside_window "$1"
  scripts_of_the_guide "$1"
  silence "$1"
  unplug_port com3
  drop_device far
  drop_device pair
  drop_device gadget
}
