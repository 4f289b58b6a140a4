#!/usr/bin/env bash
# Records docs/demo.gif for README: the sample host's window and the upgrade center under Wine, operated with real keys, and
# the output of the command-line tool.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/lib/session.sh

readonly bin=build/mingw/bin frames=$PWD/build/demo log=build/service.log # bin also contains the language files
readonly font=/usr/share/wine/fonts/tahoma.ttf opened=$frames/opened.txt dark='#1d2733'
targets=(ProductServicesGuard ProductServicesTool SampleHost language_files)

run_program() { (cd "$bin" && wine_run "$@") >"$frames/output.txt" 2>&1; }

start_host() {
  start run_program ./SampleHost.exe --check-now
  program=$started command=SampleHost
}

# start_tool ARGUMENT...: for the sample product, whose API key is not shown.
start_tool() {
  start run_program ./ProductServicesTool.exe "$@" --product "Example Draft" --version 2026.1 \
    --api-key draft20-7k2m9q-x4v8p1w
  program=$started command="ProductServicesTool $*"
}

wait_for_program() { wait_for "$program" || fail "$command failed: $(cat "$frames/output.txt")"; }

has_checked() { grep -q '(update check)' "$log"; }

has_opened() { [ -s "$opened" ]; }

# add_frame SECONDS IMAGE: adds a frame to the recording, with the command or a description above the image.
add_frame() {
  run_and_wait convert -size 760x520 xc:'#dfe5ec' "$2" -gravity center -geometry +0+16 -composite -font "$font" -pointsize 18 \
    -fill "$dark" -gravity northwest -annotate +48+16 "$command" -set delay "${1}00" "$frames/$number.miff"
  number=$((number + 1))
}

# add_window SECONDS PATTERN: adds the window with a matching title.
add_window() {
  take_screenshot "$2" "$frames/window.png"
  add_frame "$1" "$frames/window.png"
}

# add_output SECONDS: waits until the program has exited, and adds its output.
add_output() {
  wait_for_program
  run_and_wait convert -background "$dark" -fill white -font "$font" -pointsize 18 -size 622x \
    caption:"$(tr -d '\r' <"$frames/output.txt")" -bordercolor "$dark" -border 20 "$frames/output.png"
  add_frame "$1" "$frames/output.png"
}

record_host() {
  start_host
  wait_until "The sample host did not query the service." has_checked
  add_window 3 'sample host$'
  xdotool key alt+h u
  add_window 2 '^Example Draft - Upgrade center$'
  xdotool key shift+Tab Down Down
  add_window 2 '^Example Draft - Upgrade center$'
  xdotool key Return
  wait_until "No URL was opened in the browser." has_opened
  command="The browser opens $(cat "$opened")"
  add_window 3 'sample host$'
  xdotool key alt+F4
  wait_for_program
}

record_tool() {
  start_tool check
  add_output 3
  start_tool upgrade --language 140
  add_window 3 '^Example Draft - Upgrade-Center$'
  xdotool key Escape
  add_output 2
}

begin_session
require_free_port
build_project build/mingw
rm -rf "$frames"
mkdir -p "$frames"
start_wine_session
run_and_wait register_products
start_service "$log"
export OPENED_ADDRESSES=$opened PATH=$PWD/scripts/lib/browser:$PATH LC_ALL=C.UTF-8
number=10
record_host
record_tool
run_and_wait convert "$frames"/*.miff -layers OptimizeTransparency -loop 0 docs/demo.gif
log "Wrote docs/demo.gif ($(stat -c %s docs/demo.gif) bytes)."
