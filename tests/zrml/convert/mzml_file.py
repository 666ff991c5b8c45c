"""Checks an mzML file as text: its index, its checksum, and the rules for its elements.

Nothing here knows how the file was made: offsets, lengths and the checksum are computed again.
"""
import base64
import hashlib
import re
import struct
import xml.etree.ElementTree as ElementTree
import zlib

NAMESPACE = '{http://psi.hupo.org/ms/mzml}'
SINGLE, DOUBLE = 'MS:1000521', 'MS:1000523'
ZLIB, PLAIN = 'MS:1000574', 'MS:1000576'
MZ, INTENSITY, TIME, WAVELENGTH = 'MS:1000514', 'MS:1000515', 'MS:1000595', 'MS:1000617'
SPECTRUM_TYPES = {'MS:1000579', 'MS:1000580', 'MS:1000341', 'MS:1000326', 'MS:1000325', 'MS:1000582', 'MS:1000583',
                  'MS:1000294', 'MS:1000804'}
REPRESENTATIONS = {'MS:1000127', 'MS:1000128', 'MS:1000525'}
NCNAME = re.compile(r'[A-Za-z_][A-Za-z0-9_.\-]*')


def require(condition, what):
    if not condition:
        raise AssertionError(what)


def terms(element):
    return [p.get('accession') for p in element.findall(NAMESPACE + 'cvParam')]


def value(element, accession):
    for param in element.findall(NAMESPACE + 'cvParam'):
        if param.get('accession') == accession:
            return param.get('value')
    return None


def user_values(element):
    return {p.get('name'): p.get('value') for p in element.findall(NAMESPACE + 'userParam')}


def numbers_of(found, text, encoded_length, length):
    """The accession of an array's content, and its numbers, from its terms and its text."""
    precision = [t for t in found if t in (SINGLE, DOUBLE)]
    compression = [t for t in found if t in (ZLIB, PLAIN)]
    kind = [t for t in found if t not in (SINGLE, DOUBLE, ZLIB, PLAIN)]
    require(len(precision) == len(compression) == len(kind) == 1, f'an array is of {found}')
    require(int(encoded_length) == len(text), 'encodedLength')
    data = base64.b64decode(text, validate=True)
    if compression[0] == ZLIB:
        data = zlib.decompress(data)
    code, size = ('f', 4) if precision[0] == SINGLE else ('d', 8)
    require(len(data) == size * length, 'defaultArrayLength')
    return kind[0], list(struct.unpack(f'<{length}{code}', data))


def arrays_of(element):
    length = int(element.get('defaultArrayLength'))
    arrays = element.find(NAMESPACE + 'binaryDataArrayList')
    found = dict(numbers_of(terms(a), a.find(NAMESPACE + 'binary').text or '', a.get('encodedLength'), length)
                 for a in arrays)
    require(int(arrays.get('count')) == len(arrays) == len(found), 'binaryDataArrayList count')
    return found


def check_spectrum(spectrum):
    found = terms(spectrum)
    require(len(SPECTRUM_TYPES.intersection(found)) == 1, 'one spectrum type')
    require(len(REPRESENTATIONS.intersection(found)) == 1, 'one representation')
    require(re.fullmatch(r'\S+=\S+( \S+=\S+)*', spectrum.get('id')), 'spectrum id')
    scans = spectrum.find(NAMESPACE + 'scanList')
    require(terms(scans) == ['MS:1000795'], 'scanList')
    for precursor in spectrum.iter(NAMESPACE + 'precursor'):
        require(terms(precursor.find(NAMESPACE + 'activation')), 'activation')


def start_time(spectrum):
    return value(spectrum.find(f'{NAMESPACE}scanList/{NAMESPACE}scan'), 'MS:1000016')


class LeftOut:
    """Spectra of a long file, as text: their ids, their times and their arrays, but no elements.

    `short` is the file without those that `stride` leaves out, for a parser.
    """
    SPECTRUM = re.compile(rb'<spectrum index="(\d+)" id="([^"]*)" defaultArrayLength="(\d+)"')
    TIME = re.compile(rb' accession="MS:1000016" name="scan start time" value="([^"]*)"')
    ARRAY = re.compile(rb'<binaryDataArray encodedLength="(\d+)">\n((?:<cvParam [^>]*/>\n)*)<binary>([^<]*)</binary>')
    TERM = re.compile(rb' accession="([^"]*)"')

    def __init__(self, data, stride):
        found = list(self.SPECTRUM.finditer(data))
        starts = [m.start() for m in found] + [data.index(b'</spectrumList>')]
        self.indices = [int(m[1]) for m in found]
        self.ids = [m[2].decode() for m in found]
        self.arrays, self.times = {}, {}
        for m, name, end in zip(found, self.ids, starts[1:]):
            text = data[m.start():end]
            require(text.endswith(b'</spectrum>\n') and text.count(b'<spectrum ') == 1, f'the end of {name}')
            self.arrays[name] = dict(
                numbers_of([t.decode() for t in self.TERM.findall(params)], numbers, length, int(m[3]))
                for length, params, numbers in self.ARRAY.findall(text))
            self.times[name] = self.TIME.search(text)[1].decode()
        kept = [data[m.start():end] for m, end in zip(found, starts[1:])][::stride]
        self.short = data[:starts[0]] + b''.join(kept) + data[starts[-1]:]


