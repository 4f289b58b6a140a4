# Sourced by scripts that start programs: each runs in a process group of its own, so that a signal ends the script at
# once, and the group with it. Bash alone would wait for the end of a command in the foreground.

# The groups that run, by their leaders. Where record is set, RECORD.LEADER holds the time of a leader's start.
groups=()
record=

trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM

start_time() { cut -d' ' -f22 "/proc/$1/stat" 2>/dev/null || echo ended; }

# launch COMMAND...: starts it in the background; sets launched. It does not get descriptor 9, a session's lock.
launch() {
  set -m
  "$@" 9>&- &
  launched=$!
  set +m
  groups+=("$launched")
  [ -z "$record" ] || start_time "$launched" >"$record.$launched"
}

# attend COMMAND...: runs it to its end.
attend() {
  launch "$@"
  await "$launched"
}

# await GROUP: waits for the end of a launched one; its status.
await() {
  local status=0 left=() group
  wait "$1" || status=$?
  for group in "${groups[@]}"; do [ "$group" = "$1" ] || left+=("$group"); done
  groups=("${left[@]}")
  [ -z "$record" ] || rm -f "$record.$1"
  return "$status"
}

# What root runs for us, only root may signal.
signal_group() {
  kill "-$1" -- "-$2" 2>/dev/null && return 0
  ps -o pid= -g "$2" 2>/dev/null | grep -q . && [ "$(id -u)" -ne 0 ] && sudo -n kill "-$1" -- "-$2" 2>/dev/null
}

end_groups() {
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
