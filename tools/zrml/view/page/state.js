// What is shown: which sample and scan, which times and masses. Each step is kept in the browser's history.

/**
 * @typedef {object} State
 * @property {number} sample
 * @property {number|null} function
 * @property {number|null} scan
 * @property {number|null} bin  of the scan's drift bins; all when null
 * @property {[number, number]|null} minutes  shown
 * @property {[number, number]|null} mz  shown in the spectrum
 * @property {[number, number]|null} average  times of the scans whose mean is shown instead of a scan
 * @property {[number, number]|null} background
 * @property {[number, number, number][]} ions  function, low, high: extracted
 * @property {number|null} absorbance  its scan
 * @property {number[]} samples  whose chromatograms are drawn over those of the sample
 * @property {boolean} centroids
 * @property {number[]} runs  that are shown; the first one is the one whose spectra are
 */

/** Nothing of a sample is chosen: for another sample, or another run. @type {Omit<State, 'sample'|'centroids'|'runs'>} */
export const nothingChosen = {
  function: null, scan: null, minutes: null, mz: null, average: null, background: null, ions: [], absorbance: null,
  samples: [], bin: null,
};

/** @returns {State} */
function first() {
  return { ...nothingChosen, sample: 0, centroids: false, runs: [0] };
}

/** @type {State} */
export let state = first();
/** @type {((state: State, before: State) => void)[]} */
const listeners = [];

/** @param {(state: State, before: State) => void} listener */
export function onState(listener) {
  listeners.push(listener);
}

function notify(/** @type {State} */ before) {
  for (const listener of listeners) listener(state, before);
}

/**
 * @param {Partial<State>} change
 * @param {boolean} [isStep] whether "back" leads here; otherwise the last step becomes this
 */
export function setState(change, isStep = true) {
  const before = state;
  state = { ...state, ...change };
  const json = JSON.stringify(state);
  if (json === JSON.stringify(before)) return;
  const address = '#' + encodeURIComponent(json);
  if (isStep) history.pushState(null, '', address);
  else history.replaceState(null, '', address);
  notify(before);
}

// The address may have been typed by anyone: numbers and lists of numbers are taken, nothing else.
function readAddress() {
  /** @type {any} */
  const read = first();
  let given;
  try {
    given = JSON.parse(decodeURIComponent(location.hash.slice(1)));
  } catch {
    return read;
  }
  const isNumber = (/** @type {any} */ value) => typeof value === 'number' && Number.isFinite(value);
  const isPair = (/** @type {any} */ value) => Array.isArray(value) && value.length === 2 && value.every(isNumber);
  for (const key of ['sample', 'function', 'scan', 'absorbance', 'bin']) if (isNumber(given?.[key])) read[key] = given[key];
  for (const key of ['minutes', 'mz', 'average', 'background']) if (isPair(given?.[key])) read[key] = given[key];
  if (Array.isArray(given?.ions)) {
    read.ions = given.ions.filter((/** @type {any} */ ion) => Array.isArray(ion) && ion.length === 3 && ion.every(isNumber));
  }
  if (Array.isArray(given?.samples) && given.samples.every(isNumber)) read.samples = given.samples;
  if (Array.isArray(given?.runs) && given.runs.length && given.runs.every(isNumber)) read.runs = given.runs;
  read.centroids = given?.centroids === true;
  return read;
}

/** Takes the state of the address; from then on back and forward do. */
export function startState() {
  state = readAddress();
  addEventListener('popstate', () => {
    const before = state;
    state = readAddress();
    notify(before);
  });
}
