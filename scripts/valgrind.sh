#!/usr/bin/env bash
# valgrind.sh [NAME-PATTERN]: the tests of the Linux build under valgrind's memcheck, all or those whose program's name matches.
# Takes many minutes, so test.sh leaves it out. Tests with their own operator new keep it: memcheck watches what it calls.
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

install "${build_packages[@]}" valgrind
build linux
status=0
for program in build/linux/tests/*/zrml_*_test build/linux/tests/*/*/zrml_*_test; do
  [[ $(basename "$program") =~ ${1:-.} ]] || continue
  name=valgrind-$(basename "$program")
  if quietly "$name" valgrind --error-exitcode=99 --leak-check=full --errors-for-leak-kinds=definite,indirect \
    --trace-children=no --suppressions=scripts/valgrind.supp --soname-synonyms=somalloc=nouserintercepts \
    "$program" --gtest_brief=1; then
    echo "$(basename "$program"): $(grep -oE 'ERROR SUMMARY: [0-9]+ errors' "build/$name.log" | tail -n 1)"
  else
    status=1
  fi
done
exit $status
