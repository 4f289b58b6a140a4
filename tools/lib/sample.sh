# Sourced after say.sh and wine.sh: the sample product's record and the development service.

readonly service_port=18443

# register_product VERSION: what an installer of the sample product writes.
register_product() {
  local key="HKCU\\Software\\Example Maker\\Products\\Example Draft\\$1"
  wine_run reg add "$key" /v key /d DRAFT-2026-DEMO /f >/dev/null \
    && wine_run reg add "$key" /v version /d "$1" /f >/dev/null \
    || fail "The sample product's record could not be written."
}

register_products() {
  register_product 2026.1
  register_product 2026.2
}

# Starts the development service and waits until it is ready; sets service_pid. $1: its log.
start_service() {
  python3 tools/product_service.py --port "$service_port" >"$1" 2>&1 &
  service_pid=$!
  local attempt
  for attempt in $(seq 100); do
    grep -q "^Product service ready" "$1" && return 0
    kill -0 "$service_pid" 2>/dev/null || break
    sleep 0.1
  done
  fail "The development service did not start: $(tail -n 1 "$1")"
}

stop_service() {
  [ -n "${service_pid:-}" ] && kill -INT "$service_pid" 2>/dev/null && wait "$service_pid" 2>/dev/null
  service_pid=
}
