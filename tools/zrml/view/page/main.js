// The page: loads the runs, makes the panels of the sample that is shown, and passes on what changes.
import { el, button, legendKey, replace, visible } from './dom.js';
import { AbsorbancePanel } from './absorbance.js';
import { Chromatograms } from './chromatograms.js';
import { DriftPanel } from './drift.js';
import { functionPanel, header, sampleColour, samplePanel, showFindings } from './contents.js';
import { MapPanel } from './maps.js';
import { SpectrumPanel } from './spectrum.js';
import { TracePanel } from './traces.js';
import { runColours } from './look.js';
import { ask, countRuns, isLive, useRun } from './store.js';
import { nothingChosen, onState, setState, startState, state } from './state.js';

/** @typedef {import('./contents.js').Run} Run */
/** @typedef {import('./contents.js').Sample} Sample */

class Page {
  constructor() {
    this.root = /** @type {HTMLElement} */ (document.getElementById('page'));
    /** @type {({run: Run|null, error: string})[]} */
    this.runs = [];
  }

  async start() {
    startState();
    onState((_state, before) => this.update(before));
    try {
      const count = await countRuns();
      this.runs = await Promise.all(Array.from({ length: count }, (_each, i) => this.#open(i)));
      await this.#build();
    } catch (error) {
      this.#fail(error);
    }
  }

  /** @param {unknown} error */
  #fail(error) {
    replace(this.root, fault(error));
  }

  // One that cannot be opened does not keep the others from being shown.
  /** @param {number} index */
  async #open(index) {
    try {
      return { run: /** @type {Run} */ ((await ask('run', {}, { run: index })).facts), error: '' };
    } catch (error) {
      if (this.runs.length === 1) throw error;
      return { run: null, error: error instanceof Error ? error.message : String(error) };
    }
  }

