// What is in the run: its header, findings, samples, functions and metadata.
import { el, button, counted, fixed, grouped, legendKey, replace } from './dom.js';
import { runColours } from './look.js';
import { Panel } from './panel.js';
import { Superseded, ask, isLive, kept } from './store.js';
import { nothingChosen, setState, state } from './state.js';

/**
 * @typedef {object} ScanFunction
 * @property {number} position
 * @property {string} id
 * @property {string} name
 * @property {string} file
 * @property {string} kind
 * @property {boolean} isAbsorbance
 * @property {boolean} isMonitoring
 * @property {boolean} isLockMass
 * @property {number | null} msLevel
 * @property {string} scanType
 * @property {string} polarity
 * @property {number} scans
 * @property {[number, number]|null} massRange
 * @property {[number, number]|null} minutes
 * @property {boolean|null} isCentroided
 * @property {number} driftBins
 * @property {{number: number, name: string}[]} traces
 * @property {[string, string|null][]} metadata
 */
/**
 * @typedef {object} Sample
 * @property {string} name
 * @property {[string, string|null][]} metadata
 * @property {ScanFunction[]} functions
 * @property {{number: number, name: string}[]} traces
 * @property {{id: string, file: string, scans: number}|null} absorbance
 */
/** @typedef {{path: string, name: string, isReport: boolean, samples: string[]}} Run */

/** What a title says first, in this order, as far as the metadata have it. */
const telling = ['SampleName', 'SampleDescription', 'InstrumentName', 'AnalysisDateTime', 'OperatorName', 'MethodName'];
/** What is shown elsewhere. */
const known = ['DatasetName', 'ProviderName'];

/** A function's name for people. @param {ScanFunction} f */
export function functionTitle(f) {
  return f.name ? `${f.id}: ${f.name}` : f.id;
}

/** What the abscissa of a function's spectra is. @param {ScanFunction} f */
export function massLabel(f) {
  return f.isAbsorbance ? 'nm' : 'm/z';
}

/**
 * @param {Run} run
 * @param {Sample|null} sample
 */
export function header(run, sample) {
  const items = new Map(sample ? sample.metadata : []);
  const facts = telling.map((key) => items.get(key)).filter((value) => value);
  const kind = run.isReport ? `report with ${counted(run.samples.length, 'sample')}` : 'acquisition';
  const keptNote = kept && (kept.leftOut || kept.isThinned)
    ? el('p', { class: 'quiet' }, kept.leftOut
      ? `This page is thinned to its size: ${counted(kept.leftOut, 'picture')} left out (--max-size).`
      : 'This page is thinned to its size: curves and maps have fewer points, but all of their extremes.')
    : null;
  return el('header', { class: 'top' },
    el('div', { class: 'name' }, el('h1', { dir: 'auto' }, run.name), el('span', { class: 'quiet' }, kind)),
    el('p', { class: 'facts' }, ...facts.map((fact) => el('span', { dir: 'auto' }, fact))),
    keptNote);
}

/**
 * Findings on top, the lost ones first; nothing when there are none. The server first gives those that show
 * without reading points; a look at every point comes last.
 * @param {HTMLElement} host
 * @param {number} run
 * @param {boolean} [isWhole]  a look at every point
 */
export async function showFindings(host, run, isWhole = !isLive) {
  const severities = ['lost', 'suspect', 'note'];
  const words = { lost: 'lost', suspect: 'suspect', note: 'note' };
  const show = (/** @type {any[]} */ findings, /** @type {string} */ more) => {
    const sorted = severities.flatMap((severity) => findings.filter((finding) => finding.severity === severity));
    if (!sorted.length && !more) return host.replaceChildren();
    replace(host, el('section', { class: `findings ${sorted[0]?.severity || ''}`, 'aria-label': 'Findings' },
      sorted.length ? el('h2', {}, counted(sorted.length, 'finding')) : null,
      el('ul', {}, ...sorted.map((finding) => el('li', { class: finding.severity },
        el('span', { class: 'badge' }, words[/** @type {keyof typeof words} */ (finding.severity)] || ''), ' ', finding.message))),
      more ? el('p', { class: 'quiet' }, more) : null));
  };
  try {
    const answer = await ask('findings', { points: isWhole ? 1 : 0 }, { run, lane: 'findings' });
    show(answer.facts.findings, '');
  } catch (error) {
    if (error instanceof Superseded) return;
    show([], error instanceof Error ? error.message : String(error));
  }
}

/** The colour of a sample that is drawn over the one that is shown. @param {number} number */
export function sampleColour(number) {
  return runColours[(1 + state.samples.indexOf(number)) % runColours.length];
}

/**
 * The samples of a report, a page of them at a time.
 * @param {Run} run
 */
