// Absorbance spectra: the largest value over time, a map of wavelengths, and the cross-sections at one place.
import { el, amount, fixed, replace } from './dom.js';
import { HeatMap } from './heat_map.js';
import { tall } from './look.js';
import { Panel } from './panel.js';
import { Plot, nearest } from './plot.js';
import { savingButtons, tsv } from './saving.js';
import { ask, isLive } from './store.js';
import { setState, state } from './state.js';

/** @typedef {import('./store.js').Answer} Answer */

/** How far a chromatogram of one wavelength reaches to either side of it, nm. */
const reach = 1;

/** @param {ArrayLike<number>} values */
function largestOf(values) {
  let largest = null;
  for (let i = 0; i < values.length; ++i) if (largest === null || values[i] > largest) largest = values[i];
  return largest;
}

export class AbsorbancePanel {
  constructor() {
    this.panel = new Panel('Absorbance', 'wide');
    this.overTime = el('p', { class: 'facts' });
    this.atTime = el('p', { class: 'facts' });
    const left = el('div', {}, el('div', { class: 'above' }, this.overTime, savingButtons({
      name: 'absorbance', canvas: () => this.curve.canvas(), svg: () => this.curve.svg(),
      tsv: () => (this.shown ? tsv(['minutes', 'absorbance'], [this.shown.x, this.shown.y]) : ''),
    })));
    const right = el('div', {}, el('div', { class: 'above' }, this.atTime, savingButtons({
      name: 'absorbance-spectrum', canvas: () => this.spectrum.canvas(), svg: () => this.spectrum.svg(),
      tsv: () => (this.taken ? tsv(['nm', 'absorbance'], [this.taken.x, this.taken.y]) : ''),
    })));
    const below = el('div', {}, el('div', { class: 'above' }, el('p', {}), savingButtons({
      name: 'absorbance-map', canvas: () => this.map.canvas, svg: () => this.map.svg(), tsv: () => this.map.tsv(),
    })));
    this.panel.body.append(el('div', { class: 'pair' }, left, right), below);
    this.curve = new Plot(left, {
      height: tall(200), xLabel: 'minutes', sync: 'time', onClick: (minutes) => this.select(minutes),
      onView: (view) => setState({ minutes: view }, false),
    });
    this.spectrum = new Plot(right, { height: tall(200), xLabel: 'nm', decimals: 0, onClick: (nm) => this.cut(nm) });
    this.map = new HeatMap(below, {
      height: tall(260), ordinate: 'nm', decimals: 1,
      onClick: (minutes, nm) => { this.select(minutes); this.cut(nm); },
      onView: (box) => this.#refine(box),
    });
    this.curve.host.setAttribute('aria-label', 'Absorbance over time');
    this.spectrum.host.setAttribute('aria-label', 'Absorbance spectrum');
  }

  async load() {
    const values = { sample: state.sample };
    const [largest, map] = await Promise.all([
      this.panel.attempt(() => ask('absorbance-largest', values, { lane: 'absorbance-largest' }), 'absorbance-largest'),
      this.panel.attempt(() => ask('absorbance-map', values, { lane: 'absorbance-map', detail: { columns: 1600, rows: 400 } }), 'absorbance-map'),
    ]);
    if (map) this.map.show(map);
    this.whole = map;
    if (!largest) return;
    this.largest = this.shown = largest;
    this.#showCurve(largest, `largest absorbance of each scan; of all at ${fixed(largest.facts.wavelength, 1)} nm`);
    this.scan = state.absorbance ?? largest.facts.scan;
    await this.#loadSpectrum();
  }

  /** @param {Answer} answer @param {string} title */
  #showCurve(answer, title) {
    this.shown = answer;
    this.curve.show([{ x: answer.x, y: answer.y, colour: 'line-d', isFilled: false }], { view: state.minutes });
    replace(this.overTime, el('span', {}, title));
  }

  async #loadSpectrum() {
    if (this.scan === undefined || this.scan === null) return;
    const answer = await this.panel.attempt(() => ask('absorbance', { sample: state.sample, scan: this.scan }, { lane: 'absorbance' }));
    if (!answer) return;
    this.taken = answer;
    this.spectrum.show([{ x: answer.x, y: answer.y, colour: 'line-d' }]);
    replace(this.atTime, el('span', {}, `scan ${answer.facts.scan + 1}`), el('span', {}, `${fixed(answer.facts.minutes, 3)} min`),
      el('span', {}, `up to ${amount(largestOf(answer.y))}`));
    this.curve.mark({ marks: [answer.facts.minutes] });
    this.map.markTime(answer.facts.minutes);
  }

  // The spectrum at a time; a kept page has the one of the largest value only.
  /** @param {number} minutes */
  select(minutes) {
    const scans = this.largest?.scans;
    if (!isLive || !this.largest || !scans) return;
    setState({ absorbance: scans[nearest(this.largest.x, minutes)] });
  }

  // The chromatogram at a wavelength.
  /** @param {number} nm */
  async cut(nm) {
    if (!isLive) return;
    const values = { sample: state.sample, low: nm - reach, high: nm + reach };
    const answer = await this.panel.attempt(() => ask('wavelength', values, { lane: 'wavelength' }), 'wavelength');
    if (!answer) return;
    this.#showCurve(answer, `at ${fixed(nm, 1)} nm, ± ${reach}`);
    this.spectrum.mark({ marks: [nm] });
  }

  /** @param {import('./heat_map.js').Box|null} box */
  async #refine(box) {
    if (!isLive) return;
    if (!box) return this.whole && this.map.show(this.whole);
    const detail = { columns: 1600, rows: 400, from: box.minutes[0], to: box.minutes[1], low: box.ordinate[0], high: box.ordinate[1] };
    const answer = await this.panel.attempt(() => ask('absorbance-map', { sample: state.sample }, { lane: 'absorbance-map', detail }), 'absorbance-map');
    if (answer && JSON.stringify(this.map.view) === JSON.stringify(box)) this.map.show(answer, box);
  }

  /** @param {import('./state.js').State} before */
  update(before) {
    if (JSON.stringify(before.minutes) !== JSON.stringify(state.minutes)) this.curve.setView(state.minutes);
    if (before.absorbance === state.absorbance || !this.largest) return;
    this.scan = state.absorbance ?? this.largest.facts.scan;
    this.#loadSpectrum();
  }
}
