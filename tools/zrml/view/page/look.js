// Colours of the theme, for what is drawn on a canvas.

/** @type {Map<string, string>} */
const colours = new Map();

/** @param {string} name */
export function colour(name) {
  let value = colours.get(name);
  if (value === undefined) {
    value = getComputedStyle(document.documentElement).getPropertyValue(`--${name}`).trim();
    colours.set(name, value);
  }
  return value;
}

/** @type {Set<() => void>} */
const redraws = new Set();
const dark = matchMedia('(prefers-color-scheme: dark)');
dark.addEventListener('change', () => {
  colours.clear();
  redraws.forEach((redraw) => redraw());
});

/**
 * Calls `redraw` whenever the theme changes.
 * @param {() => void} redraw
 */
export function onTheme(redraw) {
  redraws.add(redraw);
}

/** Colours of overlaid runs, in their order. */
export const runColours = ['line-a', 'line-c', 'line-d', 'line-e', 'line-f', 'line-g'];

/** From nothing to the largest, as [red, green, blue]. */
const rampOfLight = [[255, 255, 255], [214, 229, 240], [134, 184, 215], [53, 128, 185], [22, 74, 140], [20, 24, 74]];
const rampOfDark = [[21, 24, 29], [48, 32, 92], [120, 40, 130], [200, 70, 105], [246, 143, 70], [252, 240, 170]];

/** The 256 colours of map cells as in image data: 0 is nothing. */
export function rampColours() {
  const stops = dark.matches ? rampOfDark : rampOfLight;
  const ramp = new Uint32Array(256);
  for (let step = 0; step < 256; ++step) {
    const place = (step / 255) ** 1.4 * (stops.length - 1);  // noise is pale
    const low = Math.min(Math.floor(place), stops.length - 2);
    const [r, g, b] = [0, 1, 2].map((i) => Math.round(stops[low][i] + (place - low) * (stops[low + 1][i] - stops[low][i])));
    ramp[step] = (255 << 24 | b << 16 | g << 8 | r) >>> 0;
  }
  return ramp;
}

export const font = '11px system-ui, sans-serif';

/** A height that grows with that of the window. @param {number} height */
export function tall(height) {
  return Math.round(height * Math.min(Math.max(innerHeight / 950, 1), 1.6));
}
