// The drift bins of a scan: m/z over the bins. Shown while the function that is shown has any.
import { button, grouped, replace } from './dom.js';
import { functionTitle } from './contents.js';
import { HeatMap } from './heat_map.js';
import { tall } from './look.js';
import { Panel } from './panel.js';
import { savingButtons } from './saving.js';
import { ask, has, isLive } from './store.js';
import { setState, state } from './state.js';

/** @typedef {import('./heat_map.js').Box} Box */

export class DriftPanel {
  /** @param {import('./contents.js').Sample} sample */
  constructor(sample) {
    this.functions = sample.functions.filter((f) => f.driftBins > 0 && f.scans > 0);
    this.panel = new Panel('Drift bins', 'wide');
    this.panel.root.hidden = true;
    this.map = new HeatMap(this.panel.body, {
      height: tall(300), abscissa: 'drift bin', ordinate: 'm/z', decimals: 2,
      onClick: (bin) => this.choose(Math.round(bin) - 1),
      onView: (box) => this.#refine(box),
    });
    this.panel.tools.append(
      isLive ? button('all bins', () => setState({ bin: null }), { title: 'The spectrum of the whole scan' }) : '',
      button('all', () => this.map.zoomTo(null), { title: 'The whole map (0)' }),
      savingButtons({ name: 'drift', canvas: () => this.map.canvas, svg: () => this.map.svg(), tsv: () => this.map.tsv() }));
  }

  isNeeded() {
    return this.functions.length > 0;
  }

  #function() {
    return this.functions.find((f) => f.position === state.function);
  }

  /** @param {number} bin */
  choose(bin) {
    const f = this.#function();
    if (isLive && f) setState({ bin: Math.min(Math.max(bin, 0), f.driftBins - 1) });
  }

  #values() {
    return { sample: state.sample, function: state.function ?? undefined, scan: state.scan ?? 0 };
  }

  async load() {
    const f = this.#function();
    this.panel.root.hidden = !f || state.average !== null || !has('drift-map', this.#values());
    if (!f || this.panel.root.hidden) return;
    const answer = await this.#ask({});
    if (!answer) return;
    this.whole = answer;
    this.map.show(answer);
    replace(this.panel.title, `Drift bins: ${functionTitle(f)}, scan ${grouped((state.scan ?? 0) + 1)}`);
    this.mark();
    if (answer.facts.isEmpty) this.panel.say('There are no points.');
  }

  /** @param {import('./store.js').Values} part */
  #ask(part) {
    return this.panel.attempt(() => ask('drift-map', this.#values(), { lane: 'drift-map', detail: { columns: 2000, rows: 500, ...part } }), 'drift-map');
  }

  /** @param {Box|null} box */
  async #refine(box) {
    if (!isLive) return;
    if (!box) return this.whole && this.map.show(this.whole);
    const answer = await this.#ask({ from: box.minutes[0], to: box.minutes[1], low: box.ordinate[0], high: box.ordinate[1] });
    if (answer && JSON.stringify(this.map.view) === JSON.stringify(box)) this.map.show(answer, box);
  }

  mark() {
    this.map.markTime(state.bin === null ? null : state.bin + 1);
  }

  /** @param {import('./state.js').State} before */
  update(before) {
    if (before.function !== state.function || before.scan !== state.scan || before.average !== state.average) this.load();
    else this.mark();
  }
}
