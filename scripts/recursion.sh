#!/usr/bin/env bash
# recursion.sh [FOLDER...]: no function of the plug-in's rooms calls itself, directly or through others of its file.
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

install "${build_packages[@]}" clang-tidy
quietly linux-configure cmake --preset linux
folders=("$@")
[ ${#folders[@]} -gt 0 ] || folders=(common spectrum plugin masslynx openlynx)
mapfile -d '' files < <(find "${folders[@]}" -name '*.cpp' ! -name '*windows*' ! -path '*/hostabi/*' -print0)
quietly recursion clang-tidy --quiet -p build/linux --checks='-*,misc-no-recursion' --warnings-as-errors='*' "${files[@]}"
echo "no recursion in ${#files[@]} files of ${folders[*]}"
