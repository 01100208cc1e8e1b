// The list of sources, states and authors by which the grid is narrowed.
import { byId, fill, h } from './dom.js';
import { authorText } from './text.js';

const kStates = [['ready', 'Ready to use'], ['newer', 'Needs a newer host'], ['bad', 'Cannot be read']];
const kDeepest = 3;

// The folders that hold templates as a tree, each with the number of those in and below it.
function treeOf(folders, counts, chosen) {
  const totals = new Map();
  const add = (label, n) => {
    const parts = label.split('/');
    for (let depth = 1; depth <= Math.min(parts.length, kDeepest + 1); ++depth) {
      const path = parts.slice(0, depth).join('/');
      totals.set(path, (totals.get(path) ?? 0) + n);
    }
  };
  folders.forEach((label, i) => counts.has(i) && add(label, counts.get(i)));
  if (counts.has('Stock')) {
    add('Stock', counts.get('Stock'));
  }
  if (chosen !== '') {
    add(chosen, 0); // a choice that nothing has any more can be left
  }
  return [...totals].sort(([a], [b]) => (a < b ? -1 : 1));
}

export class Filters extends EventTarget {
  #element = byId('filters');
  #toggle = byId('filters-toggle');
  filter = { folder: '', state: '', author: '' };

  constructor() {
    super();
    this.#element.addEventListener('click', (event) => {
      const button = event.target.closest('button');
      if (button) {
        const { key, value } = button.dataset;
        this.filter = { ...this.filter, [key]: this.filter[key] === value ? '' : value };
        this.dispatchEvent(new Event('change'));
        this.#find(key, value)?.focus(); // the list was drawn again
      }
    });
    this.#element.addEventListener('keydown', (event) => event.key === 'Escape' && this.#setOpen(false, true));
    this.#toggle.addEventListener('click', () => this.#setOpen(!this.#element.classList.contains('open')));
    document.querySelector('main').addEventListener('pointerdown', () => this.#setOpen(false));
  }

  #find(key, value) {
    return [...this.#element.querySelectorAll('button')].find((b) => b.dataset.key === key && b.dataset.value === value);
  }

  #setOpen(open, focus = false) {
    this.#element.classList.toggle('open', open);
    this.#toggle.setAttribute('aria-expanded', open);
    if (focus) {
      this.#toggle.focus();
    }
  }

  /// Draws the list again, but only when it would look different.
  show(catalogue) {
    const { byFolder, byState, byAuthor } = catalogue.counts;
    const sum = (numbers) => [...numbers].reduce((all, n) => all + n, 0);
    const ids = new Set([...byAuthor.keys(), this.filter.author]);
    const authors = [...ids].filter(Boolean).sort().map((id) => [id, authorText(id), byAuthor.get(id) ?? 0, 0]);
    const groups = [
      ['Sources', 'folder', [['', 'All sources', sum(byFolder.values()), 0], ...treeOf(catalogue.folders, byFolder, this.filter.folder).map(([path, n]) => [
        path, path.split('/').at(-1), n, path.split('/').length - 1])]],
      ['State', 'state', [['', 'Any state', sum(Object.values(byState)), 0], ...kStates.map(([value, text]) => [value, text, byState[value], 0])]],
      ['Made with', 'author', authors.length > 0 ? [['', 'Any host', sum(byAuthor.values()), 0], ...authors] : []],
    ];
    const drawn = JSON.stringify([groups, this.filter]);
    if (drawn !== this.#drawn) {
      this.#drawn = drawn;
      fill(this.#element, groups.map((group) => this.#group(...group)));
    }
  }
  #drawn = '';

  #group(title, key, items) {
    if (items.length === 0) {
      return null;
    }
    return [
      h('h2', { id: `filter-${key}` }, title),
      h('ul', { 'aria-labelledby': `filter-${key}` }, items.map(([value, text, n, level]) =>
        h('li', { class: `level-${level}` },
          h('button', { type: 'button', 'data-key': key, 'data-value': value, 'aria-pressed': String(this.filter[key] === value), title: value },
            h('span', { dir: 'auto' }, text), h('span', {}, n.toLocaleString('en')))))),
    ];
  }
}
