#!/usr/bin/env bash
# Records docs/scenes.gif for README: what the command-line tool prints, and the sample host's window and the upgrade
# center under Wine, worked with real keys.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/lib/session.sh

readonly bin=build/mingw/bin frames=$PWD/build/scenes log=build/service.log # in bin are the language files, too
readonly font=/usr/share/wine/fonts/tahoma.ttf opened=$frames/opened.txt dark='#1d2733'
targets=(ProductServicesGuard ProductServicesTool SampleHost language_files)

run_program() { (cd "$bin" && wine_run "$@") >"$frames/output.txt" 2>&1; }

start_host() {
  launch run_program ./SampleHost.exe --check-now
  program=$launched command=SampleHost
}

# start_tool ARGUMENT...: for the sample product. Its key is left out of the picture.
start_tool() {
  launch run_program ./ProductServicesTool.exe "$@" --product "Example Draft" --version 2026.1 \
    --api-key draft20-7k2m9q-x4v8p1w
  program=$launched command="ProductServicesTool $*"
}

await_program() { await "$program" || fail "$command failed: $(cat "$frames/output.txt")"; }

has_checked() { grep -q '(update check)' "$log"; }

has_opened() { [ -s "$opened" ]; }

# frame SECONDS PICTURE: one of the recording, with the command, or what happens, above the picture.
frame() {
  attend convert -size 760x520 xc:'#dfe5ec' "$2" -gravity center -geometry +0+16 -composite -font "$font" -pointsize 18 \
    -fill "$dark" -gravity northwest -annotate +48+16 "$command" -set delay "${1}00" "$frames/$number.miff"
  number=$((number + 1))
}

# show_window SECONDS PATTERN: the window with such a title.
show_window() {
  keep_picture "$2" "$frames/window.png"
  frame "$1" "$frames/window.png"
}

# show_output SECONDS: what the program has printed, at its end.
show_output() {
  await_program
  attend convert -background "$dark" -fill white -font "$font" -pointsize 18 -size 622x \
    caption:"$(tr -d '\r' <"$frames/output.txt")" -bordercolor "$dark" -border 20 "$frames/output.png"
  frame "$1" "$frames/output.png"
}

record_host() {
  start_host
  wait_until "The sample host has not asked the service." has_checked
  show_window 3 'sample host$'
  xdotool key alt+h u
  show_window 2 '^Example Draft - Upgrade center$'
  xdotool key shift+Tab Down Down
  show_window 2 '^Example Draft - Upgrade center$'
  xdotool key Return
  wait_until "No browser was opened." has_opened
  command="The browser opens $(cat "$opened")"
  show_window 3 'sample host$'
  xdotool key alt+F4
  await_program
}

record_tool() {
  start_tool check
  show_output 3
  start_tool upgrade --language 140
  show_window 3 '^Example Draft - Upgrade-Center$'
  xdotool key Escape
  show_output 2
}

begin_session
require_free_port
build_project build/mingw
rm -rf "$frames"
mkdir -p "$frames"
start_windows
attend register_products
start_service "$log"
export OPENED_ADDRESSES=$opened PATH=$PWD/scripts/lib/browser:$PATH LC_ALL=C.UTF-8
number=10
record_host
record_tool
attend convert "$frames"/*.miff -layers OptimizeTransparency -loop 0 docs/scenes.gif
say "docs/scenes.gif has $(stat -c %s docs/scenes.gif) bytes."