export function samplePanel(run) {
  const size = 25;
  const panel = new Panel('Samples', 'samples');
  const overlayButton = (/** @type {string} */ name, /** @type {number} */ i) => {
    const isOver = state.samples.includes(i);
    const over = button('', () => setState({ samples: isOver ? state.samples.filter((each) => each !== i) : [...state.samples, i] }), {
      class: 'quiet overlay', title: 'Draw its chromatograms over those of the sample', 'aria-label': `Overlay ${name}`,
      'aria-pressed': String(isOver), disabled: i === state.sample,
    }, [isOver ? legendKey(sampleColour(i)) : '+']);
    return over;
  };
  const search = /** @type {HTMLInputElement} */ (el('input', { type: 'search', placeholder: 'name or number', 'aria-label': 'Search samples' }));
  const list = el('div', { class: 'pages' });
  let first = Math.floor(state.sample / size) * size;
  const show = () => {
    const wanted = search.value.trim().toLowerCase();
    const all = run.samples.map((name, i) => ({ name, i }))
      .filter(({ name, i }) => !wanted || name.toLowerCase().includes(wanted) || String(i + 1) === wanted);
    first = Math.max(0, Math.min(first, Math.floor((all.length - 1) / size) * size));
    replace(list,
      el('ol', { class: 'list' }, ...all.slice(first, first + size).map(({ name, i }) => el('li', {},
        button('', () => setState({ ...nothingChosen, sample: i }), { 'aria-current': i === state.sample ? 'true' : undefined, class: 'row' }, [
          el('span', { class: 'number' }, i + 1), el('span', { dir: 'auto' }, name || '–')]),
        overlayButton(name, i)))),
      all.length > size ? el('div', { class: 'pager' },
        button('‹', () => { first -= size; show(); }, { disabled: first === 0, 'aria-label': 'Earlier samples' }),
        el('span', {}, `${first + 1}–${Math.min(first + size, all.length)} of ${grouped(all.length)}`),
        button('›', () => { first += size; show(); }, { disabled: first + size >= all.length, 'aria-label': 'Later samples' })) : null);
  };
  search.addEventListener('input', () => { first = 0; show(); });
  if (run.samples.length > size) panel.tools.appendChild(search);
  panel.body.appendChild(list);
  show();
  return { root: panel.root, show };
}

/**
 * A row of a table.
 * @param {string} tag
 * @param {(string|number|null)[]} cells
 */
function row(tag, cells) {
  return el('tr', {}, ...cells.map((cell) => el(tag, { class: typeof cell === 'number' ? 'number' : undefined, dir: 'auto' },
    typeof cell === 'number' ? grouped(cell) : cell)));
}

/** @param {Sample} sample */
export function functionPanel(sample) {
  const panel = new Panel('Functions', 'functions');
  const range = (/** @type {[number, number]|null} */ values, /** @type {number} */ decimals) =>
    values ? `${fixed(values[0], decimals)} – ${fixed(values[1], decimals)}` : '–';
  const rows = sample.functions.map((f) => row('td', [
    f.id, f.name + (f.isLockMass ? ' (reference)' : ''), f.kind, f.isAbsorbance || f.isMonitoring ? '–' : String(f.msLevel ?? '–'),
    f.polarity === 'unknown' ? '–' : f.polarity, f.scans, range(f.minutes, 2), range(f.massRange, 1),
    f.isCentroided === null ? '–' : f.isCentroided ? 'centroid' : 'profile',
  ]));
  if (sample.absorbance) {
    const { id } = sample.absorbance;
    const later = sample.functions.findIndex((f) => Number(f.id) > Number(id));
    rows.splice(later < 0 ? rows.length : later, 0, row('td', [id, 'Absorbance', 'absorbance', '–', '–', sample.absorbance.scans, '–', '–', '–']));
  }
  if (!rows.length) panel.say('There are no functions.');
  else {
    panel.body.appendChild(el('div', { class: 'scroll' }, el('table', {},
      el('thead', {}, row('th', ['', 'Function', 'Kind', 'Level', 'Polarity', 'Scans', 'Minutes', 'm/z', 'Data'])),
      el('tbody', {}, ...rows))));
  }
  const items = metadataOf(sample);
  if (items.length) panel.body.appendChild(metadataList(items));
  return panel;
}

// The items of the sample; where functions have their own values, each value with its functions.
/** @param {Sample} sample @returns {[string, string][]} */
function metadataOf(sample) {
  /** @type {Map<string, Map<string, string[]>>} */
  const own = new Map();
  for (const f of sample.functions) {
    for (const [key, value] of f.metadata) {
      if (value === null) continue;
      const values = own.get(key) || new Map();
      own.set(key, values.set(value, [...(values.get(value) || []), f.id]));
    }
  }
  const keys = [...new Set([...sample.metadata.map(([key]) => key), ...own.keys()])];
  const items = new Map(sample.metadata);
  return keys.filter((key) => !known.includes(key) && (own.has(key) || items.get(key))).map((key) => {
    const values = own.get(key);
    if (!values) return [key, items.get(key) || ''];
    if (values.size === 1) return [key, [...values.keys()][0]];
    return [key, [...values].map(([value, ids]) => `${value} (${ids.length > 1 ? 'functions' : 'function'} ${ids.join(', ')})`).join(' · ')];
  });
}

/** @param {[string, string][]} items */
function metadataList(items) {
  const shown = 10;
  const list = el('dl', { class: 'metadata' });
  const show = (/** @type {number} */ count) => replace(list, ...items.slice(0, count).flatMap(([key, value]) =>
    [el('dt', { dir: 'auto' }, key), el('dd', { dir: 'auto' }, value)]));
  show(shown);
  if (items.length <= shown) return list;
  const more = button(`all ${items.length} items`, () => { show(items.length); more.remove(); }, { class: 'quiet' });
  return el('div', {}, list, more);
}