def check_list(run, name, item):
    """Counts and indices of a list; the ids in order."""
    elements = run.find(NAMESPACE + name)
    if elements is None:
        return []
    require(len(elements) > 0 or name == 'spectrumList', f'{name} is empty')
    require(int(elements.get('count')) == len(elements), f'{name} count')
    for number, element in enumerate(elements):
        require(element.tag == NAMESPACE + item, item)
        require(int(element.get('index')) == number, f'{item} index')
    return [e.get('id') for e in elements]


def check_long_list(run, left_out, stride):
    elements = run.find(NAMESPACE + 'spectrumList')
    require(int(elements.get('count')) == len(left_out.ids), 'spectrumList count')
    require(left_out.indices == list(range(len(left_out.ids))), 'spectrum index')
    require([e.get('id') for e in elements] == left_out.ids[::stride], 'spectrum ids')
    return left_out.ids


def check_ids(mzml):
    """Ids of the type xs:ID: unique in the document."""
    kinds = {'cv', 'sourceFile', 'sample', 'software', 'instrumentConfiguration', 'dataProcessing', 'run'}
    found = [e.get('id') for e in mzml.iter() if e.tag.removeprefix(NAMESPACE) in kinds]
    require(all(NCNAME.fullmatch(i) for i in found), 'xs:ID')
    require(len(set(found)) == len(found), 'xs:ID twice')


def check_index(data, root, ids):
    """Offsets, their order, and the checksum, from the bytes."""
    offset = int(root.find(NAMESPACE + 'indexListOffset').text)
    require(data[offset:].startswith(b'<indexList '), 'indexListOffset')
    index_list = root.find(NAMESPACE + 'indexList')
    require(int(index_list.get('count')) == len(index_list), 'indexList count')
    wanted = {name: names for name, names in ids.items() if names}
    require([i.get('name') for i in index_list] == list(wanted), 'indexes')
    for index in index_list:
        name = index.get('name')
        require([o.get('idRef') for o in index] == wanted[name], f'{name} idRefs')
        starts = [m.start() for m in re.finditer(b'<%s index="' % name.encode(), data)]
        require([int(o.text) for o in index] == starts, f'{name} offsets')
    opening = b'<fileChecksum>'
    end = data.rindex(opening) + len(opening)
    require(root.find(NAMESPACE + 'fileChecksum').text == hashlib.sha1(data[:end]).hexdigest(), 'fileChecksum')


class CheckedFile:
    """A checked mzML file: its mzML element, and by id the arrays and times of its spectra and chromatograms."""

    def __init__(self, data, indexed=True, stride=1):
        """In a long file only one spectrum in `stride` goes to the parser; the others are checked as text."""
        left_out = LeftOut(data, stride) if stride > 1 else None
        root = ElementTree.fromstring(left_out.short if left_out else data)
        self.mzml = root.find(NAMESPACE + 'mzML') if root.tag == NAMESPACE + 'indexedmzML' else root
        require(self.mzml.tag == NAMESPACE + 'mzML', 'root element')
        run = self.mzml.find(NAMESPACE + 'run')
        spectra = check_long_list(run, left_out, stride) if left_out else check_list(run, 'spectrumList', 'spectrum')
        ids = {'spectrum': spectra, 'chromatogram': check_list(run, 'chromatogramList', 'chromatogram')}
        for name, found in ids.items():
            require(len(set(found)) == len(found), f'{name} ids')
        require((root is not self.mzml) == (indexed and any(ids.values())), 'indexed as wanted, where there is anything')
        check_ids(self.mzml)
        for source in self.mzml.iter(NAMESPACE + 'sourceFile'):
            require(re.fullmatch(r"file:///[A-Za-z0-9/._~:%-]*", source.get('location')), 'location')
        parsed = {s.get('id'): s for s in run.iter(NAMESPACE + 'spectrum')}
        for spectrum in parsed.values():
            check_spectrum(spectrum)
        self.spectra = {name: arrays_of(s) for name, s in parsed.items()}
        self.times = {name: start_time(s) for name, s in parsed.items()}
        if left_out:
            for name in parsed:
                require(self.spectra[name] == left_out.arrays[name], f'{name} differs for the parser')
            self.spectra, self.times = left_out.arrays, left_out.times
        self.chromatogram_elements = {c.get('id'): c for c in run.iter(NAMESPACE + 'chromatogram')}
        self.chromatograms = {name: arrays_of(c) for name, c in self.chromatogram_elements.items()}
        if root is not self.mzml:
            check_index(data, root, ids)
