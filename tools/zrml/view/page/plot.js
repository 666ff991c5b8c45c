// A curve or a spectrum, drawn by uPlot: with zoom, pan, keys, marks and labels of peaks.
import { el, amount } from './dom.js';
import { colour, font, onTheme } from './look.js';
import { escapeXml } from './saving.js';

/**
 * @typedef {object} Line
 * @property {ArrayLike<number>} x
 * @property {ArrayLike<number>} y
 * @property {string} colour  name of a colour of the theme
 * @property {string} [label]
 * @property {boolean} [isSticks]
 * @property {boolean} [isFaint]
 * @property {boolean} [isFilled]
 */
/** @typedef {{from: number, to: number, colour: string}} Band */
/**
 * @typedef {object} PlotOptions
 * @property {number} height
 * @property {string} xLabel
 * @property {boolean} [hasAxis]
 * @property {string} [sync]  a key: plots that have it share the cursor
 * @property {boolean} [hasFlags]  room for them
 * @property {number} [decimals]  of labelled peaks; none are labelled without
 * @property {(x: number) => void} [onClick]
 * @property {(from: number, to: number, event: PointerEvent|null) => void} [onDrag]  zooms when absent
 * @property {(view: [number, number]|null) => void} [onView]
 * @property {(x: number|null, index: number|null) => void} [onHover]
 * @property {(event: KeyboardEvent) => boolean} [onKey]  whether the key is used
 */

const axisSize = 50;
const dotSize = 5;
const paddingRight = 18;

/**
 * Sticks from zero; of those at one pixel the longest upwards and downwards.
 * @param {any} u
 * @param {number} series
 * @param {number} first
 * @param {number} last
 */
function stickPaths(u, series, first, last) {
  const path = new Path2D();
  const [xs, ys] = [u.data[0], u.data[series]];
  const zero = u.valToPos(0, 'y', true);
  let [pixel, lowest, highest] = [-1, 0, 0];
  const draw = () => {
    if (pixel < 0) return;
    path.moveTo(pixel, lowest < 0 ? u.valToPos(lowest, 'y', true) : zero);
    path.lineTo(pixel, highest > 0 ? u.valToPos(highest, 'y', true) : zero);
  };
  for (let i = first; i <= last; ++i) {
    const y = ys[i];
    if (y === null || y === undefined || Number.isNaN(y)) continue;
    const at = Math.round(u.valToPos(xs[i], 'x', true));
    if (at !== pixel) {
      draw();
      [pixel, lowest, highest] = [at, 0, 0];
    }
    lowest = Math.min(lowest, y);
    highest = Math.max(highest, y);
  }
  draw();
  return { stroke: path, fill: null, clip: null, band: null, gaps: null, flags: 0 };
}

/**
 * Positions in ascending numbers of what is from `low` to `high`.
 * @param {ArrayLike<number>} numbers
 * @param {number} low
 * @param {number} high
 * @returns {[number, number]}  first and behind the last
 */
export function within(numbers, low, high) {
  const search = (/** @type {(value: number) => boolean} */ isBefore) => {
    let [begin, end] = [0, numbers.length];
    while (begin < end) {
      const middle = (begin + end) >> 1;
      if (isBefore(numbers[middle])) begin = middle + 1;
      else end = middle;
    }
    return begin;
  };
  return [search((value) => value < low), search((value) => value <= high)];
}

/**
 * Position of the nearest one of ascending numbers.
 * @param {ArrayLike<number>} numbers
 * @param {number} value
 */
export function nearest(numbers, value) {
  const [at] = within(numbers, value, value);
  if (at === 0) return 0;
  if (at === numbers.length) return at - 1;
  return value - numbers[at - 1] <= numbers[at] - value ? at - 1 : at;
}

