# Sourced: the Wine prefix of the build tree and a display for the windows of what runs in it.

build_dir="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)/build"
export WINEPREFIX="${PRODUCT_SERVICES_WINEPREFIX:-$build_dir/wine}"
export WINEDEBUG="${WINEDEBUG:--all}"
export WINEDLLOVERRIDES="mscoree,mshtml="
export WINEARCH=win64
# The tests talk to loopback alone, whatever proxy this machine has.
unset http_proxy https_proxy all_proxy no_proxy HTTP_PROXY HTTPS_PROXY ALL_PROXY NO_PROXY

wine_run() { /usr/lib/wine/wine64 "$@"; }

# Makes the prefix on first use. Tahoma gives dialogs the size that they have on Windows; unmanaged windows
# close at once where no window manager runs; a crash ends a program instead of asking.
prepare_wine_prefix() {
  [ -f "$WINEPREFIX/prepared" ] && return 0
  say "Making a Wine prefix (some ten seconds)"
  mkdir -p "$WINEPREFIX"
  {
    wine_run wineboot --init
    wine_run reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f
    wine_run reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f
    mkdir -p "$WINEPREFIX/drive_c/windows/Fonts"
    cp /usr/share/wine/fonts/tahoma*.ttf "$WINEPREFIX/drive_c/windows/Fonts/"
    wineserver -w
  } >"$build_dir/wine-prefix.log" 2>&1 || fail "The Wine prefix could not be made; see $build_dir/wine-prefix.log."
  touch "$WINEPREFIX/prepared"
}

# Keeps Wine's services running between programs, on their own output so that no pipe waits for them.
start_wine_services() {
  wineserver -p >"$build_dir/wineserver.log" 2>&1 || fail "Wine's server did not start; see $build_dir/wineserver.log."
}

stop_wine_services() {
  wineserver -k >/dev/null 2>&1 || true
  wineserver -w >/dev/null 2>&1 || true
}

# Starts an Xvfb on a free display; sets DISPLAY and xvfb_pid.
start_display() {
  exec {display_pipe}<> <(:)
  Xvfb -displayfd "$display_pipe" -screen 0 1280x900x24 -nolisten tcp >"$build_dir/xvfb.log" 2>&1 &
  xvfb_pid=$!
  local number
  read -r -t 30 -u "$display_pipe" number || fail "Xvfb did not start; see $build_dir/xvfb.log."
  export DISPLAY=":$number"
}

stop_display() {
  [ -n "${xvfb_pid:-}" ] && kill "$xvfb_pid" 2>/dev/null && wait "$xvfb_pid" 2>/dev/null
  xvfb_pid=
}
