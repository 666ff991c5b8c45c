#!/usr/bin/env bash
# test-fresh.sh [TEST-OPTION...]: makes an empty Debian 12 in a folder, clones the project into it and runs both commands of
# README there, test.sh with TEST-OPTIONs, to see that they install everything they need. Downloads about 2 GB, takes half an
# hour or more, and needs root and 8 GB of disk. Only committed files are tested.
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"
[ "$(id -u)" -eq 0 ] || exec sudo --preserve-env "scripts/$(basename "$0")" "$@"

install git mmdebstrap util-linux

# This machine's own sources of Debian 12.
mapfile -t sources < <(grep -lsE '^(deb|Suites:)(.* )?bookworm( |-|$)' /etc/apt/sources.list /etc/apt/sources.list.d/*.{list,sources})
[ ${#sources[@]} -gt 0 ] || { echo "no sources of Debian 12 in /etc/apt" >&2; exit 1; }

root=$(mktemp -d "${TMPDIR:-/var/tmp}/zrml-fresh.XXXXXX")
trap 'end_running; rm -rf --one-file-system "$root"' EXIT
quietly fresh-system mmdebstrap --variant=minbase bookworm "$root" "${sources[@]}"
rm -f "$root/etc/resolv.conf"
cp -L /etc/resolv.conf "$root/etc/"
git clone -q . "$root/project"

# inside COMMAND...: runs it in the fresh system. Mounts and processes are those of a namespace, and end with it.
inside() {
  unshare --mount --pid --fork --kill-child bash -c '
    mount -t proc proc "$0/proc" && mount --rbind /dev "$0/dev" && mount -t tmpfs tmpfs "$0/tmp" &&
    exec env --ignore-environment ${http_proxy:+http_proxy="$http_proxy"} ${https_proxy:+https_proxy="$https_proxy"} \
      HOME=/root PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin chroot "$0" "$@"' "$root" "$@"
}
run inside project/scripts/run.sh >build/fresh-run.log 2>&1 || { cat build/fresh-run.log >&2; exit 1; }
run inside project/scripts/test.sh "$@"
echo "Both commands work on an empty Debian 12."
