# shellcheck shell=bash
# The installer and what it leaves, and what the uninstaller leaves. Sourced by scripts/windows after story.sh.

# shellcheck disable=SC2154  # window and last are set by scripts/lib/display.sh
installed_folder() {
  local folders=("$WINEPREFIX"/drive_c/users/*/AppData/Local/Programs/Quarn)
  echo "${folders[0]}"
}

# start_menu_has ENTRY
start_menu_has() { compgen -G "$WINEPREFIX/drive_c/users/*/AppData/Roaming/Microsoft/Windows/Start Menu/Programs/$1.lnk" >/dev/null; }

# start_menu_starts ENTRY TEXT: the entry's file has the text. Its texts have two bytes per character.
start_menu_starts() {
  local links=("$WINEPREFIX"/drive_c/users/*/AppData/Roaming/Microsoft/Windows/"Start Menu/Programs/$1.lnk")
  tr -d '\0' <"${links[0]}" | grep -qaF -e "$2"
}

# registry_says KEY WORD: the default value of the key.
registry_says() { wine reg query "$1" /ve 2>/dev/null | tr -d '\r' | grep -qF "$2"; }

registry_has() { wine reg query "$1" >/dev/null 2>&1; }

registry_lacks() { ! registry_has "$1"; }

same_files() { diff -r -x uninstall.exe "$1" "$2"; }

# A file stands where a folder is to be.
refuse_unwritable() {
  headline "Installing where not all files can be written"
  mkdir "$WINEPREFIX/drive_c/blocked"
  echo "somebody's own words" >"$WINEPREFIX/drive_c/blocked/guide"
  expect "the installer says so" status_is 5 wine "$1" /S '/D=C:\blocked'
  expect "it is not in the list of programs" registry_lacks "$UNINSTALL_KEY"
  if start_menu_has 'Quarn*'; then fail "the start menu has an entry"; fi
}

UNINSTALL_KEY='HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\Quarn'

install_silently() {
  headline "Installing"
  wine "$1" /S || fail "the installer failed"
  expect "everything is there" same_files "$2" "$(installed_folder)"
  expect "the start menu has an entry" start_menu_has Quarn
  expect "it has the guide, too" start_menu_has 'Quarn Guide'
  expect "which leads to its page" start_menu_starts 'Quarn Guide' 'guide\index.html'
  expect "and the demo" start_menu_has 'Quarn Demo'
  expect "which starts the program so" start_menu_starts 'Quarn Demo' --demo
  if start_menu_starts Quarn --demo; then fail "the other entry starts the demo, too"; fi
  expect "the guide is there" test -s "$(installed_folder)/guide/index.html"
  expect "files of the kind .qrn are Quarn's" registry_says 'HKCU\Software\Classes\.qrn' Quarn.Configuration
  expect "they are described" registry_says 'HKCU\Software\Classes\Quarn.Configuration' 'Quarn configuration'
  expect "they have an icon" registry_says 'HKCU\Software\Classes\Quarn.Configuration\DefaultIcon' 'quarn.exe,0'
  expect "the list of programs has it" registry_has "$UNINSTALL_KEY"
}

# To Windows what a user's classes say counts for all of them; Wine has to be told.
for_each_class() {
  local class
  for class in .qrn Quarn.Configuration; do "$1" "$class"; done
}

publish_class() {
  wine reg copy "HKCU\\Software\\Classes\\$1" "HKLM\\Software\\Classes\\$1" /s /f >"$PLACE/registry.log" 2>&1 ||
    fail "the registry does not copy the class $1"
}

withdraw_class() { drop_registry "HKLM\\Software\\Classes\\$1"; }

# What a double click on a file does.
open_by_association() {
  local status=0 file="$WINEPREFIX/drive_c/my bench.qrn"
  headline "Opening a file"
  for_each_class publish_class
  sed $'s/^COM_PORT=.*/COM_PORT=COM3\r/; s/^START_DISP=.*/START_DISP=OFF\r/' packaging/demo/demo.qrn >"$file"
  start opened wine start /wait 'C:\my bench.qrn'
  wait_until 60 "the main dialog" main_title_is COM3
  main=$window
  wine "$1" /S || status=$?
  expect "the installer does not touch a program that runs" test "$status" -eq 3
  activate "$main"
  press_keys alt+F4
  wait_until 30 "the main dialog to go" window_is_gone '^Quarn   \('
  wait "$last" || true
  for_each_class withdraw_class
  expect "the file is in force" cmp -s "$file" "$(settings_folder)/Quarn.ini"
}

# loaded_from FOLDER LOG: the files that were loaded from the folder, as Wine says it.
loaded_from() {
  sed -n 's/.*:loaddll:.*Loaded L"\(.*\)" at .*/\1/p' "$2" | sed 's/\\\\/\\/g' | grep -iF "$1\\" | sort -u
}

# Whoever may put a file into the program's folder must not get it loaded. Wine tells of every load.
load_nothing_else() {
  local folder windows_folder log=$PLACE/quarn.log
  folder=$(installed_folder)
  windows_folder=$(wine winepath -w "$folder" | tr -d '\r')
  headline "What the program loads from its folder"
  WINEDEBUG=+loaddll start_program "$folder/quarn.exe" --demo
  wait_until 60 "the main dialog" main_title_is COM7
  main=$window
  wait_until 10 "the Terminal Screen" find_terminal COM7
  end_program
  expect "Wine has told of the system's libraries" grep -qi 'loaddll.*user32\.dll' "$log"
  expect "from its own folder it has loaded nothing but itself" \
    test "$(loaded_from "$windows_folder" "$log")" == "$windows_folder\quarn.exe"
}

status_is() {
  local status=0 wanted=$1
  shift
  "$@" || status=$?
  [[ $status == "$wanted" ]]
}

# With quarn-send at work, which has no window and no mutex.
refuse_while_sending() {
  local folder sender before
  folder=$(installed_folder)
  headline "Installing and uninstalling over a program that runs"
  settings_with "$PLACE/patient.qrn" COM_PORT=COM3 R_TIMEOUT=OFF
  echo "somebody's own words" >>"$folder/licences/Quarn.txt"
  cp -r "$folder" "$PLACE/installed"
  before=$(wc -c <"$LINES/port-com3.received")
  "$WINE" "$folder/quarn-send.exe" --settings "Z:$PLACE/patient.qrn" mute >"$PLACE/sender.log" 2>&1 &
  sender=$!
  started+=("$sender")
  wait_until 30 "the command on the wire" wire_has_more_than com3 "$before"
  expect "the installer says that a program runs" status_is 3 wine "$1" /S
  expect "and changes nothing" diff -r "$PLACE/installed" "$folder"
  # With its last argument the uninstaller does the work itself.
  expect "so does the uninstaller" status_is 3 wine "$folder/uninstall.exe" /S "_?=$(wine winepath -w "$folder" | tr -d '\r')"
  expect "and changes nothing, either" diff -r "$PLACE/installed" "$folder"
  expect "it is in the list of programs still" registry_has "$UNINSTALL_KEY"
  kill -INT "$sender"
  expect "the program is told to end" ends_within 30 4 interrupted "$sender"
  expect "then it can be installed" wine "$1" /S
  expect "everything is there anew" same_files "$2" "$folder"
}

refuse_elsewhere() {
  headline "Installing a second time, in another folder"
  expect "the installer says that it is there already" status_is 4 wine "$1" /S '/D=C:\elsewhere'
  expect "and makes no other folder" test ! -e "$WINEPREFIX/drive_c/elsewhere"
  expect "the first one is as it was" same_files "$2" "$(installed_folder)"
}

folder_is_gone() { [[ ! -e $1 ]]; }

uninstall_silently() {
  local folder
  folder=$(installed_folder)
  headline "Uninstalling"
  wine "$folder/uninstall.exe" /S || fail "the uninstaller failed"
  # A copy of it does the work, since it cannot delete itself.
  wait_until 60 "the program's folder to go" folder_is_gone "$folder"
  wait_until 10 "the list of programs to lack it" registry_lacks "$UNINSTALL_KEY"
  expect "no file kind is left" registry_lacks 'HKCU\Software\Classes\Quarn.Configuration'
  expect "nor the files' extension" registry_lacks 'HKCU\Software\Classes\.qrn'
  if start_menu_has "Quarn*"; then fail "the start menu still has an entry"; fi
  expect "the settings have stayed" settings_say COM_PORT=COM3
}

# play_installation SETUP PACKAGE
play_installation() {
  plug_port com3 "Bench adapter"
  refuse_unwritable "$1"
  install_silently "$1" "$2"
  open_by_association "$1"
  load_nothing_else
  refuse_while_sending "$1" "$2"
  refuse_elsewhere "$1" "$2"
  uninstall_silently
  unplug_port com3
}
