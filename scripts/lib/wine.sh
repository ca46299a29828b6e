# shellcheck shell=bash
# Wine in a prefix of its own, for as long as the script runs. Sourced after display.sh.

# The 64-bit loader itself: the wrapper of that name wants a 32-bit part, which nothing here needs.
WINE=/usr/lib/wine/wine64
WINESERVER=/usr/lib/wine/wineserver64

# wine PROGRAM [ARGUMENT...]
wine() { "$WINE" "$@"; }

# A prefix made anew, with its server kept alive between programs: starting one takes longer than many a test.
make_prefix() {
  export WINEPREFIX=$PLACE/prefix WINEARCH=win64 WINEDEBUG=-all
  # In another character set Wine cannot name every file.
  use_utf8
  # No associations on this desktop, no offers to install what is not needed, no debugger that waits for a person.
  export WINEDLLOVERRIDES='winemenubuilder.exe=d;mscoree=d;mshtml=d;winedbg.exe=d'
  [[ -x $WINE && -x $WINESERVER ]] || fail "Wine's 64-bit loader and server are not in /usr/lib/wine"
  rm -rf "$WINEPREFIX"
  mkdir -p "$WINEPREFIX"
  trap 'end_prefix; stop_all' EXIT
  # At its end it tells of everything it still had.
  "$WINESERVER" --persistent >"$PLACE/wineserver.log" 2>&1
  wine wineboot --init >"$PLACE/wineboot.log" 2>&1 || fail "Wine makes no prefix: $(<"$PLACE/wineboot.log")"
  set_registry 'HKCU\Software\Wine' Version REG_SZ win10
  # What Windows writes its dialogs with is not there; this is what it wrote them with before.
  local font
  for font in 'Segoe UI' 'MS Shell Dlg' 'MS Shell Dlg 2'; do
    set_registry 'HKCU\Software\Wine\Fonts\Replacements' "$font" REG_SZ Tahoma
  done
}

end_prefix() { "$WINESERVER" --kill 2>/dev/null || true; }

# set_registry KEY NAME TYPE DATA
set_registry() { wine reg add "$1" /v "$2" /t "$3" /d "$4" /f >/dev/null || fail "the registry does not take $1\\$2"; }

drop_registry() { wine reg delete "$1" /f >/dev/null 2>&1 || true; }
