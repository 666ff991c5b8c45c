// A part of the page with a title, tools beside it, and room for what is to be said: an error, or progress.
import { el, replace } from './dom.js';
import { Superseded, progress } from './store.js';

/** @type {Map<string, (share: number) => void>} */
const waiting = new Map();
let isPolling = false;

// While something takes long, the server is asked how far it is.
async function poll() {
  if (isPolling) return;
  isPolling = true;
  while (waiting.size) {
    await new Promise((resolve) => setTimeout(resolve, 400));
    try {
      const shares = waiting.size ? await progress() : {};
      for (const [lane, show] of waiting) show(shares[lane] ?? 0);
    } catch {
      break;
    }
  }
  isPolling = false;
}

export class Panel {
  /**
   * @param {string} title
   * @param {string} [kind]  a class
   */
  constructor(title, kind = '') {
    this.title = el('h2', {}, title);
    this.tools = el('div', { class: 'tools' });
    this.body = el('div', { class: 'body' });
    this.note = el('p', { class: 'note', role: 'status' });
    this.bar = el('div', { class: 'bar', hidden: true });
    this.root = el('section', { class: `panel ${kind}` }, el('header', {}, this.title, this.tools), this.bar, this.note, this.body);
    this.jobs = 0;
    this.say('');
  }

  /** @param {string} text */
  say(text) {
    replace(this.note, text);
    this.note.hidden = !text;
  }

  /**
   * Does what takes time. An error is shown; when a newer question took its place, nothing is. A panel that is not shown any
   * more asks for nothing: its run or sample may be another one by now.
   * @template Result
   * @param {() => Promise<Result>} work
   * @param {string} [lane]  of a question that may take long: its progress is shown
   * @returns {Promise<Result|undefined>}
   */
  async attempt(work, lane) {
    if (!this.root.isConnected) return undefined;
    ++this.jobs;
    if (lane) waiting.set(lane, (share) => this.#showShare(share));
    if (lane) poll();
    try {
      const result = await work();
      this.say('');
      return result;
    } catch (error) {
      if (!(error instanceof Superseded)) this.say(error instanceof Error ? error.message : String(error));
      return undefined;
    } finally {
      if (lane) waiting.delete(lane);
      if (--this.jobs === 0) this.bar.hidden = true;
    }
  }

  /** @param {number} share */
  #showShare(share) {
    this.bar.hidden = this.jobs === 0;
    this.bar.style.setProperty('--share', String(share));
  }
}

/**
 * Buttons of which one is on.
 * @template {string|number} Name
 * @param {{name: Name, label: string, title?: string}[]} choices
 * @param {Name} chosen
 * @param {(name: Name) => void} choose
 * @param {string} label
 */
export function choice(choices, chosen, choose, label) {
  const group = el('span', { class: 'choice', role: 'group', 'aria-label': label });
  const buttons = choices.map(({ name, label: text, title }) => el('button', {
    type: 'button', title, 'aria-pressed': String(name === chosen),
    onclick: () => {
      buttons.forEach((other, i) => other.setAttribute('aria-pressed', String(choices[i].name === name)));
      choose(name);
    },
  }, text));
  group.append(...buttons);
  return group;
}
