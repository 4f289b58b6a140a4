#!/usr/bin/env bash
# Measures the library under Wine, against nginx on loopback, and prints a table of ratios and times, which
# build/bench.txt holds too. A missed target is marked "over" and is no failure. With --service, measures what a request
# costs the samples of services and the development service instead, and writes build/bench-service.txt.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
. scripts/lib/session.sh

readonly tree=build/bench
readonly nginx=$PWD/$tree/nginx

start_nginx() {
  cp benchmarks/nginx.conf "$nginx/"
  rm -f "$nginx/nginx.pid"
  launch build/deps/nginx/usr/sbin/nginx -p "$nginx/" -c "$nginx/nginx.conf" >"$nginx/nginx.log" 2>&1
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

[[ $# -eq 0 || $* = --service ]] || fail "usage: bench.sh [--service]"
begin_session
if [ $# -gt 0 ]; then
  run_setup
  attend /usr/bin/python3 -B benchmarks/service.py build/bench-service.txt
  exit 0
fi
build_project "$tree" -DPRODUCT_SERVICES_BENCHMARKS=ON -DBUILD_TESTING=OFF
mkdir -p "$nginx/temp"
start_windows
change_trust --trust
start_nginx
status=0
attend /usr/bin/python3 -B benchmarks/run.py "$tree/bin" build/bench.txt || status=$?
change_trust --untrust
exit "$status"
