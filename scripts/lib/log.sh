# Sourced by the scripts: messages for the person who runs them.
log() { printf '==> %s\n' "$*"; }

fail() {
  printf 'error: %s\n' "$*" >&2
  exit 1
}
