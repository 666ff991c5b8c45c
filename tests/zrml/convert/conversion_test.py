"""conversion_test.py ZRML NUMBERS WORK SOURCE...: converts each SOURCE to mzML and has others judge the result.

The file is checked by mzml_file.py, by OpenMS (schema, vocabulary, index) and read back by pymzml. Its numbers must be
those that the interface of the plug-in gives to NUMBERS, a program of its own, that `zrml spectrum` prints, and that
stand in the rows of the TSV form. It must be the same whatever the number of threads.
"""
import gc
import gzip
import pathlib
import re
import shutil
import subprocess
import sys

import mzml_file
import numpy
import pymzml
from mzml_file import INTENSITY, MZ, TIME, WAVELENGTH, require

LONG = 10000  # spectra; of longer files only a part goes through slow parsers
STRIDE = 50
EXCERPT = range(32751, 32786)  # scans of a long file, around the last that 16 bits hold
PRINTED = 2  # scans of each function, as many from its end


def run(*arguments):
    done = subprocess.run([str(a) for a in arguments], capture_output=True)
    output = (done.stdout + done.stderr).decode('utf-8', 'replace')
    require(done.returncode == 0, f'{arguments[0]} ended with {done.returncode}: {output[-2000:]}')
    return output


def printed_bytes(*arguments):
    done = subprocess.run([str(a) for a in arguments], capture_output=True)
    require(done.returncode == 0, f'{arguments} ended with {done.returncode}: {done.stderr[-2000:]}')
    return done.stdout


def same(a, b):
    """Equal, the numbers that are none included."""
    a, b = numpy.asarray(a, '<f8'), numpy.asarray(b, '<f8')
    return a.shape == b.shape and bool(((a == b) | ((a != a) & (b != b))).all())


def check_with_openms(file, spectra, chromatograms):
    output = run('FileInfo', '-in', file, '-v')
    require('the file is valid!' in output and 'the file is semantically valid!' in output, output)
    require('Warning' not in output, output)
    done = subprocess.run(['FileInfo', '-in', str(file), '-i'], capture_output=True)
    output = (done.stdout + done.stderr).decode('utf-8', 'replace')
    wanted = f'Found a valid indexed mzML XML File with {spectra} spectra and {chromatograms} chromatograms.'
    if spectra == chromatograms == 0:
        wanted = 'Could not find element indexListOffset'  # a file of nothing has no index
    require(wanted in output, output)


class Interface:
    """What the interface of the plug-in gives of a source: by function and scan, from 1, two lists of numbers each.

    It counts functions without gaps: acquired ones in the order of their numbers, then processed ones, absorbance last.
    """

    def __init__(self, numbers, zrml, source):
        plugin = pathlib.Path(zrml).parent / 'ZRMLProvider-x64.so'
        found = {'mass': {}, 'absorbance': {}, 'total': {}, 'trace': {}}
        for line in printed_bytes(numbers, plugin, source).decode().splitlines():
            kind, function, number, x, y = line.split('\t')
            pair = tuple(numpy.frombuffer(bytes.fromhex(text), '<f8') for text in (x, y))
            found[kind][int(function), int(number)] = pair
        self.mass, self.absorbance = found['mass'], found['absorbance']
        self.total = {function: intensities for (function, _), (_, intensities) in found['total'].items()}
        self.traces = list(found['trace'].values())
        self.functions = {}  # by process and function, as ids have them

    def name_functions(self, checked):
        """Finds out which function of the file is which here."""
        for known, array in ((self.mass, MZ), (self.absorbance, WAVELENGTH)):
            mine = sorted({function for function, _ in known})
            theirs = sorted({parts_of(name)[:2] for name, arrays in checked.spectra.items() if array in arrays})
            require(len(mine) == len(theirs), f'functions {theirs}, the interface has {mine}')
            self.functions.update(zip(theirs, mine))

    def position_of(self, native_id):
        process, function, scan = parts_of(native_id)
        return self.functions[process, function], scan

    def labels(self):
        """What people call the functions."""
        return {mine: f'p{process}' if process else str(number) for (process, number), mine in self.functions.items()}


def parts_of(native_id):
    function, process, scan = map(int, re.fullmatch(r'function=(\d+) process=(\d+) scan=(\d+)', native_id).groups())
    return process, function, scan


def compare_spectra(checked, interface):
    wanted = {**interface.mass, **interface.absorbance}
    positions = list(map(interface.position_of, checked.spectra))
    require(sorted(positions) == sorted(wanted), 'other spectra than the interface has')
    times = [float(checked.times[name] or 'inf') for name in checked.spectra]  # those without one come last
    order = list(zip(times, positions))
    require(order == sorted(order), 'spectra that are not by time, function and scan')
    for position, arrays in zip(positions, checked.spectra.values()):
        x = MZ if position in interface.mass else WAVELENGTH
        require(set(arrays) == {x, INTENSITY}, f'{position} has {list(arrays)}')
        require(same(arrays[x], wanted[position][0]), f'masses or wavelengths of {position}')
        require(same(arrays[INTENSITY], wanted[position][1]), f'intensities of {position}')


def compare_chromatograms(checked, interface):
    """The first has a point for each mass spectrum, in their order; then come the traces."""
    found = list(checked.chromatograms.values())
    mass = [(name, interface.position_of(name)) for name in checked.spectra if MZ in checked.spectra[name]]
    if mass:
        total = found.pop(0)
        times = [float(checked.times[name] or 'nan') for name, _ in mass]
        require(same(total[TIME], times), 'the times of the total ion current')
        intensities = [interface.total[function][scan - 1] for _, (function, scan) in mass]
        require(same(total[INTENSITY], intensities), 'the total ion current')
    require(len(found) == len(interface.traces), f'{len(found)} traces')
    for number, (trace, (times, intensities)) in enumerate(zip(found, interface.traces), 1):
        require(same(trace[TIME], times) and same(trace[INTENSITY], intensities), f'trace {number}')


