"""content_test.py ZRML WORK: converts known.raw and known.rpt in WORK and compares with their known content.

The numbers are in edge_cases.cpp. OpenMS validates a file of each kind, pymzml reads its spectra back.
"""
import gzip
import pathlib
import shutil
import sys

import mzml_file
import pymzml
from conversion_test import check_with_openms, run
from mzml_file import INTENSITY, MZ, NAMESPACE, TIME, WAVELENGTH, require

PRESSURE, ABSORPTION, TIC, IONS = 'MS:1003019', 'MS:1000812', 'MS:1000235', 'MS:1000810'

# By id: the arrays.
SURVEY = {'function=1 process=0 scan=1': {MZ: [100, 250.5], INTENSITY: [7, 90]}}
LOCK_MASS = {'function=3 process=0 scan=1': {MZ: [556], INTENSITY: [11]}}
ABSORBANCE = {'function=2 process=0 scan=1': {WAVELENGTH: [210, 220.5], INTENSITY: [4, 8]},
              'function=2 process=0 scan=2': {WAVELENGTH: [210], INTENSITY: [2]}}
TOTAL = {'function 1 TIC': (TIC, [0.5], [97])}
LOCK_MASS_TOTAL = {'function 3 TIC': (TIC, [1], [11])}
TRACES = {'trace 1: System Pressure': (PRESSURE, [0.5, 1], [320, 2]),
          'trace 2: TUV 254 nm': (ABSORPTION, [0.5, 1], [1, 0]),
          'trace 3: PDA - Total Absorbance': (ABSORPTION, [0.25, 0.75], [12, 2])}


class Converted(mzml_file.CheckedFile):
    def require_spectra(self, wanted):
        require(list(self.spectra) == list(wanted), f'spectra {list(self.spectra)}')
        for name, arrays in wanted.items():
            require(self.spectra[name] == arrays, f'{name}: {self.spectra[name]}')

    def require_chromatograms(self, wanted):
        require(list(self.chromatograms) == list(wanted), f'chromatograms {list(self.chromatograms)}')
        for name, (term, times, intensities) in wanted.items():
            found = self.chromatograms[name]
            require(term in mzml_file.terms(self.chromatogram_elements[name]), f'{name} is not a {term}')
            require(found == {TIME: times, INTENSITY: intensities}, f'{name}: {found}')

    def require_start(self, wanted):
        found = self.mzml.find(NAMESPACE + 'run').get('startTimeStamp')
        require(found == wanted, f'startTimeStamp {found}')


def convert(zrml, source, folder, *options):
    shutil.rmtree(folder, ignore_errors=True)
    return [pathlib.Path(line) for line in run(zrml, 'convert', source, '-o', folder, *options).splitlines()]


def judged(file):
    """The content of the file, after OpenMS and pymzml have read it."""
    converted = Converted(file.read_bytes())
    has_absorbance = any(WAVELENGTH in arrays for arrays in converted.spectra.values())
    check_with_openms(file, len(converted.spectra), len(converted.chromatograms), has_absorbance)
    read = [s.element.get('id') for s in pymzml.run.Reader(str(file)) if s.element.tag.endswith('spectrum')]
    require(read == list(converted.spectra), f'pymzml reads {read}')
    return converted


def test_raw_directory(zrml, work):
    file, = convert(zrml, work / 'known.raw', work / 'out/known')
    whole = judged(file)
    whole.require_spectra({**SURVEY, **LOCK_MASS})
    whole.require_chromatograms({'TIC': (TIC, [0.5, 1], [97, 11]), **TOTAL, **LOCK_MASS_TOTAL, **TRACES})
    whole.require_start('2021-03-05T09:15:00')
    packed, = convert(zrml, work / 'known.raw', work / 'out/known-gzip', '--gzip')
    require(packed.name == 'known.mzML.gz', packed.name)
    require(gzip.decompress(packed.read_bytes()) == file.read_bytes(), 'the compressed file differs')
    read = [s.element.get('id') for s in pymzml.run.Reader(str(packed))]
    require(set(whole.spectra) <= set(read), f'pymzml reads {read} of the compressed file')


def test_with_absorbance_without_lock_mass(zrml, work):
    file, = convert(zrml, work / 'known.raw', work / 'out/known-absorbance', '--absorbance', '--exclude-lock-mass')
    rest = judged(file)
    first, second = ABSORBANCE
    rest.require_spectra({first: ABSORBANCE[first], **SURVEY, second: ABSORBANCE[second]})
    rest.require_chromatograms({'TIC': (TIC, [0.5], [97]), **TOTAL, **TRACES})


def test_report(zrml, work):
    first, second = convert(zrml, work / 'known.rpt', work / 'out/known-report')
    require((first.name, second.name) == ('known-sample1.mzML', 'known-sample2.mzML'), f'{first}, {second}')
    spectra = judged(first)
    spectra.require_spectra({'function=1 process=0 scan=1': {MZ: [100, 250.1], INTENSITY: [200, 100]},
                             'function=1 process=0 scan=2': {MZ: [], INTENSITY: []}})
    spectra.require_chromatograms({'TIC': (TIC, [0.5, 0.75], [300, 0]),
                                   'function 1 TIC': (TIC, [0.5, 0.75], [300, 0]),
                                   'function 1 trace 1: UV 254': (IONS, [0.5, 1], [50, 5])})  # a function of masses
    spectra.require_start('2026-11-14T09:15:00')
    trace = judged(second)
    trace.require_spectra({})
    trace.require_chromatograms({'trace 1: Pressure': (PRESSURE, [0.25, 0.5, 0.7], [10, 20, 20])})
    trace.require_start(None)


def main(zrml, work):
    work = pathlib.Path(work)
    test_raw_directory(zrml, work)
    test_with_absorbance_without_lock_mass(zrml, work)
    test_report(zrml, work)


if __name__ == '__main__':
    main(*sys.argv[1:])
