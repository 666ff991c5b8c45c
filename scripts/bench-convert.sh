#!/usr/bin/env bash
# bench-convert.sh [PATH]: how fast conversion is, as ratios of times measured in one run.
#
#   encoding:   arrays of mzML written uncompressed, against a plain Base64 encoding of the same arrays by coreutils
#   compressed: arrays of mzML compressed, against the compressor alone on the same arrays; two threads against one
#   parquet:    a table, against the compressor alone on the same columns of m/z and intensity; two threads against one
#   batch:      1,000 small sources, two threads against one; written to the disk, and to memory
#   levels:     processor time and size of each level of compression
#
# Without PATH a long run is made from the scans of the sample. Commands that are compared run in turns, nine times (the batch
# and the levels three times). Times are medians, on the clock with the fewest and the most, and of the processors. On a busy
# machine only the latter mean something.
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

# measure ROUNDS COMMAND [-- COMMAND]...: the time of each on the clock and of the processors, and the spread of the clock, in the
# lists clock, used, least and most.
measure() {
  local times
  times=$(/usr/bin/python3 bench/rounds.py "$@")
  mapfile -t clock < <(cut -d' ' -f1 <<<"$times")
  mapfile -t used < <(cut -d' ' -f2 <<<"$times")
  mapfile -t least < <(cut -d' ' -f3 <<<"$times")
  mapfile -t most < <(cut -d' ' -f4 <<<"$times")
}

# show NAME PLACE: of the command at that place.
show() {
  printf '%-36s %7.3f s on the clock (%.3f to %.3f), %7.3f s of processors\n' \
    "  $1" "${clock[$2]}" "${least[$2]}" "${most[$2]}" "${used[$2]}"
}
ratio() { awk -v name="  $1" -v a="$2" -v b="$3" 'BEGIN { printf "%-36s %7.2f\n", name, a / b }'; }

# arrays ROWS OPTION...: the arrays of mzML into $work/arrays, and each after its length into $work/blocks; with ROWS not 0 those
# of m/z and of intensity, so many numbers of 32 bits in each.
arrays() {
  local rows=$1
  shift
  "$zrml" convert "$path" --stdout --no-zlib "$@" | /usr/bin/python3 -c '
import base64, re, struct, sys
size = int(sys.argv[3]) * 4
columns = [bytearray(), bytearray()]
at = 0
with open(sys.argv[1], "wb") as arrays, open(sys.argv[2], "wb") as blocks:
    def write(block):
        arrays.write(block)
        blocks.write(struct.pack("<I", len(block)) + block)
    for line in sys.stdin.buffer:
        found = re.match(rb"\s*<binary>(.*)</binary>", line)
        if not found:
            continue
        columns[at] += base64.b64decode(found[1])
        if len(columns[at]) >= size:
            write(columns[at])
            columns[at].clear()
        at = 1 - at
    for rest in filter(None, columns):
        write(rest)
' "$work/arrays" "$work/blocks" "$rows"
}

# encoding NAME OPTION...
encoding() {
  local name=$1 convert
  shift
  arrays 0 "$@"
  convert=("$zrml" convert "$path" --stdout --no-zlib "$@" --threads)
  measure 9 base64 -w0 "$work/arrays" -- "${convert[@]}" 1 -- "${convert[@]}" 2
  echo "$name: $(stat -c %s "$work/arrays") bytes"
  show 'Base64 by coreutils' 0
  show 'conversion, 1 thread' 1
  show 'conversion, 2 threads' 2
  ratio 'rate of Base64, 1 thread' "${clock[0]}" "${clock[1]}"
  ratio 'the same of processor time' "${used[0]}" "${used[1]}"
  ratio 'rate of Base64, 2 threads' "${clock[0]}" "${clock[2]}"
}

# compressed NAME WRAPPER ROWS FORMAT OPTION...
compressed() {
  local name=$1 wrapper=$2 rows=$3 format=$4 convert
  shift 4
  arrays "$rows" "$@"
  convert=("$zrml" convert "$path" --stdout --format "$format" "$@" --threads)
  measure 9 build/linux/zrml-deflate-blocks "$wrapper" "$work/blocks" -- "${convert[@]}" 1 -- "${convert[@]}" 2
  echo "$name: $(stat -c %s "$work/arrays") bytes"
  show 'compressor alone' 0
  show 'conversion, 1 thread' 1
  show 'conversion, 2 threads' 2
  ratio 'rate of the compressor, 1 thread' "${clock[0]}" "${clock[1]}"
  ratio 'the same of processor time' "${used[0]}" "${used[1]}"
  ratio '2 threads against 1' "${clock[1]}" "${clock[2]}"
}

# batch NAME FOLDER
batch() {
  local convert=("$zrml" convert --from "$work/small.txt" -o "$2" --force -q --threads)
  measure 3 "${convert[@]}" 1 -- "${convert[@]}" 2
  echo "1,000 small sources, $1"
  show '1 thread' 0
  show '2 threads' 1
  ratio '2 threads against 1' "${clock[0]}" "${clock[1]}"
  rm -r "$2"
}

echo "$(nproc) processors, load $(cut -d' ' -f1 /proc/loadavg)"
encoding 'uncompressed, as small as exact'
encoding 'uncompressed, 64 bits' --64 mz,intensity,time
compressed 'compressed mzML' zlib 0 mzml
compressed Parquet gzip 65536 parquet --32 mz,intensity

# Each a link to a short acquisition, since its name is that of the file.
rm -rf "$work"/small*
build/linux/zrml-bench-source "$work/small.raw" 20
mkdir "$work/small"
for number in $(seq 1000); do ln -s "$PWD/$work/small.raw" "$work/small/run$number.raw"; done
ls -d "$PWD/$work/small"/*.raw >"$work/small.txt"
batch 'to the disk' "$work/small.out"
batch 'to memory' "$(mktemp -d /dev/shm/zrml-XXXXXX)"
rm -rf "$work"/small*

echo 'levels of compression, 1 thread'
for format in mzml parquet; do
  for level in none 1 2 3 4 5 6 7 8 9; do
    options=(--compression-level "$level")
    [ "$level" != none ] || options=(--no-zlib)
    convert=("$zrml" convert "$path" --stdout --format "$format" --threads 1 "${options[@]}")
    measure 3 "${convert[@]}"
    printf '  %-8s %-4s %6.2f s of processors, %6.1f MB\n' "$format" "$level" "${used[0]}" \
      "$("${convert[@]}" | wc -c | awk '{ print $1 / 1e6 }')"
  done
done
echo "load $(cut -d' ' -f1 /proc/loadavg)"