export class Plot {
  /**
   * @param {HTMLElement} host
   * @param {PlotOptions} options
   */
  constructor(host, options) {
    this.options = options;
    this.host = el('div', { class: 'plot', tabindex: '0', role: 'img' });
    host.appendChild(this.host);
    /** @type {Line[]} */
    this.lines = [];
    /** @type {number[]} */
    this.marks = [];
    /** @type {Band[]} */
    this.bands = [];
    /** @type {{x: number, label: string}[]} */
    this.flags = [];
    /** @type {[number, number]|null} */
    this.view = null;
    /** Ends of what can be shown, where they are not those of the data. @type {[number, number]|null} */
    this.limits = null;
    /** @type {any} */
    this.chart = null;
    /** @type {any[]} */
    this.data = [];
    this.host.addEventListener('keydown', (event) => this.#key(event));
    this.host.addEventListener('wheel', (event) => this.#wheel(event), { passive: false });
    new ResizeObserver(() => this.#resize()).observe(this.host);
    onTheme(() => this.#rebuild());
  }

  /**
   * @param {Line[]} lines
   * @param {{marks?: number[], bands?: Band[], flags?: {x: number, label: string}[], view?: [number, number]|null}} [more]
   */
  show(lines, more = {}) {
    const isOfSameShape = this.chart && lines.length === this.lines.length && lines.every((line, i) => {
      const old = this.lines[i];
      return line.colour === old.colour && line.isSticks === old.isSticks && line.isFaint === old.isFaint && isDot(line) === isDot(old);
    });
    this.lines = lines;
    this.marks = more.marks || [];
    this.bands = more.bands || [];
    this.flags = more.flags || [];
    if (more.view !== undefined) this.view = more.view;
    this.data = align(lines);
    if (!isOfSameShape) return this.#rebuild();
    this.chart.batch(() => {
      this.chart.setData(this.data, false);
      this.chart.setScale('x', this.#range());
    });
  }

  /** @param {{marks?: number[], bands?: Band[], flags?: {x: number, label: string}[]}} more */
  mark(more) {
    Object.assign(this, more);
    this.chart?.redraw(false, false);
  }

  /** @param {[number, number]|null} view */
  setView(view) {
    if (JSON.stringify(view) === JSON.stringify(this.view)) return;
    this.view = view;
    this.chart?.setScale('x', this.#range());
  }

  /** @param {number} height @param {boolean} hasAxis */
  setShape(height, hasAxis) {
    if (this.options.height === height && this.options.hasAxis === hasAxis) return;
    Object.assign(this.options, { height, hasAxis });
    this.#rebuild();
  }

  /** Ends of what can be shown. @returns {[number, number]} */
  extent() {
    const xs = this.data[0] || [];
    if (this.limits) return this.limits;
    if (!xs.length) return [0, 1];
    const [low, high] = [xs[0], xs[xs.length - 1]];
    const margin = low === high ? 0.5 : this.lines.some((line) => line.isSticks) ? (high - low) / 50 : 0;
    return [low - margin, high + margin];
  }

  /**
   * Makes what is shown so many times as wide around a place, the middle by default.
   * @param {number} factor
   * @param {number} [around]
   */
  zoom(factor, around) {
    const { min, max } = this.#range();
    const centre = around ?? (min + max) / 2;
    this.#change([centre - (centre - min) * factor, centre + (max - centre) * factor]);
  }

  /** @param {number} share  of what is shown */
  pan(share) {
    const { min, max } = this.#range();
    const [low, high] = this.extent();
    const way = Math.min(Math.max((max - min) * share, low - min), high - max);
    this.#change([min + way, max + way]);
  }

  reset() {
    this.#change(null);
  }

  canvas() {
    return this.chart ? /** @type {HTMLCanvasElement} */ (this.chart.ctx.canvas) : null;
  }

  /** What is shown, as a picture of lines. */
  svg() {
    const [width, height] = [900, Math.max(this.options.height, 240)];
    const [left, top, right, bottom] = [70, 12, width - 12, height - 42];
    const { min, max } = this.#range();
    const visible = this.lines.map((line) => within(line.x, min, max));
    let [low, high] = [0, 0];
    this.lines.forEach((line, n) => {
      for (let i = visible[n][0]; i < visible[n][1]; ++i) {
        if (line.y[i] > high) high = line.y[i];
        if (line.y[i] < low) low = line.y[i];
      }
    });
    const px = (/** @type {number} */ x) => (left + (x - min) / (max - min || 1) * (right - left)).toFixed(2);
    const py = (/** @type {number} */ y) => (bottom - (y - low) / (high - low || 1) * (bottom - top)).toFixed(2);
    const parts = [`<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 ${width} ${height}" font-family="sans-serif" font-size="11">`,
      `<rect width="${width}" height="${height}" fill="${colour('panel')}"/>`];
    const text = (/** @type {number|string} */ x, /** @type {number|string} */ y, /** @type {string} */ anchor, /** @type {string} */ what) =>
      parts.push(`<text x="${x}" y="${y}" text-anchor="${anchor}" fill="${colour('text')}">${escapeXml(what)}</text>`);
    for (let i = 0; i <= 5; ++i) {
      const x = min + (max - min) * i / 5;
      text(px(x), bottom + 16, 'middle', String(Number(x.toPrecision(6))));
      const y = low + (high - low) * i / 5;
      text(left - 6, py(y), 'end', amount(y));
    }
    text((left + right) / 2, height - 8, 'middle', this.options.xLabel);
    parts.push(`<path d="M${left} ${top}V${bottom}H${right}" fill="none" stroke="${colour('muted')}"/>`);
    this.lines.forEach((line, n) => {
      let path = '';
      for (let i = visible[n][0]; i < visible[n][1]; ++i) {
        if (Number.isNaN(line.y[i])) continue;
        path += line.isSticks ? `M${px(line.x[i])} ${py(0)}V${py(line.y[i])}` : `${path ? 'L' : 'M'}${px(line.x[i])} ${py(line.y[i])}`;
      }
      const ends = isDot(line) ? ` stroke-width="${dotSize}" stroke-linecap="round"` : '';
      parts.push(`<path d="${ends ? path + 'h0' : path}" fill="none" stroke="${colour(line.colour)}"${ends}/>`);
    });
    return parts.join('\n') + '\n</svg>\n';
  }

  #range() {
    const [min, max] = this.view || this.extent();
    return { min, max };
  }

  /** @param {[number, number]|null} view */
  #change(view) {
    const [low, high] = this.extent();
    if (view && view[0] <= low && view[1] >= high) view = null;
    if (view) view = [Math.max(view[0], low), Math.min(view[1], high)];
    if (view && !(view[1] - view[0] > (high - low) * 1e-9)) return;
    this.setView(view);
    this.options.onView?.(view);
  }

  /** @param {WheelEvent} event */
  #wheel(event) {
    if (!this.chart || !(event.ctrlKey || event.metaKey || event.altKey)) return;
    event.preventDefault();
    const box = this.chart.over.getBoundingClientRect();
    this.zoom(event.deltaY > 0 ? 1.25 : 0.8, this.chart.posToVal(event.clientX - box.left, 'x'));
  }

  /** @param {KeyboardEvent} event */
  #key(event) {
    if (event.ctrlKey || event.metaKey || event.altKey) return;
    /** @type {Record<string, () => void>} */
    const actions = {
      '+': () => this.zoom(0.5), '=': () => this.zoom(0.5), '-': () => this.zoom(2), '0': () => this.reset(),
      'Home': () => this.reset(),
    };
    if (event.shiftKey) Object.assign(actions, { ArrowLeft: () => this.pan(-0.25), ArrowRight: () => this.pan(0.25) });
    if (actions[event.key]) actions[event.key]();
    else if (!this.options.onKey?.(event)) return;
    event.preventDefault();
  }

  #resize() {
    const width = Math.floor(this.host.clientWidth);
    if (width <= 0) return;
    if (!this.chart) this.#rebuild();
    else if (this.chart.width !== width) this.chart.setSize({ width, height: this.options.height });
  }

  #rebuild() {
    const width = Math.floor(this.host.clientWidth);
    if (!this.lines.length || width <= 0) return;
    this.chart?.destroy();
    this.chart = new uPlot(this.#chartOptions(width), this.data, this.host);
    this.chart.setScale('x', this.#range());
    this.chart.over.addEventListener('pointerdown', (/** @type {PointerEvent} */ event) => this.#press(event));
  }

  /** @param {number} width @returns {any} */
  #chartOptions(width) {
    const grid = { stroke: colour('grid'), width: 1 };
    const axis = { stroke: colour('muted'), font, grid, ticks: { show: false } };
    const hasAxis = this.options.hasAxis !== false;
    return {
      width,
      height: this.options.height,
      padding: [this.options.decimals !== undefined || this.options.hasFlags ? 20 : 8, paddingRight, hasAxis ? 0 : 6, 0],
      legend: { show: false },
      scales: {
        x: { time: false, auto: false },
        y: { range: (/** @type {any} */ _u, /** @type {number|null} */ low, /** @type {number|null} */ high) => rangeOf(low, high) },
      },
      axes: [
        {
          ...axis, label: hasAxis ? this.options.xLabel : undefined, labelFont: font, labelSize: 14, size: hasAxis ? 28 : 0, gap: 7, labelGap: 0,
          values: (/** @type {any} */ _u, /** @type {number[]} */ ticks) => ticks.map(hasAxis ? tickText : () => ''),
        },
        { ...axis, size: axisSize, gap: 4, space: 26, values: (/** @type {any} */ _u, /** @type {number[]} */ ticks) => ticks.map(tickText) },
      ],
      cursor: {
        sync: this.options.sync ? { key: this.options.sync, setSeries: false, filters: { pub: isMove, sub: isMove }, scales: ['x', null] } : undefined,
        drag: { x: false, y: false },
        y: false,
        points: { show: false },
        bind: { dblclick: () => () => { this.reset(); }, mousedown: () => () => {}, mouseup: () => () => {}, click: () => () => {} },
      },
      series: [{}, ...this.lines.map((line) => ({
        stroke: colour(line.colour),
        alpha: line.isFaint ? 0.55 : 1,
        width: line.isSticks ? 1.25 : 1,
        fill: line.isFilled ? colour(line.colour + '-fill') : undefined,
        points: { show: isDot(line), size: dotSize, fill: colour(line.colour), space: 0 },
        paths: line.isSticks ? stickPaths : undefined,
        spanGaps: false,
      }))],
      hooks: {
        drawAxes: [(/** @type {any} */ u) => { this.#drawBands(u); this.#drawMarks(u); }],
        draw: [(/** @type {any} */ u) => {
          if (this.options.decimals !== undefined) this.#labelPeaks(u, this.options.decimals);
          this.#drawFlags(u);
        }],
        setCursor: [(/** @type {any} */ u) => this.#hover(u)],
      },
    };
  }

  /** @param {any} u */
  #hover(u) {
    if (!this.options.onHover) return;
    const isIn = u.cursor.left >= 0 && u.cursor.idx !== null && u.cursor.idx !== undefined;
    this.options.onHover(isIn ? u.posToVal(u.cursor.left, 'x') : null, isIn ? u.cursor.idx : null);
  }

  // A click, a drag over a range, or, with Shift or the middle button, a pan.
  /** @param {PointerEvent} event */
  #press(event) {
    if (event.button > 1) return;
    const over = this.chart.over;
    const box = over.getBoundingClientRect();
    const isPan = event.shiftKey || event.button === 1;
    const start = event.clientX - box.left;
    const before = this.#range();
    const shade = el('div', { class: 'drag' });
    let isMoved = false;
    event.preventDefault();
    this.host.focus({ preventScroll: true });
    over.setPointerCapture(event.pointerId);
    const place = (/** @type {PointerEvent} */ e) => Math.min(Math.max(e.clientX - box.left, 0), box.width);
    const move = (/** @type {PointerEvent} */ e) => {
      if (!isMoved && Math.abs(e.clientX - box.left - start) < 4) return;
      if (!isMoved && !isPan) over.appendChild(shade);
      isMoved = true;
      if (isPan) {
        const way = (start - (e.clientX - box.left)) / box.width * (before.max - before.min);
        this.#change([before.min + way, before.max + way]);
        return;
      }
      shade.style.left = `${Math.min(start, place(e))}px`;
      shade.style.width = `${Math.abs(place(e) - start)}px`;
    };
    const end = (/** @type {PointerEvent} */ e) => {
      over.removeEventListener('pointermove', move);
      shade.remove();
      if (e.type === 'pointercancel' || isPan) return;
      const [from, to] = [start, place(e)].map((pixel) => this.chart.posToVal(pixel, 'x'));
      if (!isMoved) this.options.onClick?.(from);
      else if (this.options.onDrag) this.options.onDrag(Math.min(from, to), Math.max(from, to), e);
      else this.#change([Math.min(from, to), Math.max(from, to)]);
    };
    over.addEventListener('pointermove', move);
    over.addEventListener('pointerup', end, { once: true });
    over.addEventListener('pointercancel', end, { once: true });
  }

  /** Shows from one place to another. @param {number} from @param {number} to */
  zoomTo(from, to) {
    this.#change([from, to]);
  }

  /** @param {any} u */
  #drawBands(u) {
    const { left, top, width, height } = u.bbox;
    for (const band of this.bands) {
      const from = Math.max(u.valToPos(band.from, 'x', true), left);
      const to = Math.min(u.valToPos(band.to, 'x', true), left + width);
      if (to < from) continue;
      u.ctx.fillStyle = colour(band.colour);
      u.ctx.fillRect(from, top, Math.max(to - from, 1), height);
    }
  }

  /** @param {any} u */
  #drawMarks(u) {
    const { left, top, width, height } = u.bbox;
    const ctx = u.ctx;
    ctx.save();
    ctx.strokeStyle = colour('mark');
    ctx.lineWidth = devicePixelRatio;
    for (const mark of this.marks) {
      const at = Math.round(u.valToPos(mark, 'x', true)) + 0.5;
      if (at < left || at > left + width) continue;
      ctx.beginPath();
      ctx.moveTo(at, top);
      ctx.lineTo(at, top + height);
      ctx.stroke();
    }
    ctx.restore();
  }

  // Small triangles with a text at given places, where there is room for it.
  /** @param {any} u */
  #drawFlags(u) {
    const { left, top, width } = u.bbox;
    const ctx = u.ctx;
    const size = 3.5 * devicePixelRatio;
    ctx.save();
    ctx.fillStyle = colour('muted');
    ctx.font = scaled(font);
    ctx.textAlign = 'center';
    ctx.textBaseline = 'bottom';
    /** @type {[number, number][]} */
    const taken = [];
    for (const flag of this.flags) {
      const at = u.valToPos(flag.x, 'x', true);
      if (at < left || at > left + width) continue;
      ctx.beginPath();
      ctx.moveTo(at - size, top - size * 1.5);
      ctx.lineTo(at + size, top - size * 1.5);
      ctx.lineTo(at, top);
      ctx.fill();
      const half = ctx.measureText(flag.label).width / 2 + size;
      if (taken.some(([low, high]) => at - half < high && at + half > low)) continue;
      taken.push([at - half, at + half]);
      ctx.fillText(flag.label, Math.min(Math.max(at, left + half), left + width - half), top - size * 1.5);
    }
    ctx.restore();
  }

