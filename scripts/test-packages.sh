#!/usr/bin/env bash
# test-packages.sh: whether what package.sh has made works where it is meant to: the Debian packages on an empty Debian 12 in a
# folder, the tarball beside glibc alone, the zip under Wine; and whether another folder gives the same bytes. Needs root, the
# network and half an hour.
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"
[ "$(id -u)" -eq 0 ] || exec sudo --preserve-env "scripts/$(basename "$0")" "$@"

packages=$PWD/build/packages
[ -e "$packages/SHA256SUMS" ] || { echo "test-packages.sh: scripts/package.sh comes first" >&2; exit 2; }
install "${build_packages[@]}" "${windows_packages[@]}" binutils git lintian mmdebstrap python3 unzip util-linux xz-utils
build linux zrml_sample

work=$(mktemp -d "${TMPDIR:-/var/tmp}/zrml-packages.XXXXXX")
trap 'end_running; rm -rf --one-file-system "$work"' EXIT
fail() { echo "test-packages.sh: $*" >&2; exit 1; }

# step NAME FUNCTION...: says that it has passed; shows its output when it has not.
step() {
  local name=$1 log=build/packages-${1// /-}.log
  shift
  start "$@" >"$log" 2>&1 </dev/null
  finish $! || { echo "failed: $name" >&2; cat "$log" >&2; exit 1; }
  echo "passed: $name"
}

(cd "$packages" && sha256sum --quiet -c SHA256SUMS)
[ "$(find "$packages" -type f ! -name SHA256SUMS | wc -l)" -eq "$(wc -l <"$packages/SHA256SUMS")" ] || fail "files that SHA256SUMS does not have"
tarball=$(echo "$packages"/zrml-*-linux-x86_64.tar.xz)
version=${tarball##*/zrml-}
version=${version%-linux-x86_64.tar.xz}
build/linux/zrml-sample "$work/run.raw" >/dev/null

# ---- Files ----

check_lintian() { lintian --fail-on error "$packages"/*.deb; }

# A binary for other distributions needs glibc alone, none newer than 2.35, and has no symbols.
check_binary() {
  local file=$1 other newest
  other=$(readelf -d "$file" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' | grep -vxE 'ld-linux-x86-64\.so\.2|lib[cm]\.so\.6' || true)
  [ -z "$other" ] || fail "$file needs $other"
  newest=$(objdump -T "$file" | grep -oE 'GLIBC_[0-9.]+' | sort -uV | tail -n 1)
  [ -n "$newest" ] || fail "$file imports nothing of glibc"
  [ "$(printf '%s\nGLIBC_2.35\n' "$newest" | sort -V | tail -n 1)" = GLIBC_2.35 ] || fail "$file needs $newest"
  ! readelf -S "$file" | grep -qE '\.(symtab|debug_info)' || fail "$file is not stripped"
  find_symbols "$(readelf -n "$file" | sed -n 's/.*Build ID: //p')"
}
find_symbols() { [ -s "$work/symbols/.build-id/${1:0:2}/${1:2}.debug" ] || fail "no symbols for build id $1"; }

check_tarball_files() {
  local file
  for file in "$tree/bin/zrml" "$tree/lib/libzrml.so.1" "$tree/lib/zrml/ZRMLProvider-x64.so"; do check_binary "$file"; done
  for file in LICENSE THIRD_PARTY.md Apache-2.0.txt lib/libzrml.a include/zrml/zrml.h share/man/man1/zrml-info.1; do
    [ -s "$tree/$file" ] || fail "no $file"
  done
}

# ---- Debian ----

root=$work/root
inside_root() { inside "$root" "$@"; }
make_root_for_hosts() {
  make_root "$root" --include=cmake,g++,make,pkgconf
  mkdir -p "$root/project/tests" "$root/packages" "$root/tarball"
  cp -r tests/install "$root/project/tests"
  cp -r examples docs "$root/project"
  cp "$packages"/*.deb "$root/packages"
  cp -r "$work/run.raw" "$root"
  cp -a "$tree/." "$root/tarball"
}

# hosts PREFIX: programs of others, in a folder of their own.
hosts() { inside_root sh -c "mkdir -p /hosts && cd /hosts && rm -rf by-* && /project/tests/install/hosts.sh /project $version /run.raw $1"; }

# As README says.
install_packages() {
  local lines
  lines=$(sed -n 's/^    sudo apt install \([^#]*\).*/apt-get install -y --no-install-recommends \1/p' README.md)
  [ "$(wc -l <<<"$lines")" -eq 4 ] || fail "README does not install four times"
  inside_root sh -ec "apt-get update; cd /packages; export DEBIAN_FRONTEND=noninteractive
$lines"
}

run_packages() {
  [ "$(inside_root zrml --version)" = "zrml $version" ] || fail "zrml --version"
  inside_root zrml info run.raw
  inside_root zrml convert run.raw -o /hosts
  [ -s "$root/hosts/run.mzML" ] || fail "no run.mzML"
  inside_root zrml plugin /usr/lib/x86_64-linux-gnu/zrml/ZRMLProvider-x64.so run.raw
  [ -s "$root/usr/share/man/man1/zrml-info.1.gz" ] || fail "no manual page"
  inside_root bash -c 'source /usr/share/bash-completion/completions/zrml && complete -p zrml'
}

# The first recipe of python.md and what it prints.
run_recipe() {
  inside_root python3 - <<'END'
import re, subprocess, sys
code, printed = re.search(r"```python\n(.*?)```\n\n```\n(.*?)```", open("/project/docs/python.md").read(), re.S).groups()
output = subprocess.run([sys.executable, "-c", code], check=True, capture_output=True, text=True, encoding="utf-8").stdout
assert output == printed, output
import zrml
assert zrml.__file__ == "/usr/lib/python3/dist-packages/zrml/__init__.py", zrml.__file__
END
}

remove_packages() {
  local names left
  names=$(cd "$packages" && printf '%s\n' *.deb | sed 's/_.*//')
  # shellcheck disable=SC2086
  inside_root env DEBIAN_FRONTEND=noninteractive apt-get purge -y $names
  left=$(find "$root" -xdev \( -path "$root/project" -o -path "$root/packages" -o -path "$root/tarball" -o -path "$root/hosts" \) -prune \
    -o -iname '*zrml*' -print)
  [ -z "$left" ] || fail "left behind: $left"
  ! grep -q zrml "$root/var/lib/dpkg/status" || fail "the package manager still knows them"
}

# ---- The tarball beside glibc alone, in a folder that holds nothing else ----

run_tarball() {
  local bare=$work/bare
  mkdir -p "$bare/lib64" "$bare/lib/x86_64-linux-gnu" "$bare/tmp"
  cp -L /lib64/ld-linux-x86-64.so.2 "$bare/lib64"
  cp -L /lib/x86_64-linux-gnu/lib{c,m}.so.6 "$bare/lib/x86_64-linux-gnu"
  cp -a "$tree" "$bare/zrml"
  cp -r "$work/run.raw" "$bare"
  chroot "$bare" /zrml/bin/zrml info run.raw
  chroot "$bare" /zrml/bin/zrml convert run.raw --gzip -o /tmp
  [ -s "$bare/tmp/run.mzML.gz" ] || fail "no run.mzML.gz"
  chroot "$bare" /zrml/bin/zrml plugin /zrml/lib/zrml/ZRMLProvider-x64.so run.raw
}

# ---- The zip under Wine ----

run_zip() {
  local folder=$work/zip file
  unzip -q -d "$folder" "$packages/zrml-$version-windows-x64.zip"
  folder=$folder/zrml-$version-windows-x64
  for file in README.txt LICENSE.txt THIRD_PARTY.md include/zrml/zrml.hpp "zrml-$version-py3-none-win_amd64.whl"; do
    [ -s "$folder/$file" ] || fail "no $file"
  done
  for file in zrml.exe zrml.dll ZRMLProvider-x64.dll; do [ -s "$work/symbols/windows/$file.debug" ] || fail "no symbols of $file"; done
  [ "$(scripts/wine.sh "$folder/zrml.exe" --version | tr -d '\r')" = "zrml $version" ] || fail "zrml.exe --version"
  scripts/wine.sh "$folder/zrml.exe" info "$work/run.raw"
  scripts/wine.sh "$folder/zrml.exe" plugin "$folder/ZRMLProvider-x64.dll" "$work/run.raw"
  x86_64-w64-mingw32-gcc-win32 -std=c99 -I"$folder/include" examples/list.c -L"$folder/lib" -lzrml -o "$folder/list.exe"
  scripts/wine.sh "$folder/list.exe" "$work/run.raw" | grep -E '^TOF MS ES\+ Lock Mass: 30 scans, highest peak at m/z 556\.2'
}

# ---- The same bytes from another folder, with nothing kept from the first build ----

make_again() {
  git clone -q . "$work/elsewhere"
  CCACHE_DISABLE=1 "$work/elsewhere/scripts/package.sh"
  diff "$packages/SHA256SUMS" "$work/elsewhere/build/packages/SHA256SUMS"
}

step "lintian" check_lintian
mkdir "$work/symbols"
tar -C "$work/symbols" --strip-components=1 -xf "$packages/zrml-$version-symbols.tar.xz"
tar -C "$work" -xf "$tarball"
tree=$work/zrml-$version-linux-x86_64
step "files of the tarball" check_tarball_files
step "tarball beside glibc alone" run_tarball
step "zip under Wine" run_zip
step "an empty Debian 12" make_root_for_hosts
step "hosts of the tarball" hosts /tarball
step "packages installed" install_packages
step "packages run" run_packages
step "hosts of the packages" hosts ""
step "Python recipe" run_recipe
step "packages removed" remove_packages
step "the same bytes elsewhere" make_again
