#!/usr/bin/env bash
# run.sh [PATH]: installs what is missing, builds, shows an acquisition or a report and checks the plug-in on it: the one at
# PATH, or a sample of each kind.
path=${1:+$(realpath -m -- "$1")}
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

install "${build_packages[@]}"
build linux zrml zrml_provider zrml_sample

show() {
  echo
  echo "\$ zrml $*"
  build/linux/zrml "$@"
}
show_source() {
  show info "$1"
  show spectrum "$1" --function 1 --scan 1 | head -n 40
  show plugin build/linux/ZRMLProvider-x64.so "$1"
}

if [ -n "$path" ]; then
  show_source "$path"
  exit
fi
rm -rf build/sample.raw build/sample.rpt
build/linux/zrml-sample build/sample.raw
build/linux/zrml-sample build/sample.rpt
show_source build/sample.raw
show_source build/sample.rpt
show chromatogram build/sample.rpt --sample 3 --trace 3 | head -n 20
