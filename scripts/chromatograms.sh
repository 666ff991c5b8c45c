#!/usr/bin/env bash
# chromatograms.sh: draws the pictures of docs/extraction.md with what zrml prints of the simulated acquisition.
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

install "${build_packages[@]}" python3-matplotlib
build linux zrml zrml_sample
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
run build/linux/zrml-sample "$work/run.raw"
run /usr/bin/python3 docs/figures/chromatograms.py build/linux/zrml "$work/run.raw" docs/figures/ions.tsv docs/images
