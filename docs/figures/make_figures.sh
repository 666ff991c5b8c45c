#!/usr/bin/env bash
# Makes the figures of docs/ from the code itself. Needs g++ and gnuplot (Debian: gnuplot-nox).
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
g++ -std=c++20 -O2 -ffp-contract=off -I"$root" "$root"/docs/figures/profile_sum.cpp "$root"/spectrum/*.cpp \
  -o "$work/profile_sum"
"$work/profile_sum" > "$work/profile_sum.dat"
gnuplot -e "data='$work/profile_sum.dat'; figure='$root/docs/profile-sum.png'" "$root/docs/figures/profile_sum.gp"
