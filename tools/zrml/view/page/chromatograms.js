// Total and base peak chromatograms of each function over one time, and those of extracted ions.
import { el, button, amount, fixed, legendKey, replace, toggle } from './dom.js';
import { functionTitle, massLabel } from './contents.js';
import { tall } from './look.js';
import { Panel, choice } from './panel.js';
import { Plot, nearest } from './plot.js';
import { savingButtons, tsv } from './saving.js';
import { ask, has, isLive } from './store.js';
import { setState, state } from './state.js';

/** @typedef {import('./store.js').Answer} Answer */
/** @typedef {import('./contents.js').ScanFunction} ScanFunction */
/** @typedef {import('./contents.js').Sample} Sample */
/**
 * A sample whose chromatograms are drawn: of a run, by its number.
 * @typedef {{index: number, number: number, name: string, colour: string, sample: Sample|null}} ShownRun
 */

/** Rows that are drawn unasked. */
const mostRows = 8;

/**
 * A chromatogram and what it is asked with.
 * @typedef {object} Curve
 * @property {ShownRun} run
 * @property {string} kind
 * @property {import('./store.js').Values} values
 * @property {string} colour
 * @property {boolean} isFaint
 * @property {Answer|null} answer
 */

class Row {
  /**
   * @param {Chromatograms} owner
   * @param {ScanFunction} f
   * @param {[number, number]|null} ion
   */
  constructor(owner, f, ion) {
    this.owner = owner;
    this.f = f;
    this.ion = ion;
    this.readout = el('div', { class: 'readout' });
    this.label = el('div', { class: 'label' });
    this.host = el('div', { class: 'chart' });
    this.root = el('div', { class: 'row-of-plot' }, this.label, this.host);
    /** @type {Curve[]} */
    this.curves = [];
    /** @type {{x: number, label: string}[]} */
    this.flags = [];
    /** @type {any[]|undefined} the largest ones of the function */
    this.peaks = undefined;
    this.plot = new Plot(this.host, {
      height: 100, xLabel: 'minutes', hasAxis: false, hasFlags: !ion, sync: 'time',
      onClick: (x) => this.select(x),
      onDrag: isLive ? (from, to) => owner.drag(this, from, to) : undefined,
      onView: (view) => setState({ minutes: view }, false),
      onHover: (x, index) => this.hover(x, index),
      onKey: (event) => this.key(event),
    });
    this.plot.limits = owner.limits;
    this.plot.host.setAttribute('aria-label', `Chromatogram of function ${f.id}`);
    this.#showLabel();
  }

