"""quality_test.py ZRML REFERENCES WORK REPORT SOURCE...: what `zrml qc` writes, judged by other programs.

The mzQC file must fit the schema, and its terms the vocabulary, both in REFERENCES. Each metric is computed again from the
mzML form of each SOURCE, which pymzML reads. The REPORT has two samples. MultiQC must find the runs in its files. The page
must be well-formed, load nothing and run nothing.
"""
import html.parser
import json
import pathlib
import re
import shutil
import subprocess
import sys

import jsonschema
import numpy
import pymzml
import rfc3987  # with which jsonschema checks URIs
from mzml_file import require

LOCK_MASS = '556.2766'
TERMS_OF_MZML = {'MS:1000526': 'Waters raw format', 'MS:1001369': 'text format',
                 'MS:1000799': 'custom unreleased software tool'}  # what the vocabulary's excerpt lacks
PROFILE = 'MS:1000128'
PAGE_TAGS = {'html', 'head', 'meta', 'title', 'style', 'body', 'h1', 'h2', 'p', 'div', 'figure', 'figcaption', 'svg', 'line',
             'text', 'a', 'circle', 'polyline', 'table', 'tr', 'th', 'td', 'section', 'span', 'ul', 'li'}


def run(*arguments, status=0):
    done = subprocess.run([str(a) for a in arguments], capture_output=True)
    require(done.returncode == status, f'{arguments} ended with {done.returncode}: {done.stderr[-2000:]}')
    return done.stdout


def known_terms(references):
    """Names by accession: of the terms, and of those that they refer to as their units."""
    text = (references / 'psi-ms-terms.obo').read_text()
    terms = dict(re.findall(r'^id: (\S+)\nname: *(.+)$', text, re.M))
    terms.update(re.findall(r'^relationship: has_units (\S+) ! (.+)$', text, re.M))
    units = {}
    for block in text.split('[Term]\n')[1:]:
        units[re.search(r'^id: (\S+)', block).group(1)] = re.findall(r'has_units (\S+)', block)
    return terms, units


def check_terms(mzqc, references):
    terms, units = known_terms(references)
    for described in mzqc['mzQC']['runQualities']:
        for metric in described['qualityMetrics']:
            require(terms.get(metric['accession']) == metric['name'], f'{metric} is no term')
            unit = metric.get('unit')
            own = units[metric['accession']]
            require([unit['accession']] * bool(unit) == own if unit else not own, f'the unit of {metric} is {own}')
            require(unit is None or terms[unit['accession']] == unit['name'], f'{unit}')
        others = [i['fileFormat'] for i in described['metadata']['inputFiles']] + described['metadata']['analysisSoftware']
        require(all(TERMS_OF_MZML[other['accession']] == other['name'] for other in others), f'{others}')


def check_mzqc(file, references):
    mzqc = json.loads(file.read_text())
    schema = json.loads((references / 'mzqc_schema.json').read_text())
    jsonschema.Draft7Validator(schema, format_checker=jsonschema.draft7_format_checker).validate(mzqc)
    require(re.fullmatch(r'\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ', mzqc['mzQC']['creationDate']), 'creationDate')
    inputs = [i for r in mzqc['mzQC']['runQualities'] for i in r['metadata']['inputFiles']]
    for key in ('name', 'location'):
        require(len({i[key] for i in inputs}) == len(inputs), f'each {key} once: {inputs}')
    require(all(i['location'].count('/') == 3 and rfc3987.match(i['location'], 'URI') for i in inputs), f'{inputs}')
    check_terms(mzqc, references)
    return mzqc


class Spectra:
    """Those of a converted file, by time."""

    def __init__(self, file):
        read = []
        for spectrum in pymzml.run.Reader(str(file)):
            intensities = numpy.asarray(spectrum.i, float)
            precursors = [p['mz'] for p in spectrum.selected_precursors or []]
            read.append((60 * float(spectrum.scan_time_in_minutes()), spectrum.ms_level, intensities.sum(),
                         intensities.max(initial=0), len(intensities), spectrum[PROFILE] is not None, precursors))
        self.t, self.level, self.tic, self.base, self.points, self.profile = (numpy.array(c) for c in list(zip(*read))[:6])
        self.precursors = [mz for row in read for mz in row[6]]

    def of(self, level):
        return self.t[self.level == level], self.tic[self.level == level]


def area(t, tic):
    return float(numpy.trapz(tic, t)) if len(t) > 1 and t[-1] > t[0] else None


