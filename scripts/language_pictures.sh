#!/usr/bin/env bash
# Takes pictures of everything that the library shows, in each of its languages, into build/language-pictures: the
# upgrade center and the two message boxes of the update check. Languages can be named: language_pictures.sh DE US
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/lib/session.sh

readonly bin=build/mingw/bin pictures=$PWD/build/language-pictures
# The ids of the public header; US is what every other id selects.
declare -A ids=([US]=0)
while read -r code id; do
  ids[$code]=$id
done < <(sed -nE 's/^ *PRODUCT_SERVICES_LANGUAGE_(\w+) = ([0-9]+).*/\1 \2/p' include/product_services/product_services.h)

run_host() { (cd "$bin" && wine_run ./SampleHost.exe "$@" --unattended --look 2500) >build/language-pictures.log 2>&1; }

# take_picture NAME CODE ARGUMENT...: of the window that the sample host shows in that language.
take_picture() {
  launch run_host "${@:3}" --language "${ids[$2]}"
  local host=$launched
  keep_picture '^Example Draft' "$pictures/$1-$2.png"
  await "$host" || fail "The sample host failed; see build/language-pictures.log."
}

codes=("$@")
[ $# -gt 0 ] || mapfile -t codes < <(printf '%s\n' "${!ids[@]}" | sort)
for code in "${codes[@]}"; do
  [ -n "${ids[$code]:-}" ] || fail "No host can ask for $code; these are the languages: ${!ids[*]}."
done

begin_session
build_project build/mingw
start_windows
attend register_products
mkdir -p "$pictures"
say "Taking pictures of ${codes[*]} (five seconds each)"
for code in "${codes[@]}"; do take_picture no-internet "$code" check; done
start_service build/service.log
for code in "${codes[@]}"; do
  take_picture latest-version "$code" check --version 2026.2
  take_picture upgrade-center "$code" upgrade
done
say "The pictures are in build/language-pictures."
