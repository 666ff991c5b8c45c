#!/usr/bin/env bash
# fuzz-coverage.sh: which lines of the plug-in, the source and the C library the fuzzers run, file by file: on the seeds, on past
# failures and on what fuzz.sh has found so far.
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

install "${build_packages[@]}" "${clang_packages[@]}"
build fuzz-coverage
folder=build/fuzz-coverage
export LLVM_PROFILE_FILE=$folder/seeds.ignored
quietly fuzz-seeds "$folder/fuzz/zrml_fuzz_seeds" build/fuzz/seeds

programs=()
for fuzzer in header_text host_types library_calls question raw_directory raw_directory_source report report_source scan_data spectrum_container spectrum_sum; do
  program=$folder/fuzz/zrml_fuzz_$fuzzer
  programs+=(-object "$program")
  inputs=(build/fuzz/seeds/"$fuzzer")
  for more in build/fuzz/corpus/"$fuzzer" fuzz/regressions/"$fuzzer"; do
    [ ! -d "$more" ] || inputs+=("$more")
  done
  LLVM_PROFILE_FILE=$folder/$fuzzer.profraw quietly "coverage-$fuzzer" "$program" 0 "${inputs[@]}"
done
llvm-profdata merge -o "$folder/all.profdata" "$folder"/*.profraw
# Inline functions that differ between programs are counted once, with a warning.
llvm-cov report "${programs[@]:1}" -instr-profile="$folder/all.profdata" -show-region-summary=false -show-branch-summary=false \
  common masslynx openlynx spectrum plugin source library 2>build/coverage-report.log |
  awk '$5 ~ /^[0-9]+$/ { printf "%-45s %5d lines %8s\n", $1, $5, $7 }'