  async #build() {
    const main = state.runs.find((index) => this.runs[index]?.run) ?? this.runs.findIndex((each) => each.run);
    const shown = this.runs[main];
    if (!shown?.run) throw new Error(this.runs[0]?.error || 'There is nothing to show.');
    const run = shown.run;
    this.main = main;
    document.title = visible(run.name);
    const answer = await ask('sample', { sample: state.sample }, { run: main }).catch((error) => {
      this.#showOthers(run, error);
      return null;
    });
    if (!answer) return;
    const sample = /** @type {Sample} */ (answer.facts);
    this.#head(run, sample);
    this.#panels(run, sample);
    await this.#load();
  }

  /** @param {Run} run @param {Sample|null} sample */
  #head(run, sample) {
    useRun(this.main || 0);
    const findings = el('div', {});
    this.grid = el('main', { class: 'panels' });
    replace(this.root, header(run, sample), this.#runList(), findings, this.grid);
    this.findings = findings;
    if (!sample) showFindings(findings, this.main || 0);
  }

  // Without the sample there are the other ones.
  /** @param {Run} run @param {unknown} error */
  #showOthers(run, error) {
    this.chromatograms = this.spectrum = this.drift = this.map = this.traces = undefined;
    this.absorbance = null;
    this.#head(run, null);
    this.samples = run.samples.length > 1 ? samplePanel(run) : null;
    replace(/** @type {HTMLElement} */ (this.grid), el('div', { class: 'column' }, this.samples && this.samples.root, fault(error)));
  }

  #runList() {
    if (this.runs.length < 2) return null;
    return el('div', { class: 'runs', role: 'group', 'aria-label': 'Runs' }, ...this.runs.map(({ run, error }, i) => {
      const isShown = state.runs.includes(i);
      const item = button(run ? run.name : error, () => {
        const others = state.runs.filter((each) => each !== i);
        const runs = isShown ? others : [...state.runs, i];
        if (runs.length) setState(runs[0] === state.runs[0] ? { runs } : { ...nothingChosen, sample: 0, runs });
      }, { class: 'run', 'aria-pressed': String(isShown), disabled: !run, title: run?.path });
      item.prepend(legendKey(colourOfRun(i)));
      return item;
    }));
  }

  /** @param {Run} run @param {Sample} sample */
  #panels(run, sample) {
    this.sample = sample;
    this.spectrum = new SpectrumPanel(sample, { onBin: (by) => this.drift?.choose((state.bin ?? 0) + by) });
    this.drift = new DriftPanel(sample);
    this.chromatograms = new Chromatograms(sample, {
      onStep: (by) => this.spectrum?.step(by),
      onPeaks: (f, peaks) => this.#takePeaks(sample, f, peaks),
    });
    this.map = new MapPanel(sample, (f, minutes) => this.chromatograms?.rows.find((row) => row.f === f)?.select(minutes));
    this.absorbance = sample.absorbance ? new AbsorbancePanel() : null;
    this.traces = new TracePanel(sample);
    const hasScans = sample.functions.some((f) => f.scans > 0);
    this.samples = run.samples.length > 1 ? samplePanel(run) : null;
    const contents = [this.samples && this.samples.root, functionPanel(sample).root];
    const charts = [hasScans && this.chromatograms.panel.root, this.map.isNeeded() && this.map.panel.root];
    const drift = this.drift.isNeeded() && this.drift.panel.root;
    const spectra = [hasScans && this.spectrum.panel.root, drift, this.absorbance && this.absorbance.panel.root];
    const traces = this.traces.isNeeded() && this.traces.panel.root;
    arrange(/** @type {HTMLElement} */ (this.grid), {
      1: [[...contents, charts[0], spectra[0], drift, charts[1], spectra[2], traces]],
      2: [[...contents, ...charts, traces], spectra],
      3: [[...contents, traces], charts, spectra],
    });
  }

  // The first thing that is seen is the spectrum of the largest peak.
  /** @param {Sample} sample @param {import('./contents.js').ScanFunction} f @param {any[]} peaks */
  #takePeaks(sample, f, peaks) {
    if (sample !== this.sample) return;  // another one is shown by now
    this.spectrum?.setPeaks(f, peaks);
    const first = this.sample?.functions.find((each) => each.scans > 0);
    if (f === first && peaks.length && state.function === null) setState({ function: f.position, scan: peaks[0].scan }, false);
  }

  async #load() {
    const { chromatograms } = this;
    await chromatograms?.loadTotals(await this.#shownRuns());  // the first thing that is seen
    if (chromatograms !== this.chromatograms) return;  // another sample is shown by now
    const findings = showFindings(/** @type {HTMLElement} */ (this.findings), this.main || 0);
    this.spectrum?.load();
    this.drift?.load();
    this.absorbance?.load();
    this.traces?.load();
    if (this.map?.isNeeded()) this.map.load();
    await Promise.all([findings, chromatograms?.loadRest()]);
    this.#markMap();
    if (isLive && chromatograms === this.chromatograms) await showFindings(/** @type {HTMLElement} */ (this.findings), this.main || 0, true);
  }

  // The runs, or the samples of one, whose chromatograms are drawn over one another.
  /** @returns {Promise<import('./chromatograms.js').ShownRun[]>} */
  async #shownRuns() {
    const main = this.main || 0;
    const names = this.runs[main].run?.samples || [];
    const isReport = names.length > 1 && state.samples.length > 0;
    const shown = state.runs.filter((index) => this.runs[index]?.run).map((index) => ({
      index, number: state.sample, colour: colourOfRun(index),
      name: index === main && isReport ? names[state.sample] : this.runs[index].run?.name || '',
    }));
    const over = state.samples.filter((number) => number !== state.sample && names[number] !== undefined).map((number) => ({
      index: main, number, colour: sampleColour(number), name: names[number],
    }));
    return Promise.all([...shown, ...over].map(async (each) => {
      if (each.index === main && each.number === state.sample) return { ...each, sample: /** @type {Sample} */ (this.sample) };
      const answer = await ask('sample', { sample: each.number }, { run: each.index }).catch(() => null);
      return { ...each, sample: answer ? /** @type {Sample} */ (answer.facts) : null };
    }));
  }

  async #overlay() {
    this.samples?.show();
    await this.chromatograms?.load(await this.#shownRuns());
  }

  #markMap() {
    const row = this.chromatograms?.rows.find((each) => each.f.position === state.function);
    this.map?.mark(state.average ? null : row?.timeOf(state.scan) ?? null);
  }

  /** @param {import('./state.js').State} before */
  update(before) {
    if (before.sample !== state.sample || JSON.stringify(before.runs) !== JSON.stringify(state.runs)) {
      this.grid?.replaceChildren();  // panels of before ask for nothing more
      this.#build().catch((error) => this.#fail(error));
      return;
    }
    this.chromatograms?.update(before);
    this.spectrum?.update(before);
    this.drift?.update(before);
    this.absorbance?.update(before);
    if (JSON.stringify(before.samples) !== JSON.stringify(state.samples)) this.#overlay();
    this.#markMap();
  }
}

/** @param {unknown} error */
function fault(error) {
  return el('p', { class: 'fatal', role: 'alert' }, error instanceof Error ? error.message : String(error));
}

/** @param {number} index */
function colourOfRun(index) {
  return runColours[index % runColours.length];
}

// Arrows step wherever the focus is, but in a field that takes text.
document.addEventListener('keydown', (event) => {
  const isTyped = event.target instanceof HTMLInputElement;
  if (event.defaultPrevented || isTyped || event.shiftKey || event.ctrlKey || event.metaKey || event.altKey) return;
  if (page.spectrum?.key(event)) event.preventDefault();
});

const wide = matchMedia('(min-width: 1700px)');
const widest = matchMedia('(min-width: 2500px)');
let arrangeAgain = () => {};
for (const width of [wide, widest]) width.addEventListener('change', () => arrangeAgain());

/**
 * Puts panels into as many columns as there is room for.
 * @param {HTMLElement} grid
 * @param {Record<number, (HTMLElement|null|false)[][]>} columns  by their number
 */
function arrange(grid, columns) {
  arrangeAgain = () => {
    const chosen = columns[widest.matches ? 3 : wide.matches ? 2 : 1];
    replace(grid, ...chosen.map((panels) => el('div', { class: 'column' }, ...panels)));
  };
  arrangeAgain();
}

const page = new Page();
page.start();
if (isLive) document.documentElement.classList.add('live');
