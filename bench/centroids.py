#!/usr/bin/env python3
"""How exact centroids are: centroids.py PROGRAM CLOCK PICTURE.png, with PROGRAM the built centroid_spectra and CLOCK the built
pick_clock. Prints the tables of docs/centroids.md and draws its picture. scripts/centroids.sh runs it."""

import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt
import numpy as np
from simulated_profiles import (
    DEVIATION, RESOLVING_POWER, Score, apex_of, axis, expected_ions, our_centroids, picked_centroids, stored)

PEAKS = 500  # of a profile
RUNS = 9  # whose least time counts
BACKGROUND = 0.02  # ions of each sample that belong to no peak
IONS = [5, 7, 10, 15, 20, 30, 50, 100, 200, 500, 1000, 3000, 10000, 100000]
DISTANCES = [0.8, 0.9, 1, 1.1, 1.2, 1.3, 1.4, 1.5, 1.6, 1.75, 2, 2.5, 3]
OURS, THEIRS = "zrml", "PeakPickerHiRes"


def separate_centres(random, count=PEAKS):
    return 400 + np.arange(count) * 1.2 + random.uniform(0, 0.3, count)


def noiseless(program, random):
    """Rows of the table of peaks without noise."""
    mz = axis(399, 1001)
    print("| tail, in standard deviations | median error, ppm | worst, ppm | greatest error of the area |\n|---|---|---|---|")
    for tail in (0, 0.25, 0.5, 1, 2):
        centres = separate_centres(random)
        areas = 10 ** random.uniform(1, 6, PEAKS)
        mean = expected_ions(mz, centres, areas, tail)
        profile = stored(mz, np.where(mean < 1e-4, 0, mean))
        (found, sums), = our_centroids(program, [profile], "area")[0]
        truth = centres * (1 + apex_of(tail) * DEVIATION / RESOLVING_POWER)
        score = Score(truth, found)
        assert score.missed == 0 and score.false == 0, "each peak once"
        print(f"| {tail} | {score.median:.3f} | {score.worst:.3f} | {100 * np.abs(sums / areas - 1).max():.2f} % |")


def counted(random, mean):
    return random.poisson(mean).astype(float)


def by_ions(program, clock, random):
    """{finder: [score for each of IONS]}"""
    mz = axis(399, 1001)
    truths, profiles = [], []
    for ions in IONS:
        truths.append(separate_centres(random))
        mean = expected_ions(mz, truths[-1], np.full(PEAKS, ions)) + BACKGROUND
        profiles.append(stored(mz, counted(random, mean)))
    return scores(program, clock, truths, profiles)


