# Sourced, in the project's folder, by scripts that run what they build, such as test.sh: a session builds the project and
# brings a Wine prefix, a display and services, which all end with it, whatever way it ends.
. scripts/lib/say.sh
. scripts/lib/process.sh
. scripts/lib/wine.sh

readonly service_port=18443

begin_session() {
  mkdir -p build && [ -w build ] || fail "The folder $PWD/build belongs to another user."
  exec 9>>build/lock
  flock -n 9 || fail "Another script, such as test.sh, is at work in this checkout."
  record=$PWD/build/session
  end_left_processes
  trap end_session EXIT
}

end_session() {
  trap '' HUP INT TERM
  [ -z "${setup_pid:-}" ] || { kill "$setup_pid" && wait "$setup_pid"; } 2>/dev/null || true
  end_groups "${groups[@]}"
  stop_wine_services
  rm -rf build/wine.new
  rm -f "$record".*
}

# What a session that was killed has left. A recorded process may have ended and its number be another's: its time of
# start has to fit.
end_left_processes() {
  local file
  for file in "$record".*; do
    if [ -f "$file" ] && [ "$(start_time "${file##*.}")" = "$(cat "$file")" ]; then end_groups "${file##*.}"; fi
    rm -f "$file"
  done
  stop_wine_services
}

# In the foreground's process group, where sudo may ask for a password.
run_setup() {
  ./setup.sh 9>&- &
  setup_pid=$!
  wait "$setup_pid" || exit 1
  setup_pid=
}

# What build_project builds: everything, unless a script names targets.
targets=()

# build_project TREE [OPTION...]: installs what is missing, configures and builds; the options go to cmake.
build_project() {
  run_setup
  mkdir -p "$1"
  say "Building (a few minutes the first time)"
  launch show_progress "$1/build.log" 2>/dev/null
  local progress=$launched
  { attend cmake --preset "${preset:-mingw}" -B "$@" && attend cmake --build "$1" ${targets:+--target "${targets[@]}"}; } \
    >"$1/build.log" 2>&1 \
    || { tail -n 40 "$1/build.log" >&2; fail "The build failed; see $1/build.log."; }
  end_groups "$progress"
  await "$progress" || true
}

# show_progress LOG: prints how far ninja is every half minute, until it is ended or the script is gone.
show_progress() {
  trap 'exit 0' TERM
  while sleep 30 && kill -0 $$; do sed -nE '$s/^(\[[0-9]+\/[0-9]+\]).*/    \1/p' "$1"; done
}

# Makes the prefix on first use, elsewhere and moved into place when whole. Tahoma gives dialogs the size that they
# have on Windows, and takes the signs it lacks from another font; unmanaged windows close at once where no window
# manager runs.
prepare_wine_prefix() {
  is_prefix_whole && return 0
  say "Making a Wine prefix (some ten seconds)"
  local place=$WINEPREFIX
  export WINEPREFIX=$place.new
  rm -rf "$WINEPREFIX" "$place"
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
    && wineserver -w \
    && mark_prefix_whole
}

# Keeps Wine's services running between programs, on their own output so that no pipe waits for them.
start_wine_services() {
  wineserver -p >build/wineserver.log 2>&1 9>&- \
    || fail "Wine's server did not start; see build/wineserver.log."
}

# Wine keeps a folder in /tmp for the server of each prefix, whose name is in the prefix.
stop_wine_services() {
  wineserver -k >/dev/null 2>&1 || true
  local folder; folder=$(cat "$WINEPREFIX/wineserver" 2>/dev/null) || return 0
  case $folder in wine-*) rm -rf "/tmp/$folder" "$WINEPREFIX/wineserver" ;; esac
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

# Said before the build, which takes minutes.
require_free_port() {
  ! (exec 3<>"/dev/tcp/localhost/$service_port") 2>/dev/null \
    || fail "Port $service_port is in use; the product service of this project needs it."
}

# start_service LOG: the development product service, whose certificate Wine trusts.
start_service() {
  local options=(--port "$service_port" --certificate build/service.pem)
  WINE=/usr/lib/wine/wine64 attend python3 tools/product_service.py "${options[@]}" --trust >"$1" 2>&1 \
    || fail "The service's certificate cannot be used: $(tail -n 1 "$1")"
  launch python3 tools/product_service.py "${options[@]}" >"$1" 2>&1
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

# wait_until SENTENCE CONDITION...: fails with the sentence if the condition is not met within ten seconds.
wait_until() {
  for _ in $(seq 100); do
    "${@:2}" && return 0
    sleep 0.1
  done
  fail "$1"
}

# wait_for_window PATTERN: waits until a window with such a title gets the keys and is painted; sets window.
wait_for_window() {
  attend timeout 30 xdotool search --sync --onlyvisible --name "$1" >build/window.txt || fail "No window came up."
  window=$(head -n 1 build/window.txt)
  wait_until "A window did not get the focus." has_focus
  rm -f build/window.png
  wait_until "A window is not painted." is_painted
}

has_focus() { [ "$(xdotool getwindowfocus)" = "$window" ]; }

# Two pictures in a row are the same; the last one is build/window.png.
is_painted() {
  mv -f build/window.png build/previous.png 2>/dev/null || true
  attend sleep 0.3
  attend import -window "$window" build/window.png && cmp -s build/window.png build/previous.png
}

# keep_picture PATTERN FILE: a picture of the window with such a title, once it has come up and is painted.
keep_picture() {
  wait_for_window "$1"
  cp build/window.png "$2"
}