  // The highest ones that are shown, each above its peak, as far as there is room.
  /**
   * @param {any} u
   * @param {number} decimals
   */
  #labelPeaks(u, decimals) {
    const { left, width } = u.bbox;
    const line = this.lines[0];
    const { min, max } = this.#range();
    const [first, end] = within(line.x, min, max);
    const ctx = u.ctx;
    ctx.save();
    ctx.font = scaled(font);
    ctx.fillStyle = colour('text');
    ctx.strokeStyle = colour('panel');  // so that a mark does not run through a label
    ctx.lineWidth = 4 * devicePixelRatio;
    ctx.lineJoin = 'round';
    ctx.textAlign = 'center';
    ctx.textBaseline = 'bottom';
    const lineHeight = 13 * devicePixelRatio;
    /** @type {[number, number, number][]} */
    const taken = [];
    for (const i of apexes(line, first, end, 60)) {
      const text = line.x[i].toFixed(decimals);
      const half = ctx.measureText(text).width / 2 + 3 * devicePixelRatio;
      const at = Math.min(Math.max(u.valToPos(line.x[i], 'x', true), left + half), left + width - half);
      const bottom = u.valToPos(line.y[i], 'y', true) - 2 * devicePixelRatio;
      if (taken.some(([low, high, y]) => at - half < high && at + half > low && Math.abs(bottom - y) < lineHeight)) continue;
      if (isCrossed(u, line, i, at - half, at + half)) continue;
      taken.push([at - half, at + half, bottom]);
      ctx.strokeText(text, at, bottom);
      ctx.fillText(text, at, bottom);
    }
    ctx.restore();
  }
}

