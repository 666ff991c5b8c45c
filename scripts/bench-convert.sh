#!/usr/bin/env bash
# bench-convert.sh [PATH]: how fast conversion is, as ratios of times measured in one run.
#
#   encoding:   arrays of mzML written uncompressed, against a plain Base64 encoding of the same arrays by coreutils
#   compressed: arrays of mzML compressed, against the compressor alone on the same arrays; two threads against one
#   parquet:    a table, against the compressor alone on the same columns of m/z and intensity; two threads against one
#   batch:      1,000 small sources, two threads against one
#   levels:     processor time and size of each level of compression
#
# Without PATH a long run is made from the scans of the sample. Times are the best of nine (of three for the levels), elapsed and of the processors;
# elapsed time means nothing on a busy machine.
path=${1:+$(realpath -- "$1")}
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

install "${build_packages[@]}" python3
build linux zrml zrml_provider zrml_sample zrml_bench_source zrml_deflate_blocks
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
for _ in range(int(os.environ.get('RUNS', 9))):
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

# blocks ROWS: the arrays into $work/blocks: each alone for 0, else m/z and intensities of so many rows and 32 bits.
blocks() {
  local bits=()
  [ "$1" = 0 ] || bits=(--32 mz,intensity)
  "$zrml" convert "$path" --stdout --no-zlib "${bits[@]}" | /usr/bin/python3 -c '
import base64, re, struct, sys
size = int(sys.argv[2]) * 4
columns = [bytearray(), bytearray()]
with open(sys.argv[1], "wb") as out:
    def write(block):
        out.write(struct.pack("<I", len(block)) + block)
    at = 0
    for line in sys.stdin.buffer:
        found = re.match(rb"<binary>(.*)</binary>", line)
        if not found:
            continue
        if size == 0:
            write(base64.b64decode(found[1]))
            continue
        columns[at] += base64.b64decode(found[1])
        if len(columns[at]) >= size:
            write(columns[at])
            columns[at].clear()
        at = 1 - at
    for rest in columns:
        write(rest)
' "$work/blocks" "$1"
}

# compressed NAME WRAPPER ROWS FORMAT
compressed() {
  local alone alone_cpu one one_cpu two two_cpu
  blocks "$3"
  read -r alone alone_cpu < <(best build/linux/zrml-deflate-blocks "$2" "$work/blocks")
  read -r one one_cpu < <(best "$zrml" convert "$path" --stdout --format "$4" --threads 1)
  read -r two two_cpu < <(best "$zrml" convert "$path" --stdout --format "$4" --threads 2)
  echo "$1"
  show '  compressor alone' "$alone" "$alone_cpu"
  show '  conversion, 1 thread' "$one" "$one_cpu"
  show '  conversion, 2 threads' "$two" "$two_cpu"
  ratio '  rate of the compressor, 1 thread' "$alone" "$one"
  ratio '  the same of processor time' "$alone_cpu" "$one_cpu"
  ratio '  2 threads against 1' "$one" "$two"
}
compressed 'compressed mzML' zlib 0 mzml
compressed Parquet gzip 65536 parquet

# Each a link to a short acquisition, since its name is that of the file.
rm -rf "$work"/small*
build/linux/zrml-bench-source "$work/small.raw" 20
mkdir "$work/small"
for number in $(seq 1000); do ln -s "$PWD/$work/small.raw" "$work/small/run$number.raw"; done
ls -d "$PWD/$work/small"/*.raw >"$work/small.txt"
batch=("$zrml" convert --from "$work/small.txt" -o "$work/small.out" --force -q)
read -r one one_cpu < <(best "${batch[@]}" --threads 1)
read -r two two_cpu < <(best "${batch[@]}" --threads 2)
echo '1,000 small sources'
show '  1 thread' "$one" "$one_cpu"
show '  2 threads' "$two" "$two_cpu"
ratio '  2 threads against 1' "$one" "$two"
rm -rf "$work"/small*

echo 'levels of compression, 1 thread'
for format in mzml parquet; do
  for level in 1 2 3 4 5 6 7 8 9; do
    options=(--stdout --format "$format" --threads 1 --compression-level "$level")
    read -r _ cpu < <(RUNS=3 best "$zrml" convert "$path" "${options[@]}")
    printf '  %-8s %d %6.2f s of processors, %6.1f MB\n' "$format" "$level" "$cpu" \
      "$("$zrml" convert "$path" "${options[@]}" | wc -c | awk '{ print $1 / 1e6 }')"
  done
done
