#!/usr/bin/env bash
# test.sh: installs what is missing, builds for Linux, for Linux under sanitizers and for Windows, and runs every test on all
# three, the last under Wine.
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

install "${build_packages[@]}" binutils clang-format clang-tidy git g++-mingw-w64-x86-64-win32 wine wine64

git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run -Werror

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
test_preset windows
