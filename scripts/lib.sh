# Shared by the scripts of this folder; sourced, not run.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
mkdir -p build

# install PACKAGE...: installs missing Debian packages and names them. Needs no network when none is missing.
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

# install_node: installs Node and, in build/node, the packages of tests/node. Needs no network when nothing has changed.
install_node() {
  local folder=build/node lock=package-lock.json
  install nodejs
  command -v npm >/dev/null || install npm  # other builds of Node bring theirs
  cmp -s tests/node/$lock $folder/installed && return
  mkdir -p $folder
  cp tests/node/package.json tests/node/$lock $folder/
  echo "Installing the packages of tests/node"
  # Not "npm ci", which wants the builds for other systems in the lock file as well.
  quietly node npm install --prefix $folder --ignore-scripts --no-audit --no-fund
  cp tests/node/$lock $folder/installed
}

# Each background command is a process group of its own and ends with the script, however that ends.
running=()
end_running() {
  local process alive
  alive=" $(jobs -pr | tr '\n' ' ')"  # the number of an ended process may be reused by now
  for process in "${running[@]}"; do
    [[ $alive != *" $process "* ]] || kill -TERM -- "-$process" 2>/dev/null || true
  done
  [ ${#running[@]} -eq 0 ] || wait "${running[@]}" 2>/dev/null || true
}
watch_signals() {  # also needed in functions that are started
  running=()
  trap end_running EXIT
  trap 'exit 130' INT
  trap 'exit 143' TERM
}
watch_signals

# start COMMAND...: runs it in the background; its process id is $!.
start() {
  set -m
  "$@" &
  set +m
  running+=($!)
}

# finish PROCESS: waits for what was started, and gives its status.
finish() {
  local status=0 left=() process
  wait "$1" || status=$?
  for process in "${running[@]}"; do [ "$process" = "$1" ] || left+=("$process"); done
  running=("${left[@]}")
  return $status
}

# run COMMAND...: runs it and ends it with the script.
run() {
  start "$@"
  finish $!
}

# quietly NAME COMMAND...: runs a command with its output in build/NAME.log, shown when it fails.
quietly() {
  local log=build/$1.log
  shift
  if ! run "$@" >"$log" 2>&1 </dev/null; then
    echo "Failed: $*" >&2
    cat "$log" >&2
    return 1
  fi
}

# stage NAME COMMAND...: runs a command and records its time in build/times.
stage() {
  local name=$1 began=$EPOCHREALTIME
  shift
  "$@"
  awk -v name="$name" -v began="$began" -v now="$EPOCHREALTIME" 'BEGIN { printf "%6.1f s  %s\n", now - began, name }' >>build/times
}

# build PRESET [TARGET...]
build() {
  local preset=$1
  shift
  quietly "$preset-configure" cmake --preset "$preset"
  quietly "$preset-build" cmake --build --preset "$preset" ${1:+--target "$@"}
}

# make_root FOLDER [OPTION...]: an empty Debian 12, by mmdebstrap with this machine's own sources, that can reach the network.
make_root() {
  local root=$1 sources
  shift
  mapfile -t sources < <(grep -lsE '^(deb|Suites:)(.* )?bookworm( |-|$)' /etc/apt/sources.list /etc/apt/sources.list.d/*.{list,sources})
  [ ${#sources[@]} -gt 0 ] || { echo "no sources of Debian 12 in /etc/apt" >&2; return 1; }
  mmdebstrap --variant=minbase "$@" bookworm "$root" "${sources[@]}" || return 1
  rm -f "$root/etc/resolv.conf"
  cp -L /etc/resolv.conf "$root/etc/"
}

# inside ROOT COMMAND...: runs it in that system. Mounts and processes are those of a namespace, and end with it.
inside() {
  unshare --mount --pid --fork --kill-child bash -c '
    mount -t proc proc "$0/proc" && mount --rbind /dev "$0/dev" && mount -t tmpfs tmpfs "$0/tmp" &&
    exec env --ignore-environment ${http_proxy:+http_proxy="$http_proxy"} ${https_proxy:+https_proxy="$https_proxy"} \
      HOME=/root PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin chroot "$0" "$@"' "$@"
}

build_packages=(ccache g++ cmake ninja-build libcli11-dev libdeflate-dev libssl-dev nlohmann-json3-dev libboost1.81-dev googletest pkgconf)
clang_packages=(clang libclang-rt-14-dev llvm)
windows_packages=(g++-mingw-w64-x86-64-win32 libz-mingw-w64-dev wine wine64 "${clang_packages[@]}" lld)
python_packages=(python3 python3-numpy python3-pandas python3-matplotlib python3-pip python3-venv mypy)
reader_packages=(topp libxml2-utils python3 python3-pymzml python3-jsonschema python3-rfc3987 multiqc)  # independent readers of our output
browser_packages=(chromium fonts-dejavu-core)

# ccache keeps compiled objects, also for other clones.
export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1 CCACHE_DEPEND=1
export CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
