// What is shown, as TSV on the clipboard or as a picture in a file.
import { el, button } from './dom.js';
import { colour } from './look.js';

/**
 * @typedef {object} Picture
 * @property {string} name  of the file
 * @property {() => HTMLCanvasElement|null} canvas
 * @property {() => string} svg
 * @property {() => string} tsv
 */

/**
 * @param {string} name
 * @param {Blob} blob
 */
function save(name, blob) {
  const address = URL.createObjectURL(blob);
  const link = /** @type {HTMLAnchorElement} */ (el('a', { download: name.replace(/[^\w.-]+/g, '_') }));
  link.href = address;
  link.click();
  setTimeout(() => URL.revokeObjectURL(address), 1000);
}

// A drawing on the colour of its panel.
/** @param {HTMLCanvasElement|null} drawn */
function onPaper(drawn) {
  if (!drawn) return null;
  const canvas = /** @type {HTMLCanvasElement} */ (el('canvas', { width: drawn.width, height: drawn.height }));
  const context = canvas.getContext('2d');
  if (!context) return null;
  context.fillStyle = colour('panel');
  context.fillRect(0, 0, canvas.width, canvas.height);
  context.drawImage(drawn, 0, 0);
  return canvas;
}

/**
 * Buttons for a picture.
 * @param {Picture} picture
 */
export function savingButtons(picture) {
  const copy = button('TSV', async () => {
    try {
      await navigator.clipboard.writeText(picture.tsv());
      copy.textContent = 'copied';
    } catch {
      save(picture.name + '.tsv', new Blob([picture.tsv()], { type: 'text/tab-separated-values' }));
    }
    setTimeout(() => { copy.textContent = 'TSV'; }, 1500);
  }, { title: 'Copy the points as TSV', class: 'quiet' });
  const png = button('PNG', () => {
    onPaper(picture.canvas())?.toBlob((blob) => { if (blob) save(picture.name + '.png', blob); });
  }, { title: 'Save as PNG', class: 'quiet' });
  const svg = button('SVG', () => {
    save(picture.name + '.svg', new Blob([picture.svg()], { type: 'image/svg+xml' }));
  }, { title: 'Save as SVG', class: 'quiet' });
  return el('span', { class: 'saving' }, copy, svg, png);
}

/** @param {string} text */
export function escapeXml(text) {
  return text.replace(/[&<>"]/g, (c) => `&#${c.charCodeAt(0)};`);
}

/**
 * Rows of numbers under a line of names.
 * @param {string[]} names
 * @param {ArrayLike<number>[]} columns
 */
export function tsv(names, columns) {
  const lines = [names.join('\t')];
  for (let i = 0; i < columns[0].length; ++i) lines.push(columns.map((column) => column[i]).join('\t'));
  return lines.join('\n') + '\n';
}
