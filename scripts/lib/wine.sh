# Sourced: the environment of Wine programs, with the Wine prefix in the build folder.

# PRODUCT_SERVICES_WINEPREFIX selects another one, and TEST_MACHINE a further machine of a test session, which has a display
# of its own.
WINEPREFIX="${PRODUCT_SERVICES_WINEPREFIX:-$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)/build/wine}"
export WINEPREFIX="$WINEPREFIX${TEST_MACHINE:+-$TEST_MACHINE}"
[ ! -f "$WINEPREFIX/display" ] || DISPLAY=$(cat "$WINEPREFIX/display")
export DISPLAY
export WINEDEBUG="${WINEDEBUG:--all}"
# winedbg can lose the exit status of a program that crashes, and winemenubuilder would add to the desktop's menus.
export WINEDLLOVERRIDES="mscoree,mshtml,winedbg.exe,winemenubuilder.exe="
export WINEARCH=win64
# Programs use only loopback, so a proxy of this machine must not be used.
unset http_proxy https_proxy all_proxy no_proxy HTTP_PROXY HTTPS_PROXY ALL_PROXY NO_PROXY

# Wine reads and writes paths in the locale's encoding.
[ "$(locale charmap 2>/dev/null)" = UTF-8 ] || export LC_ALL=C.UTF-8

# A marker file shows that the prefix was created completely, with fonts and settings.
is_prefix_complete() { [ -f "$WINEPREFIX/product_services.complete" ]; }
mark_prefix_complete() { touch "$WINEPREFIX/product_services.complete"; }

wine_run() { /usr/lib/wine/wine64 "$@"; }
