"""conversion_test.py ZRML NUMBERS WORK SOURCE...: converts each SOURCE to mzML and checks the result with other programs.

The file is checked by mzml_file.py, by xmllint and OpenMS (schema, vocabulary, index) and read back by pymzml, with all
that there is, and as it is when nothing is asked for. Its numbers must be those that the interface of the plug-in gives
to NUMBERS, a program of its own, that `zrml spectrum` prints, and that stand in the rows of the TSV form. It must be the
same whatever the number of threads.
"""
import gc
import gzip
import json
import pathlib
import re
import shutil
import subprocess
import sys

import mzml_file
import numpy
import pymzml
from mzml_file import INTENSITY, MZ, TIME, WAVELENGTH, require

LONG = 10000  # spectra; only a part of longer files goes through slow parsers
STRIDE = 50
EXCERPT = range(32751, 32786)  # scans of a long file, around the last that 16 bits hold
EVERYTHING = ('--absorbance', '--monitored-spectra')
SCHEMA = '/usr/share/openms/SCHEMAS/mzML_idx_1_10.xsd'
NO_UNIT = 'Error: CV term must have a unit: MS:1000515 - intensity array'
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
    """Equal; NaN equals NaN."""
    a, b = numpy.asarray(a, '<f8'), numpy.asarray(b, '<f8')
    return a.shape == b.shape and bool(((a == b) | ((a != a) & (b != b))).all())


def same_printed(printed, wanted):
    """What is single precision and not whole is printed as such, and has its other digits back when it is read as such."""
    printed, wanted = numpy.asarray(printed, '<f8'), numpy.asarray(wanted, '<f8')
    if printed.shape != wanted.shape:
        return False
    with numpy.errstate(over='ignore', invalid='ignore'):
        is_single = (wanted.astype('<f4').astype('<f8') == wanted) & (numpy.trunc(wanted) != wanted)
        return same(numpy.where(is_single, printed.astype('<f4').astype('<f8'), printed), wanted)


def output_of_openms(file, option):
    done = subprocess.run(['FileInfo', '-in', str(file), option], capture_output=True)
    return (done.stdout + done.stderr).decode('utf-8', 'replace')


def check_with_openms(file, spectra, chromatograms, has_absorbance=False):
    """Absorbance has no unit, since no file has one: OpenMS misses it, and nothing else."""
    output = output_of_openms(file, '-v')
    require('the file is valid!' in output, output)
    require('Warning' not in output, output)
    errors = {line for line in output.splitlines() if line.startswith('Error')}
    require(errors == ({NO_UNIT} if has_absorbance else set()), output)
    require(has_absorbance or 'the file is semantically valid!' in output, output)
    output = output_of_openms(file, '-i')
    wanted = f'Found a valid indexed mzML XML File with {spectra} spectra and {chromatograms} chromatograms.'
    if spectra == chromatograms == 0:
        wanted = 'Could not find element indexListOffset'  # an empty file has no index
    require(wanted in output, output)


def check_with_schema(file, is_indexed):
    schema = SCHEMA if is_indexed else SCHEMA.replace('_idx', '')
    run('xmllint', '--nonet', '--noout', '--huge', '--schema', schema, file)


