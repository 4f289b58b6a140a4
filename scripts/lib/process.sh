# Sourced by scripts that start programs. Each program runs in its own process group, so that a signal ends the script
# and the program at once. Bash would otherwise wait until a command in the foreground has exited.

# The running process groups, by their leaders. If record is set, the file RECORD.LEADER contains the leader's start time.
groups=()
record=

trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM

start_time() { cut -d' ' -f22 "/proc/$1/stat" 2>/dev/null || echo exited; }

# start COMMAND...: starts it in the background and sets started. It does not inherit descriptor 9, the session's lock.
start() {
  set -m
  "$@" 9>&- &
  started=$!
  set +m
  groups+=("$started")
  [ -z "$record" ] || start_time "$started" >"$record.$started"
}

# run_and_wait COMMAND...: returns its exit status.
run_and_wait() {
  start "$@"
  wait_for "$started"
}

# wait_for GROUP: waits until a started command has exited, and returns its exit status.
wait_for() {
  local status=0 remaining=() group
  wait "$1" || status=$?
  for group in "${groups[@]}"; do [ "$group" = "$1" ] || remaining+=("$group"); done
  groups=("${remaining[@]}")
  [ -z "$record" ] || rm -f "$record.$1"
  return "$status"
}

# Only root can signal a process that runs as root for us.
signal_group() {
  kill "-$1" -- "-$2" 2>/dev/null && return 0
  ps -o pid= -g "$2" 2>/dev/null | grep -q . && [ "$(id -u)" -ne 0 ] && sudo -n kill "-$1" -- "-$2" 2>/dev/null
}

stop_groups() {
  local group
  for group in "$@"; do signal_group TERM "$group" || true; done
  for _ in $(seq 10); do
    for group in "$@"; do
      if kill -0 -- "-$group" 2>/dev/null; then
        sleep 0.1
        continue 2
      fi
    done
    return 0
  done
  for group in "$@"; do signal_group KILL "$group" || true; done
}
