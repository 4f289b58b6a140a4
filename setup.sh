#!/usr/bin/env bash
# Installs the packages that the build and the tests need on Debian 12 or 13, and builds libcurl for Windows into
# build/deps. It does only what has not been done yet. run.sh and test.sh call it. The arguments are further packages to install.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
. scripts/lib/log.sh
. scripts/lib/process.sh
trap 'stop_groups "${groups[@]}"' EXIT

readonly triplet=x86_64-w64-mingw32
readonly deps="$PWD/build/deps"
readonly packages=(
  g++-mingw-w64-x86-64-posix cmake ninja-build dpkg-dev git
  nlohmann-json3-dev libcli11-dev googletest
  wine wine64 xvfb fonts-wine xdotool imagemagick
  clang llvm openssl osslsigncode pkgconf python3 python3-pefile python3-pytest wixl msitools
  python3-polib gettext fonts-wqy-microhei php-cgi
  "$@"
)

# sudo already has the password.
as_root() { if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo -n "$@"; fi; }

is_installed() { [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]; }

install_packages() {
  local missing=() package
  for package in "${packages[@]}"; do is_installed "$package" || missing+=("$package"); done
  [ ${#missing[@]} -gt 0 ] || return 0
  command -v apt-get >/dev/null || fail "apt-get not found; this script supports Debian only."
  [ "$(id -u)" -eq 0 ] || command -v sudo >/dev/null \
    || fail "Missing packages: ${missing[*]}. Run this as root or install sudo."
  log "Installing ${missing[*]} (a few minutes on a fresh machine)"
  [ "$(id -u)" -eq 0 ] || sudo -v || fail "sudo failed, and the packages cannot be installed without it."
  { run_and_wait as_root apt-get update && run_and_wait as_root env DEBIAN_FRONTEND=noninteractive \
      apt-get install -y --no-install-recommends "${missing[@]}"; } >"$deps/apt.log" 2>&1 \
    || fail "The packages could not be installed (no network, or an unknown package?); see $deps/apt.log."
}

# Writes a deb-src entry for every binary source that this machine is configured with.
write_source_entries() {
  local list file
  : >"$1"
  for list in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [ -f "$list" ] && sed -n 's/^deb\([[:space:]]\)/deb-src\1/p' "$list" >>"$1"
  done
  for file in /etc/apt/sources.list.d/*.sources; do
    [ -f "$file" ] && sed 's/^Types:.*/Types: deb-src/' "$file" >"$2/$(basename "$file")"
  done
  return 0
}

# Puts the source entries and their package lists into $1, so that the machine's own apt settings do not change. A mirror
# may list a revision whose files it does not have, so older revisions are tried, too.
fetch_curl_source() {
  local work=$1 version
  mkdir -p "$work/parts" "$work/lists/partial"
  write_source_entries "$work/sources.list" "$work/parts"
  local options=(-o "Dir::Etc::sourcelist=$work/sources.list" -o "Dir::Etc::sourceparts=$work/parts"
                 -o "Dir::State::lists=$work/lists" -o APT::Sandbox::User=root)
  apt-get "${options[@]}" update || return 1
  for version in $(apt-cache "${options[@]}" showsrc --only-source curl | sed -n 's/^Version: //p' | sort -ruV); do
    (cd "$work" && apt-get "${options[@]}" source "curl=$version") && return 0
    rm -rf "$work"/curl[-_]*
  done
  return 1
}

# Schannel for TLS, only HTTP, no thread for resolving names, no manuals, and no path of this machine in the library. The
# unity build and the flags of windows.h, which most of libcurl's sources set themselves, halve the time. CMake ignores
# options that a version of libcurl does not have.
readonly curl_options=(
  -DCMAKE_SYSTEM_NAME=Windows "-DCMAKE_C_COMPILER=$triplet-gcc-posix" "-DCMAKE_RC_COMPILER=$triplet-windres"
  -DCMAKE_BUILD_TYPE=MinSizeRel -DCMAKE_UNITY_BUILD=ON -DPICKY_COMPILER=OFF
  "-DCMAKE_FIND_ROOT_PATH=/usr/$triplet" -DCMAKE_FIND_ROOT_PATH_MODE_LIBRARY=ONLY
  -DCMAKE_FIND_ROOT_PATH_MODE_INCLUDE=ONLY
  -DCURL_USE_SCHANNEL=ON -DHTTP_ONLY=ON -DCURL_DISABLE_WEBSOCKETS=ON -DENABLE_THREADED_RESOLVER=OFF
  -DCURL_CA_BUNDLE=none -DCURL_CA_PATH=none
  -DBUILD_SHARED_LIBS=OFF -DBUILD_CURL_EXE=OFF -DCURL_ZLIB=OFF
  -DUSE_LIBIDN2=OFF -DCURL_USE_LIBPSL=OFF -DCURL_USE_LIBSSH2=OFF -DBUILD_TESTING=OFF
  -DBUILD_LIBCURL_DOCS=OFF -DBUILD_MISC_DOCS=OFF -DENABLE_CURL_MANUAL=OFF
)
readonly curl_flags="-DWIN32_LEAN_AND_MEAN -ffunction-sections -fdata-sections -fstack-protector-strong"

# Debian's version of the source and the SHA-256 checksums of its files, for the package's SBOM.
record_curl_source() {
  sed -n 's/^Version: //p' curl_*.dsc
  sha256sum curl_*.dsc curl_*.tar.*[!c]
}

# Builds libcurl unless it has already been built with the same options.
build_curl() {
  local all_options="${curl_options[*]} $curl_flags"
  [ "$(cat "$deps/$triplet/options.txt" 2>/dev/null)" = "$all_options" ] && [ -f "$deps/$triplet/source.txt" ] && return 0
  rm -rf "$deps"/curl.?????? "${deps:?}/$triplet"
  local work; work=$(mktemp -d "$deps/curl.XXXXXX")
  log "Downloading libcurl's source"
  run_and_wait fetch_curl_source "$work" >"$deps/curl.log" 2>&1 \
    || { rm -rf "$work"; fail "libcurl's source could not be downloaded (no network, no package sources, or an incomplete mirror?); see $deps/curl.log."; }
  log "Building libcurl for Windows (about a minute)"
  { run_and_wait cmake -S "$work"/curl-*/ -B "$work/build" -G Ninja "${curl_options[@]}" \
      -DCMAKE_C_FLAGS="$curl_flags \"-ffile-prefix-map=$work=.\"" -DCMAKE_INSTALL_PREFIX="$work/install" \
    && run_and_wait cmake --build "$work/build" --target install; } >>"$deps/curl.log" 2>&1 \
    || fail "libcurl could not be built; see $deps/curl.log."
  # CMake's file looks for its second half with a pattern, in which a [ of the path would have a meaning.
  sed -i 's|file(GLOB \([^ ]*\) "\(.*\)\*\.cmake")|set(\1 "\2minsizerel.cmake")|' "$work"/install/lib/cmake/CURL/CURLTargets.cmake
  cp "$work"/curl-*/COPYING "$work/install/COPYING.curl"
  (cd "$work" && record_curl_source) >"$work/install/source.txt"
  echo "$all_options" >"$work/install/options.txt"
  mv "$work/install" "$deps/$triplet"
  rm -rf "$work"
}

# The package is unpacked, not installed, because the installed package would start a system service. php-cgi brings its
# libraries.
unpack_nginx() {
  [ -x "$deps/nginx/usr/sbin/nginx" ] && return 0
  rm -rf "$deps"/nginx "$deps"/nginx.??????
  local work; work=$(mktemp -d "$deps/nginx.XXXXXX")
  log "Downloading nginx"
  (cd "$work" && apt-get download nginx && dpkg-deb -x nginx_*.deb .) >"$deps/nginx.log" 2>&1 \
    || { rm -rf "$work"; fail "nginx could not be downloaded (no network, or outdated package lists: run apt-get update); see $deps/nginx.log."; }
  mv "$work" "$deps/nginx"
}

# copy_headers NAME FOLDER: copies a header-only library, because /usr/include must not be on the cross compiler's path.
copy_headers() {
  diff -rq "/usr/include/$1" "$deps/$2/$1" >/dev/null 2>&1 && return 0
  rm -rf "${deps:?}/$2"
  mkdir -p "$deps/$2"
  cp -r "/usr/include/$1" "$deps/$2/"
}

# The licenses of everything that is linked into the DLLs and the tool, for the packages.
copy_licenses() {
  mkdir -p "$deps/licenses"
  cp "$deps/$triplet/COPYING.curl" "$deps/licenses/curl.txt"
  cp /usr/share/doc/nlohmann-json3-dev/copyright "$deps/licenses/nlohmann-json.txt"
  cp /usr/share/doc/libcli11-dev/copyright "$deps/licenses/cli11.txt"
  cp /usr/share/doc/mingw-w64-x86-64-dev/copyright "$deps/licenses/mingw-w64.txt"
  cp /usr/share/doc/gcc-mingw-w64-x86-64-posix-runtime/copyright "$deps/licenses/gcc-runtime.txt"
}

# The first build needs space for libcurl, the library, the tests and a Wine prefix. The sizes are in MB.
check_disk_space() {
  local needed=1050 free
  free=$(($(stat -f -c '%a * %S' build) / 1000000))
  [ -d build/mingw ] || [ "$free" -ge "$needed" ] \
    || fail "Not enough disk space in $PWD/build: $free MB free, $needed MB needed for the first build."
}

# Neither CMake nor the shell that runs the compilers supports these characters in a path. Windows, and so Wine, has a limit
# of 260 characters, and msiexec under Wine crashes in deep folders, so the build and the tests need the rest.
require_plain_path() {
  [ "${#PWD}" -le 90 ] || fail "The path $PWD has ${#PWD} characters, but only 90 are supported. Use another path."
  case $PWD in *[\&\'\"\;\#\$\`\\]*)
    fail "The path $PWD contains & ' \" ; # \$ \` or \\, which the build tools do not support. Use another path." ;;
  esac
}

require_plain_path
mkdir -p "$deps"
check_disk_space
install_packages
build_curl
unpack_nginx
copy_headers nlohmann json
copy_headers CLI cli11
copy_licenses
