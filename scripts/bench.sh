#!/usr/bin/env bash
# bench.sh [FILTER]: builds, runs the benchmarks whose names match FILTER (a regular expression; all of them without) in turns,
# and prints each figure beside its floor, as a ratio with its spread. Takes about ten minutes and 1.2 GB of disk.
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

install "${build_packages[@]}" libbenchmark-dev python3
build linux zrml_bench zrml_peak_memory

lines=build/bench-lines.tsv
: >"$lines"
build/linux/bench/zrml_bench --benchmark_filter="${1:-.}" --benchmark_min_time=0.05 --benchmark_repetitions=9 \
  --benchmark_enable_random_interleaving=true --benchmark_format=json >build/bench.json 2>build/bench.log ||
  { cat build/bench.log >&2; exit 1; }
if [ $# -eq 0 ]; then
  build/linux/bench/zrml_peak_memory >>"$lines"
  install "${windows_packages[@]}"
  build windows zrml_face_bench zrml_provider
  quietly wine-prefix scripts/wine.sh wineboot --init
  scripts/wine.sh build/windows/bench/zrml_face_bench.exe build/windows/ZRMLProvider-x64.dll >>"$lines"
fi
python3 bench/table.py build/bench.json "$lines"