  #showLabel() {
    const { f, ion } = this;
    const facts = ion ? `function ${f.id}` : [f.kind, f.polarity === 'unknown' ? '' : f.polarity].filter((fact) => fact).join(', ');
    const title = ion ? `${massLabel(f)} ${fixed(ion[0], 4)} – ${fixed(ion[1], 4)}` : functionTitle(f);
    replace(this.label, el('div', { class: 'title', dir: 'auto', title }, title), el('div', { class: 'quiet' }, facts), this.readout,
      ion && el('div', { class: 'ion-tools' }, button('remove', () => {
        setState({ ions: state.ions.filter((other) => other[0] !== f.position || other[1] !== ion[0] || other[2] !== ion[1]) });
      }, { class: 'quiet' }), savingButtons({ name: 'ion', canvas: () => this.plot.canvas(), svg: () => this.plot.svg(), tsv: () => this.tsv() })));
  }

  tsv() {
    const answer = this.curves.find((each) => each.answer)?.answer;
    return answer ? tsv(['minutes', 'intensity'], [answer.x, answer.y]) : '';
  }

  // What is drawn: of each run its totals and base peaks, or the ion.
  /** @param {ShownRun[]} runs */
  async loadTotals(runs) {
    const kinds = this.ion ? ['sum'] : this.owner.kinds();
    this.curves = runs.flatMap((run, n) => {
      const f = n === 0 ? this.f : run.sample?.functions.find((other) => other.id === this.f.id);
      if (!f || !f.scans) return [];
      return kinds.map((kind) => ({
        run, kind, answer: null, isFaint: kinds.length > 1 && kind === 'bpc' && runs.length > 1,
        colour: runs.length > 1 ? run.colour : kind === 'tic' ? 'line-a' : kind === 'bpc' ? 'line-b' : 'line-c',
        values: {
          sample: run.number, function: f.position, kind,
          low: this.ion ? this.ion[0] : undefined, high: this.ion ? this.ion[1] : undefined,
        },
      }));
    });
    await Promise.all(this.curves.filter((curve) => curve.kind === 'tic').map((curve) => this.ask(curve)));
  }

  // What needs the points of all scans.
  async loadRest() {
    await Promise.all(this.curves.filter((curve) => curve.kind !== 'tic').map((curve) => this.ask(curve)));
    if (!this.ion) await this.loadFlags();
  }

  // All of it, or what is shown when all would have too many points.
  /** @param {Curve} curve */
  async ask(curve) {
    const lane = `${curve.run.index}/${curve.run.number}/${curve.kind}/${this.f.position}/${this.ion || ''}`;
    const isCut = curve.answer && curve.answer.facts.points > curve.answer.x.length;
    const detail = isCut && state.minutes ? { from: state.minutes[0], to: state.minutes[1] } : {};
    const answer = await this.owner.panel.attempt(
      () => ask('chromatogram', curve.values, { run: curve.run.index, lane, detail }), curve.kind === 'tic' ? undefined : lane);
    if (!answer) return;
    if (!curve.answer || !isCut) curve.answer = answer;
    this.draw(curves(this.curves, curve, answer));
  }

  async loadFlags() {
    const values = { sample: state.sample, function: this.f.position };
    if (!has('peaks', values)) return;
    const lane = `peaks/${this.f.position}`;
    const run = this.curves[0]?.run.index;
    const answer = await this.owner.panel.attempt(() => ask('peaks', values, { run, lane }), lane);
    if (!answer) return;
    this.peaks = answer.facts.peaks;
    this.flags = answer.facts.peaks.map((/** @type {any} */ peak) => ({ x: peak.minutes, label: fixed(peak.minutes, 2) }));
    this.plot.mark({ flags: this.flags });
    this.owner.onPeaks(this.f, answer.facts.peaks);
  }

  /** @param {Curve[]} drawn */
  draw(drawn) {
    const shown = drawn.filter((curve) => curve.answer && !curve.answer.facts.isEmpty);
    if (!shown.length) {
      if (drawn.length && drawn.every((curve) => curve.answer)) replace(this.readout, 'not recorded');
      return;
    }
    this.plot.show(shown.map((curve) => ({
      x: /** @type {Answer} */ (curve.answer).x, y: /** @type {Answer} */ (curve.answer).y,
      colour: curve.colour, isFaint: curve.isFaint, isFilled: shown.length === 1 && curve.kind !== 'bpc', label: `${curve.run.name} ${curve.kind}`,
    })), { ...this.marks(), flags: this.flags, view: state.minutes });
  }

  marks() {
    const isMine = state.function === this.f.position;
    const bands = [];
    if (isMine && state.average) bands.push({ from: state.average[0], to: state.average[1], colour: 'band' });
    if (isMine && state.background) bands.push({ from: state.background[0], to: state.background[1], colour: 'band-back' });
    const time = isMine && !state.average ? this.timeOf(state.scan) : null;
    return { bands, marks: time === null ? [] : [time] };
  }

  mark() {
    this.plot.mark(this.marks());
  }

  /** @param {number|null} scan @returns {number|null} */
  timeOf(scan) {
    if (scan === null) return null;
    const peak = this.peaks?.find((/** @type {any} */ each) => each.scan === scan);
    if (peak) return peak.minutes;
    const answer = this.curves[0]?.answer;
    if (!answer?.scans) return null;
    const at = nearest(answer.scans, scan);
    return answer.x[at];
  }

  // The scan at a time; a kept page has those of the largest peaks only.
  /** @param {number} minutes */
  select(minutes) {
    let scan = null;
    const answer = this.curves[0]?.answer;
    if (isLive && answer?.scans) scan = answer.scans[nearest(answer.x, minutes)];
    else if (this.peaks?.length) scan = [...this.peaks].sort((a, b) => Math.abs(a.minutes - minutes) - Math.abs(b.minutes - minutes))[0].scan;
    if (scan !== null) setState({ function: this.f.position, scan, average: null, background: null });
  }

  /** @param {number|null} x @param {number|null} index */
  hover(x, index) {
    if (x === null || index === null) return replace(this.readout);
    const [first] = this.curves.filter((curve) => curve.answer);
    if (!first?.answer) return;
    const at = nearest(first.answer.x, x);
    replace(this.readout, `${fixed(first.answer.x[at], 3)} min: ${amount(first.answer.y[at])}`);
  }

  /** @param {KeyboardEvent} event */
  key(event) {
    const step = { ArrowLeft: -1, ArrowRight: 1 }[event.key];
    if (!step) return false;
    if (state.function !== this.f.position) setState({ function: this.f.position, scan: 0, average: null });
    else this.owner.onStep(step);
    return true;
  }
}

