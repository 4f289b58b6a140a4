# Sourced in the project's folder by scripts that run what they build, such as test.sh. A session builds the project and
# provides a Wine prefix, a display and services. However the session ends, it stops all of them.
. scripts/lib/log.sh
. scripts/lib/process.sh
. scripts/lib/wine.sh

readonly service_port=18443

# The Wine prefixes of the machines that tests run on: each has its own registry, files and display.
readonly machines=("$WINEPREFIX" "$WINEPREFIX-2" "$WINEPREFIX-3")

begin_session() {
  mkdir -p build && [ -w build ] || fail "$PWD/build is not writable."
  exec 9>>build/lock
  flock -n 9 || fail "Another script is already running in this checkout."
  record=$PWD/build/session
  stop_leftovers
  rm -f "${machines[@]/%/.server.log}"
  trap end_session EXIT
}

end_session() {
  trap '' HUP INT TERM
  [ -z "${setup_pid:-}" ] || { kill "$setup_pid" && wait "$setup_pid"; } 2>/dev/null || true
  stop_groups "${groups[@]}"
  stop_wine_services
  show_server_errors
  rm -rf build/wine*.new
  rm -f "$record".*
}

# Stops what a killed session has left. A recorded process may have exited, and its id may now belong to another process,
# so the start time must match.
stop_leftovers() {
  local file
  for file in "$record".*; do
    if [ -f "$file" ] && [ "$(start_time "${file##*.}")" = "$(cat "$file")" ]; then stop_groups "${file##*.}"; fi
    rm -f "$file"
  done
  stop_wine_services
}

# Runs in the foreground's process group, so that sudo can ask for a password.
run_setup() {
  ./setup.sh 9>&- &
  setup_pid=$!
  wait "$setup_pid" || exit 1
  setup_pid=
}

# The targets that build_project builds; everything if there are none.
targets=()

# build_project TREE [OPTION...]: installs missing packages, configures and builds. The options go to cmake.
build_project() {
  run_setup
  mkdir -p "$1"
  log "Building (a few minutes the first time)"
  start show_progress "$1/build.log" 2>/dev/null
  local progress=$started
  { run_and_wait cmake --preset "${preset:-mingw}" -B "$@" && run_and_wait cmake --build "$1" ${targets:+--target "${targets[@]}"}; } \
    >"$1/build.log" 2>&1 \
    || { tail -n 40 "$1/build.log" >&2; fail "The build failed; see $1/build.log."; }
  stop_groups "$progress"
  wait_for "$progress" || true
}

# show_progress LOG: prints ninja's progress every half minute, until it is stopped or the script has exited.
show_progress() {
  trap 'exit 0' TERM
  while sleep 30 && kill -0 $$; do sed -nE '$s/^(\[[0-9]+\/[0-9]+\]).*/    \1/p' "$1"; done
}

# Creates the prefix when it is first needed, in another place, and moves it when it is complete. With Tahoma, dialogs have
# the same size as on Windows; the characters that it lacks come from another font. Windows are unmanaged, so they close at
# once although no window manager is running.
prepare_wine_prefix() {
  is_prefix_complete && return 0
  log "Creating a Wine prefix (about ten seconds)"
  local place=$WINEPREFIX
  export WINEPREFIX=$place.new
  rm -rf "$WINEPREFIX" "${machines[@]}"
  mkdir -p "$WINEPREFIX"
  run_and_wait make_wine_prefix >"$place.log" 2>&1 || fail "The Wine prefix could not be created; see $place.log."
  mv "$WINEPREFIX" "$place"
  WINEPREFIX=$place
}

make_wine_prefix() {
  wine_run wineboot --init \
    && wine_run reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f \
    && wine_run reg add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\FontLink\SystemLink' /v Tahoma \
      /t REG_MULTI_SZ /d 'wqy-microhei.ttc,WenQuanYi Micro Hei' /f \
    && mkdir -p "$WINEPREFIX/drive_c/windows/Fonts" \
    && cp /usr/share/wine/fonts/{tahoma*,marlett}.ttf "$WINEPREFIX/drive_c/windows/Fonts/" \
    && wineserver -w \
    && mark_prefix_complete
}

# Keeps Wine's services running between programs. They have their own output, so that no pipe waits for them.
start_wine_services() {
  wineserver -p >"$WINEPREFIX.server.log" 2>&1 9>&- \
    || fail "Wine's server did not start; see $WINEPREFIX.server.log."
}

# Wine's server reports only what went wrong, such as a program that it has ended.
show_server_errors() {
  local prefix
  for prefix in "${machines[@]}"; do
    [ ! -s "$prefix.server.log" ] || log "Wine's server reported: $(tail -n 5 "$prefix.server.log")"
  done
}

# For the server of each prefix, Wine has a folder in /tmp, whose name is in the prefix.
stop_wine_services() {
  local prefix folder
  for prefix in "$WINEPREFIX" "${machines[@]}"; do
    [ -d "$prefix" ] || continue
    WINEPREFIX=$prefix wineserver -k >/dev/null 2>&1 || true
    rm -f "$prefix/display"
    folder=$(cat "$prefix/wineserver" 2>/dev/null) || continue
    case $folder in wine-*) rm -rf "/tmp/$folder" "$prefix/wineserver" ;; esac
  done
}

# Starts an Xvfb on a free display and sets DISPLAY. By default, it would start again whenever its last client exits.
start_display() {
  exec {display_pipe}<> <(:)
  start Xvfb -displayfd "$display_pipe" -screen 0 1280x900x24 -nolisten tcp -noreset >build/xvfb.log 2>&1
  local number
  read -r -t 30 -u "$display_pipe" number || fail "Xvfb did not start; see build/xvfb.log."
  export DISPLAY=":$number"
}

# start_wine_session: a display, a Wine prefix and Wine's services.
start_wine_session() {
  start_display
  prepare_wine_prefix
  start_wine_services
}

# Starts all machines, for tests that run at the same time.
start_machines() {
  start_display
  prepare_wine_prefix
  local first=$WINEPREFIX first_display=$DISPLAY
  for WINEPREFIX in "${machines[@]:1}"; do
    is_prefix_complete || copy_prefix "$first" "$WINEPREFIX"
    start_display
    echo "$DISPLAY" >"$WINEPREFIX/display"
    start_wine_services
  done
  WINEPREFIX=$first DISPLAY=$first_display
  start_wine_services
}

# copy_prefix PREFIX COPY: copies a prefix whose services are not running. Only the registry is changed in place, so all
# other files can be hard links. The copy gets its own server, and its name when it is complete.
copy_prefix() {
  rm -rf "$2" "$2.new"
  { cp -al "$1" "$2.new" && cp --remove-destination "$1"/*.reg "$2.new" && rm -f "$2.new/wineserver" && mv "$2.new" "$2"; } \
    || fail "The Wine prefix could not be copied to $2."
}

# wait_for_line PATTERN LOG: waits until the command that was started last has written such a line.
wait_for_line() {
  for _ in $(seq 100); do
    grep -q "$1" "$2" && return 0
    kill -0 "$started" 2>/dev/null || break
    sleep 0.1
  done
  fail "A service did not start: $(tail -n 1 "$2")"
}

# Called before the build, which takes minutes.
require_free_port() {
  ! (exec 3<>"/dev/tcp/localhost/$service_port") 2>/dev/null \
    || fail "Port $service_port is in use; the product service of this project needs it."
}

# start_service LOG: the development product service, whose certificate Wine trusts.
start_service() {
  local options=(--port "$service_port" --certificate build/service.pem)
  WINE=/usr/lib/wine/wine64 run_and_wait python3 tools/product_service.py "${options[@]}" --trust >"$1" 2>&1 \
    || fail "The service's certificate cannot be used: $(tail -n 1 "$1")"
  start python3 tools/product_service.py "${options[@]}" >"$1" 2>&1
  wait_for_line "^Product service ready" "$1"
}

# Writes the records that an installer of the sample product writes.
register_products() {
  local version key
  for version in 2026.1 2026.2; do
    key="HKCU\\Software\\Example Maker\\Products\\Example Draft\\$version"
    wine_run reg add "$key" /v key /d DRAFT-2026-DEMO /f >/dev/null \
      && wine_run reg add "$key" /v version /d "$version" /f >/dev/null \
      || fail "The sample product's record could not be written."
  done
}

# wait_until MESSAGE CONDITION...: fails with the message if the condition is not met within ten seconds.
wait_until() {
  for _ in $(seq 100); do
    "${@:2}" && return 0
    sleep 0.1
  done
  fail "$1"
}

# wait_for_window PATTERN: waits until a window with a matching title has the focus and is painted; sets window.
wait_for_window() {
  run_and_wait timeout 30 xdotool search --sync --onlyvisible --name "$1" >build/window.txt \
    || fail "No window appeared."
  window=$(head -n 1 build/window.txt)
  wait_until "The window did not get the focus." has_focus
  rm -f build/window.png
  wait_until "The window kept repainting." is_painted
}

has_focus() { [ "$(xdotool getwindowfocus)" = "$window" ]; }

# Succeeds when two screenshots in a row are the same. The last one is build/window.png.
is_painted() {
  mv -f build/window.png build/previous.png 2>/dev/null || true
  run_and_wait sleep 0.3
  run_and_wait import -window "$window" build/window.png && cmp -s build/window.png build/previous.png
}

# take_screenshot PATTERN FILE: of the window with a matching title, as soon as it is painted.
take_screenshot() {
  wait_for_window "$1"
  cp build/window.png "$2"
}
