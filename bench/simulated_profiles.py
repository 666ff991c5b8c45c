"""Profiles with known peaks, as a time-of-flight analyser of resolving power 20,000 takes them: samples evenly spaced in the square
root of m/z, ions counted, runs of zeros left out. And the two that look for the peaks: ours, and OpenMS' PeakPickerHiRes."""

import base64
import os
import re
import subprocess
import tempfile

import numpy as np

RESOLVING_POWER = 20000
SAMPLES_AT_HALF_HEIGHT = 4  # at REFERENCE_MZ
REFERENCE_MZ = 500
DEVIATION = 1 / np.sqrt(8 * np.log(2))  # of a Gaussian, in widths at half height


def axis(low, high):
    step = np.sqrt(REFERENCE_MZ) / (2 * RESOLVING_POWER * SAMPLES_AT_HALF_HEIGHT)
    return np.arange(np.sqrt(low), np.sqrt(high), step) ** 2


def tail_kernel(tail):
    """Offsets and weights of an exponential of that length, in deviations."""
    if tail == 0:
        return np.zeros(1), np.ones(1)
    offsets = np.linspace(0, 14 * tail, 561)
    weights = np.exp(-offsets / tail)
    weights[0] /= 2
    return offsets, weights / weights.sum()


def apex_of(tail):
    """Where a Gaussian of deviation 1 at 0 with that tail is highest."""
    offsets, weights = tail_kernel(tail)
    low, high = -1.0, 3.0
    for _ in range(40):
        x = np.linspace(low, high, 21)
        top = int(np.argmax((np.exp(-((x[:, None] - offsets) ** 2) / 2) * weights).sum(1)))
        low, high = x[max(top - 1, 0)], x[min(top + 1, 20)]
    return (low + high) / 2


def expected_ions(mz, centres, ions, tail=0):
    """The mean number of ions in each sample."""
    offsets, weights = tail_kernel(tail)
    mean = np.zeros_like(mz)
    for centre, count in zip(centres, ions):
        deviation = centre / RESOLVING_POWER * DEVIATION
        first, last = np.searchsorted(mz, [centre - 7 * deviation, centre + (7 + 20 * tail) * deviation])
        x = (mz[first:last] - centre) / deviation
        shape = (np.exp(-((x[:, None] - offsets) ** 2) / 2) * weights).sum(1)
        mean[first:last] += count * shape / max(shape.sum(), 1e-300)
    return mean


def stored(mz, intensities):
    """Without the zeros that are not beside an intensity."""
    kept = intensities > 0
    beside = kept.copy()
    beside[1:] |= kept[:-1]
    beside[:-1] |= kept[1:]
    return mz[beside], intensities[beside]


def matched(truth, found):
    """For each true peak the index of the nearest centroid within half a width, each taken once, or -1."""
    taken = set()
    indices = []
    for mz in truth:
        near = np.searchsorted(found, mz)
        reach = mz / RESOLVING_POWER / 2
        near = [i for i in (near - 1, near) if 0 <= i < len(found) and i not in taken and abs(found[i] - mz) <= reach]
        best = min(near, key=lambda i: abs(found[i] - mz), default=-1)
        taken.add(best)
        indices.append(best)
    return np.array(indices)


class Score:
    def __init__(self, truth, found):
        indices = matched(truth, found)
        is_found = indices >= 0
        self.missed = 1 - is_found.mean()
        self.false = (len(found) - is_found.sum()) / len(truth)
        errors = np.abs(found[indices[is_found]] / truth[is_found] - 1) * 1e6
        self.root_mean_square = np.sqrt(np.mean(errors**2)) if len(errors) else np.nan
        self.median = np.median(errors) if len(errors) else np.nan
        self.worst = errors.max() if len(errors) else np.nan


def our_centroids(program, profiles, *options):
    """[(m/z, intensities)], and the processor seconds of the search alone."""
    data = b"".join(np.concatenate([[len(mz)], mz, intensities]).tobytes() for mz, intensities in profiles)
    output = subprocess.run([program, *options], input=data, capture_output=True, check=True).stdout
    numbers = np.frombuffer(output)
    centroids = []
    at = 0
    for _ in profiles:
        count = int(numbers[at])
        centroids.append((numbers[at + 1 : at + 1 + count], numbers[at + 1 + count : at + 1 + 2 * count]))
        at += 1 + 2 * count
    return centroids, numbers[at]