def area_between(t, tic, low, high):
    """The same from an antiderivative: that of each segment is a parabola."""
    total = 0
    for i in numpy.flatnonzero(numpy.diff(t) > 0):
        slope = (tic[i + 1] - tic[i]) / (t[i + 1] - t[i])
        from_start = numpy.clip([low, high], t[i], t[i + 1]) - t[i]
        total += numpy.diff(tic[i] * from_start + slope * from_start ** 2 / 2)[0]
    return float(total)


def accumulated(t, tic):
    """Where the sums reach the quarters; sums are of whole numbers, which are exact."""
    sums = numpy.cumsum(tic)
    return [t[numpy.searchsorted(sums, sums[-1] * k / 4)] for k in (1, 2, 3, 4)]


def ratios(values):
    steps = [*numpy.quantile(values, (0.25, 0.5, 0.75)), max(values)]
    with numpy.errstate(all='ignore'):
        found = numpy.log2(numpy.divide(steps[1:], steps[:-1]))
    return list(found) if numpy.isfinite(found).all() else None


def metrics_of(spectra, chromatograms):
    """By accession; None for what the run lacks."""
    first, last = spectra.t[0], spectra.t[-1]
    length = last - first
    edges = numpy.linspace(first, last, 5)
    (t1, tic1), (t2, tic2) = spectra.of(1), spectra.of(2)

    def frequencies(t):
        return length and [n / (length / 4) for n in numpy.histogram(t, edges)[0]]

    def fractions(start, times):
        return length and list(numpy.diff([start, *times]) / length)

    def event_fractions(t):
        return fractions(t[0], [t[-(-k * len(t) // 4) - 1] for k in (1, 2, 3, 4)]) if len(t) else None

    def tic_minutes(t, tic):
        return [(x - first) / 60 for x in accumulated(t, tic)[:3]] if len(t) and tic.sum() > 0 else None

    def density(level):
        own = spectra.level == level
        if not own.any() or spectra.profile[own].any():
            return None
        return list(numpy.quantile(spectra.points[own], (0.25, 0.5, 0.75), method='inverted_cdf'))

    area1, area2 = area(t1, tic1), area(t2, tic2)
    metrics = {
        'MS:4000067': length, 'MS:4000053': length, 'MS:4000070': [first, last],
        'MS:4000069': [min(spectra.precursors), max(spectra.precursors)] if spectra.precursors else None,
        'MS:4000059': len(t1), 'MS:4000060': len(t2), 'MS:4000071': chromatograms,
        'MS:4000099': int((tic1 == 0).sum()), 'MS:4000100': int((tic2 == 0).sum()),
        'MS:4000097': int((tic1[1:] > 10 * tic1[:-1]).sum()), 'MS:4000098': int((tic1[:-1] > 10 * tic1[1:]).sum()),
        'MS:4000155': area(spectra.t, spectra.tic), 'MS:4000029': area1, 'MS:4000030': area2,
        'MS:4000031': area1 / area2 if area1 is not None and area2 else None,
        'MS:4000156': length and [area_between(spectra.t, spectra.tic, *edges[k:k + 2]) for k in range(4)],
        'MS:4000183': fractions(first, accumulated(spectra.t, spectra.tic)),
        'MS:4000184': event_fractions(t1), 'MS:4000185': event_fractions(t2),
        'MS:4000190': tic_minutes(t1, tic1), 'MS:4000191': tic_minutes(t2, tic2),
        'MS:4000187': ratios(tic1) if len(t1) else None,
        'MS:4000186': ratios(numpy.abs(numpy.diff(tic1))) if len(t1) > 1 else None,
        'MS:4000192': float(numpy.median(numpy.diff(t1))) if len(t1) > 1 else None,
        'MS:4000106': frequencies(t1), 'MS:4000107': frequencies(t2),
        'MS:4000061': density(1), 'MS:4000062': density(2),
        'MS:4000202': spectra.base.max(), 'MS:4000204': spectra.tic.max(),
    }
    if length == 0:  # one moment has no parts
        metrics.update(dict.fromkeys(('MS:4000156', 'MS:4000183', 'MS:4000184', 'MS:4000185', 'MS:4000106', 'MS:4000107')))
    return metrics


def recorded_chromatograms(zrml, source, work):
    """All of the converted file but the totals."""
    whole = work / 'whole.mzML'
    run(zrml, 'convert', source, '--force', '-b', whole)
    names = re.findall(r'<chromatogram [^>]*id="([^"]*)"', whole.read_text())
    return sum(not re.fullmatch(r'(function \S+ )?TIC', name) for name in names)


def compare_with_mzml(zrml, source, metrics, work):
    converted = work / 'run.mzML'
    run(zrml, 'convert', source, '--exclude-lock-mass', '--function', '1-', '--force', '-b', converted)
    wanted = metrics_of(Spectra(converted), recorded_chromatograms(zrml, source, work))
    found = {metric['accession']: metric['value'] for metric in metrics}
    require(set(found) == {name for name, value in wanted.items() if value is not None}, f'{source}: {sorted(found)}')
    for name, value in found.items():
        require(numpy.allclose(value, wanted[name], rtol=1e-9, atol=1e-9), f'{source}: {name} is {value}, not {wanted[name]}')


def rows_of(table):
    titles, *rows = (line.split('\t') for line in table.read_text().splitlines())
    return [dict(zip(titles, row)) for row in rows]


def check_multiqc(folder, rows, work):
    run('multiqc', '-q', '-f', folder, '-o', work)
    data = json.loads((work / 'multiqc_data' / 'multiqc_data.json').read_text())
    found = data['report_saved_raw_data']['multiqc_zrml_qc_table']
    require(len(found) == len(rows), f'MultiQC finds {list(found)}')
    for row in rows:
        if row['run'] in found:  # MultiQC cleans the ends of names
            own = found[row['run']]
            require(own['state'] == row['state'] and float(own['ms1Spectra']) == float(row['ms1Spectra']), f'{own}')
    require('sample' in found, f'{list(found)}')
    curves = {c['name']: c['data'] for c in data['report_plot_data']['zrml_tic_plot']['datasets'][0]}
    highest = max(intensity for _, intensity in curves['sample'])
    require(highest == max(float(r['ticMaximum']) for r in rows if r['run'] == 'sample'), f'{highest}')
    course = {c['name']: c['data'] for c in data['report_plot_data']['zrml_lock_mass_plot']['datasets'][0]}
    require(len(course['sample']) == 30, f'{course}')


class Page(html.parser.HTMLParser):
    """Fails at anything that loads, runs, or does not close."""

    def __init__(self):
        super().__init__()
        self.open, self.anchors, self.links, self.text = [], set(), [], ''

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        require(tag in PAGE_TAGS, f'<{tag}>')
        require(not any(name.startswith('on') or name in ('src', 'style') for name in attributes), f'{tag} {attributes}')
        self.anchors.add(attributes.get('id'))
        if 'href' in attributes:
            self.links.append(attributes['href'])
        if tag not in ('meta', 'line', 'circle', 'polyline'):
            self.open.append(tag)

    def handle_endtag(self, tag):
        if tag not in ('line', 'circle', 'polyline'):
            require(self.open.pop() == tag, f'</{tag}>')

    def handle_data(self, data):
        self.text += data


def check_page(file, rows):
    page = Page()
    page.feed(file.read_text())
    page.close()
    require(not page.open, f'{page.open} are open')
    require(all(link[0] == '#' and link[1:] in page.anchors for link in page.links), f'{page.links}')
    require(all(row['run'] in page.text for row in rows), 'runs are missing on the page')


def main(zrml, references, work, report, *sources):
    shutil.rmtree(work, ignore_errors=True)
    work.mkdir(parents=True)
    for source in sources:
        file = work / 'one.mzQC'
        run(zrml, 'qc', source, '--force', '-b', file)
        metrics = check_mzqc(file, references)['mzQC']['runQualities'][0]['qualityMetrics']
        compare_with_mzml(zrml, source, metrics, work)
    odd = work / '<i>a&b' / sources[0].name  # the same name once more
    odd.parent.mkdir()
    shutil.copytree(sources[0], odd)
    shutil.copytree(sources[0], work / '<b onclick=x>".raw')
    many = [*sources, odd, work / '<b onclick=x>".raw', report]
    runs = len(many) + 1
    run(zrml, 'qc', *many, '-b', work / 'all.mzQC', '--tsv', work / 'all.tsv', '--html', work / 'all.html', '--multiqc',
        work / 'files', '--lock-mass', LOCK_MASS)
    rows = rows_of(work / 'all.tsv')
    require(len(rows) == runs and len({row['run'] for row in rows}) == runs, f'{rows}')
    require(len(check_mzqc(work / 'all.mzQC', references)['mzQC']['runQualities']) == runs, 'runs of mzQC')
    check_multiqc(work / 'files', rows, work)
    check_page(work / 'all.html', rows)


main(*map(pathlib.Path, sys.argv[1:]))
