# Sourced by run.sh, test.sh and bench.sh, in the project's folder: a session builds the project and brings a Wine
# prefix, a display and services, which all end with it, whatever way it ends.
. scripts/lib/say.sh
. scripts/lib/wine.sh

readonly session_log=$PWD/build/session
readonly service_port=18443

# What runs for this session: process groups, by their leaders. The file tells a later session what a killed one left.
groups=()

begin_session() {
  mkdir -p build && [ -w build ] || fail "The folder $PWD/build belongs to another user."
  exec {session_lock}>>build/lock
  flock -n "$session_lock" || fail "Another run.sh, test.sh or bench.sh is at work in this checkout."
  end_left_processes
  trap end_session EXIT
  trap 'exit 129' HUP
  trap 'exit 130' INT
  trap 'exit 143' TERM
}

end_session() {
  trap '' HUP INT TERM
  end_groups "${groups[@]}"
  stop_wine_services
  rm -f "$session_log".*
}

# A recorded process may have ended and its number be another's: both have to fit.
end_left_processes() {
  local file
  for file in "$session_log".*; do
    if [ -f "$file" ] && [ "$(start_time "${file##*.}")" = "$(cat "$file")" ]; then end_groups "${file##*.}"; fi
    rm -f "$file"
  done
  stop_wine_services
}

start_time() { cut -d' ' -f22 "/proc/$1/stat" 2>/dev/null || echo ended; }

end_groups() {
  local group
  for group in "$@"; do kill -TERM -- "-$group" 2>/dev/null || true; done
  for _ in $(seq 10); do
    for group in "$@"; do
      if kill -0 -- "-$group" 2>/dev/null; then
        sleep 0.1
        continue 2
      fi
    done
    return 0
  done
  for group in "$@"; do kill -KILL -- "-$group" 2>/dev/null || true; done
}

# launch COMMAND...: starts it in the background, in a process group of its own that ends with the session; sets
# launched.
launch() {
  set -m
  "$@" {session_lock}>&- &
  launched=$!
  set +m
  groups+=("$launched")
  start_time "$launched" >"$session_log.$launched"
}

# attend COMMAND...: runs it to its end. Unlike a command in the foreground it does not keep signals waiting.
attend() {
  launch "$@"
  local group=$launched status=0
  wait "$group" || status=$?
  forget "$group"
  return "$status"
}

forget() {
  local left=() group
  for group in "${groups[@]}"; do [ "$group" = "$1" ] || left+=("$group"); done
  groups=("${left[@]}")
  rm -f "$session_log.$1"
}

# build_project TREE [OPTION...]: installs what is missing, configures and builds; the options go to cmake.
build_project() {
  ./setup.sh
  mkdir -p "$1"
  say "Building (a few minutes the first time)"
  { attend cmake --preset "${preset:-mingw}" -B "$@" && attend cmake --build "$1"; } >"$1/build.log" 2>&1 \
    || { tail -n 40 "$1/build.log" >&2; fail "The build failed; see $1/build.log."; }
}

# Makes the prefix on first use, elsewhere and moved into place when whole. Tahoma gives dialogs the size that they
# have on Windows, and takes the signs it lacks from another font; unmanaged windows close at once where no window
# manager runs.
prepare_wine_prefix() {
  [ -d "$WINEPREFIX" ] && return 0
  say "Making a Wine prefix (some ten seconds)"
  local place=$WINEPREFIX
  export WINEPREFIX=$place.new
  rm -rf "$WINEPREFIX"
  mkdir -p "$WINEPREFIX"
  attend make_wine_prefix >"$place.log" 2>&1 || fail "The Wine prefix could not be made; see $place.log."
  mv "$WINEPREFIX" "$place"
  WINEPREFIX=$place
}

make_wine_prefix() {
  wine_run wineboot --init \
    && wine_run reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f \
    && wine_run reg add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\FontLink\SystemLink' /v Tahoma \
      /t REG_MULTI_SZ /d 'wqy-microhei.ttc,WenQuanYi Micro Hei' /f \
    && mkdir -p "$WINEPREFIX/drive_c/windows/Fonts" \
    && cp /usr/share/wine/fonts/tahoma*.ttf "$WINEPREFIX/drive_c/windows/Fonts/" \
    && wineserver -w
}

# Keeps Wine's services running between programs, on their own output so that no pipe waits for them.
start_wine_services() {
  wineserver -p >build/wineserver.log 2>&1 {session_lock}>&- \
    || fail "Wine's server did not start; see build/wineserver.log."
}

stop_wine_services() {
  wineserver -k >/dev/null 2>&1 || true
}

# Starts an Xvfb on a free display; sets DISPLAY.
start_display() {
  exec {display_pipe}<> <(:)
  launch Xvfb -displayfd "$display_pipe" -screen 0 1280x900x24 -nolisten tcp >build/xvfb.log 2>&1
  local number
  read -r -t 30 -u "$display_pipe" number || fail "Xvfb did not start; see build/xvfb.log."
  export DISPLAY=":$number"
}

# start_windows: a display, a Wine prefix and Wine's services.
start_windows() {
  start_display
  prepare_wine_prefix
  start_wine_services
}

# wait_for_line PATTERN LOG: waits until what was launched last has written such a line.
wait_for_line() {
  for _ in $(seq 100); do
    grep -q "$1" "$2" && return 0
    kill -0 "$launched" 2>/dev/null || break
    sleep 0.1
  done
  fail "A service did not start: $(tail -n 1 "$2")"
}

# start_service LOG: the development product service.
start_service() {
  launch python3 tools/product_service.py --port "$service_port" >"$1" 2>&1
  wait_for_line "^Product service ready" "$1"
}

# What an installer of the sample product writes.
register_products() {
  local version key
  for version in 2026.1 2026.2; do
    key="HKCU\\Software\\Example Maker\\Products\\Example Draft\\$version"
    wine_run reg add "$key" /v key /d DRAFT-2026-DEMO /f >/dev/null \
      && wine_run reg add "$key" /v version /d "$version" /f >/dev/null \
      || fail "The sample product's record could not be written."
  done
}