/**
 * Whether a higher peak beside the one at `i` would run through its label.
 * @param {any} u @param {Line} line @param {number} i
 * @param {number} left @param {number} right
 */
function isCrossed(u, line, i, left, right) {
  const [low, high] = [left, right].map((pixel) => u.posToVal((pixel - u.bbox.left) / devicePixelRatio, 'x'));
  const [from, to] = within(line.x, low, high);
  if (to - from > 20000) return true;
  for (let k = from; k < to; ++k) {
    if (k !== i && line.y[k] > line.y[i]) return true;
  }
  return false;
}

/**
 * Positions of the highest local maxima, the highest first.
 * @param {Line} line @param {number} first @param {number} end @param {number} count
 */
export function apexes(line, first, end, count) {
  const found = [];
  let largest = 0;
  for (let i = first; i < end; ++i) if (line.y[i] > largest) largest = line.y[i];
  for (let i = first; i < end; ++i) {
    const y = line.y[i];
    if (!(y > largest * 0.004)) continue;
    if (line.isSticks || ((i === first || line.y[i - 1] < y) && (i + 1 === end || line.y[i + 1] <= y))) found.push(i);
  }
  return found.sort((a, b) => line.y[b] - line.y[a]).slice(0, count);
}

/** A line has no length where there is one number only. @param {Line} line */
function isDot(line) {
  let numbers = 0;
  for (let i = 0; i < line.y.length && numbers < 2; ++i) if (!Number.isNaN(line.y[i])) ++numbers;
  return !line.isSticks && numbers === 1;
}

