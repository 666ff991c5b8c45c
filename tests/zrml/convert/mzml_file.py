"""Checks an mzML file as text: its index, its checksum, and the rules that its elements keep.

Nothing here knows how the file was made: offsets, lengths and the checksum are worked out again.
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
                  'MS:1000804'}
REPRESENTATIONS = {'MS:1000127', 'MS:1000128'}
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


def array_of(element, length):
    """The accession of a binaryDataArray's content, and its numbers."""
    found = terms(element)
    precision = [t for t in found if t in (SINGLE, DOUBLE)]
    compression = [t for t in found if t in (ZLIB, PLAIN)]
    kind = [t for t in found if t not in (SINGLE, DOUBLE, ZLIB, PLAIN)]
    require(len(precision) == len(compression) == len(kind) == 1, f'an array is of {found}')
    text = element.find(NAMESPACE + 'binary').text or ''
    require(int(element.get('encodedLength')) == len(text), 'encodedLength')
    data = base64.b64decode(text, validate=True)
    if compression[0] == ZLIB:
        data = zlib.decompress(data)
    code, size = ('f', 4) if precision[0] == SINGLE else ('d', 8)
    require(len(data) == size * length, 'defaultArrayLength')
    return kind[0], list(struct.unpack(f'<{length}{code}', data))


def arrays_of(element):
    length = int(element.get('defaultArrayLength'))
    arrays = element.find(NAMESPACE + 'binaryDataArrayList')
    found = dict(array_of(a, length) for a in arrays)
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
    ids = [e.get('id') for e in elements]
    require(len(set(ids)) == len(ids), f'{item} ids')
    return ids


def check_ids(mzml):
    """Those of the type xs:ID: unique in the document."""
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


def check(data, indexed=True):
    """Checks the bytes of a file and returns its mzML element."""
    root = ElementTree.fromstring(data)
    mzml = root.find(NAMESPACE + 'mzML') if root.tag == NAMESPACE + 'indexedmzML' else root
    require(mzml.tag == NAMESPACE + 'mzML', 'root element')
    run = mzml.find(NAMESPACE + 'run')
    ids = {'spectrum': check_list(run, 'spectrumList', 'spectrum'),
           'chromatogram': check_list(run, 'chromatogramList', 'chromatogram')}
    require((root is not mzml) == (indexed and any(ids.values())), 'indexed as wanted, where there is anything')
    check_ids(mzml)
    for source in mzml.iter(NAMESPACE + 'sourceFile'):
        require(re.fullmatch(r"file:///[A-Za-z0-9/._~:%-]*", source.get('location')), 'location')
    for spectrum in run.iter(NAMESPACE + 'spectrum'):
        check_spectrum(spectrum)
        arrays_of(spectrum)
    for chromatogram in run.iter(NAMESPACE + 'chromatogram'):
        arrays_of(chromatogram)
    if root is not mzml:
        check_index(data, root, ids)
    return mzml
