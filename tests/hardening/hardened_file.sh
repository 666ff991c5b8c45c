#!/usr/bin/env bash
# hardened_file.sh OBJDUMP FILE: the file, ELF or PE, can be loaded at any address and has no executable data; on ELF also
# nothing needlessly writable, guarded stacks and checked copies.
set -euo pipefail
objdump=$1 file=$2
headers=$("$objdump" -p "$file")

needs() {  # WHAT PATTERN TEXT
  grep -qE "$2" <<<"$3" || { echo "$file: no $1"; exit 1; }
}

case $file in
  *.dll | *.exe)
    needs "address space layout randomisation" DYNAMIC_BASE "$headers"
    needs "64-bit addresses" HIGH_ENTROPY_VA "$headers"
    needs "data that is not executable" NX_COMPAT "$headers"
    needs "relocations" '\.reloc' "$("$objdump" -h "$file")"
    exit 0
    ;;
esac

symbols=$("$objdump" -T "$file")
needs "position-independent code" '\bDYNAMIC\b' "$("$objdump" -f "$file")"
needs "read-only relocations" '^ +RELRO ' "$headers"
needs "binding at load time" '^ +FLAGS +0x[0-9a-f]*[89a-f]$' "$headers"  # DF_BIND_NOW is 8
needs "stack segment" '^ +STACK ' "$headers"
needs "stack protector" '__stack_chk_fail' "$symbols"
needs "checked copies" '_chk$' "$(grep -v __stack_chk_fail <<<"$symbols")"
stack=$(grep -A1 -E '^ +STACK ' <<<"$headers" | tail -n 1)
[[ $stack == *rw-* ]] || { echo "$file: an executable stack"; exit 1; }
[[ $headers != *TEXTREL* ]] || { echo "$file: relocations in code"; exit 1; }