/** @param {string} type */
function isMove(type) {
  return type === 'mousemove' || type === 'mouseleave';
}

/** @param {number} tick */
function tickText(tick) {
  const size = Math.abs(tick);
  if (size === 0 || (size >= 1e-3 && size < 1e5)) return String(Number(tick.toPrecision(6)));
  return Number(tick.toPrecision(6)).toExponential().replace('e+', 'e');
}

/** @param {string} text */
function scaled(text) {
  return text.replace(/^(\d+)px/, (_all, size) => `${Number(size) * devicePixelRatio}px`);
}

/**
 * From zero, or from below where there is less, with some room on top.
 * @param {number|null} low
 * @param {number|null} high
 * @returns {[number, number]}
 */
function rangeOf(low, high) {
  if (low === null || high === null) return [0, 1];
  const bottom = Math.min(low, 0);
  const top = Math.max(high, 0);
  return top === bottom ? [0, 1] : [bottom < 0 ? bottom - (top - bottom) * 0.03 : 0, top + (top - bottom) * 0.05];
}

/**
 * The lines over one x for all.
 * @param {Line[]} lines
 */
function align(lines) {
  const isShared = lines.every((line) => line.x === lines[0].x || hasSame(line.x, lines[0].x));
  if (isShared) return [lines[0] ? lines[0].x : [], ...lines.map((line) => withGaps(line.y))];
  return uPlot.join(lines.map((line) => /** @type {any} */ ([line.x, withGaps(line.y)])));
}

/** What no file has is a gap, which uPlot wants as null. @param {ArrayLike<number>} y @returns {ArrayLike<number|null>} */
function withGaps(y) {
  for (let i = 0; i < y.length; ++i) {
    if (Number.isNaN(y[i])) return Array.from(y, (value) => (Number.isNaN(value) ? null : value));
  }
  return y;
}

/** @param {ArrayLike<number>} a @param {ArrayLike<number>} b */
function hasSame(a, b) {
  if (a.length !== b.length) return false;
  for (let i = 0; i < a.length; ++i) if (a[i] !== b[i]) return false;
  return true;
}
