#!/usr/bin/env bash
# bench-page.sh: how fast the page is, by the browser's own clock, beside a page that only draws the same points; and how soon the
# viewer shows the first curve of a run of a million scans. docs/viewer.md
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

install "${build_packages[@]}" "${browser_packages[@]}"
install_node
build linux zrml zrml_sample zrml_long_run
work=$(mktemp -d)
trap 'end_running; rm -rf "$work"' EXIT
build/linux/zrml-sample "$work/run.raw"
build/linux/bench/zrml_long_run "$work/points.raw" 100000
build/linux/bench/zrml_long_run "$work/million.raw" 1000000
ZRML_NODE_FOLDER=$PWD/build/node ZRML_PROGRAM=$PWD/build/linux/zrml ZRML_PLOTS=$PWD/third_party/uplot run node bench/page_bench.mjs "$work"
