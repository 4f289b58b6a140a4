#!/usr/bin/env bash
# Measures the library under Wine, against nginx on loopback, and prints a table of ratios and times, which
# build/bench.txt holds too. A missed target is marked "over" and is no failure.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
. tools/lib/say.sh
. tools/lib/wine.sh

readonly tree=$PWD/build/bench
readonly nginx=$tree/nginx

clean_up() {
  stop_nginx
  stop_wine_services
  stop_display
}

# Debian's own nginx service stays off: invoke-rc.d starts nothing in runlevel 1.
install_nginx() {
  [ -x /usr/sbin/nginx ] && return 0
  local as_root=()
  [ "$(id -u)" -eq 0 ] || as_root=(sudo)
  say "Installing nginx"
  { "${as_root[@]}" apt-get update && "${as_root[@]}" env RUNLEVEL=1 DEBIAN_FRONTEND=noninteractive \
      apt-get install -y --no-install-recommends nginx; } >"$tree/apt.log" 2>&1 \
    || fail "nginx could not be installed; see $tree/apt.log."
}

# Starts nginx in the build tree and waits until it answers; sets nginx_pid.
start_nginx() {
  mkdir -p "$nginx/temp"
  rm -f "$nginx/nginx.pid"
  cp benchmarks/nginx.conf "$nginx/"
  openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=127.0.0.1 \
    -keyout "$nginx/key.pem" -out "$nginx/certificate.pem" >"$nginx/openssl.log" 2>&1 \
    || fail "The certificate could not be made; see $nginx/openssl.log."
  /usr/sbin/nginx -p "$nginx/" -c "$nginx/nginx.conf" >"$nginx/nginx.log" 2>&1 &
  nginx_pid=$!
  for _ in $(seq 100); do
    kill -0 "$nginx_pid" 2>/dev/null || break
    [ -s "$nginx/nginx.pid" ] && return 0
    sleep 0.1
  done
  fail "nginx did not start: $(tail -n 1 "$nginx/nginx.log")"
}

stop_nginx() {
  [ -n "${nginx_pid:-}" ] && kill "$nginx_pid" 2>/dev/null && wait "$nginx_pid" 2>/dev/null
  nginx_pid=
}

./setup.sh
mkdir -p "$tree"
install_nginx
say "Building (a minute or two the first time)"
{ cmake --preset mingw -B "$tree" -DPRODUCT_SERVICES_BENCHMARKS=ON -DBUILD_TESTING=OFF \
    && cmake --build "$tree"; } >"$tree/build.log" 2>&1 \
  || { tail -n 40 "$tree/build.log" >&2; fail "The build failed; see $tree/build.log."; }

trap clean_up EXIT
start_nginx
start_display
prepare_wine_prefix
start_wine_services
/usr/bin/python3 -B benchmarks/run.py "$tree/bin" build/bench.txt