def compare_with_pymzml(file, checked, interface):
    read = []
    for spectrum in pymzml.run.Reader(str(file)):
        read.append(spectrum.element.get('id'))
        if spectrum['MS:1000804'] is None:  # an electromagnetic radiation spectrum
            masses, intensities = interface.mass[interface.position_of(read[-1])]
            require(same(spectrum.mz, masses) and same(spectrum.i, intensities), f'pymzml reads another {read[-1]}')
    require(read == list(checked.spectra), f'pymzml reads {len(read)} of {len(checked.spectra)} spectra, or others')


def compare_with_printed(zrml, source, interface):
    scans = {}
    for function, scan in interface.mass:
        scans.setdefault(function, []).append(scan)
    for function, numbers in scans.items():
        for scan in {*numbers[:PRINTED], *numbers[-PRINTED:]}:
            label = interface.labels()[function]
            output = run(zrml, 'spectrum', source, '--function', label, '--scan', scan)
            rows = [row.split('\t') for row in output.split('m/z\tintensity\n', 1)[1].splitlines()]
            masses, intensities = interface.mass[function, scan]
            require(same([float(row[0]) for row in rows], masses), f'printed masses of {function}, {scan}')
            require(same([float(row[1]) for row in rows], intensities), f'printed intensities of {function}, {scan}')


def compare_with_rows(zrml, source, checked, interface):
    """Every point of every mass spectrum, in order, is a row of the TSV file, and that of its compressed form."""
    output = printed_bytes(zrml, 'convert', source, '--stdout', '--format', 'tsv')
    packed = printed_bytes(zrml, 'convert', source, '--stdout', '--format', 'tsv', '--gzip')
    require(gzip.decompress(packed) == output, 'gzip')
    header, _, body = output.decode().partition('\n')
    width = header.count('\t') + 1
    cells = body.replace('\n', '\t').split('\t')[:-1]
    rows = body.count('\n')
    require(len(cells) == rows * width, f'{len(cells)} cells in {rows} rows')
    owners = list(zip(cells[0::width], cells[1::width]))
    masses, intensities = (list(map(float, cells[column::width])) for column in (3, 4))
    labels = interface.labels()
    at = 0
    for name, arrays in checked.spectra.items():
        if MZ not in arrays:
            continue
        function, scan = interface.position_of(name)
        own = slice(at, at + len(arrays[MZ]))
        at = own.stop
        require(set(owners[own]) <= {(labels[function], str(scan))}, f'rows of others in place of {name}')
        require(same(masses[own], arrays[MZ]), f'masses in the rows of {name}')
        require(same(intensities[own], arrays[INTENSITY]), f'intensities in the rows of {name}')
    require(at == rows, f'{at} of {rows} rows belong to spectra')


def convert(zrml, source, folder, *options):
    shutil.rmtree(folder, ignore_errors=True)
    name = run(zrml, 'convert', source, '-o', folder, *options).strip()
    require(pathlib.Path(name).parent == folder, f'the file is {name}')
    return pathlib.Path(name)


def have_others_read(file, checked, interface):
    check_with_openms(file, len(checked.spectra), len(checked.chromatograms))
    compare_with_pymzml(file, checked, interface)


def check_excerpt(zrml, source, work, whole, interface):
    """Of a long file others read some spectra, in a file of their own. They have the same arrays in the whole file."""
    file = convert(zrml, source, work / 'excerpt', '--scans', f'{EXCERPT[0]}-{EXCERPT[-1]}')
    checked = mzml_file.CheckedFile(file.read_bytes())
    require([parts_of(name)[2] for name in checked.spectra] == list(EXCERPT), 'the scans of the excerpt')
    for name, arrays in checked.spectra.items():
        require(arrays == whole.spectra[name], f'{name} in the excerpt')
    have_others_read(file, checked, interface)


def check_conversion(zrml, numbers, source, work):
    interface = Interface(numbers, zrml, source)
    is_long = len(interface.mass) > LONG
    stride = STRIDE if is_long else 1
    file = convert(zrml, source, work / 'one', '--threads', 1)
    data = file.read_bytes()
    for threads in (2, 3):
        other = convert(zrml, source, work / 'more', '--threads', threads)
        require(other.read_bytes() == data, f'{threads} threads change the file')
    checked = mzml_file.CheckedFile(data, stride=stride)
    interface.name_functions(checked)
    compare_spectra(checked, interface)
    compare_chromatograms(checked, interface)
    if is_long:
        check_excerpt(zrml, source, work, checked, interface)
    else:
        have_others_read(file, checked, interface)
    plain = mzml_file.CheckedFile(printed_bytes(zrml, 'convert', source, '--stdout', '--no-zlib'), False, stride)
    compare_spectra(plain, interface)
    compare_chromatograms(plain, interface)
    compare_with_printed(zrml, source, interface)
    compare_with_rows(zrml, source, checked, interface)
    print(f'{source}: {len(checked.spectra)} spectra, {len(checked.chromatograms)} chromatograms')


def main(zrml, numbers, work, *sources):
    gc.disable()  # a million small objects, and none to be collected
    for source in sources:
        try:
            check_conversion(zrml, numbers, source, pathlib.Path(work) / pathlib.Path(source).stem)
        except Exception as error:
            raise AssertionError(f'{source}: {error!r}') from error


if __name__ == '__main__':
    main(*sys.argv[1:])
