#!/usr/bin/env bash
# reproducible_build.sh SOURCE DLL: builds the library once more, from a copy of the sources in another folder, and compares.
set -euo pipefail
source=$1 dll=$2
copy=$(mktemp -d)
trap 'rm -rf "$copy"' EXIT
cd "$source"
cp -r CMakeLists.txt CMakePresets.json cmake common masslynx openlynx plugin scripts spectrum tools "$copy"
cd "$copy"
cmake --preset windows -DZRML_TESTS=OFF >/dev/null
cmake --build --preset windows --target zrml_provider >/dev/null
cmp "build/windows/$(basename "$dll")" "$dll"
