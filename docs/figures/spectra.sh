#!/usr/bin/env bash
# spectra.sh: draws the pictures of sums, centroids, filters and absorbance in docs/extraction.md, from what `zrml spectrum` prints
# of the simulated acquisition.
source "$(dirname "${BASH_SOURCE[0]}")/../../scripts/lib.sh"

install "${build_packages[@]}" python3-numpy python3-matplotlib
build linux zrml zrml_sample
run /usr/bin/python3 docs/figures/spectra.py build/linux/zrml build/linux/zrml-sample docs/images
