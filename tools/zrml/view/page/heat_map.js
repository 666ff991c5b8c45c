// Cells over time, drawn on a canvas: with axes, a scale of colours, zoom by dragging, and a readout.
import { el, amount, fixed } from './dom.js';
import { colour, font, onTheme, rampColours } from './look.js';
import { escapeXml } from './saving.js';

/**
 * @typedef {object} MapOptions
 * @property {number} height
 * @property {string} [abscissa]  what goes across, minutes by default
 * @property {string} ordinate  what goes upwards
 * @property {number} decimals  of the ordinate
 * @property {(minutes: number, ordinate: number) => void} [onClick]
 * @property {(box: Box|null) => void} [onView]
 */
/** @typedef {{minutes: [number, number], ordinate: [number, number]}} Box */

const margin = { left: 60, top: 8, right: 18, bottom: 36 };

export class HeatMap {
  /**
   * @param {HTMLElement} host
   * @param {MapOptions} options
   */
  constructor(host, options) {
    this.options = options;
    this.canvas = /** @type {HTMLCanvasElement} */ (el('canvas', { class: 'map', tabindex: '0', role: 'img' }));
    this.readout = el('div', { class: 'readout' });
    this.scale = el('div', { class: 'scale' });
    appendAll(host, this.canvas, el('div', { class: 'under' }, this.scale, this.readout));
    /** @type {any} */
    this.facts = null;
    /** @type {Uint8Array} */
    this.cells = new Uint8Array(0);
    /** @type {Box|null} */
    this.view = null;
    /** @type {number|null} */
    this.mark = null;
    /** @type {HTMLCanvasElement|null} */
    this.picture = null;
    this.canvas.addEventListener('pointerdown', (event) => this.#press(event));
    this.canvas.addEventListener('pointermove', (event) => this.#hover(event));
    this.canvas.addEventListener('pointerleave', () => { this.readout.textContent = ''; });
    this.canvas.addEventListener('dblclick', () => this.zoomTo(null));
    this.canvas.addEventListener('keydown', (event) => this.#key(event));
    new ResizeObserver(() => this.#draw()).observe(host);
    onTheme(() => { this.picture = null; this.#draw(); });
  }

  /**
   * @param {import('./store.js').Answer} answer
   * @param {Box|null} view  what part of it is shown, all by default
   */
  show(answer, view = null) {
    this.facts = answer.facts;
    this.cells = answer.cells || new Uint8Array(0);
    this.view = view;
    this.picture = null;
    this.#showScale();
    this.#draw();
  }

  /** @param {number|null} minutes */
  markTime(minutes) {
    if (minutes === this.mark) return;
    this.mark = minutes;
    this.#draw();
  }

  /** @returns {Box} */
  box() {
    return this.view || { minutes: this.facts.minutes, ordinate: this.facts.ordinate };
  }

  /** @param {Box|null} box */
  zoomTo(box) {
    this.view = box;
    this.picture = null;
    this.#draw();
    this.options.onView?.(box);
  }

  tsv() {
    const { columns, rows, minutes, ordinate } = this.facts;
    const lines = [[this.#abscissa(), this.options.ordinate, 'largest intensity of the cell'].join('\t')];
    for (let row = 0; row < rows; ++row) {
      for (let column = 0; column < columns; ++column) {
        const step = this.cells[row * columns + column];
        if (!step) continue;
        const at = [minutes[0] + (column + 0.5) / columns * (minutes[1] - minutes[0]), ordinate[0] + (row + 0.5) / rows * (ordinate[1] - ordinate[0])];
        lines.push([at[0].toFixed(4), at[1].toFixed(this.options.decimals), this.valueOf(step).toPrecision(3)].join('\t'));
      }
    }
    return lines.join('\n') + '\n';
  }

  /** The value of a step. @param {number} step */
  valueOf(step) {
    const { isLogarithmic, lowest, largest } = this.facts;
    const share = (step - 1) / 254;
    return isLogarithmic ? largest * 10 ** (4 * (share - 1)) : lowest + share * (largest - lowest);
  }

  #abscissa() {
    return this.options.abscissa || 'minutes';
  }

  #area() {
    const width = this.canvas.clientWidth - margin.left - margin.right;
    return { width, height: this.options.height - margin.top - margin.bottom };
  }

  #draw() {
    const parentWidth = this.canvas.parentElement?.clientWidth || 0;
    if (!this.facts || parentWidth <= 0) return;
    const ratio = devicePixelRatio;
    this.canvas.style.height = `${this.options.height}px`;
    const width = this.canvas.clientWidth;
    if (this.canvas.width !== Math.round(width * ratio) || this.canvas.height !== Math.round(this.options.height * ratio)) {
      this.canvas.width = Math.round(width * ratio);
      this.canvas.height = Math.round(this.options.height * ratio);
      this.picture = null;
    }
    const context = this.canvas.getContext('2d');
    const area = this.#area();
    if (!context || area.width <= 0) return;
    context.setTransform(ratio, 0, 0, ratio, 0, 0);
    context.clearRect(0, 0, width, this.options.height);
    if (!this.picture) this.picture = this.#paint(Math.round(area.width * ratio), Math.round(area.height * ratio));
    context.drawImage(this.picture, margin.left, margin.top, area.width, area.height);
    this.#drawAxes(context, area);
  }

  /** What is shown: the cells as a picture, the rest as text and lines. */
  svg() {
    if (!this.facts || !this.picture) return '';
    const { clientWidth: width } = this.canvas;
    const { height } = this.options;
    const area = this.#area();
    const box = this.box();
    const bottom = margin.top + area.height;
    const text = (/** @type {string} */ place, /** @type {string} */ anchor, /** @type {string} */ what) =>
      `<text ${place} text-anchor="${anchor}" fill="${colour('muted')}">${escapeXml(what)}</text>`;
    const frame = `x="${margin.left}" y="${margin.top}" width="${area.width}" height="${area.height}"`;
    return [`<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 ${width} ${height}" font-family="sans-serif" font-size="11">`,
      `<rect width="${width}" height="${height}" fill="${colour('panel')}"/>`,
      `<image ${frame} preserveAspectRatio="none" href="${this.picture.toDataURL()}"/>`,
      `<rect ${frame} fill="none" stroke="${colour('muted')}"/>`,
      ...ticks(box.minutes, area.width / 70).map((tick) => text(`x="${margin.left + tick.share * area.width}" y="${bottom + 14}"`, 'middle', tick.text)),
      ...ticks(box.ordinate, area.height / 36).map((tick) => text(`x="${margin.left - 5}" y="${bottom + 4 - tick.share * area.height}"`, 'end', tick.text)),
      text(`x="${margin.left + area.width / 2}" y="${bottom + 29}"`, 'middle', this.#abscissa()),
      text(`transform="translate(12 ${margin.top + area.height / 2}) rotate(-90)"`, 'middle', this.options.ordinate)].join('\n') + '\n</svg>\n';
  }

  // Each cell on the pixels that it covers; of the cells on one pixel the largest.
  /** @param {number} width @param {number} height */
  #paint(width, height) {
    const picture = document.createElement('canvas');
    picture.width = Math.max(width, 1);
    picture.height = Math.max(height, 1);
    const context = picture.getContext('2d');
    const { columns, rows } = this.facts;
    if (!context || !this.cells.length) return picture;
    const steps = new Uint8Array(picture.width * picture.height);
    const box = this.box();
    const across = spans(this.facts.minutes, columns, box.minutes, picture.width);
    const upwards = spans(this.facts.ordinate, rows, box.ordinate, picture.height);
    for (let row = 0; row < rows; ++row) {
      const [low, high] = [upwards[2 * row], upwards[2 * row + 1]];
      if (high <= low) continue;
      for (let column = 0; column < columns; ++column) {
        const step = this.cells[row * columns + column];
        if (!step) continue;
        const [left, right] = [across[2 * column], across[2 * column + 1]];
        for (let y = low; y < high; ++y) {
          const line = (picture.height - 1 - y) * picture.width;
          for (let x = left; x < right; ++x) if (steps[line + x] < step) steps[line + x] = step;
        }
      }
    }
    const image = context.createImageData(picture.width, picture.height);
    const pixels = new Uint32Array(image.data.buffer);
    const colours = rampColours();
    for (let i = 0; i < steps.length; ++i) pixels[i] = colours[steps[i]];
    context.putImageData(image, 0, 0);
    return picture;
  }

  /** @param {CanvasRenderingContext2D} context @param {{width: number, height: number}} area */
  #drawAxes(context, area) {
    const box = this.box();
    const bottom = margin.top + area.height;
    context.strokeStyle = colour('grid');
    context.strokeRect(margin.left - 0.5, margin.top - 0.5, area.width + 1, area.height + 1);
    context.fillStyle = colour('muted');
    context.font = font;
    context.textAlign = 'center';
    context.textBaseline = 'top';
    for (const tick of ticks(box.minutes, area.width / 70)) context.fillText(tick.text, margin.left + tick.share * area.width, bottom + 4);
    context.fillText(this.#abscissa(), margin.left + area.width / 2, bottom + 19);
    context.textAlign = 'right';
    context.textBaseline = 'middle';
    for (const tick of ticks(box.ordinate, area.height / 36)) context.fillText(tick.text, margin.left - 5, bottom - tick.share * area.height);
    context.save();
    context.translate(9, margin.top + area.height / 2);
    context.rotate(-Math.PI / 2);
    context.textAlign = 'center';
    context.fillText(this.options.ordinate, 0, 0);
    context.restore();
    if (this.mark === null) return;
    const x = margin.left + (this.mark - box.minutes[0]) / (box.minutes[1] - box.minutes[0]) * area.width;
    if (x < margin.left || x > margin.left + area.width) return;
    context.strokeStyle = colour('mark');
    context.beginPath();
    context.moveTo(Math.round(x) + 0.5, margin.top);
    context.lineTo(Math.round(x) + 0.5, bottom);
    context.stroke();
  }

  /** @param {MouseEvent} event @returns {[number, number]|null} */
  #placeOf(event) {
    const box = this.box();
    const area = this.#area();
    const frame = this.canvas.getBoundingClientRect();
    const across = (event.clientX - frame.left - margin.left) / area.width;
    const upwards = 1 - (event.clientY - frame.top - margin.top) / area.height;
    const clamp = (/** @type {number} */ share) => Math.min(Math.max(share, 0), 1);
    if (across < -0.02 || across > 1.02 || upwards < -0.05 || upwards > 1.05) return null;
    return [
      box.minutes[0] + clamp(across) * (box.minutes[1] - box.minutes[0]),
      box.ordinate[0] + clamp(upwards) * (box.ordinate[1] - box.ordinate[0]),
    ];
  }

  /** @param {PointerEvent} event */
  #hover(event) {
    if (!this.facts) return;
    const place = this.#placeOf(event);
    if (!place || !this.cells.length) return;
    const { columns, rows, minutes, ordinate } = this.facts;
    const column = Math.min(Math.floor((place[0] - minutes[0]) / (minutes[1] - minutes[0]) * columns), columns - 1);
    const row = Math.min(Math.floor((place[1] - ordinate[0]) / (ordinate[1] - ordinate[0]) * rows), rows - 1);
    const step = this.cells[row * columns + column];
    const across = this.options.abscissa ? `${this.options.abscissa} ${Math.round(place[0])}` : `${fixed(place[0], 3)} min`;
    this.readout.textContent = `${across}, ${this.options.ordinate} ${fixed(place[1], this.options.decimals)}: ` +
      (step ? `about ${amount(this.valueOf(step))}` : 'nothing');
  }

  /** @param {PointerEvent} event */
  #press(event) {
    const start = this.facts && event.button === 0 && this.#placeOf(event);
    if (!start) return;
    this.canvas.setPointerCapture(event.pointerId);
    const shade = el('div', { class: 'drag' });
    const host = /** @type {HTMLElement} */ (this.canvas.parentElement);
    const frame = host.getBoundingClientRect();
    let isMoved = false;
    const move = (/** @type {PointerEvent} */ e) => {
      if (!isMoved && Math.hypot(e.clientX - event.clientX, e.clientY - event.clientY) < 5) return;
      if (!isMoved) host.appendChild(shade);
      isMoved = true;
      shade.style.left = `${Math.min(e.clientX, event.clientX) - frame.left}px`;
      shade.style.top = `${Math.min(e.clientY, event.clientY) - frame.top}px`;
      shade.style.width = `${Math.abs(e.clientX - event.clientX)}px`;
      shade.style.height = `${Math.abs(e.clientY - event.clientY)}px`;
    };
    const end = (/** @type {PointerEvent} */ e) => {
      this.canvas.removeEventListener('pointermove', move);
      shade.remove();
      const place = this.#placeOf(e);
      if (e.type === 'pointercancel' || !place) return;
      if (!isMoved) return this.options.onClick?.(start[0], start[1]);
      this.zoomTo({ minutes: inOrder(start[0], place[0]), ordinate: inOrder(start[1], place[1]) });
    };
    this.canvas.addEventListener('pointermove', move);
    this.canvas.addEventListener('pointerup', end, { once: true });
    this.canvas.addEventListener('pointercancel', end, { once: true });
  }

  /** @param {KeyboardEvent} event */
  #key(event) {
    if (!this.facts || event.ctrlKey || event.metaKey || event.altKey) return;
    const box = this.box();
    const scaled = (/** @type {number} */ factor) => this.zoomTo({
      minutes: around(box.minutes, factor, this.facts.minutes), ordinate: around(box.ordinate, factor, this.facts.ordinate),
    });
    if (event.key === '+' || event.key === '=') scaled(0.5);
    else if (event.key === '-') scaled(2);
    else if (event.key === '0' || event.key === 'Home') this.zoomTo(null);
    else return;
    event.preventDefault();
  }

  #showScale() {
    const { lowest, largest, isLogarithmic } = this.facts;
    const bar = /** @type {HTMLCanvasElement} */ (el('canvas', { width: '254', height: '1' }));
    const context = bar.getContext('2d');
    if (context) {
      const image = context.createImageData(254, 1);
      new Uint32Array(image.data.buffer).set(rampColours().subarray(1, 255));
      context.putImageData(image, 0, 0);
    }
    this.scale.replaceChildren();
    if (largest === null || largest === undefined) return;
    appendAll(this.scale, el('span', {}, amount(isLogarithmic ? largest / 1e4 : lowest)), bar,
      el('span', {}, amount(largest) + (isLogarithmic ? ' (logarithmic)' : '')));
  }
}