SPECTRUM = """<spectrum index="{index}" id="scan={scan}" defaultArrayLength="{count}">
<cvParam cvRef="MS" accession="MS:1000579" name="MS1 spectrum"/><cvParam cvRef="MS" accession="MS:1000511" name="ms level" value="1"/>
<cvParam cvRef="MS" accession="MS:1000128" name="profile spectrum"/>
<scanList count="1"><cvParam cvRef="MS" accession="MS:1000795" name="no combination"/><scan><cvParam cvRef="MS" \
accession="MS:1000016" name="scan start time" value="{scan}" unitCvRef="UO" unitAccession="UO:0000010" unitName="second"/></scan></scanList>
<binaryDataArrayList count="2">{arrays}</binaryDataArrayList></spectrum>
"""
ARRAY = """<binaryDataArray encodedLength="{length}"><cvParam cvRef="MS" accession="MS:1000523" name="64-bit float"/>\
<cvParam cvRef="MS" accession="MS:1000576" name="no compression"/><cvParam cvRef="MS" accession="{kind}" name="{name}"/>\
<binary>{text}</binary></binaryDataArray>"""
DOCUMENT = """<?xml version="1.0" encoding="utf-8"?>
<mzML xmlns="http://psi.hupo.org/ms/mzml" version="1.1.0"><cvList count="2">
<cv id="MS" fullName="Mass spectrometry ontology" version="4.1.30" URI="http://purl.obolibrary.org/obo/ms.obo"/>
<cv id="UO" fullName="Unit ontology" version="2020-03-10" URI="http://purl.obolibrary.org/obo/uo.obo"/></cvList>
<fileDescription><fileContent><cvParam cvRef="MS" accession="MS:1000579" name="MS1 spectrum"/></fileContent></fileDescription>
<softwareList count="1"><software id="simulation" version="1"/></softwareList>
<instrumentConfigurationList count="1"><instrumentConfiguration id="instrument"/></instrumentConfigurationList>
<dataProcessingList count="1"><dataProcessing id="made"><processingMethod order="0" softwareRef="simulation">
<cvParam cvRef="MS" accession="MS:1000544" name="Conversion to mzML"/></processingMethod></dataProcessing></dataProcessingList>
<run id="run" defaultInstrumentConfigurationRef="instrument">
<spectrumList count="{count}" defaultDataProcessingRef="made">
{spectra}</spectrumList></run></mzML>
"""


def array(values, kind, name):
    text = base64.b64encode(np.asarray(values, "<f8").tobytes()).decode()
    return ARRAY.format(length=len(text), kind=kind, name=name, text=text)


def write_mzml(path, profiles):
    spectra = []
    for index, (mz, intensities) in enumerate(profiles):
        arrays = array(mz, "MS:1000514", "m/z array") + array(intensities, "MS:1000515", "intensity array")
        spectra.append(SPECTRUM.format(index=index, scan=index + 1, count=len(mz), arrays=arrays))
    with open(path, "w") as file:
        file.write(DOCUMENT.format(count=len(spectra), spectra="".join(spectra)))


def read_mzml(path):
    with open(path) as file:
        text = file.read()
    spectra = []
    for spectrum in re.findall(r"<spectrum .*?</spectrum>", text, re.S):
        arrays = []
        for part in re.findall(r"<binaryDataArray .*?</binaryDataArray>", spectrum, re.S):
            values = base64.b64decode(re.search(r"<binary>(.*?)</binary>", part, re.S)[1])
            arrays.append(np.frombuffer(values, "<f8" if "MS:1000523" in part else "<f4").astype(float))
        spectra.append((arrays[0], arrays[1]) if arrays else (np.zeros(0), np.zeros(0)))
    return spectra


def picked_centroids(clock, profiles, runs=1):
    """Those of PeakPickerHiRes with its defaults, and the processor seconds of its search alone, the least of that many runs."""
    with tempfile.TemporaryDirectory() as folder:
        source, target = os.path.join(folder, "profiles.mzML"), os.path.join(folder, "picked.mzML")
        write_mzml(source, profiles)
        command = ["PeakPickerHiRes", "-in", source, "-out", target, "-no_progress"]
        environment = {**os.environ, "LD_PRELOAD": os.path.abspath(clock)}
        seconds = []
        for _ in range(runs):
            errors = subprocess.run(command, capture_output=True, check=True, text=True, env=environment).stderr
            seconds.append(float(re.search(r"^search: ([0-9.]+) s$", errors, re.M)[1]))
        return read_mzml(target), min(seconds)
