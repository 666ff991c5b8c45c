#!/usr/bin/env python3
"""Prints the ratios of a run: table.py BENCHMARKS.json [LINES.tsv...]

Each row is the median of the repetitions of "ROW/ours" over that of "ROW/floor", with the spread of the repetitions: half the
range from the lower to the upper quartile, relative to the median. TSV lines are "row, ours, floor"."""

import collections
import json
import statistics
import sys

AIMS = [  # the first prefix of the row's name counts
    ("GetSpectrum 100k points, calibrated", 3),
    ("GetSpectrum 100k points through the Windows face", 1.02),
    ("GetSpectrum 100k points", 2),
    ("GetSpectrum 32 points", 2),
    ("GetSpectrum 500 points", 1.5),
    ("First GetScanCount", 3),
    ("Total ion chromatogram", 4),
    ("Mass-range chromatogram", 1.1),
    ("Sample index", 1.5),
    ("All spectra", 0.35),
    ("SortByMass of 100k points in order", 2),
    ("SortByMass of 100k points in random order", 1.5),
    ("Open of 60 functions and 2,000 header lines (", None),
    ("Open of", 5),
    ("source/ beside the slots: all spectra of 20k", 0.4),
    ("source/ beside the slots: mass-range", 0.4),
    ("zrml scans", 3),
    ("Chromatograms of 100 ions", 2),
    ("C library beside source/: all spectra", 1.02),
    ("C library beside source/: 100 mass ranges", 1.05),
    ("C library: table", 1.5),
    ("Peak memory", 1.1),
]
NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


def aim_of(row):
    return next((aim for start, aim in AIMS if row.startswith(start)), None)


def spread_of(values):
    if len(values) < 4:
        return 0
    low, middle, high = statistics.quantiles(values, n=4)
    return (high - low) / 2 / middle


def timings(path):
    """{row: {"ours" or "floor": [nanoseconds of each repetition]}}, in the order of the file."""
    rows = collections.OrderedDict()
    with open(path) as file:
        for run in json.load(file)["benchmarks"]:
            if run.get("error_occurred"):
                sys.exit(f"{run['name']}: {run['error_message']}")
            if run["run_type"] != "iteration":
                continue
            row, side = run["name"].removesuffix("/real_time").rsplit("/", 1)
            time = run["real_time"] if run["name"].endswith("/real_time") else run["cpu_time"]
            rows.setdefault(row, {}).setdefault(side, []).append(time * NANOSECONDS[run["time_unit"]])
    return rows


def main():
    rows = sorted((row, sides["ours"], sides["floor"]) for row, sides in timings(sys.argv[1]).items())
    for path in sys.argv[2:]:
        with open(path) as file:
            for line in file:
                row, ours, floor = line.rstrip("\r\n").split("\t")
                rows.append((row, [float(ours)], [float(floor)]))
    print("| work | ours | floor | ratio | spread | aim |\n|---|---|---|---|---|---|")
    for row, ours, floor in rows:
        ratio = statistics.median(ours) / statistics.median(floor)
        spread = spread_of(ours) + spread_of(floor)
        unit, scale = ("MB", 1e6) if row.startswith("Peak") else ("µs", 1e3)
        numbers = [f"{statistics.median(side) / scale:.1f} {unit}" for side in (ours, floor)]
        aim = aim_of(row)
        print(f"| {row} | {numbers[0]} | {numbers[1]} | {ratio:.2f} | ±{100 * spread:.0f} % | {aim or 'none'} |")


main()
