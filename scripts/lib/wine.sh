# Sourced: the environment of Wine programs, with the Wine prefix of the build tree.

export WINEPREFIX="${PRODUCT_SERVICES_WINEPREFIX:-$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)/build/wine}"
export WINEDEBUG="${WINEDEBUG:--all}"
# Without winedbg, which can lose the exit status of a program that crashes, and without start menus of the desktop.
export WINEDLLOVERRIDES="mscoree,mshtml,winedbg.exe,winemenubuilder.exe="
export WINEARCH=win64
# Programs talk to loopback alone, whatever proxy this machine has.
unset http_proxy https_proxy all_proxy no_proxy HTTP_PROXY HTTPS_PROXY ALL_PROXY NO_PROXY

# Wine reads and writes paths in the locale's encoding.
[ "$(locale charmap 2>/dev/null)" = UTF-8 ] || export LC_ALL=C.UTF-8

# Whether the prefix was made to its end, with fonts and settings: then a mark is in it.
is_prefix_whole() { [ -f "$WINEPREFIX/product_services.whole" ]; }
mark_prefix_whole() { touch "$WINEPREFIX/product_services.whole"; }

wine_run() { /usr/lib/wine/wine64 "$@"; }
