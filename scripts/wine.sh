#!/usr/bin/env bash
# Runs one Windows program under Wine, with the build's own prefix and no desktop integration.
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX="${WINEPREFIX:-$root/build/wine-prefix}" WINEDEBUG="${WINEDEBUG:--all}"
export WINEDLLOVERRIDES="${WINEDLLOVERRIDES:-mscoree,mshtml,winemenubuilder.exe=}"
# Wine encodes file names in the locale's character set; not every machine sets one.
[ "$(locale charmap 2>/dev/null)" = UTF-8 ] || export LC_ALL=C.UTF-8
mkdir -p "$(dirname "$WINEPREFIX")"
# A server that ends with its last program refuses one that starts just then.
wineserver -p60 >/dev/null 2>&1 </dev/null || true  # runs already
exec wine "$@"
