# Shared by the scripts of this folder; sourced, not run.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
mkdir -p build

# install PACKAGE...: installs the Debian packages that are missing, and says which. Needs no network when none is.
install() {
  local missing=() package
  for package in "$@"; do
    [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return
  echo "Installing ${missing[*]}"
  local as_root=()
  [ "$(id -u)" -eq 0 ] || as_root=(sudo)
  quietly install "${as_root[@]}" apt-get update
  quietly install "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}"
}

# quietly NAME COMMAND...: runs a command with its output in build/NAME.log, which is shown when it fails.
quietly() {
  local log=build/$1.log
  shift
  if ! "$@" >"$log" 2>&1 </dev/null; then
    echo "Failed: $*" >&2
    cat "$log" >&2
    return 1
  fi
}

# build PRESET [TARGET...]
build() {
  local preset=$1
  shift
  quietly "$preset-configure" cmake --preset "$preset"
  quietly "$preset-build" cmake --build --preset "$preset" ${1:+--target "$@"}
}

build_packages=(g++ cmake ninja-build libcli11-dev libdeflate-dev libssl-dev nlohmann-json3-dev googletest)
windows_packages=(g++-mingw-w64-x86-64-win32 libz-mingw-w64-dev wine wine64)
reader_packages=(topp python3 python3-pymzml)  # independent readers of what we write
