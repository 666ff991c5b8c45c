#!/usr/bin/env bash
# pictures.sh: makes the pictures of the page in docs/images, of the sample acquisition in Chromium.
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

install "${build_packages[@]}" "${browser_packages[@]}"
install_node
build linux zrml zrml_sample
work=$(mktemp -d)
trap 'end_running; rm -rf "$work"' EXIT
build/linux/zrml-sample "$work/run.raw"
ZRML_NODE_FOLDER=$PWD/build/node ZRML_PROGRAM=$PWD/build/linux/zrml run node docs/images/make_pictures.mjs "$work/run.raw" docs/images
ls -l docs/images/viewer-*.png
