# Sourced by the scripts: what they tell the person who runs them.
say() { printf '==> %s\n' "$*"; }

fail() {
  printf 'error: %s\n' "$*" >&2
  exit 1
}
