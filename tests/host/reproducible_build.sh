#!/usr/bin/env bash
# reproducible_build.sh SOURCE DLL PROVEN: builds the library again, from a copy of the sources in another folder and without
# a compiler cache, and compares. The file PROVEN records what was compared, so an unchanged library is not built again.
set -euo pipefail
source=$1 dll=$2 proven=$3
copy=$(mktemp -d)
trap 'rm -rf "$copy"' EXIT
cd "$source"
cp -r CMakeLists.txt CMakePresets.json cmake common convert include library masslynx openlynx plugin python qc scripts source spectrum third_party tools \
  "$copy"
cd "$copy"
compared=$({
  find . -type f -print0 | sort -z | xargs -0 sha256sum
  sha256sum <"$dll"
  cmake --version
  x86_64-w64-mingw32-g++-win32 --version
  x86_64-w64-mingw32-ld --version
} | sha256sum)
[ ! -e "$proven" ] || [ "$(cat "$proven")" != "$compared" ] || exit 0
export CCACHE_DISABLE=1
cmake --preset windows -DZRML_TESTS=OFF >/dev/null
cmake --build --preset windows --target zrml_provider >/dev/null
cmp "build/windows/$(basename "$dll")" "$dll"
echo "$compared" >"$proven"
