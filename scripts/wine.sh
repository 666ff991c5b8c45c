#!/usr/bin/env bash
# Runs one Windows program under Wine, with a prefix of the build's own and no desktop integration.
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX="${WINEPREFIX:-$root/build/wine-prefix}" WINEDEBUG="${WINEDEBUG:--all}"
export WINEDLLOVERRIDES="${WINEDLLOVERRIDES:-mscoree,mshtml,winemenubuilder.exe=}"
mkdir -p "$(dirname "$WINEPREFIX")"
exec wine "$@"
