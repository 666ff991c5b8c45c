#!/usr/bin/env bash
# Runs one Windows program under Wine, with a prefix of the build's own and no desktop integration.
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX="${WINEPREFIX:-$root/build/wine-prefix}" WINEDEBUG="${WINEDEBUG:--all}"
export WINEDLLOVERRIDES="${WINEDLLOVERRIDES:-mscoree,mshtml,winemenubuilder.exe=}"
# Wine makes file names of the bytes that the locale has for them; not every machine has set one.
[ "$(locale charmap 2>/dev/null)" = UTF-8 ] || export LC_ALL=C.UTF-8
mkdir -p "$(dirname "$WINEPREFIX")"
exec wine "$@"
