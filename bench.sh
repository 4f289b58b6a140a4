#!/usr/bin/env bash
# Measures the library under Wine, against nginx on loopback, and prints a table of ratios and times, which
# build/bench.txt holds too. A missed target is marked "over" and is no failure.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
. scripts/lib/session.sh

readonly tree=build/bench
readonly nginx=$PWD/$tree/nginx

# Unpacked and not installed: the installed package would start a service of its own.
fetch_nginx() {
  mkdir -p "$nginx/temp"
  [ -x "$nginx/usr/sbin/nginx" ] && return 0
  say "Fetching nginx"
  (cd "$nginx" && rm -f nginx_*.deb && apt-get download nginx && dpkg-deb -x nginx_*.deb .) >"$nginx/apt.log" 2>&1 \
    || fail "nginx could not be fetched (no network, or old package lists: apt-get update); see $nginx/apt.log."
}

start_nginx() {
  cp benchmarks/nginx.conf "$nginx/"
  rm -f "$nginx/nginx.pid"
  launch "$nginx/usr/sbin/nginx" -p "$nginx/" -c "$nginx/nginx.conf" >"$nginx/nginx.log" 2>&1
  for _ in $(seq 100); do
    [ -s "$nginx/nginx.pid" ] && return 0
    sleep 0.1
  done
  fail "nginx did not start: $(tail -n 1 "$nginx/nginx.log")"
}

# change_trust --trust|--untrust: whether Wine trusts nginx's certificate, which is made when it is missing.
change_trust() {
  WINE=/usr/lib/wine/wine64 attend python3 tools/product_service.py --address 127.0.0.1 \
    --certificate "$nginx/service.pem" "$1" >"$nginx/trust.log" 2>&1 \
    || fail "The certificate cannot be used: $(tail -n 1 "$nginx/trust.log")"
}

begin_session
build_project "$tree" -DPRODUCT_SERVICES_BENCHMARKS=ON -DBUILD_TESTING=OFF
fetch_nginx
start_windows
change_trust --trust
start_nginx
status=0
attend /usr/bin/python3 -B benchmarks/run.py "$tree/bin" build/bench.txt || status=$?
change_trust --untrust
exit "$status"