class Interface:
    """The numbers that the plug-in's interface gives for a source: two lists for each function and scan, from 1.

    It numbers functions without gaps: acquired ones in the order of their numbers, then processed ones, absorbance last.
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
        """Assigns the functions of the file to those of the interface."""
        for known, array in ((self.mass, MZ), (self.absorbance, WAVELENGTH)):
            mine = sorted({function for function, _ in known})
            theirs = sorted({parts_of(name)[:2] for name, arrays in checked.spectra.items() if array in arrays})
            require(len(mine) == len(theirs), f'functions {theirs}, the interface has {mine}')
            self.functions.update(zip(theirs, mine))

    def position_of(self, native_id):
        process, function, scan = parts_of(native_id)
        return self.functions[process, function], scan

    def labels(self):
        """The functions as users name them."""
        return {mine: f'p{process}' if process else str(number) for (process, number), mine in self.functions.items()}

    def scans_of(self, function):
        return sorted(scan for own, scan in self.mass if own == function)


def parts_of(native_id):
    function, process, scan = map(int, re.fullmatch(r'function=(\d+) process=(\d+) scan=(\d+)', native_id).groups())
    return process, function, scan


def compare_spectra(checked, interface):
    wanted = {**interface.mass, **interface.absorbance}
    positions = list(map(interface.position_of, checked.spectra))
    require(sorted(positions) == sorted(wanted), 'spectra differ from those of the interface')
    times = [float(checked.times[name] or 'inf') for name in checked.spectra]  # spectra without a time come last
    order = list(zip(times, positions))
    require(order == sorted(order), 'spectra are not in order of time, function and scan')
    for position, arrays in zip(positions, checked.spectra.values()):
        x = MZ if position in interface.mass else WAVELENGTH
        require(set(arrays) == {x, INTENSITY}, f'{position} has {list(arrays)}')
        require(same(arrays[x], wanted[position][0]), f'masses or wavelengths of {position}')
        require(same(arrays[INTENSITY], wanted[position][1]), f'intensities of {position}')


def surveys_of(described):
    """Labels of the functions whose totals are that of the sample."""
    surveys = [f for f in described if f['kind'] == 'MS' and f['scanType'] == 'none']
    of_first = [f for f in surveys if f['polarity'] == surveys[0]['polarity']
                and str(f['number']).startswith('p') == str(surveys[0]['number']).startswith('p')]
    return [str(f['number']) for f in of_first]


def compare_totals(checked, interface, described, found):
    """The sample's, then that of each function, which is `found` in their order; those without scans have none."""
    labels = {label: function for function, label in interface.labels().items()}
    times = {interface.position_of(name): float(checked.times[name] or 'nan') for name in checked.spectra}
    wanted = {}
    for label in (str(f['number']) for f in described if f['scans']):
        function = labels[label]
        scans = interface.scans_of(function)
        wanted[label] = [(times[function, scan], interface.total[function][scan - 1]) for scan in scans]
    ids = ['TIC'] * any(label in wanted for label in surveys_of(described)) + [f'function {l} TIC' for l in wanted]
    require([name for name, _ in found[:len(ids)]] == ids, f'totals {[name for name, _ in found]}, not {ids}')
    points = {f'function {label} TIC': pairs for label, pairs in wanted.items()}
    together = [pair for label in surveys_of(described) for pair in wanted.get(label, [])]
    points['TIC'] = sorted(together, key=lambda pair: (pair[0] != pair[0], 0 if pair[0] != pair[0] else pair[0]))
    for name, arrays in found[:len(ids)]:
        require(same(arrays[TIME], [t for t, _ in points[name]]), f'times of {name}')
        require(same(arrays[INTENSITY], [i for _, i in points[name]]), name)
    return found[len(ids):]


def compare_channels(interface, described, found):
    """The k-th point of each scan of a function of ion monitoring, where its scans have the same masses."""
    labels = {label: function for function, label in interface.labels().items()}
    for label in (str(f['number']) for f in described if 'monitoring' in f['kind'] and f['scans']):
        points = [interface.mass[labels[label], scan] for scan in interface.scans_of(labels[label])]
        first = points[0][0]
        if not len(first) or not all(same(masses, first) for masses, _ in points):
            continue
        for channel in range(len(first)):
            name, arrays = found.pop(0)
            require(name.startswith(f'function {label} channel {channel + 1}: '), name)
            require(same(arrays[INTENSITY], [intensities[channel] for _, intensities in points]), name)
    return found


def compare_chromatograms(checked, interface, described):
    """Totals, channels of ion monitoring, traces."""
    found = list(checked.chromatograms.items())
    found = compare_totals(checked, interface, described, found)
    found = compare_channels(interface, described, found)
    require(len(found) == len(interface.traces), f'{len(found)} traces')
    for number, ((_, trace), (times, intensities)) in enumerate(zip(found, interface.traces), 1):
        require(same(trace[TIME], times) and same(trace[INTENSITY], intensities), f'trace {number}')


def compare_with_pymzml(file, checked, interface):
    read = []
    for spectrum in pymzml.run.Reader(str(file)):
        read.append(spectrum.element.get('id'))
        if spectrum['MS:1000804'] is None:  # an electromagnetic radiation spectrum
            masses, intensities = interface.mass[interface.position_of(read[-1])]
            require(same(spectrum.mz, masses) and same(spectrum.i, intensities), f'pymzml reads a different {read[-1]}')
    require(read == list(checked.spectra), f'pymzml reads {len(read)} of {len(checked.spectra)} spectra, or different ones')


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
            require(same_printed([float(row[0]) for row in rows], masses), f'printed masses of {function}, {scan}')
            require(same_printed([float(row[1]) for row in rows], intensities), f'printed intensities of {function}, {scan}')


