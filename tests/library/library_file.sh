#!/usr/bin/env bash
# library_file.sh LIBRARY HEADER VERSION: what the file is to programs and to the system: its name, the functions that it
# exports, which are those that the header declares, and the libraries that it needs, which are the system's own; on Windows
# also the version that people see.
set -euo pipefail
library=$1 header=$2 version=$3

expect() {  # WHAT EXPECTED ACTUAL
  [ "$2" = "$3" ] || { printf '%s: expected\n%s\nbut found\n%s\n' "$1" "$2" "$3"; exit 1; }
}

declared=$(sed -nE 's/^ZRML_API .*[ *](zrml_[a-z_]+)\(.*/\1/p' "$header" | LC_ALL=C sort)
[ "$(wc -w <<<"$declared")" -ge 30 ] || { echo "the header declares hardly any function"; exit 1; }

case $library in
  *.dll)
    headers=$(x86_64-w64-mingw32-objdump -p "$library")
    expect "file name" zrml.dll "$(basename "$library")"
    expect "exports" "$declared" \
      "$(sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/s/^\t\[ *[0-9]*\] *\(+base\[ *[0-9]*\] *[0-9a-f]* *\)\?//p' <<<"$headers" | LC_ALL=C sort)"
    # KERNEL32.dll is the system itself; msvcrt.dll is the C runtime that every Windows has had since Windows 95.
    expect "imports" "KERNEL32.dll msvcrt.dll" "$(sed -n 's/^\tDLL Name: //p' <<<"$headers" | sort | xargs)"
    # Texts of a version resource are UTF-16: name, zero, padding, value.
    texts=$(strings -el "$library")
    for key in ProductVersion=$version OriginalFilename=zrml.dll; do
      expect "${key%=*}" "${key#*=}" "$(grep -A1 -x "${key%=*}" <<<"$texts" | tail -n 1)"
    done
    ;;
  *)
    section=$(readelf -d "$library")
    expect "name for the loader" libzrml.so.1 "$(sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p' <<<"$section")"
    # All of these are glibc.
    expect "libraries" "ld-linux-x86-64.so.2 libc.so.6 libm.so.6" \
      "$(sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' <<<"$section" | LC_ALL=C sort | xargs)"
    newest=$({ objdump -T "$library" | grep -oE 'GLIBC_[0-9.]+' && echo GLIBC_2.35; } | sort -uV | tail -n 1)
    expect "newest glibc that is needed" GLIBC_2.35 "$newest"
    ! grep -qE 'RPATH|RUNPATH' <<<"$section" || { echo "a path to other libraries"; exit 1; }
    expect "exports" "$(sed 's/$/@@ZRML_1/' <<<"$declared")" \
      "$(nm -D --defined-only "$library" | awk '$3 != "ZRML_1" { print $3 }' | LC_ALL=C sort)"
    ;;
esac
