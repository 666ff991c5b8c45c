#!/usr/bin/env bash
# interface.sh "COMPILER" INCLUDES MAP STORED: what zrml.h declares is what the description STORED has: functions, their arguments
# and the layout of records. With --renew as last argument, writes the description anew. The library's functions are those of
# the header, since it is compiled with it, so that a library of empty functions tells the same.
set -euo pipefail
compiler=$1 includes=$2 map=$3 stored=$4
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

{
  echo '#include "zrml/zrml.h"'
  awk '/^ZRML_API/ { text = ""; isInside = 1 }
       isInside { text = text " " $0 }
       isInside && /;/ { sub(/;.*/, " { for (;;) {} }", text); print text; isInside = 0 }' "$includes/zrml/zrml.h"
} >"$folder/empty.c"
$compiler -std=c99 -g "-ffile-prefix-map=$folder=." -shared -fPIC -I"$includes" "$folder/empty.c" -o "$folder/libzrml.so.1" \
  -Wl,-soname,libzrml.so.1 -Wl,--version-script="$map"

if [ "${5:-}" = --renew ]; then
  abidw --no-corpus-path --no-comp-dir-path --no-show-locs "$folder/libzrml.so.1" >"$stored"
  exit
fi
grep -q "name='zrml_open'" "$stored" || { echo "$stored describes another library"; exit 1; }
if ! abidiff --no-show-locs "$stored" "$folder/libzrml.so.1"; then
  echo "Programs that were built before may not work with this library. When they do:"
  echo "  ${BASH_SOURCE[0]} \"$compiler\" $includes $map $stored --renew"
  exit 1
fi
