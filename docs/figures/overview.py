"""overview.py SAMPLE FIGURE: the picture of README: the sample's chromatogram, and a spectrum at its highest peak."""

import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt
import zrml

with zrml.open(sys.argv[1]) as run:
    survey = run.functions[0]
    total = survey.tic()
    highest = survey[int(total.intensity.argmax())]
    mz, intensity, minutes = highest.mz, highest.intensity, highest.minutes

figure, (above, below) = plt.subplots(2, 1, figsize=(9, 5))
above.plot(total.minutes, total.intensity, color="#1f5f99", linewidth=1)
above.axvline(minutes, color="#c0392b", linewidth=0.8, linestyle=":")
above.set(xlabel="minutes", ylabel="total ion current", xlim=(0, 10), ylim=(0, None))
below.plot(mz, intensity, color="#1f5f99", linewidth=0.8)
peak = int(intensity.argmax())
below.annotate(f"{mz[peak]:.3f}", (mz[peak], intensity[peak]), textcoords="offset points", xytext=(6, -8))
below.set(xlabel=f"m/z at {minutes:.2f} min", ylabel="intensity", xlim=(mz[peak] - 3, mz[peak] + 7), ylim=(0, None))
for axes in (above, below):
    axes.spines[["top", "right"]].set_visible(False)
    axes.ticklabel_format(axis="y", style="sci", scilimits=(0, 0))
figure.tight_layout()
figure.savefig(sys.argv[2], dpi=100, metadata={"Software": None})
