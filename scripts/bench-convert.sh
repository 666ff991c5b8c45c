#!/usr/bin/env bash
# bench-convert.sh [PATH]: how fast conversion to mzML is, as ratios of times measured in one run.
#
#   encoding: arrays written uncompressed, against a plain Base64 encoding of the same arrays by coreutils
#   threads:  arrays compressed, two threads against one
#
# Without PATH a long run is made from the scans of the sample. Times are the best of nine, elapsed and of the processors;
# elapsed time means nothing on a busy machine.
path=${1:+$(realpath -- "$1")}
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

install "${build_packages[@]}" python3
build linux zrml zrml_provider zrml_sample zrml_bench_source
zrml=build/linux/zrml
work=build/bench
mkdir -p "$work"
if [ -z "$path" ]; then
  path=$work/run.raw
  [ -d "$path" ] || build/linux/zrml-bench-source "$path"
fi

# best COMMAND...: the fewest seconds of nine runs, elapsed and of the processors.
best() {
  /usr/bin/python3 - "$@" <<'PYTHON'
import os, subprocess, sys, time
clock, processors = [], []
for _ in range(9):
    began, used = time.perf_counter(), os.times()
    subprocess.run(sys.argv[1:], stdout=subprocess.DEVNULL, check=True)
    now = os.times()
    clock.append(time.perf_counter() - began)
    processors.append(now.children_user + now.children_system - used.children_user - used.children_system)
print(f'{min(clock):.4f} {min(processors):.4f}')
PYTHON
}

# extract OPTION...: the bytes of all arrays into $work/arrays.
extract() {
  "$zrml" convert "$path" --stdout --no-zlib "$@" | /usr/bin/python3 -c '
import base64, re, sys
with open(sys.argv[1], "wb") as arrays:
    for line in sys.stdin.buffer:
        found = re.match(rb"<binary>(.*)</binary>", line)
        if found:
            arrays.write(base64.b64decode(found[1]))
' "$work/arrays"
}

show() { printf '%-34s %6.3f s on the clock, %6.3f s of processors\n' "$@"; }
ratio() { awk -v name="$1" -v a="$2" -v b="$3" 'BEGIN { printf "%-34s %6.2f\n", name, a / b }'; }

# encoding NAME OPTION...
encoding() {
  local name=$1 plain plain_cpu one one_cpu two two_cpu
  shift
  extract "$@"
  read -r plain plain_cpu < <(best base64 -w0 "$work/arrays")
  read -r one one_cpu < <(best "$zrml" convert "$path" --stdout --no-zlib --threads 1 "$@")
  read -r two two_cpu < <(best "$zrml" convert "$path" --stdout --no-zlib --threads 2 "$@")
  echo "$name: $(stat -c %s "$work/arrays") bytes"
  show '  Base64 by coreutils' "$plain" "$plain_cpu"
  show '  conversion, 1 thread' "$one" "$one_cpu"
  show '  conversion, 2 threads' "$two" "$two_cpu"
  ratio '  rate of Base64, 1 thread' "$plain" "$one"
  ratio '  the same of processor time' "$plain_cpu" "$one_cpu"
  ratio '  rate of Base64, 2 threads' "$plain" "$two"
}

echo "$(nproc) processors, load $(cut -d' ' -f1 /proc/loadavg)"
encoding 'uncompressed, as small as exact'
encoding 'uncompressed, 64 bits' --64 mz,intensity,time
read -r one one_cpu < <(best "$zrml" convert "$path" --stdout --threads 1)
read -r two two_cpu < <(best "$zrml" convert "$path" --stdout --threads 2)
echo 'compressed'
show '  conversion, 1 thread' "$one" "$one_cpu"
show '  conversion, 2 threads' "$two" "$two_cpu"
ratio '  2 threads against 1' "$one" "$two"
