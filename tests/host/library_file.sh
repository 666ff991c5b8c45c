#!/usr/bin/env bash
# library_file.sh DLL VERSION: checks the file as Windows sees it: name, exports, imports, hardening flags and version
# resource.
set -euo pipefail
dll=$1 version=$2
headers=$(x86_64-w64-mingw32-objdump -p "$dll")

expect() {  # WHAT EXPECTED ACTUAL
  [ "$2" = "$3" ] || { printf '%s: expected\n%s\nbut found\n%s\n' "$1" "$2" "$3"; exit 1; }
}

expect "file name" ZRMLProvider-x64.dll "$(basename "$dll")"
expect "exports" "CheckVersion GetInstance GetInterfaceCount" \
  "$(sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/s/^\t\[ *[0-9]*\] *\(+base\[ *[0-9]*\] *[0-9a-f]* *\)\?//p' <<<"$headers" | sort | xargs)"
# KERNEL32.dll is the system itself; msvcrt.dll is the C runtime of every Windows since Windows 95.
expect "imports" "KERNEL32.dll msvcrt.dll" "$(sed -n 's/^\tDLL Name: //p' <<<"$headers" | sort | xargs)"
expect "flags" "DYNAMIC_BASE HIGH_ENTROPY_VA NX_COMPAT" \
  "$(grep -oE 'HIGH_ENTROPY_VA|DYNAMIC_BASE|NX_COMPAT' <<<"$headers" | sort | xargs)"
grep -q '\.reloc' <<<"$(x86_64-w64-mingw32-objdump -h "$dll")" || { echo "no relocations"; exit 1; }

# A version resource is UTF-16: name, NUL, padding, value.
strings=$(strings -el "$dll")
value_of() { grep -A1 -x "$1" <<<"$strings" | tail -n 1; }
expect "product name" ZRMLProvider "$(value_of ProductName)"
expect "product version" "$version" "$(value_of ProductVersion)"
for key in CompanyName LegalCopyright Comments; do
  ! grep -qx "$key" <<<"$strings" || { echo "the version resource has a $key"; exit 1; }
done
