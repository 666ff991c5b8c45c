#!/usr/bin/env python3
"""The pictures of spectra in docs/extraction.md: spectra.py ZRML ZRML_SAMPLE FOLDER. docs/figures/spectra.sh runs it."""

import json
import pathlib
import subprocess
import sys
import tempfile

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt
import numpy as np

BLUE, ORANGE, GREY = "tab:blue", "tab:orange", "0.45"


class Run:
    """The simulated acquisition, through the command line."""

    def __init__(self, zrml, path):
        self.zrml, self.path = zrml, path

    def spectrum(self, *options):
        printed = subprocess.run([self.zrml, "spectrum", self.path, *options, "--json"], capture_output=True, check=True)
        return json.loads(printed.stdout)

    def points(self, *options):
        found = self.spectrum("--function", "1", *options)
        return np.array(found["masses"]), np.array(found["intensities"])


def sticks(axes, points, colour, label=None):
    mz, intensity = points
    axes.vlines(mz, 0, intensity, color=colour, linewidth=1.2, label=label)
    axes.axhline(0, color="black", linewidth=0.6)


def name(axes, points, least, slope=0):
    """The m/z of the peaks of at least that intensity, above them."""
    for mz, intensity in zip(*points):
        if intensity >= least:
            axes.annotate(f"{mz:.4f}", (mz, intensity), (0, 3), textcoords="offset points", fontsize=8, rotation=slope,
                          ha="left" if slope else "center")


def save(figure, path):
    figure.tight_layout()
    figure.savefig(path, dpi=110)
    plt.close(figure)


def draw_sums(run, path):
    peak = ("--rt", "6.4-6.6", "--mean")
    panels = (
        ("--scan 390", run.points("--scan", "390"), GREY),
        ("--rt 6.4-6.6 --mean", run.points(*peak), BLUE),
        ("--rt 6.4-6.6 --mean --minus 7.5-8.5", run.points(*peak, "--minus", "7.5-8.5"), ORANGE),
    )
    figure, rows = plt.subplots(3, 3, figsize=(11, 7), width_ratios=(3, 3, 2), sharey="col", sharex="col")
    for (ion, background, noise), (title, (mz, intensity), colour) in zip(rows, panels):
        for axes, low, high in ((ion, 308.6, 312.6), (background, 390.8, 394.2), (noise, 150, 160)):
            axes.plot(mz, intensity, color=colour, linewidth=0.9)
            axes.axhline(0, color="black", linewidth=0.5)
            axes.set_xlim(low, high)
            axes.grid(alpha=0.25)
        ion.set_ylabel("intensity")
        ion.set_title(title, fontsize=10, family="monospace", loc="left")
        background.set_ylim(-60, 1100)
        noise.set_ylim(-6, 12)
    rows[0][1].set_title("an ion of the background", fontsize=10)
    rows[0][2].set_title("noise, enlarged", fontsize=10)
    for axes in rows[-1]:
        axes.set_xlabel("m/z")
    save(figure, path)


def draw_centroids(run, path):
    choice = ("--rt", "6.4-6.6", "--mean")
    profile, peaks = run.points(*choice), run.points(*choice, "--centroid")
    figure, (whole, near) = plt.subplots(1, 2, figsize=(10, 3.8), width_ratios=(3, 2))
    for axes in (whole, near):
        axes.plot(*profile, color=BLUE, linewidth=1, label="profile")
        sticks(axes, peaks, ORANGE, "--centroid")
        axes.set(xlabel="m/z", ylabel="intensity")
        axes.grid(alpha=0.25)
    whole.set(xlim=(308.7, 312.6), title="Isotopes of one ion")
    top = profile[1][(profile[0] > 308) & (profile[0] < 313)].max()
    name(whole, [column[(peaks[0] > 308) & (peaks[0] < 313)] for column in peaks], top / 100)
    whole.set_ylim(top=top * 1.12)
    near.plot(*profile, ".", color=BLUE)
    centre = peaks[0][(peaks[0] > 308.9) & (peaks[0] < 309.4)][0]
    near.set(xlim=(centre - 0.04, centre + 0.04), title="The first of them, with its samples")
    near.ticklabel_format(useOffset=False)
    whole.legend()
    save(figure, path)


def draw_filters(run, path):
    options = []
    figure, rows = plt.subplots(4, 1, figsize=(10, 8), sharex=True, sharey=True)
    for axes, more in zip(rows, ("--centroid", "--mz 150-650", "--min-intensity 50", "--top 5")):
        options += more.split()
        points = run.points("--mean", *options)
        sticks(axes, points, BLUE)
        axes.set(yscale="log", ylabel="intensity", xlim=(90, 1010), ylim=(0.1, 6e4))
        axes.set_title(" ".join(options), fontsize=10, family="monospace", loc="left")
        axes.set_title(f"{len(points[0])} peaks", fontsize=10, loc="right")
        axes.grid(alpha=0.25)
    name(rows[-1], points, 0, 35)
    rows[-1].set_xlabel("m/z")
    save(figure, path)


def draw_absorbance(run, path):
    figure, axes = plt.subplots(figsize=(7, 4))
    baseline = ("--minus", "0-0.5")
    for minutes, colour in (("1.8-1.9", BLUE), ("5.15-5.25", "tab:green"), ("6.45-6.55", ORANGE)):
        found = run.spectrum("--absorbance", "--rt", minutes, "--mean", *baseline)
        axes.plot(found["wavelengths"], found["absorbances"], color=colour, label=f"{minutes} min")
    axes.axhline(0, color="black", linewidth=0.5)
    axes.set(xlabel="wavelength (nm)", ylabel="absorbance", title="--absorbance --rt ... --mean --minus 0-0.5")
    axes.title.set(fontsize=10, family="monospace")
    axes.grid(alpha=0.25)
    axes.legend()
    save(figure, path)


def main(zrml, make_sample, folder):
    with tempfile.TemporaryDirectory() as work:
        path = str(pathlib.Path(work) / "run.raw")
        subprocess.run([make_sample, path], check=True, stdout=subprocess.DEVNULL)
        run = Run(zrml, path)
        images = pathlib.Path(folder)
        draw_sums(run, images / "spectrum-sum.png")
        draw_centroids(run, images / "spectrum-centroids.png")
        draw_filters(run, images / "spectrum-filters.png")
        draw_absorbance(run, images / "spectrum-absorbance.png")


main(*sys.argv[1:])
