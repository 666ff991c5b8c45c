#!/usr/bin/env bash
# fuzz.sh [SECONDS [FUZZER...]]: builds the fuzzers and runs each for SECONDS (15), two at a time, starting from its seeds and
# what earlier runs found. Failing inputs go to build/fuzz/failures.
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

seconds=${1:-15}
shift || true
fuzzers=("$@")
[ ${#fuzzers[@]} -gt 0 ] || fuzzers=(header_text host_types library_calls question raw_directory raw_directory_source report report_source scan_data spectrum_container spectrum_sum)

install "${build_packages[@]}" "${clang_packages[@]}"
build linux-asan zrml_fuzzers
programs=build/linux-asan/fuzz
quietly fuzz-seeds "$programs/zrml_fuzz_seeds" build/fuzz/seeds
mkdir -p build/fuzz/failures build/fuzz/dictionaries
cp fuzz/dictionaries/*.dict build/fuzz/dictionaries
# The C library reads both kinds of files.
cat fuzz/dictionaries/{raw_directory,report}.dict >build/fuzz/dictionaries/library_calls.dict

# A slow input counts as a failure: 20 seconds under sanitizers are more than one second in a release build. Fuzzers show only
# their own messages, whatever the code under test prints.
fuzz() {  # FUZZER
  local name=$1 log=build/fuzz/$1.log inputs=(build/fuzz/seeds/"$1")
  mkdir -p "build/fuzz/corpus/$name"
  [ ! -d "fuzz/regressions/$name" ] || inputs+=("fuzz/regressions/$name")
  if ! "$programs/zrml_fuzz_$name" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=4096 -max_len=65536 \
    -close_fd_mask=1 -dict="build/fuzz/dictionaries/${name%_source}.dict" -artifact_prefix="build/fuzz/failures/$name-" \
    "build/fuzz/corpus/$name" "${inputs[@]}" >"$log" 2>&1; then
    echo "$name failed:"
    tail -n 40 "$log"
    return 1
  fi
  echo "$name: $(grep -oE '^#[0-9]+.DONE +cov: [0-9]+' "$log" | tr -s '#\t ' ' ') of code, no failure"
}
export -f fuzz
export programs seconds
printf '%s\n' "${fuzzers[@]}" | xargs -P 2 -I NAME bash -c 'fuzz NAME'