/** @param {Node} parent @param {...Node} children */
function appendAll(parent, ...children) {
  for (const child of children) parent.appendChild(child);
}

/** @param {number} a @param {number} b @returns {[number, number]} */
function inOrder(a, b) {
  return a <= b ? [a, b] : [b, a];
}

/** @param {[number, number]} range @param {number} factor @param {[number, number]} limits @returns {[number, number]} */
function around(range, factor, limits) {
  const middle = (range[0] + range[1]) / 2;
  const half = (range[1] - range[0]) / 2 * factor;
  return [Math.max(middle - half, limits[0]), Math.min(middle + half, limits[1])];
}

// From which pixel up to which one each cell reaches; none for cells that are not shown.
/** @param {[number, number]} all @param {number} cells @param {[number, number]} shown @param {number} pixels */
function spans(all, cells, shown, pixels) {
  const result = new Int32Array(2 * cells);
  for (let i = 0; i < cells; ++i) {
    const low = all[0] + i / cells * (all[1] - all[0]);
    const high = all[0] + (i + 1) / cells * (all[1] - all[0]);
    const from = Math.floor((low - shown[0]) / (shown[1] - shown[0]) * pixels);
    const to = Math.ceil((high - shown[0]) / (shown[1] - shown[0]) * pixels - 1e-9);
    result[2 * i] = Math.max(from, 0);
    result[2 * i + 1] = Math.min(Math.max(to, from + 1), pixels);
  }
  return result;
}

/**
 * Round numbers in a range, about so many, with their place as a share.
 * @param {[number, number]} range
 * @param {number} about
 */
function ticks(range, about) {
  const size = (range[1] - range[0]) / Math.max(about, 1);
  if (!(size > 0)) return [];
  const power = 10 ** Math.floor(Math.log10(size));
  const step = power * ([1, 2, 5, 10].find((multiple) => multiple * power >= size) || 10);
  const decimals = Math.max(0, -Math.floor(Math.log10(step) + 1e-9));
  const found = [];
  for (let i = Math.ceil(range[0] / step - 1e-9); i * step <= range[1] + step * 1e-9; ++i) {
    found.push({ text: (i * step).toFixed(decimals), share: (i * step - range[0]) / (range[1] - range[0]) });
  }
  return found;
}
