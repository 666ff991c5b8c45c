#!/usr/bin/env bash
# run.sh [PATH]: installs what is missing, builds, and shows an acquisition through the plug-in: the one at PATH, or a sample.
path=${1:+$(realpath -m -- "$1")}
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

install "${build_packages[@]}"
build linux zrml zrml_provider zrml_sample

if [ -z "$path" ]; then
  path=build/sample.raw
  rm -rf "$path"
  build/linux/zrml-sample "$path"
fi

show() {
  echo
  echo "\$ zrml $*"
  build/linux/zrml "$@"
}
show info "$path"
show spectrum "$path" --function 1 --scan 1 | head -n 40
