#!/usr/bin/env bash
# lint.sh [PATTERN]: checks the files of the product, or those whose names contain PATTERN, against .clang-tidy. No function
# may call itself, directly or through others of its file. A clean file is checked again only when it, a header or the rules
# change.
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

install "${build_packages[@]}" "${clang_packages[@]}" clang-tidy
# The sanitizer build has clang's own options and joins files, which is faster and finds more. Its precompiled headers are
# left out: they need not exist.
quietly lint-configure cmake --preset linux-asan
mkdir -p build/lint
sed -E 's/-Xclang (-include-pch|-include) -Xclang [^ ]+//g' build/linux-asan/compile_commands.json >build/lint/compile_commands.json
rooms='common|spectrum|plugin|masslynx|openlynx|source|library|convert|qc|tools'
mapfile -t files < <(sed -n 's/^ *"file": "\(.*\)".*/\1/p' build/lint/compile_commands.json |
  grep -E "^$PWD/(build/linux-asan/)?($rooms)/" | grep -v '/cmake_pch' | grep -e "${1:-}")
[ ${#files[@]} -gt 0 ] || { echo "no file has ${1:-}" >&2; exit 1; }
headers=$({
  clang-tidy --version
  cat .clang-tidy
  find common spectrum plugin masslynx openlynx source library convert qc tools -name '*.h' -o -name '*.inc' | sort | xargs sha256sum
} | sha256sum)
export headers

lint() {  # FILE
  local sources right
  mapfile -t sources < <(sed -n 's/^#include "\(.*\.cpp\)"$/\1/p' "$1")
  right=build/lint/$(cat "$1" "${sources[@]}" - <<<"$headers" | sha256sum | cut -c1-64)
  [ ! -e "$right" ] || return 0
  clang-tidy --quiet -p build/lint "$1" 2>/dev/null && : >"$right"
}
export -f lint
lint_all() { printf '%s\n' "${files[@]}" | xargs -P "$(nproc)" -I FILE bash -c 'lint "$1"' - FILE; }
quietly lint lint_all
echo "lint: ${#files[@]} units of the product"
