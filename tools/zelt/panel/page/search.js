// The search field: searches as one types, and suggests. A combobox with a list, as screen readers know it.
import { byId, debounced, fill, h } from './dom.js';

const kQuiet = 80; // milliseconds without a key before a search starts

/// The terms of a search: words, or several words in quotes.
export function termsOf(text) {
  return [...text.matchAll(/"([^"]+)"?|(\S+)/g)].map(([, quoted, word]) => quoted ?? word);
}

export class SearchField extends EventTarget {
  #input = byId('search');
  #list = byId('suggestions');
  #chosen = -1;
  #words = [];
  #asked = 0;

  /// @param suggest  text → a promise of a list of words
  constructor(suggest) {
    super();
    this.suggest = suggest;
    const changed = debounced(() => this.#changed(), kQuiet);
    this.#input.addEventListener('input', changed);
    this.#input.addEventListener('keydown', (event) => this.#onKey(event));
    this.#input.addEventListener('blur', () => this.#close());
    this.#list.addEventListener('mousedown', (event) => event.preventDefault()); // the field keeps the focus
    this.#list.addEventListener('click', (event) => this.#take([...this.#list.children].indexOf(event.target.closest('li'))));
  }

  get text() {
    return this.#input.value.trim();
  }
  set text(text) {
    this.#input.value = text;
  }
  focus() {
    this.#input.focus();
  }

  #changed() {
    this.dispatchEvent(new Event('search'));
    this.#offer();
  }

  async #offer() {
    const asked = (this.#asked += 1);
    const text = this.#input.value.trimStart();
    const words = text === '' ? [] : await this.suggest(text);
    if (asked === this.#asked && document.activeElement === this.#input) {
      this.#show(words.filter((word) => word !== text));
    }
  }

  #show(words) {
    this.#words = words;
    fill(this.#list, words.map((word, i) => h('li', { role: 'option', id: `suggestion-${i}`, 'aria-selected': 'false', dir: 'auto' }, word)));
    this.#list.hidden = words.length === 0;
    this.#input.setAttribute('aria-expanded', words.length > 0);
    this.#choose(-1);
  }

  #close() {
    this.#asked += 1;
    this.#show([]);
  }

  #choose(index) {
    this.#chosen = index;
    [...this.#list.children].forEach((item, i) => item.setAttribute('aria-selected', i === index));
    this.#input.setAttribute('aria-activedescendant', index < 0 ? '' : `suggestion-${index}`);
  }

  #take(index) {
    if (index >= 0) {
      const word = this.#words[index];
      this.#input.value = /\s/.test(word) ? `"${word}"` : word;
      this.#close();
      this.dispatchEvent(new CustomEvent('search', { detail: { chosen: true } }));
    }
  }

  #onKey(event) {
    const last = this.#words.length - 1;
    if (event.key === 'ArrowDown' && last >= 0) {
      this.#choose(this.#chosen >= last ? -1 : this.#chosen + 1);
    } else if (event.key === 'ArrowUp' && last >= 0) {
      this.#choose(this.#chosen < 0 ? last : this.#chosen - 1);
    } else if (event.key === 'Enter' && this.#chosen >= 0) {
      this.#take(this.#chosen);
    } else if (event.key === 'Escape' && last >= 0) {
      this.#close();
    } else {
      return;
    }
    event.preventDefault();
  }
}