/** From the first to the last scan of all functions. @param {ScanFunction[]} functions @returns {[number, number]|null} */
function timesOf(functions) {
  const ends = functions.flatMap((f) => f.minutes || []);
  const [low, high] = [Math.min(...ends), Math.max(...ends)];
  return low < high ? [low, high] : null;
}

// The curves, with one of them drawn from another answer.
/** @param {Curve[]} all @param {Curve} one @param {Answer} answer */
function curves(all, one, answer) {
  return all.map((curve) => (curve === one ? { ...curve, answer } : curve));
}

export class Chromatograms {
  /**
   * @param {Sample} sample
   * @param {{onStep: (step: number) => void, onPeaks: (f: ScanFunction, peaks: any[]) => void}} hooks
   */
  constructor(sample, hooks) {
    this.sample = sample;
    this.onStep = hooks.onStep;
    this.onPeaks = hooks.onPeaks;
    this.panel = new Panel('Chromatograms', 'wide chromatograms');
    this.shows = { tic: true, bpc: true };
    this.dragMeans = 'average';
    /** @type {ShownRun[]} */
    this.runs = [];
    this.functions = sample.functions.filter((f) => f.scans > 0);
    this.limits = timesOf(this.functions);
    /** @type {Row[]} */
    this.rows = [];
    this.most = mostRows;
    this.legend = el('div', { class: 'legend' });
    this.#addTools();
    this.#makeRows();
  }

  kinds() {
    return /** @type {('tic'|'bpc')[]} */ (['tic', 'bpc']).filter((kind) => this.shows[kind]);
  }

