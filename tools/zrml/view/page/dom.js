// Elements and the text in them. Text of a run only ever becomes a text node.

/** @typedef {Node|string|number|null|undefined|false} Child */

/**
 * An element with attributes, listeners ("onclick") and children.
 * @param {string} tag
 * @param {Record<string, any>} [attributes]
 * @param {...Child} children
 * @returns {HTMLElement}
 */
export function el(tag, attributes = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (value === undefined || value === null || value === false) continue;
    if (name.startsWith('on')) element.addEventListener(name.slice(2), value);
    else element.setAttribute(name, value === true ? '' : visible(String(value)));
  }
  put(element, ...children);
  return element;
}

/**
 * @param {Node} parent
 * @param {...Child} children
 */
export function put(parent, ...children) {
  for (const child of children) {
    if (child === null || child === undefined || child === false) continue;
    parent.appendChild(child instanceof Node ? child : document.createTextNode(visible(String(child))));
  }
}

/**
 * @param {Element} parent
 * @param {...Child} children
 */
export function replace(parent, ...children) {
  parent.replaceChildren();
  put(parent, ...children);
}

/**
 * Characters that have no shape, or turn the direction of a line, as escapes.
 * @param {string} text
 */
export function visible(text) {
  return text.replace(/[\u0000-\u0008\u000b-\u001f\u007f-\u009f\u061c\u200e\u200f\u2028-\u202e\u2066-\u2069]/g,
    (c) => '\\u' + c.charCodeAt(0).toString(16).padStart(4, '0'));
}

/**
 * @param {string} label
 * @param {() => void} action
 * @param {Record<string, any>} [attributes]
 * @param {Child[]} [children]
 * @returns {HTMLButtonElement}
 */
export function button(label, action, attributes = {}, children = []) {
  return /** @type {HTMLButtonElement} */ (el('button', { type: 'button', onclick: action, ...attributes }, label, ...children));
}

/** The mark of a curve in a legend. @param {string} colour  name of a colour of the theme */
export function legendKey(colour) {
  const key = el('span', { class: 'key' });
  key.style.setProperty('--key', `var(--${colour})`);
  return key;
}

/**
 * A button that is on or off.
 * @param {string} label
 * @param {boolean} isOn
 * @param {(isOn: boolean) => void} action
 * @param {Record<string, any>} [attributes]
 */
export function toggle(label, isOn, action, attributes = {}) {
  const made = button(label, () => {
    const next = made.getAttribute('aria-pressed') !== 'true';
    made.setAttribute('aria-pressed', String(next));
    action(next);
  }, { 'aria-pressed': String(isOn), ...attributes });
  return made;
}

/**
 * @param {number|null|undefined} value
 * @param {number} decimals
 */
export function fixed(value, decimals) {
  return value === null || value === undefined || !Number.isFinite(value) ? '–' : value.toFixed(decimals);
}

/**
 * An intensity: whole below a hundred thousand, else with an exponent.
 * @param {number|null|undefined} value
 */
export function amount(value) {
  if (value === null || value === undefined || !Number.isFinite(value)) return '–';
  const size = Math.abs(value);
  if (size === 0) return '0';
  if (size >= 1e5 || size < 1e-3) return value.toExponential(2).replace('e+', 'e');
  return size >= 100 ? String(Math.round(value)) : String(Number(value.toPrecision(4)));
}

/**
 * "1 scan", "1 200 scans".
 * @param {number} count
 * @param {string} noun
 */
export function counted(count, noun) {
  return `${grouped(count)} ${noun}${count === 1 ? '' : 's'}`;
}

/**
 * A whole number with thin spaces between thousands.
 * @param {number} count
 */
export function grouped(count) {
  return String(count).replace(/\B(?=(\d{3})+$)/g, '\u2009');
}
