#!/usr/bin/env bash
# Builds the library and shows it at work: a real update check over HTTPS against the development
# service, with the sample host under Wine.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
. tools/lib/say.sh
. tools/lib/wine.sh
. tools/lib/sample.sh

clean_up() {
  stop_service
  stop_wine_services
  stop_display
}

# show SENTENCE ARGUMENT...: says what is tried, runs the sample host, prints what it printed.
show() {
  say "$1"
  shift
  wine_run build/mingw/bin/SampleHost.exe "$@" --unattended >build/run.log 2>&1 || fail "The sample host failed: $(cat build/run.log)"
  sed 's/\r$//; s/^/    /' build/run.log
}

./setup.sh
say "Building (a minute or two the first time)"
{ cmake --preset mingw && cmake --build --preset mingw; } >build/build.log 2>&1 \
  || fail "The build failed; see build/build.log."

trap clean_up EXIT
start_display
prepare_wine_prefix
start_wine_services
start_service build/service.log
register_product 2026.1
register_product 2026.2

show "A product that has a newer release" check --version 2026.1
show "The same product when nothing newer exists" check --version 2026.2
show "A product without a stored record" check --product "Example Unknown"
say "What the service was asked"
sed -n 's/^POST/    POST/p' build/service.log
