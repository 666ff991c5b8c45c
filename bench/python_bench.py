#!/usr/bin/env python3
"""python_bench.py FLOOR FOLDER [ROUNDS]: the Python package beside what it stands on, as ratios of one run.

FLOOR is the program python_floor, FOLDER has the sources that it makes. Work and floor take turns; each row has the median of
both, and of the ratios of the turns with half the range between their quartiles. Seconds are the processor's, so that a busy
machine disturbs less.
"""

import os
import pathlib
import statistics
import subprocess
import sys
import time

import numpy as np
import zrml

IONS = [100 + 19 * i + 0.05 for i in range(100)]


def processor_seconds(work):
    began = time.process_time()
    work()
    return time.process_time() - began


def child_seconds(*command):
    """What the processor takes for a process, from its start to its end."""
    process = subprocess.Popen(command)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"{command} failed")
    return usage.ru_utime + usage.ru_stime


class Bench:
    def __init__(self, floor, folder, rounds):
        self.floor = floor
        self.spectra = folder / "spectra.raw"
        self.many = folder / "many.raw"
        self.rounds = rounds

    def of_floor(self, *arguments):
        done = subprocess.run([self.floor, *map(str, arguments)], check=True, capture_output=True, text=True)
        return float(done.stdout)

    def row(self, name, aim, ours, floor, more=1):
        """Both give seconds. Ratios near their aim are looked at `more` times as often."""
        turns = [(ours(), floor()) for _ in range(more * self.rounds)]
        ratios = sorted(mine / its for mine, its in turns)
        low, middle, high = statistics.quantiles(ratios, n=4)
        mine, its = (statistics.median(side) * 1e3 for side in zip(*turns))
        print(f"| {name} | {mine:.1f} ms | {its:.1f} ms | {middle:.3f} | ±{(high - low) / 2:.3f} | {aim} |", flush=True)

    def all_spectra(self):
        def read():
            for scan in function:
                scan.mz, scan.intensity

        with zrml.open(self.spectra) as source:
            function = source.functions[0]
            self.row(
                "all spectra of 20,000 scans of 1,500 points: Python, C",
                "1.25",
                lambda: processor_seconds(read),
                lambda: self.of_floor("spectra", self.spectra),
                more=5,
            )

    def ions(self):
        with zrml.open(self.spectra) as source:
            function = source.functions[0]
            self.row(
                "chromatograms of 100 ions: Python, source/",
                "1.05",
                lambda: processor_seconds(lambda: function.xic(IONS)),
                lambda: self.of_floor("ions", self.spectra, *IONS),
            )

    def table(self):
        source = zrml.open(self.many)
        function = source.functions[0]
        ready = function.table()

        def make():
            return [column.copy() for column in ready.values()]

        self.row(
            "table of 1,000,000 scans, index loaded: Python, making the arrays",
            "1.5",
            lambda: processor_seconds(function.table),
            lambda: processor_seconds(make),
        )

        def cold():
            with zrml.open(self.many) as source:
                source.functions[0].table()

        def read():
            for name in ("_FUNC001.IDX", "_FUNC001.STS"):
                np.fromfile(self.many / name, np.uint8)

        self.row(
            "the same, cold: Python, twice reading the files and 1.5 times making the arrays",
            "1",
            lambda: processor_seconds(cold),
            lambda: 2 * processor_seconds(read) + 1.5 * processor_seconds(make),
        )
        source.close()

    def importing(self):
        python = [sys.executable, "-c"]
        turns = [
            (child_seconds(*python, "import numpy, zrml"), child_seconds(*python, "import numpy"))
            for _ in range(2 * self.rounds)
        ]
        more = statistics.median(mine - its for mine, its in turns) * 1e3
        mine, its = (statistics.median(side) * 1e3 for side in zip(*turns))
        print(f"| import zrml and numpy, numpy alone | {mine:.1f} ms | {its:.1f} ms | +{more:.1f} ms | | +20 ms |")


def main():
    floor, folder = sys.argv[1:3]
    bench = Bench(floor, pathlib.Path(folder), int(sys.argv[3]) if len(sys.argv) > 3 else 9)
    print(f"load {os.getloadavg()[0]:.1f} of {os.cpu_count()} processors\n")
    print("| work, floor | work | floor | ratio | spread | aim |\n|---|---|---|---|---|---|")
    bench.all_spectra()
    bench.ions()
    bench.table()
    bench.importing()


main()
