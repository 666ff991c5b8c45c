#!/usr/bin/env bash
# bench-python.sh [ROUNDS]: how fast the Python package is beside the C library, the source and NumPy, as ratios of one run.
# Makes sources of 240 MB in build/bench-python.
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

install "${build_packages[@]}" "${python_packages[@]}"
build linux zrml_python zrml_python_floor
folder=build/bench-python
if [ ! -d "$folder" ]; then
  mkdir -p "$folder.part"
  build/linux/bench/zrml_python_floor make "$folder.part"
  mv "$folder.part" "$folder"
fi
/usr/bin/python3 -m compileall -q build/python/zrml  # as the first import leaves it
PYTHONPATH=build/python /usr/bin/python3 bench/python_bench.py build/linux/bench/zrml_python_floor "$folder" "$@"
