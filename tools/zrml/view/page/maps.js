// m/z over time of each function, one at a time.
import { el, replace } from './dom.js';
import { functionTitle, massLabel } from './contents.js';
import { HeatMap } from './heat_map.js';
import { tall } from './look.js';
import { Panel, choice } from './panel.js';
import { savingButtons } from './saving.js';
import { ask, has, isLive } from './store.js';
import { state } from './state.js';

/** @typedef {import('./contents.js').ScanFunction} ScanFunction */
/** @typedef {import('./heat_map.js').Box} Box */

export class MapPanel {
  /**
   * @param {import('./contents.js').Sample} sample
   * @param {(f: ScanFunction, minutes: number) => void} onClick
   */
  constructor(sample, onClick) {
    this.functions = sample.functions.filter((f) => f.scans > 0 && !f.isMonitoring);
    this.panel = new Panel('Map', 'wide');
    this.chosen = this.functions[0];
    if (!this.chosen) return;
    this.map = new HeatMap(this.panel.body, {
      height: tall(380), ordinate: massLabel(this.chosen), decimals: 2,
      onClick: (minutes) => onClick(this.chosen, minutes),
      onView: (box) => this.#refine(box),
    });
    this.panel.tools.append(
      this.functions.length > 1 ? choice(this.functions.map((f) => ({ name: f.position, label: f.id, title: functionTitle(f) })), this.chosen.position,
        (position) => this.choose(position), 'Function') : '',
      el('span', { class: 'choice' }, el('button', { type: 'button', title: 'The whole map (0)', onclick: () => this.map?.zoomTo(null) }, 'all')),
      savingButtons({ name: 'map', canvas: () => this.map?.canvas || null, svg: () => this.map?.svg() || '', tsv: () => this.map?.tsv() || '' }));
  }

  /** @param {number} position */
  choose(position) {
    this.chosen = /** @type {ScanFunction} */ (this.functions.find((f) => f.position === position));
    if (this.map) this.map.options.ordinate = massLabel(this.chosen);
    this.load();
  }

  #detail() {
    const width = Math.round((this.panel.body.clientWidth || 900) * Math.min(devicePixelRatio, 2));
    return { columns: Math.min(width, 2000), rows: 600 };
  }

  async load() {
    const values = { sample: state.sample, function: this.chosen.position };
    replace(this.panel.title, `${massLabel(this.chosen)} over time: ${functionTitle(this.chosen)}`);
    const answer = await this.panel.attempt(() => ask('map', values, { lane: 'map', detail: this.#detail() }), 'map');
    if (!answer || !this.map) return;
    this.whole = answer;
    this.map.show(answer);
    if (answer.facts.isEmpty) this.panel.say('There are no points.');
  }

  // The same cells are drawn larger at once; finer ones follow from the server.
  /** @param {Box|null} box */
  async #refine(box) {
    if (!isLive || !this.map) return;
    if (!box) {
      if (this.whole) this.map.show(this.whole);
      return;
    }
    const values = { sample: state.sample, function: this.chosen.position };
    const detail = { ...this.#detail(), from: box.minutes[0], to: box.minutes[1], low: box.ordinate[0], high: box.ordinate[1] };
    const answer = await this.panel.attempt(() => ask('map', values, { lane: 'map', detail }), 'map');
    if (answer && JSON.stringify(this.map.view) === JSON.stringify(box)) this.map.show(answer, box);
  }

  /** @param {number|null} minutes */
  mark(minutes) {
    this.map?.markTime(minutes);
  }

  /** Whether there is anything to show. */
  isNeeded() {
    return this.functions.some((f) => has('map', { sample: state.sample, function: f.position }));
  }
}
