// The spectrum of a scan, or the mean of several, and the one that it comes from or leads to beside it.
import { el, button, amount, counted, fixed, grouped, replace, toggle } from './dom.js';
import { functionTitle, massLabel } from './contents.js';
import { tall } from './look.js';
import { Panel, choice } from './panel.js';
import { Plot, within } from './plot.js';
import { savingButtons, tsv } from './saving.js';
import { ask, has, isLive } from './store.js';
import { setState, state } from './state.js';

/** @typedef {import('./store.js').Answer} Answer */
/** @typedef {import('./contents.js').ScanFunction} ScanFunction */
/** @typedef {import('./contents.js').Sample} Sample */

/** The range of the method and all points. @param {ScanFunction} f @param {Answer} answer @returns {[number, number]|null} */
function limitsOf(f, answer) {
  if (!f.massRange || f.massRange[0] >= f.massRange[1]) return null;
  const x = answer.x;
  return x.length ? [Math.min(f.massRange[0], x[0]), Math.max(f.massRange[1], x[x.length - 1])] : f.massRange;
}

/** A plot of a spectrum with a line of facts above it. */
class Spectrum {
  /**
   * @param {(view: [number, number]|null) => void} onView
   * @param {((from: number, to: number) => void)|undefined} onDrag
   * @param {(event: KeyboardEvent) => boolean} onKey
   */
  constructor(onView, onDrag, onKey) {
    this.facts = el('p', { class: 'facts' });
    this.host = el('div', { class: 'chart' });
    this.readout = el('div', { class: 'readout' });
    this.root = el('div', { class: 'spectrum' }, this.facts, this.host, this.readout);
    this.plot = new Plot(this.host, {
      height: tall(300), xLabel: 'm/z', decimals: 4, onView, onDrag, onKey, onHover: (x) => this.hover(x),
    });
    /** @type {Answer|null} */
    this.answer = null;
  }

  /** @param {ScanFunction} f @param {Answer} answer @param {[number, number]|null} view */
  show(f, answer, view) {
    this.answer = answer;
    this.f = f;
    this.plot.options.xLabel = massLabel(f);
    this.plot.options.decimals = f.isAbsorbance ? 1 : 4;
    this.plot.host.setAttribute('aria-label', `Spectrum of function ${f.id}`);
    const hasSticks = answer.facts.areCentroids;
    this.plot.limits = limitsOf(f, answer);
    this.plot.show([{ x: answer.x, y: answer.y, colour: 'line-a', isSticks: hasSticks }], { view });
    this.facts.hidden = false;
  }

  /** @param {number|null} x */
  hover(x) {
    if (x === null || !this.answer || !this.f) return replace(this.readout);
    const { min, max } = this.plot.chart.scales.x;
    const reach = (max - min) / 150;
    const [first, end] = within(this.answer.x, x - reach, x + reach);
    let at = -1;
    for (let i = first; i < end; ++i) if (at < 0 || this.answer.y[i] > this.answer.y[at]) at = i;
    const place = at < 0 ? fixed(x, 4) : `${fixed(this.answer.x[at], 4)}: ${amount(this.answer.y[at])}`;
    replace(this.readout, `${massLabel(this.f)} ${place}`);
  }
}

/** What of the state a spectrum depends on. @type {(keyof import('./state.js').State)[]} */
const parts = ['function', 'scan', 'average', 'background', 'centroids', 'bin'];

/** The drift bin whose spectrum is shown. @param {ScanFunction} f */
function binOf(f) {
  return state.average || state.bin === null || state.bin >= f.driftBins ? null : state.bin;
}

export class SpectrumPanel {
  /** @param {Sample} sample @param {{onBin: (by: number) => void}} hooks */
  constructor(sample, hooks) {
    this.sample = sample;
    this.hooks = hooks;
    this.panel = new Panel('Spectrum', 'wide');
    this.dragMeans = 'zoom';
    this.main = new Spectrum(
      (view) => setState({ mz: view }, false),
      isLive ? (from, to) => this.drag(from, to) : undefined, (event) => this.key(event));
    this.other = new Spectrum(() => {}, undefined, () => false);
    this.other.root.hidden = true;
    this.chips = el('div', { class: 'chips' });
    this.links = el('div', { class: 'chips' });
    this.panel.body.append(this.chips, el('div', { class: 'pair' }, this.main.root, this.other.root), this.links);
    /** @type {Map<number, any[]>} */
    this.peaks = new Map();
    this.#addTools();
  }

