# shellcheck shell=bash
# Wine in its own prefix, while the script runs. Source it after display.sh.

# The 64-bit loader itself: the wrapper of that name requires a 32-bit part, which is not needed here.
WINE=/usr/lib/wine/wine64
WINESERVER=/usr/lib/wine/wineserver64

# wine PROGRAM [ARGUMENT...]
wine() { "$WINE" "$@"; }

# A new prefix, whose server stays alive between programs: starting it takes longer than many tests.
make_prefix() {
  export WINEPREFIX=$PLACE/prefix WINEARCH=win64 WINEDEBUG=-all
  # With another character set Wine cannot use every file name.
  use_utf8
  # No file associations on this desktop, no offers to install components, no debugger that waits for a user.
  export WINEDLLOVERRIDES='winemenubuilder.exe=d;mscoree=d;mshtml=d;winedbg.exe=d'
  [[ -x $WINE && -x $WINESERVER ]] || fail "Wine's 64-bit loader and server are not in /usr/lib/wine"
  rm -rf "$WINEPREFIX"
  mkdir -p "$WINEPREFIX"
  trap 'end_prefix; stop_all' EXIT
  # At its end it reports everything it still had open.
  "$WINESERVER" --persistent >"$PLACE/wineserver.log" 2>&1
  wine wineboot --init >"$PLACE/wineboot.log" 2>&1 || fail "Wine makes no prefix: $(<"$PLACE/wineboot.log")"
  keep_services
  set_registry 'HKCU\Software\Wine' Version REG_SZ win10
  # The font of Windows dialogs is missing; this is the font of older versions.
  local font
  for font in 'Segoe UI' 'MS Shell Dlg' 'MS Shell Dlg 2'; do
    set_registry 'HKCU\Software\Wine\Fonts\Replacements' "$font" REG_SZ Tahoma
  done
}

# Wine's services end some seconds after the last program, and then each program waits for them in vain for 15 seconds.
# So there is always a program: a shell whose commands never come.
keep_services() {
  mkfifo "$PLACE/no-commands"
  # shellcheck disable=SC2016  # for the inner shell
  start services bash -c 'exec "$1" cmd <>"$2"' bash "$WINE" "$PLACE/no-commands"
}

end_prefix() { "$WINESERVER" --kill 2>/dev/null || true; }

# set_registry KEY NAME TYPE DATA
set_registry() { wine reg add "$1" /v "$2" /t "$3" /d "$4" /f >/dev/null || fail "the registry does not take $1\\$2"; }

drop_registry() { wine reg delete "$1" /f >/dev/null 2>&1 || true; }
