# shellcheck shell=bash
# COM ports under Wine, with simulated instruments behind them. Source it after wine.sh.

# What tests/wine/line_server/line_server.cpp says about it holds for this folder.
LINES=$PLACE/lines

build_line_server() {
  cmake -S tests/wine/line_server -B build/windows/lines -G Ninja -DCMAKE_BUILD_TYPE=Release >build/windows/lines.log
  cmake --build build/windows/lines >>build/windows/lines.log || {
    cat build/windows/lines.log
    fail "quarn-line-server does not build"
  }
}

start_line_server() {
  rm -rf "$LINES"
  mkdir -p "$LINES"
  start lines build/windows/lines/quarn-line-server "$LINES" "$WINEPREFIX/dosdevices"
  # As the Windows programs see it.
  export QUARN_LINES=Z:$LINES
}

port_is_ready() { [[ -f $LINES/port-$1.ready ]]; }

port_is_gone() { [[ ! -f $LINES/port-$1.ready ]]; }

wire_has() { [[ -f $LINES/port-$1.received && $(tr '\r\n' '<>' <"$LINES/port-$1.received") == "$2" ]]; }

COM_PORTS='{86e0d1e0-8089-11d0-9ce4-08003e301f73}'

# shellcheck disable=SC2028  # the backslashes are the registry's
device_class() { echo "System\\CurrentControlSet\\Control\\DeviceClasses\\$COM_PORTS\\##?#ROOT#QUARN${1^^}#0000#$COM_PORTS"; }

# list_device com3 NAME: adds a device that the system lists as a COM port with that name, without an instrument.
list_device() {
  local device="ROOT\\\\QUARN${1^^}\\\\0000" path="ROOT#QUARN${1^^}#0000#$COM_PORTS" class
  class=HKEY_LOCAL_MACHINE\\$(device_class "$1")
  cat >"$PLACE/device-$1.reg" <<END
Windows Registry Editor Version 5.00

[HKEY_LOCAL_MACHINE\\System\\CurrentControlSet\\Enum\\${device//\\\\/\\}]
"Class"="Ports"
"ClassGUID"="{4d36e978-e325-11ce-bfc1-08002be10318}"
"FriendlyName"="$2"

[$class]
"DeviceInstance"="$device"

[$class\\#]
"SymbolicLink"="\\\\\\\\?\\\\$path"

[$class\\#\\Control]
"Linked"=dword:00000001
END
  wine reg import "Z:$PLACE/device-$1.reg" >"$PLACE/reg.log" 2>&1 || fail "no device for $1: $(<"$PLACE/reg.log")"
}

drop_device() {
  drop_registry "HKLM\\$(device_class "$1")"
  drop_registry "HKLM\\System\\CurrentControlSet\\Enum\\ROOT\\QUARN${1^^}"
}

# plug_port com3 NAME: adds an instrument, and the device that the system lists for it.
plug_port() {
  local port=$1
  printf 'built-in' >"$LINES/port-$port.new"
  mv "$LINES/port-$port.new" "$LINES/port-$port.rules"
  wait_until 20 "the instrument at $port" port_is_ready "$port"
  [[ ! -s $LINES/port-$port.ready ]] || fail "no instrument at $port: $(<"$LINES/port-$port.ready")"
  list_device "$port" "$2 (${port^^})"
}

# unplug_port com3: removes first the device, then the instrument.
unplug_port() {
  drop_device "$1"
  rm "$LINES/port-$1.rules"
  wait_until 20 "the instrument at $1 to go" port_is_gone "$1"
}
