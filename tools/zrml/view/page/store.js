// The data of the page. A kept page has answers inside; otherwise the server that the page is from gives them.

/**
 * @typedef {object} Answer
 * @property {any} facts
 * @property {Float64Array|Float32Array} x
 * @property {Float64Array|Float32Array} y
 * @property {Int32Array|null} scans
 * @property {Uint8Array|null} cells
 */
/** @typedef {Record<string, string|number|undefined>} Values */
/** @typedef {{isThinned: boolean, leftOut: number, answers: Record<string, {facts: any, data: string}>}} Kept */

/** The answer to a question that has none any more: a newer one took its place. */
export class Superseded extends Error {}

/** What a kept page has no room for. */
export class LeftOut extends Error {
  constructor() {
    super('Not in this page: it was left out to keep the file small (--max-size).');
  }
}

const keptElement = document.getElementById('kept');
/** @type {Kept|null} */
export const kept = keptElement ? JSON.parse(keptElement.textContent || '') : null;
export const isLive = kept === null;

/**
 * @param {string} name
 * @param {Values} values
 */
function keyOf(name, values) {
  const keys = Object.keys(values).filter((key) => values[key] !== undefined).sort();
  return keys.length ? `${name}?${keys.map((key) => `${key}=${values[key]}`).join('&')}` : name;
}

/**
 * @param {string} text
 * @returns {ArrayBuffer}
 */
function bytesOf(text) {
  const direct = /** @type {any} */ (Uint8Array).fromBase64;  // not every browser has it
  if (direct) return direct.call(Uint8Array, text).buffer;
  const characters = atob(text);
  const bytes = new Uint8Array(characters.length);
  for (let i = 0; i < characters.length; ++i) bytes[i] = characters.charCodeAt(i);
  return bytes.buffer;
}

/** @type {Record<string, [any, number]>} */
const kinds = { f8: [Float64Array, 8], f4: [Float32Array, 4], i4: [Int32Array, 4], u1: [Uint8Array, 1] };

/**
 * @param {any} facts
 * @param {ArrayBuffer} buffer
 * @param {number} offset
 * @returns {Answer}
 */
function unpack(facts, buffer, offset) {
  if (facts.error) throw new Error(facts.error);
  /** @type {any} */
  const answer = { facts, x: new Float64Array(0), y: new Float64Array(0), scans: null, cells: null };
  for (const [name, kind, count] of facts.arrays) {
    const [Kind, size] = kinds[kind];
    answer[name] = new Kind(buffer, offset, count);
    offset += Math.ceil(count * size / 8) * 8;
  }
  return answer;
}

const token = takeToken();
const tab = Math.random().toString(36).slice(2);

// From the address once; it is not shown there any longer than needed.
function takeToken() {
  if (!isLive) return '';
  const given = /^#token=([0-9a-f]+)$/.exec(location.hash);
  if (given) {
    sessionStorage.setItem('zrml-token', given[1]);
    history.replaceState(null, '', location.pathname);
  }
  return sessionStorage.getItem('zrml-token') || '';
}

/** @type {Map<string, AbortController>} */
const lanes = new Map();

/**
 * @param {string} path
 * @param {string} lane
 */
async function fetchFrame(path, lane) {
  lanes.get(lane)?.abort();
  const controller = new AbortController();
  lanes.set(lane, controller);
  try {
    const response = await fetch(path, {
      signal: controller.signal,
      headers: { 'X-Zrml-Token': token, 'X-Zrml-Tab': tab, 'X-Zrml-Lane': lane },
    });
    if (response.status === 403) throw new Error('The server does not know this page. Open the address that zrml view has printed.');
    if (response.status === 409) throw new Superseded();
    if (response.status === 400) throw new Error('The run does not have this any more. Load the page again.');
    if (!response.ok) throw new Error(`The server answers ${response.status}.`);
    return await response.arrayBuffer();
  } catch (error) {
    if (controller.signal.aborted) throw new Superseded();
    if (error instanceof TypeError) throw new Error('The server does not answer: zrml view has ended.');
    throw error;
  } finally {
    if (lanes.get(lane) === controller) lanes.delete(lane);
  }
}

let mainRun = 0;

/** The run that is asked unless another one is named. @param {number} index */
export function useRun(index) {
  mainRun = index;
}

/**
 * Asks a question. `values` say what it is about and `detail` how much of it: a kept page has one detail only.
 * In the server a newer question of a lane takes the place of the older one.
 * @param {string} name
 * @param {Values} values
 * @param {{run?: number, lane?: string, detail?: Values}} [how]
 * @returns {Promise<Answer>}
 */
export async function ask(name, values, how = {}) {
  if (kept) {
    const answer = kept.answers[keyOf(name, values)];
    if (!answer) throw new LeftOut();
    return unpack(answer.facts, bytesOf(answer.data), 0);
  }
  const key = `${how.run ?? mainRun}/${keyOf(name, { ...values, ...how.detail })}`;
  const frame = await fetchFrame(`/data/${key}`, how.lane || key);
  const length = Number(new DataView(frame).getBigUint64(0, true));
  return unpack(JSON.parse(new TextDecoder().decode(new Uint8Array(frame, 8, length))), frame, 8 + length);
}

/**
 * Whether a kept page has the answer; the server has all.
 * @param {string} name
 * @param {Values} values
 */
export function has(name, values) {
  return !kept || keyOf(name, values) in kept.answers;
}

/**
 * How far the questions of this page are that take long, by lane: a share of 1.
 * @returns {Promise<Record<string, number>>}
 */
export async function progress() {
  if (!isLive) return {};
  const frame = await fetchFrame('/progress', 'progress');
  return JSON.parse(new TextDecoder().decode(frame));
}

/** @returns {Promise<number>} how many runs there are */
export async function countRuns() {
  if (!isLive) return 1;
  return JSON.parse(new TextDecoder().decode(await fetchFrame('/runs', 'runs'))).runs;
}
