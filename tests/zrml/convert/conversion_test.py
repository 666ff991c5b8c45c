"""conversion_test.py ZRML SOURCE WORK: converts SOURCE to mzML and has others judge the result.

The file is checked by mzml_file.py, by OpenMS (schema, vocabulary, index) and read back by pymzml, whose numbers must
be those that `zrml spectrum` prints. It must be the same whatever the number of threads.
"""
import gzip
import math
import pathlib
import re
import shutil
import subprocess
import sys

import mzml_file
import pymzml

MOST_COMPARED = 2500  # spectra; of longer runs every 500th is compared


def run(*arguments):
    done = subprocess.run([str(a) for a in arguments], capture_output=True)
    output = (done.stdout + done.stderr).decode('utf-8', 'replace')
    mzml_file.require(done.returncode == 0, f'{arguments[0]} ended with {done.returncode}: {output[-2000:]}')
    return output


def convert(zrml, source, folder, *options):
    shutil.rmtree(folder, ignore_errors=True)
    name = run(zrml, 'convert', source, '-o', folder, *options).strip()
    mzml_file.require(pathlib.Path(name).parent == folder, f'the file is {name}')
    return pathlib.Path(name)


def check_with_openms(file, spectra, chromatograms):
    output = run('FileInfo', '-in', file, '-v')
    mzml_file.require('the file is valid!' in output and 'the file is semantically valid!' in output, output)
    mzml_file.require('Warning' not in output, output)
    done = subprocess.run(['FileInfo', '-in', str(file), '-i'], capture_output=True)
    output = (done.stdout + done.stderr).decode('utf-8', 'replace')
    wanted = f'Found a valid indexed mzML XML File with {spectra} spectra and {chromatograms} chromatograms.'
    if spectra == chromatograms == 0:
        wanted = 'Could not find element indexListOffset'  # a file of nothing has no index
    mzml_file.require(wanted in output, output)


def printed_points(zrml, source, native_id):
    function, scan = re.fullmatch(r'function=(\d+) process=0 scan=(\d+)', native_id).groups()
    output = run(zrml, 'spectrum', source, '--function', function, '--scan', scan)
    rows = output.split('m/z\tintensity\n', 1)[1].splitlines()
    pairs = [tuple(map(float, row.split('\t'))) for row in rows]
    return [mass for mass, _ in pairs], [intensity for _, intensity in pairs]


def same(a, b):
    return len(a) == len(b) and all(x == y or (math.isnan(x) and math.isnan(y)) for x, y in zip(a, b))


def compare_with_printed(zrml, source, file, count):
    stride = 1 if count <= MOST_COMPARED else 500
    read = 0
    for number, spectrum in enumerate(pymzml.run.Reader(str(file))):
        read += 1
        native_id = spectrum.element.get('id')
        if number % stride and number < count - 2 or spectrum['MS:1000804'] is not None:
            continue
        masses, intensities = printed_points(zrml, source, native_id)
        mzml_file.require(same(list(map(float, spectrum.mz)), masses), f'masses of {native_id}')
        mzml_file.require(same(list(map(float, spectrum.i)), intensities), f'intensities of {native_id}')
    mzml_file.require(read == count, f'{read} of {count} spectra are read back')


def compare_with_rows(zrml, source, mzml):
    """Every point of every mass spectrum, in order, is a row of the TSV file, and that of its compressed form."""
    output = subprocess.run([zrml, 'convert', source, '--stdout', '--format', 'tsv'], capture_output=True).stdout
    packed = subprocess.run([zrml, 'convert', source, '--stdout', '--format', 'tsv', '--gzip'], capture_output=True)
    mzml_file.require(gzip.decompress(packed.stdout) == output, 'gzip')
    rows = (tuple(line.split('\t')) for line in output.decode().splitlines()[1:])
    for spectrum in mzml.iter(mzml_file.NAMESPACE + 'spectrum'):
        arrays = mzml_file.arrays_of(spectrum)
        function, scan = re.fullmatch(r'function=(\d+) process=0 scan=(\d+)', spectrum.get('id')).groups()
        points = zip(arrays.get(mzml_file.MZ, []), arrays.get(mzml_file.INTENSITY, []))
        for mass, intensity in points:
            row = next(rows)
            mzml_file.require(row[:2] == (function, scan) and same([float(row[3]), float(row[4])], [mass, intensity]),
                              f'row {row}')
    mzml_file.require(next(rows, None) is None, 'rows without a spectrum')


def main(zrml, source, work):
    work = pathlib.Path(work)
    file = convert(zrml, source, work / 'one', '--threads', 1)
    data = file.read_bytes()
    for threads in (2, 3):
        other = convert(zrml, source, work / 'more', '--threads', threads)
        mzml_file.require(other.read_bytes() == data, f'{threads} threads change the file')
    mzml = mzml_file.check(data)
    spectra = len(list(mzml.iter(mzml_file.NAMESPACE + 'spectrum')))
    chromatograms = len(list(mzml.iter(mzml_file.NAMESPACE + 'chromatogram')))
    check_with_openms(file, spectra, chromatograms)
    compare_with_printed(zrml, source, file, spectra)
    plain = subprocess.run([zrml, 'convert', source, '--stdout', '--no-zlib'], capture_output=True, check=True)
    mzml_file.check(plain.stdout, indexed=False)
    compare_with_rows(zrml, source, mzml)
    print(f'{spectra} spectra, {chromatograms} chromatograms')


if __name__ == '__main__':
    main(*sys.argv[1:])
