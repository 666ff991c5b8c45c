#!/usr/bin/env bash
# test-fresh.sh [TEST-OPTION...]: makes an empty Debian 12 in a folder, clones the project into it and runs both commands of
# README there, test.sh with TEST-OPTIONs, to see that they install everything they need. Downloads about 2 GB, takes half an
# hour or more, and needs root and 8 GB of disk. Only committed files are tested.
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"
[ "$(id -u)" -eq 0 ] || exec sudo --preserve-env "scripts/$(basename "$0")" "$@"

install git mmdebstrap util-linux

root=$(mktemp -d "${TMPDIR:-/var/tmp}/zrml-fresh.XXXXXX")
trap 'end_running; rm -rf --one-file-system "$root"' EXIT
quietly fresh-system make_root "$root"
git clone -q . "$root/project"

run inside "$root" project/scripts/run.sh >build/fresh-run.log 2>&1 || { cat build/fresh-run.log >&2; exit 1; }
run inside "$root" project/scripts/test.sh "$@"
echo "Both commands work on an empty Debian 12."
