#!/usr/bin/env bash
# test.sh [--times] [--fuzz SECONDS]: installs what is missing, builds for Linux, for Linux under sanitizers and for Windows,
# and runs every test on all three, the last under Wine. Then ThreadSanitizer checks the threads, and each fuzzer runs for 15
# seconds or for SECONDS. Tests run during the next build. With --times, prints the time of each stage. docs/testing.md
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

times= fuzz_seconds=15
while [ $# -gt 0 ]; do
  case $1 in
    --times) times=yes ;;
    --fuzz) fuzz_seconds=${2:?seconds} && shift ;;
    *) sed -n '2,4s/^# //p' "${BASH_SOURCE[0]}" >&2 && exit 2 ;;
  esac
  shift
done
began=$EPOCHREALTIME
: >build/times

stage packages install "${build_packages[@]}" "${windows_packages[@]}" "${reader_packages[@]}" "${python_packages[@]}" "${browser_packages[@]}" \
  abigail-tools binutils clang-format clang-tidy groff-base locales zsh
stage node install_node

check_format() {
  find bench common convert examples fuzz include library masslynx openlynx plugin qc source spectrum tests tools -name '*.c' -o -name '*.cpp' -o -name '*.h' -o -name '*.hpp' -o -name '*.inc' |
    xargs -n 40 -P "$(nproc)" clang-format --dry-run -Werror
}
stage format quietly format check_format

# A locale with a decimal comma, which must not change any result.
if [ ! -d build/locale/de_DE.UTF-8 ]; then
  mkdir -p build/locale
  quietly locale localedef -i de_DE -f UTF-8 "$PWD/build/locale/de_DE.UTF-8"
fi
export LOCPATH=$PWD/build/locale

# Wine's server and services stay until the end: a server that is shutting down refuses the next program. The first program
# starts them, and they keep its output open.
wine_server() { WINEPREFIX=$PWD/build/wine-prefix timeout 60 wineserver "$1" >/dev/null 2>&1 || true; }
start_wine() {
  watch_signals
  quietly wine-prefix scripts/wine.sh wineboot --init
  wine_server --wait
  wine_server --persistent
  quietly wine-start scripts/wine.sh cmd /c exit
}

# The builds, one after the other; each leaves a file that the tests wait for.
built=$(mktemp -d)
trap 'end_running; wine_server --kill; rm -rf "$built"' EXIT
build_all() {
  watch_signals
  local preset
  for preset in linux linux-asan windows linux-tsan; do
    stage "build $preset" build "$preset"
    : >"$built/$preset"
  done
}

# await PRESET: waits for its build.
await() {
  until [ -e "$built/$1" ]; do
    if ! kill -0 "$builder" 2>/dev/null && [ ! -e "$built/$1" ]; then
      finish "$builder"
      return 1
    fi
    sleep 0.2
  done
}

# test_preset PRESET: runs its tests and keeps the runner's summary.
test_preset() {
  quietly "$1-test" ctest --preset "$1" -j "$(nproc)"
  echo "$1: $(grep -E 'tests passed' "build/$1-test.log")"
}

start build_all
builder=$!
start start_wine
wine=$!
presets=(linux linux-asan windows linux-tsan)
for preset in "${presets[@]}"; do
  await "$preset"
  [ "$preset" != windows ] || finish "$wine"
  stage "test $preset" test_preset "$preset"
done
finish "$builder"
stage lint run scripts/lint.sh
stage fuzz run scripts/fuzz.sh "$fuzz_seconds"

if [ -n "$times" ]; then
  sort -k3 build/times
  awk -v began="$began" -v now="$EPOCHREALTIME" 'BEGIN { printf "%6.1f s  in all\n", now - began }'
fi
for preset in "${presets[@]}"; do
  echo "$preset:"
  grep -E 'tests passed|Total Test time' "build/$preset-test.log"
done
