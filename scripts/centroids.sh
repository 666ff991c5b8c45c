#!/usr/bin/env bash
# centroids.sh: how exact centroids of simulated profiles are, beside OpenMS' PeakPickerHiRes on the same profiles: prints the tables
# of docs/centroids.md and draws docs/images/centroids.png. Takes two minutes.
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

install "${build_packages[@]}" python3-numpy python3-matplotlib topp
build linux zrml_centroid_spectra zrml_pick_clock
run /usr/bin/python3 bench/centroids.py build/linux/bench/zrml_centroid_spectra build/linux/bench/libzrml_pick_clock.so docs/images/centroids.png
