#!/bin/sh
# exported_names.sh TOOL FILE: succeeds when FILE exports CheckVersion, GetInstance and GetInterfaceCount and nothing else.
# TOOL is nm for a shared object, objdump for a DLL.
set -eu
tool=$1
file=$2

case "$file" in
  *.dll)
    # Rows of the export table's name list: "[ordinal] ... name".
    listing=$("$tool" -p "$file")
    names=$(printf '%s\n' "$listing" | awk '
      /^\[Ordinal\/Name Pointer\] Table/ { inside = 1; next }
      inside && /^[[:space:]]*\[/ { print $NF; next }
      inside { exit }')
    ;;
  *)
    listing=$("$tool" -D --defined-only "$file")
    names=$(printf '%s\n' "$listing" | awk 'NF { print $NF }')
    ;;
esac

expected='CheckVersion
GetInstance
GetInterfaceCount'
found=$(printf '%s\n' "$names" | LC_ALL=C sort)
if [ "$found" != "$expected" ]; then
  printf 'expected exports:\n%s\nfound:\n%s\n' "$expected" "$found" >&2
  exit 1
fi
