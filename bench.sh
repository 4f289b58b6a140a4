#!/usr/bin/env bash
# Measures the library under Wine with nginx on loopback. Prints a table of ratios and times, and writes it to
# build/bench.txt. A value above its limit is marked "exceeded"; this is not an error. With --service, it measures what a
# request costs the sample services and the development service instead, and writes build/bench-service.txt.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
. scripts/lib/session.sh

readonly tree=build/bench
readonly nginx=$PWD/$tree/nginx

start_nginx() {
  cp benchmarks/nginx.conf "$nginx/"
  rm -f "$nginx/nginx.pid"
  start build/deps/nginx/usr/sbin/nginx -p "$nginx/" -c "$nginx/nginx.conf" >"$nginx/nginx.log" 2>&1
  for _ in $(seq 100); do
    [ -s "$nginx/nginx.pid" ] && return 0
    sleep 0.1
  done
  fail "nginx did not start: $(tail -n 1 "$nginx/nginx.log")"
}

# change_trust --trust|--untrust: makes Wine trust nginx's certificate, which is created if it is missing, or stop trusting it.
change_trust() {
  WINE=/usr/lib/wine/wine64 run_and_wait python3 tools/product_service.py --address 127.0.0.1 \
    --certificate "$nginx/service.pem" "$1" >"$nginx/trust.log" 2>&1 \
    || fail "The certificate cannot be used: $(tail -n 1 "$nginx/trust.log")"
}

[[ $# -eq 0 || $* = --service ]] || fail "usage: bench.sh [--service]"
begin_session
if [ $# -gt 0 ]; then
  run_setup
  run_and_wait /usr/bin/python3 -B benchmarks/service.py build/bench-service.txt
  exit 0
fi
build_project "$tree" -DPRODUCT_SERVICES_BUILD_BENCHMARKS=ON -DBUILD_TESTING=OFF
mkdir -p "$nginx/temp"
start_wine_session
change_trust --trust
start_nginx
status=0
run_and_wait /usr/bin/python3 -B benchmarks/run.py "$tree/bin" build/bench.txt || status=$?
change_trust --untrust
exit "$status"
