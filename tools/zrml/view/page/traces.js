// What was recorded beside the scans. No file has the units of values, nor of times.
import { el, amount, fixed, replace } from './dom.js';
import { functionTitle } from './contents.js';
import { Panel } from './panel.js';
import { Plot } from './plot.js';
import { savingButtons, tsv } from './saving.js';
import { ask } from './store.js';
import { state } from './state.js';

/** @typedef {import('./contents.js').Sample} Sample */
/** @typedef {{name: string, owner: string, values: import('./store.js').Values}} Trace */

/** Traces that are drawn unasked. */
const most = 12;

/** @param {Sample} sample @returns {Trace[]} */
function tracesOf(sample) {
  const own = sample.functions.flatMap((f) => f.traces.map((trace, i) => ({
    name: trace.name, owner: `function ${functionTitle(f)}`, values: { function: f.position, trace: i },
  })));
  return [...sample.traces.map((trace, i) => ({ name: trace.name, owner: '', values: { trace: i } })), ...own];
}

export class TracePanel {
  /** @param {Sample} sample */
  constructor(sample) {
    this.traces = tracesOf(sample);
    this.panel = new Panel('Traces', 'traces wide');
    this.grid = el('div', { class: 'small-plots' });
    this.panel.body.append(this.grid);
    this.most = most;
  }

  isNeeded() {
    return this.traces.length > 0;
  }

  async load() {
    const hidden = this.traces.length - this.most;
    await Promise.all(this.traces.slice(this.grid.children.length, this.most).map((trace) => this.#show(trace)));
    if (hidden <= 0) return;
    const more = el('button', { type: 'button', class: 'quiet' }, `${hidden} more`);
    more.addEventListener('click', () => { more.remove(); this.most = this.traces.length; this.load(); });
    this.panel.body.append(more);
  }

  /** @param {Trace} trace */
  async #show(trace) {
    const readout = el('span', { class: 'readout' });
    const saving = el('span', {});
    const host = el('div', { class: 'small-plot' }, el('div', { class: 'small-title' }, el('span', { dir: 'auto' }, trace.name),
      el('span', { class: 'quiet', dir: 'auto' }, trace.owner), readout, saving));
    this.grid.append(host);
    const values = { sample: state.sample, ...trace.values };
    const answer = await this.panel.attempt(() => ask('trace', values, { lane: `trace/${JSON.stringify(trace.values)}` }));
    if (!answer) return replace(readout, 'cannot be shown');
    if (!answer.x.length) return replace(readout, 'no points');
    const plot = new Plot(host, {
      height: 120, xLabel: 'time as stored',
      onHover: (x, index) => replace(readout, x !== null && index !== null && `${fixed(answer.x[index], 3)}: ${amount(answer.y[index])}`),
    });
    plot.host.setAttribute('aria-label', `Trace ${trace.name}`);
    plot.show([{ x: answer.x, y: answer.y, colour: 'line-e' }]);
    saving.append(savingButtons({ name: trace.name || 'trace', canvas: () => plot.canvas(), svg: () => plot.svg(), tsv: () => tsv(['time', 'value'], [answer.x, answer.y]) }));
  }
}
