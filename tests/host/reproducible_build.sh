#!/usr/bin/env bash
# reproducible_build.sh SOURCE DLL: builds the library once more, from a copy of the sources in another folder, and compares.
set -euo pipefail
source=$1 dll=$2
copy=$(mktemp -d)
trap 'rm -rf "$copy"' EXIT
mkdir "$copy/source"
(cd "$source" && git ls-files -z -co --exclude-standard | xargs -0 cp --parents -t "$copy/source")
cd "$copy/source"
cmake --preset windows -DZRML_TESTS=OFF >/dev/null
cmake --build --preset windows --target zrml_provider >/dev/null
cmp "build/windows/$(basename "$dll")" "$dll"
