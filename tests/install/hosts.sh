#!/usr/bin/env bash
# hosts.sh PROJECT VERSION SAMPLE [PREFIX]: builds the examples of PROJECT as programs of others do, by find_package() and by
# pkg-config, in the current folder, against what is installed at PREFIX or known to the system, and runs them on the
# acquisition SAMPLE, as the compiler left them. Those that link the archive must not load the library.
set -euo pipefail
project=$1 version=$2 sample=$3 prefix=${4:-}

cmake -S "$project/tests/install/host" -B by-cmake -DCMAKE_BUILD_TYPE=Release -DEXAMPLES="$project/examples" \
  -DVERSION="$version" -DCMAKE_PREFIX_PATH="$prefix" >cmake.log || { cat cmake.log; exit 1; }
cmake --build by-cmake >build.log || { cat build.log; exit 1; }

mkdir -p by-pkg-config
config() { pkg-config "$@" zrml; }
if [ -n "$prefix" ]; then
  PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name zrml.pc)")
  export PKG_CONFIG_PATH
fi
[ "$(config --modversion)" = "$version" ] || { echo "zrml.pc has another version"; exit 1; }
eval "flags=($(config --cflags --libs))"  # a space in a path has a backslash before it
eval "static=($(config --cflags --libs --static | sed 's/-lzrml /-l:libzrml.a /'))"
eval "folder=$(config --variable=libdir)"
cc -std=c99 "$project/examples/list.c" "${flags[@]}" -Wl,-rpath,"$folder" -o by-pkg-config/zrml_c
c++ -std=c++17 "$project/examples/list.cpp" "${flags[@]}" -Wl,-rpath,"$folder" -o by-pkg-config/zrml_cpp
cc -std=c99 "$project/examples/list.c" "${static[@]}" -o by-pkg-config/static_c

needed() { readelf -d "$1" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p'; }
count=0
for host in by-*/{zrml,static}_{c,cpp}; do
  [ -x "$host" ] || continue
  case $host in
    */static_*) ! needed "$host" | grep -q zrml || { echo "$host needs the library"; exit 1; } ;;
    *) needed "$host" | grep -qx libzrml.so.1 || { echo "$host does not need the library"; exit 1; } ;;
  esac
  "$host" "$sample" >"$host.txt"
  # The lock mass of the sample is leucine enkephalin.
  grep -qE '^TOF MS ES\+ Lock Mass: 30 scans, highest peak at m/z 556\.2' "$host.txt" || { cat "$host.txt"; exit 1; }
  count=$((count + 1))
done
[ $count -eq 7 ] || { echo "$count hosts"; exit 1; }
echo "$count hosts run."
