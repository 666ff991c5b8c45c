#!/usr/bin/env python3
"""chromatograms.py ZRML RUN.raw IONS.tsv FOLDER: draws the pictures of docs/extraction.md from what the commands print."""

import json
import pathlib
import statistics
import subprocess
import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt

WIDTHS = (10, 30, 60, 120, 5000)  # ppm; the peak is about 100 wide at half height
GREY = "#666666"


def printed(*arguments):
    return json.loads(subprocess.run([*map(str, arguments), "--json"], check=True, capture_output=True).stdout)


def ions(zrml, run, targets):
    of_run = (zrml, "chromatogram", run, "--function", 1)
    figure, (all_ions, widths) = plt.subplots(2, 1, figsize=(10, 8), dpi=90, height_ratios=[3, 2])
    found = printed(*of_run, "--targets", targets, "--ppm", 120)["chromatograms"]
    for number, ion in enumerate(sorted(found, key=lambda ion: ion["apexMinutes"]), 1):
        label = f"{number}  {ion['comment']}, m/z {ion['mz']:.4f}, {ion['apexMinutes']:.2f} min, area {ion['area']:,.0f}"
        line, = all_ions.plot(ion["times"], ion["intensities"], lw=1.2, label=label)
        all_ions.annotate(number, (ion["apexMinutes"], ion["apexIntensity"]), xytext=(0, 3), textcoords="offset points",
                          ha="center", va="bottom", color=line.get_color(), weight="bold")
    top = max(ion["apexIntensity"] for ion in found)
    all_ions.set(xlim=(0, 10), ylim=(0, 1.65 * top), xlabel="minutes", ylabel="intensity",
                 title="The ions of a list, ±120 ppm, from one pass over the scans")
    all_ions.legend(fontsize=8, frameon=False, ncols=2, handlelength=1.2, loc="upper left")
    for width, colour in zip(WIDTHS, plt.get_cmap("viridis")([0.95, 0.75, 0.5, 0.25, 0.0])):
        ion = printed(*of_run, "--mz", 309.1121, "--ppm", width, "--rt", "6.2-7")["chromatograms"][0]
        widths.plot(ion["times"], ion["intensities"], lw=1.3, color=colour, label=f"±{width} ppm: area {ion['area']:,.0f}")
    widths.set(xlim=(6.2, 7), ylim=(0, None), xlabel="minutes", ylabel="intensity",
               title="m/z 309.1121, a profile: narrow ranges miss part of the peak, wide ones include isotopes")
    widths.legend(fontsize=8, frameon=False)
    return figure


def wavelengths(zrml, run):
    figure, axes = plt.subplots(figsize=(10, 4.5), dpi=90)
    for asked, colour in (("214", "#b03060"), ("250-260", "#999999"), ("275", "#1f4e99")):
        line = printed(zrml, "chromatogram", run, "--wavelength", asked)
        axes.plot(line["times"], [value / 1000 for value in line["intensities"]], lw=1.2, color=colour,
                  label=f"{asked.replace('-', ' to ')} nm" + (", mean" if "-" in asked else ""))
    axes.set(xlim=(0, 10), ylim=(0, None), xlabel="minutes", ylabel="absorbance (thousands of stored units)")
    axes.legend(frameon=False)
    return figure


def lockmass(zrml, run):
    peak = printed(zrml, "lockmass", run, "--mz", 556.2766)
    figure, (errors, heights) = plt.subplots(2, 1, figsize=(10, 5.5), dpi=90, sharex=True, height_ratios=[3, 1])
    errors.axhline(0, color="black", lw=0.8)
    errors.axhline(peak["medianErrorPpm"], color="#b03060", lw=1, ls="--",
                   label=f"median {peak['medianErrorPpm']:.2f} ppm")
    errors.plot(peak["times"], peak["errorsPpm"], "o-", ms=4, lw=0.8, color="#1f4e99",
                label=f"scans, standard deviation {statistics.stdev(peak['errorsPpm']):.2f} ppm")
    errors.set(ylim=(-1, 1), ylabel="error (ppm)", title="Leucine enkephalin, m/z 556.2766, in the reference function")
    errors.legend(frameon=False, ncols=2)
    heights.plot(peak["times"], peak["intensities"], "o-", ms=3, lw=0.8, color=GREY)
    heights.set(xlim=(0, 10), ylim=(0, 1.2 * max(peak["intensities"])), xlabel="minutes", ylabel="height")
    return figure


def main(zrml, run, targets, folder):
    pictures = {"ions": ions(zrml, run, targets), "wavelengths": wavelengths(zrml, run), "lockmass": lockmass(zrml, run)}
    for name, figure in pictures.items():
        for axes in figure.axes:
            axes.grid(alpha=0.25)
            axes.spines[["top", "right"]].set_visible(False)
        figure.tight_layout()
        figure.savefig(pathlib.Path(folder) / f"{name}.png")


main(*sys.argv[1:])
