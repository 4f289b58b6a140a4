#!/usr/bin/env bash
# Records docs/scenes.gif for README: what the sample host prints and shows under Wine, worked with real keys.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/lib/session.sh

readonly bin=build/mingw/bin frames=$PWD/build/scenes # where the language files are, too
readonly font=/usr/share/wine/fonts/tahoma.ttf opened=$frames/opened.txt dark='#1d2733'

run_host() { (cd "$bin" && wine_run ./SampleHost.exe "$@") >"$frames/host.txt" 2>&1; }

start_host() {
  launch run_host "$@"
  host=$launched command="SampleHost $*"
}

# look_at TITLE: waits until such a window of the host has the focus; sets window.
look_at() {
  attend timeout 30 xdotool search --sync --onlyvisible --name "^$1\$" >"$frames/window.txt" || fail "No window came up."
  window=$(head -n 1 "$frames/window.txt")
  wait_until 'A window got no focus.' has_focus
}

has_focus() { [ "$(xdotool getwindowfocus)" = "$window" ]; }

# Two pictures in a row are the same: then the window is painted.
is_painted() {
  mv -f "$frames/window.png" "$frames/before.png" 2>/dev/null || true
  attend import -window "$window" "$frames/window.png"
  cmp -s "$frames/window.png" "$frames/before.png"
}

has_opened() { [ -s "$opened" ]; }

# wait_until MESSAGE CONDITION: fails with the message where the condition does not come.
wait_until() {
  for _ in $(seq 100); do
    "$2" && return 0
    sleep 0.1
  done
  fail "$1"
}

# frame SECONDS PICTURE: one of the recording, with the command above the picture.
frame() {
  attend convert -size 760x520 xc:'#dfe5ec' "$2" -gravity center -geometry +0+16 -composite -font "$font" -pointsize 18 \
    -fill "$dark" -gravity northwest -annotate +48+16 "$command" -set delay "${1}00" "$frames/$number.miff"
  number=$((number + 1))
}

show_window() {
  wait_until "A window does not come to rest." is_painted
  frame "$1" "$frames/window.png"
}

# show_output SECONDS [LINE]: what the host has printed, at its end.
show_output() {
  await "$host" || fail "The sample host failed: $(cat "$frames/host.txt")"
  attend convert -background "$dark" -fill white -font "$font" -pointsize 18 -size 622x \
    caption:"$(tr -d '\r' <"$frames/host.txt")${2:+\\n$2}" -bordercolor "$dark" -border 20 "$frames/output.png"
  frame "$1" "$frames/output.png"
}

record_check() {
  start_host check
  show_output 3
  start_host check --version 2026.2
  look_at "Example Draft"
  show_window 3
  xdotool key Return
  await "$host"
}

record_upgrade() {
  start_host upgrade
  look_at "Example Draft - Upgrade center"
  show_window 2
  xdotool key shift+Tab Down Down
  show_window 2
  xdotool key Return
  wait_until "No browser was opened." has_opened
  show_output 3 "The browser was given: $(cat "$opened")"
  start_host upgrade --language 140
  look_at "Example Draft - Upgrade-Center"
  show_window 3
  xdotool key Escape
  await "$host"
}

begin_session
require_free_port
build_project build/mingw
rm -rf "$frames"
mkdir -p "$frames"
start_windows
attend register_products
start_service build/service.log
export OPENED_ADDRESSES=$opened PATH=$PWD/scripts/lib/browser:$PATH LC_ALL=C.UTF-8
number=10
record_check
record_upgrade
attend convert "$frames"/*.miff -layers OptimizeTransparency -loop 0 docs/scenes.gif
say "docs/scenes.gif has $(stat -c %s docs/scenes.gif) bytes."