  #addTools() {
    const set = (/** @type {'tic'|'bpc'} */ kind) => (/** @type {boolean} */ isOn) => {
      this.shows[kind] = isOn;
      this.load(this.runs);
    };
    this.panel.tools.append(
      el('span', { class: 'choice' }, toggle('TIC', true, set('tic'), { title: 'Total ions', class: 'key-a' }),
        toggle('BPC', true, set('bpc'), { title: 'Base peaks', class: 'key-b' })));
    if (isLive) {
      this.panel.tools.append(this.ionForm(), choice([
        { name: 'average', label: 'average', title: 'Dragging averages the scans of a range' },
        { name: 'background', label: 'background', title: 'Dragging chooses what is subtracted from the average' },
        { name: 'zoom', label: 'zoom', title: 'Dragging zooms' },
      ], 'average', (means) => { this.dragMeans = means; }, 'What dragging does'));
    }
    this.panel.tools.append(
      el('span', { class: 'choice' },
        button('+', () => this.rows[0]?.plot.zoom(0.5), { title: 'Zoom in (+, or Ctrl and the wheel)' }),
        button('−', () => this.rows[0]?.plot.zoom(2), { title: 'Zoom out (-)' }),
        button('all', () => setState({ minutes: null }, false), { title: 'The whole run (0)' })),
      savingButtons({
        name: 'chromatogram',
        canvas: () => this.#current()?.plot.canvas() || null,
        svg: () => this.#current()?.plot.svg() || '',
        tsv: () => this.#current()?.tsv() || '',
      }));
  }

  #current() {
    return this.rows.find((row) => row.f.position === state.function) || this.rows[0];
  }

  ionForm() {
    const input = /** @type {HTMLInputElement} */ (el('input', {
      type: 'text', class: 'ion', placeholder: 'm/z, such as 445.12', 'aria-label': 'Ion to extract: a mass or a range',
      title: 'A mass, as 445.12 or 445.12 ± 0.01, or a range, as 445-446',
    }));
    return el('form', {
      class: 'ion-form',
      onsubmit: (/** @type {Event} */ event) => {
        event.preventDefault();
        const range = ionOf(input.value);
        input.setAttribute('aria-invalid', String(!range));
        if (range) this.extract(...range);
      },
    }, input, el('button', { type: 'submit' }, 'extract'));
  }

  /** @param {number} low @param {number} high */
  extract(low, high) {
    const f = state.function ?? this.functions[0]?.position;
    if (f !== undefined) setState({ ions: [...state.ions, [f, low, high]] });
  }

  // Rows that stay are kept as they are. Returns the new ones.
  #makeRows() {
    const wanted = [
      ...this.functions.slice(0, this.most).map((f) => ({ f, ion: /** @type {[number, number]|null} */ (null) })),
      ...state.ions.flatMap(([position, low, high]) => {
        const f = this.functions.find((each) => each.position === position);
        return f ? [{ f, ion: /** @type {[number, number]} */ ([low, high]) }] : [];
      }),
    ];
    const before = this.rows;
    this.rows = wanted.map(({ f, ion }) => before.find((row) => row.f === f && String(row.ion) === String(ion)) || new Row(this, f, ion));
    const hidden = this.functions.length - this.most;
    this.panel.body.replaceChildren(this.legend, ...this.rows.map((row) => row.root));
    if (hidden > 0) {
      this.panel.body.append(button(`${hidden} more`, () => {
        this.most = this.functions.length;
        this.#addRows();
      }, { class: 'quiet' }));
    }
    const last = this.rows.length - 1;
    this.rows.forEach((row, i) => row.plot.setShape(tall(last < 2 ? 150 : 104) + (i === last ? 32 : 0), i === last));
    if (!this.functions.length) this.panel.say('There are no scans.');
    return this.rows.filter((row) => !before.includes(row));
  }

  async #addRows() {
    const added = this.#makeRows();
    await Promise.all(added.map((row) => row.loadTotals(this.runs)));
    await Promise.all(added.map((row) => row.loadRest()));
  }

  /** @param {ShownRun[]} runs */
  async load(runs) {
    await this.loadTotals(runs);
    await this.loadRest();
  }

  /** @param {ShownRun[]} runs */
  async loadTotals(runs) {
    this.runs = runs;
    this.panel.root.classList.toggle('overlaid', runs.length > 1);
    replace(this.legend, ...(runs.length > 1 ? runs : []).map((run) => el('span', { dir: 'auto' }, legendKey(run.colour), run.name)));
    await Promise.all(this.rows.map((row) => row.loadTotals(runs)));
  }

  async loadRest() {
    await Promise.all(this.rows.map((row) => row.loadRest()));
  }

  /** @param {Row} row @param {number} from @param {number} to */
  drag(row, from, to) {
    if (this.dragMeans === 'zoom') return row.plot.zoomTo(from, to);
    const range = /** @type {[number, number]} */ ([from, to]);
    if (this.dragMeans === 'background' && state.average) setState({ background: range });
    else setState({ function: row.f.position, average: range, background: null });
  }

  /** @param {import('./state.js').State} before */
  update(before) {
    if (JSON.stringify(before.ions) !== JSON.stringify(state.ions)) {
      this.#addRows();
      return;
    }
    if (JSON.stringify(before.minutes) !== JSON.stringify(state.minutes)) {
      for (const row of this.rows) row.plot.setView(state.minutes);
      clearTimeout(this.refine);
      this.refine = setTimeout(() => this.#refine(), 150);
    }
    const isMoved = before.function !== state.function || before.scan !== state.scan ||
      JSON.stringify([before.average, before.background]) !== JSON.stringify([state.average, state.background]);
    if (isMoved) for (const row of this.rows) row.mark();
  }

  // Curves that are thinned as a whole are asked for again where they are shown.
  #refine() {
    for (const row of this.rows) {
      for (const curve of row.curves) {
        if (curve.answer && isLive && curve.answer.facts.points > curve.answer.x.length) row.ask(curve);
      }
    }
  }
}

/**
 * "445.12", "445.12 ± 0.01" or "445-446" as a range.
 * @param {string} text
 * @returns {[number, number]|null}
 */
export function ionOf(text) {
  const numbers = /^\s*(\d+(?:\.\d+)?)\s*(?:(-|–|±|\+-|\+\/-)\s*(\d+(?:\.\d+)?))?\s*$/.exec(text);
  if (!numbers) return null;
  const [first, second] = [Number(numbers[1]), numbers[3] === undefined ? 0.02 : Number(numbers[3])];
  const isRange = numbers[2] === '-' || numbers[2] === '–';
  if (isRange) return first <= second ? [first, second] : null;
  return [first - second, first + second];
}