def compare_with_rows(zrml, source, checked, interface):
    """Every point of every mass spectrum, in order, is a row of the TSV file and of its compressed form."""
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
        require(same_printed(masses[own], arrays[MZ]), f'masses in the rows of {name}')
        require(same_printed(intensities[own], arrays[INTENSITY]), f'intensities in the rows of {name}')
    require(at == rows, f'{at} of {rows} rows belong to spectra')


def convert(zrml, source, folder, *options):
    shutil.rmtree(folder, ignore_errors=True)
    done = subprocess.run([str(a) for a in (zrml, 'convert', source, '-o', folder, *options)], capture_output=True)
    require(done.returncode == 0, f'{source}: {done.stderr}')
    file = pathlib.Path(done.stdout.decode().strip())
    require(file.parent == folder, f'the file is {file}')
    return file


def have_others_read(file, checked, interface):
    has_absorbance = any(WAVELENGTH in arrays for arrays in checked.spectra.values())
    check_with_openms(file, len(checked.spectra), len(checked.chromatograms), has_absorbance)
    check_with_schema(file, bool(checked.spectra or checked.chromatograms))
    compare_with_pymzml(file, checked, interface)


def check_default(zrml, source, work, whole, interface, *options):
    """What is written when nothing is asked for: a part of the whole, and mass spectra alone, unless there are none."""
    file = convert(zrml, source, work / 'default', *options)
    checked = mzml_file.CheckedFile(file.read_bytes())
    for name, arrays in checked.spectra.items():
        wanted = whole.spectra[name]
        require(list(arrays) == list(wanted) and all(same(arrays[a], wanted[a]) for a in wanted), f'{name} by default')
    has_mass = any(MZ in arrays for arrays in whole.spectra.values())
    require(all((MZ in arrays) == has_mass for arrays in checked.spectra.values()), 'spectra of two kinds')
    with_spectra = {interface.labels()[interface.position_of(name)[0]] for name in checked.spectra}
    with_channels = {name.split()[1] for name in checked.chromatograms if ' channel ' in name}
    require(not with_spectra & with_channels, f'spectra of channels of {with_spectra & with_channels}')
    have_others_read(file, checked, interface)
    return checked


def check_excerpt(zrml, source, work, whole, interface):
    """Of a long file others read some spectra, in a file of their own. They have the same arrays in the whole file."""
    checked = check_default(zrml, source, work, whole, interface, '--scans', f'{EXCERPT[0]}-{EXCERPT[-1]}')
    require([parts_of(name)[2] for name in checked.spectra] == list(EXCERPT), 'the scans of the excerpt')


def check_conversion(zrml, numbers, source, work):
    interface = Interface(numbers, zrml, source)
    described = json.loads(printed_bytes(zrml, 'info', '--json', source))['samples'][0]['functions']
    is_long = len(interface.mass) > LONG
    stride = STRIDE if is_long else 1
    file = convert(zrml, source, work / 'one', '--threads', 1, *EVERYTHING)
    data = file.read_bytes()
    for threads in (2, 3):
        other = convert(zrml, source, work / 'more', '--threads', threads, *EVERYTHING)
        require(other.read_bytes() == data, f'{threads} threads change the file')
    checked = mzml_file.CheckedFile(data, stride=stride)
    interface.name_functions(checked)
    compare_spectra(checked, interface)
    compare_chromatograms(checked, interface, described)
    if is_long:
        check_excerpt(zrml, source, work, checked, interface)
    else:
        have_others_read(file, checked, interface)
        check_default(zrml, source, work, checked, interface)
    plain = mzml_file.CheckedFile(
        printed_bytes(zrml, 'convert', source, '--stdout', '--no-zlib', *EVERYTHING), False, stride)
    compare_spectra(plain, interface)
    compare_chromatograms(plain, interface, described)
    compare_with_printed(zrml, source, interface)
    compare_with_rows(zrml, source, checked, interface)
    print(f'{source}: {len(checked.spectra)} spectra, {len(checked.chromatograms)} chromatograms')


def main(zrml, numbers, work, *sources):
    gc.disable()  # a million small objects, none of them garbage
    for source in sources:
        try:
            check_conversion(zrml, numbers, source, pathlib.Path(work) / pathlib.Path(source).stem)
        except Exception as error:
            raise AssertionError(f'{source}: {error!r}') from error


if __name__ == '__main__':
    main(*sys.argv[1:])