def by_distance(program, clock, random, ions, part):
    """The same for each of DISTANCES, of pairs whose second peak has that part of the ions."""
    mz = axis(399, 1001)
    truths, profiles = [], []
    for distance in DISTANCES:
        first = separate_centres(random, PEAKS // 2)
        truths.append(np.column_stack([first, first * (1 + distance / RESOLVING_POWER)]).ravel())
        mean = expected_ions(mz, truths[-1], np.tile([ions, ions * part], PEAKS // 2))
        profiles.append(stored(mz, counted(random, mean)))
    return scores(program, clock, truths, profiles)


def scores(program, clock, truths, profiles):
    ours = our_centroids(program, profiles)[0]
    theirs = picked_centroids(clock, profiles)[0]
    return {
        name: [Score(truth, mz) for truth, (mz, _) in zip(truths, centroids)]
        for name, centroids in ((OURS, ours), (THEIRS, theirs))
    }


def print_scores(head, values, of_finder):
    print(f"\n| {head} | error, ppm: {OURS} | {THEIRS} | missed: {OURS} | {THEIRS} | false: {OURS} | {THEIRS} |")
    print("|---|---|---|---|---|---|---|")
    for i, value in enumerate(values):
        ours, theirs = of_finder[OURS][i], of_finder[THEIRS][i]
        errors = f"{ours.root_mean_square:.2f} | {theirs.root_mean_square:.2f}"
        shares = [f"{100 * share:.1f} %" for share in (ours.missed, theirs.missed, ours.false, theirs.false)]
        print(f"| {value} | {errors} | {' | '.join(shares)} |")


def mixture(program, clock, random):
    """One file of everything at once: a hundred profiles with peaks anywhere, of ten to a hundred thousand ions, with short tails."""
    mz = axis(300, 1500)
    truths, profiles = [], []
    for _ in range(100):
        centres = np.sort(random.uniform(301, 1499, PEAKS))
        mean = expected_ions(mz, centres, 10 ** random.uniform(1, 5, PEAKS), 0.3) + BACKGROUND
        truths.append(centres * (1 + apex_of(0.3) * DEVIATION / RESOLVING_POWER))
        profiles.append(stored(mz, counted(random, mean)))
    ours, our_seconds = min((our_centroids(program, profiles) for _ in range(RUNS)), key=lambda answer: answer[1])
    theirs, their_seconds = picked_centroids(clock, profiles, RUNS)
    points = sum(len(profile[0]) for profile in profiles)
    print(f"\n{len(profiles)} profiles, {points} points, {len(truths) * PEAKS} peaks\n")
    print("| | peaks found | false | median error, ppm | root mean square, ppm | seconds |\n|---|---|---|---|---|---|")
    shift = np.arange(len(profiles)) * 10000  # profile by profile in one list
    truth = np.concatenate([part + by for part, by in zip(truths, shift)])
    for name, centroids, seconds in ((OURS, ours, our_seconds), (THEIRS, theirs, their_seconds)):
        parts = [Score(part, mz) for part, (mz, _) in zip(truths, centroids)]
        found = sum(round((1 - part.missed) * PEAKS) for part in parts)
        false = sum(round(part.false * PEAKS) for part in parts)
        median = np.median([part.median for part in parts])
        root = np.sqrt(np.mean([part.root_mean_square**2 for part in parts]))
        print(f"| {name} | {found} | {false} | {median:.2f} | {root:.2f} | {seconds:.3f} |")


def draw_both(axes, x, of_finder, value, label=""):
    for name, colour in ((OURS, "tab:blue"), (THEIRS, "tab:orange")):
        axes.plot(x, [value(score) for score in of_finder[name]], ".-", color=colour, label=name + label)


def draw(path, ions_scores, equal, unequal):
    figure, ((error, share), (near_error, near_share)) = plt.subplots(2, 2, figsize=(10, 7), dpi=90)
    signal_to_noise = np.sqrt(IONS)
    draw_both(error, signal_to_noise, ions_scores, lambda score: score.root_mean_square)
    least = 1e6 / RESOLVING_POWER * DEVIATION / signal_to_noise
    error.plot(signal_to_noise, least, ":", color="gray", label="least that counting allows")
    error.set(xscale="log", yscale="log", ylabel="root mean square error (ppm)", title="Single peaks: place")
    draw_both(share, signal_to_noise, ions_scores, lambda score: 100 * score.missed, ": missed")
    for name, colour in ((OURS, "tab:blue"), (THEIRS, "tab:orange")):
        share.plot(signal_to_noise, [100 * score.false for score in ions_scores[name]], "x--", color=colour,
                   label=name + ": false")
    share.set(xscale="log", ylabel="of the true peaks (%)", title="Single peaks: missed and false")
    for axes in (error, share):
        axes.set_xlabel("signal to noise (root of the ions of a peak)")
    for axes, value, label in ((near_error, lambda score: score.root_mean_square, "root mean square error (ppm)"),
                               (near_share, lambda score: 100 * score.missed, "missed, of the true peaks (%)")):
        draw_both(axes, DISTANCES, equal, value, ", 1 : 1")
        for name, colour in ((OURS, "tab:blue"), (THEIRS, "tab:orange")):
            axes.plot(DISTANCES, [value(score) for score in unequal[name]], "x--", color=colour, label=name + ", 1 : 0.2")
        axes.set(xlabel="distance (widths at half height)", ylabel=label)
    near_error.set(yscale="log", title="Pairs of 10,000 ions and as many or a fifth: place")
    near_share.set(title="The same pairs: missed")
    for axes in (error, share, near_error, near_share):
        axes.grid(alpha=0.3)
        axes.legend(fontsize=8)
    figure.tight_layout()
    figure.savefig(path)


def main(program, clock, picture):
    random = np.random.default_rng(7)
    noiseless(program, random)
    ions_scores = by_ions(program, clock, random)
    print_scores("ions of a peak", IONS, ions_scores)
    pairs = [by_distance(program, clock, random, 10000, part) for part in (1, 0.2)]
    for part, of_finder in zip((1, 0.2), pairs):
        print_scores(f"distance, widths; 1 : {part}", DISTANCES, of_finder)
    mixture(program, clock, random)
    draw(picture, ions_scores, *pairs)


main(*sys.argv[1:])