  #addTools() {
    if (isLive) {
      this.panel.tools.append(
        el('span', { class: 'choice' },
          button('◀', () => this.step(-1), { title: 'The scan before (←)' }),
          button('▶', () => this.step(1), { title: 'The next scan (→)' })),
        toggle('centroids', state.centroids, (isOn) => setState({ centroids: isOn }), { title: 'Peaks of a profile (C)' }),
        choice([
          { name: 'zoom', label: 'zoom', title: 'Dragging zooms' },
          { name: 'extract', label: 'extract', title: 'Dragging extracts the chromatogram of an ion' },
        ], 'zoom', (means) => { this.dragMeans = means; }, 'What dragging does'));
    }
    this.panel.tools.append(
      button('all', () => this.main.plot.reset(), { title: 'The whole spectrum (0)' }),
      savingButtons({
        name: 'spectrum',
        canvas: () => this.main.plot.canvas(),
        svg: () => this.main.plot.svg(),
        tsv: () => {
          const { answer, f } = this.main;
          return answer && f ? tsv([massLabel(f), f.isAbsorbance ? 'absorbance' : 'intensity'], [answer.x, answer.y]) : '';
        },
      }));
  }

  #function() {
    return this.sample.functions.find((f) => f.position === state.function);
  }

  /** Largest peaks of a function, to jump to. @param {ScanFunction} f @param {any[]} peaks */
  setPeaks(f, peaks) {
    this.peaks.set(f.position, peaks);
    this.#showChips();
  }

  #showChips() {
    const f = this.#function();
    const peaks = f ? this.peaks.get(f.position) || [] : [];
    const chips = [...peaks].filter((peak) => f && has('spectrum', { sample: state.sample, function: f.position, scan: peak.scan }))
      .sort((a, b) => a.minutes - b.minutes)
      .map((peak) => button(`${fixed(peak.minutes, 2)}`, () => setState({ scan: peak.scan, average: null, background: null }),
        { class: 'chip', 'aria-pressed': String(!state.average && peak.scan === state.scan), title: `Scan ${peak.scan + 1}` }));
    replace(this.chips, chips.length ? el('span', { class: 'quiet' }, 'Largest peaks, minutes:') : null, ...chips);
  }

  /** @param {number} by */
  step(by) {
    const f = this.#function();
    if (!f || !isLive || state.scan === null) return;
    const scan = Math.min(Math.max(state.scan + by, 0), f.scans - 1);
    setState({ scan, average: null, background: null }, false);
  }

  /** @param {KeyboardEvent} event */
  key(event) {
    if (!isLive) return false;
    if (event.key === 'ArrowLeft') this.step(-1);
    else if (event.key === 'ArrowRight') this.step(1);
    else if (event.key === 'ArrowUp' && state.bin !== null) this.hooks.onBin(1);
    else if (event.key === 'ArrowDown' && state.bin !== null) this.hooks.onBin(-1);
    else if (event.key === 'c') this.panel.tools.querySelector('button[title^="Peaks"]')?.dispatchEvent(new MouseEvent('click'));
    else return false;
    return true;
  }

  /** @param {number} from @param {number} to */
  drag(from, to) {
    if (this.dragMeans === 'zoom' || state.function === null) return this.main.plot.zoomTo(from, to);
    setState({ ions: [...state.ions, [state.function, from, to]] });
  }

  async load() {
    const f = this.#function();
    this.#showChips();
    if (!f || (state.scan === null && !state.average)) {
      this.main.facts.hidden = true;
      return;
    }
    const asked = this.#asked();
    const answer = await this.panel.attempt(() => this.#ask(f), state.average ? 'spectrum' : undefined);
    if (!answer || asked !== this.#asked()) return;
    this.main.show(f, answer, state.mz);
    replace(this.main.facts, ...this.#describe(f, answer.facts).map((fact) => el('span', {}, fact)));
    this.panel.title.textContent = state.average ? 'Mean spectrum' : 'Spectrum';
    await this.#showLinked(answer.facts);
  }

  // What the answer depends on.
  #asked() {
    return JSON.stringify(parts.map((part) => state[part]));
  }

  /** @param {ScanFunction} f */
  #ask(f) {
    const values = { sample: state.sample, function: f.position };
    const detail = { centroids: state.centroids ? 1 : undefined, bin: binOf(f) ?? undefined };
    if (!state.average) return ask('spectrum', { ...values, scan: state.scan ?? 0 }, { lane: 'spectrum', detail });
    return ask('average', {
      ...values, from: state.average[0], to: state.average[1],
      backFrom: state.background?.[0], backTo: state.background?.[1],
    }, { lane: 'spectrum', detail });
  }

  /** @param {ScanFunction} f @param {any} facts */
  #describe(f, facts) {
    const isMean = facts.scan === undefined;
    const background = facts.backgroundScans ? ` less ${grouped(facts.backgroundScans)}` : '';
    return [
      functionTitle(f),
      isMean ? `mean of ${counted(facts.scans, 'scan')}${background}` : `scan ${grouped(facts.scan + 1)} of ${grouped(f.scans)}`,
      !isMean && f.position === state.function && binOf(f) !== null ? `drift bin ${(state.bin ?? 0) + 1} of ${f.driftBins}` : '',
      isMean ? `${fixed(state.average?.[0], 3)} – ${fixed(state.average?.[1], 3)} min` : `${fixed(facts.minutes, 3)} min`,
      facts.precursorMz ? `precursor ${fixed(facts.precursorMz, 4)}${facts.isPrecursorOfMethod ? ' (of the method)' : ''}` : '',
      facts.basePeak !== null ? `base peak ${fixed(facts.basePeakMz, 4)}: ${amount(facts.basePeak)}` : 'no points',
      f.isAbsorbance ? '' : `total ${amount(facts.total)}`,
      `${counted(facts.points, 'point')}${facts.isCentroided !== false ? '' : facts.areCentroids ? ', centroids' : ', profile'}`,
      facts.leftOut ? `${counted(facts.leftOut, 'scan')} left out` : '',
      facts.lost ? `${counted(facts.lost, 'point')} lost` : '',
      facts.process || '',
    ].filter((fact) => fact);
  }

  // The precursor's spectrum beside fragments, or the first fragments beside a survey; others as buttons.
  /** @param {any} facts */
  async #showLinked(facts) {
    const products = facts.products || [];
    const linked = facts.precursor || products[0];
    const links = products.map((/** @type {any} */ product) =>
      this.#linkTo(product, product.precursorMz ? fixed(product.precursorMz, 4) : `scan ${product.scan + 1}`)).filter(Boolean);
    replace(this.links, links.length > 0 && el('span', { class: 'quiet' }, 'Fragments of:'), ...links,
      facts.precursor && this.#linkTo(facts.precursor, 'the survey that it comes from'));
    const other = linked && this.sample.functions.find((each) => each.position === linked.function);
    const values = linked && { sample: state.sample, function: linked.function, scan: linked.scan };
    if (!other || !has('spectrum', values)) {
      this.other.root.hidden = true;
      return;
    }
    const asked = this.#asked();
    const answer = await this.panel.attempt(() => ask('spectrum', values, { lane: 'linked', detail: { centroids: state.centroids ? 1 : undefined } }));
    if (!answer || asked !== this.#asked()) return;
    this.other.root.hidden = false;
    this.other.show(other, answer, null);
    const mark = facts.precursor ? facts.precursorMz : linked.precursorMz;
    if (facts.precursor && mark) this.other.plot.mark({ marks: [mark] });
    if (!facts.precursor && mark) this.main.plot.mark({ marks: [mark] });
    replace(this.other.facts, ...this.#describe(other, answer.facts).map((fact) => el('span', {}, fact)));
  }

  /** @param {{function: number, scan: number}} place @param {string} label */
  #linkTo(place, label) {
    if (!has('spectrum', { sample: state.sample, function: place.function, scan: place.scan })) return null;
    return button(label, () => setState({ function: place.function, scan: place.scan, average: null, background: null, mz: null }), { class: 'chip' });
  }

  /** @param {import('./state.js').State} before */
  update(before) {
    const changed = parts.some((key) => JSON.stringify(before[key]) !== JSON.stringify(state[key]));
    if (changed) this.load();
    else if (JSON.stringify(before.mz) !== JSON.stringify(state.mz)) this.main.plot.setView(state.mz);
  }
}
