#!/usr/bin/env bash
# test.sh: installs what is missing, builds for Linux, for Linux under sanitizers and for Windows, and runs every test on all
# three, the last under Wine. Then threads are watched, and each fuzzer runs for half a minute.
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

install "${build_packages[@]}" "${windows_packages[@]}" "${reader_packages[@]}" binutils clang clang-format lld llvm locales

find bench common fuzz masslynx openlynx plugin spectrum tests tools -name '*.cpp' -o -name '*.h' -o -name '*.inc' |
  xargs clang-format --dry-run -Werror

# A locale with a decimal comma, which must change no result.
if [ ! -d build/locale/de_DE.UTF-8 ]; then
  mkdir -p build/locale
  quietly locale localedef -i de_DE -f UTF-8 "$PWD/build/locale/de_DE.UTF-8"
fi
export LOCPATH=$PWD/build/locale

# test_preset PRESET: builds, runs the tests and prints the runner's summary.
test_preset() {
  build "$1"
  quietly "$1-test" ctest --preset "$1"
  echo "$1:"
  grep -E 'tests passed|Total Test time' "build/$1-test.log"
}
test_preset linux
test_preset linux-asan
quietly wine-prefix scripts/wine.sh wineboot --init
# Wine's server and services stay until the end: a server that is about to leave turns the next program away. The first
# program starts them, and they keep its output open.
wine_server() { WINEPREFIX=$PWD/build/wine-prefix timeout 60 wineserver "$1" >/dev/null 2>&1 || true; }
wine_server --wait
wine_server --persistent
trap 'wine_server --kill' EXIT
quietly wine-start scripts/wine.sh cmd /c exit
test_preset windows
test_preset linux-tsan
scripts/recursion.sh
scripts/fuzz.sh 30
