// All templates that are known, and those of them that are shown, in order.
import { fold, pick, sortKey } from './text.js';

export const kUnreadable = 1;
export const kNeedsNewer = 2;
export const kPoster = 4;
export const kVideo = 8;
export const kStock = 16;
export const kPremium = 32;

const kOrders = {
  name: (a, b) => 0,
  newest: (a, b) => b.modified - a.modified,
  oldest: (a, b) => a.modified - b.modified,
  shortest: (a, b) => a.duration - b.duration,
  longest: (a, b) => b.duration - a.duration,
};

/// A row as it travels: the names are a text or an object from locale to text.
export function makeRow([id, names, folder, author, size, duration, width, height, modified, flags, tags, reason], language, position = 0) {
  return named({ id, names, folder, author, size, duration, width, height, modified, flags, tags, reason: reason ?? '', position }, language);
}

// The row with its texts in a language.
function named(row, language) {
  row.name = pick(row.names, language);
  row.key = sortKey(row.name);
  row.text = ''; // folded when a search first asks for it
  return row;
}

function textOf(row) {
  if (row.text === '') {
    row.text = fold([row.name, ...row.tags].join('\n'));
  }
  return row.text;
}

export class Catalogue extends EventTarget {
  rows = new Map();
  folders = []; // labels: "Titles/News"
  sorted = []; // all rows
  shown = []; // those that fit
  terms = [];
  found = null; // what the search index answered: a set of ids, or null where this page matches by itself
  filter = { folder: '', state: '', author: '' };
  order = 'name';
  language = '';

  /// Takes rows in, new ones and changed ones, and drops those that are gone.
  update(rows, gone = []) {
    const changed = new Set(gone);
    for (const row of rows) {
      if (this.rows.has(row.id)) {
        changed.add(row.id);
      }
    }
    gone.forEach((id) => this.rows.delete(id));
    rows.forEach((row) => this.rows.set(row.id, row));
    const kept = changed.size === 0 ? this.sorted : this.sorted.filter((row) => !changed.has(row.id));
    this.sorted = this.#merge(kept, [...rows].sort(this.#compare));
    this.#select();
  }

  clear() {
    this.rows.clear();
    this.sorted = [];
    this.#select();
  }

  setLanguage(language) {
    this.language = language;
    this.rows.forEach((row, id) => this.rows.set(id, named({ ...row }, language))); // a new row object is drawn again
    this.sorted = [...this.rows.values()].sort(this.#compare);
    this.#select();
  }

  setOrder(order) {
    this.order = order in kOrders ? order : 'name';
    this.sorted.sort(this.#compare);
    this.#select();
  }

  setFilter(filter) {
    this.filter = filter;
    this.#select();
  }

  /// @param found  the ids that the search index answered, or null
  setSearch(terms, found) {
    this.terms = terms.map(fold);
    this.found = found;
    this.#select();
  }

  /// Names and tags that hold a word beginning with `text`, for a search field.
  suggest(text, most = 8) {
    const begin = fold(text);
    const found = new Map();
    for (const row of this.sorted) {
      if (!textOf(row).includes(begin)) {
        continue;
      }
      for (const line of row.text.split('\n')) {
        const at = line.indexOf(begin);
        if (at === 0 || (at > 0 && !/[\p{L}\p{N}]/u.test(line[at - 1]))) {
          found.set(line, at);
        }
      }
      if (found.size >= 200) {
        break;
      }
    }
    return [...found].sort((a, b) => a[1] - b[1] || a[0].length - b[0].length).slice(0, most).map(([line]) => line);
  }

  // What the stock service finds comes last, in its order: later pages never move what is already shown.
  #compare = (a, b) => {
    if ((a.flags | b.flags) & kStock) {
      return (a.flags & kStock) - (b.flags & kStock) || a.position - b.position;
    }
    const order = kOrders[this.order](a, b);
    return order !== 0 ? order : a.key < b.key ? -1 : a.key > b.key ? 1 : a.id - b.id;
  };

  #merge(a, b) {
    if (b.length === 0) {
      return a;
    }
    const merged = [];
    let i = 0;
    for (const row of b) {
      while (i < a.length && this.#compare(a[i], row) < 0) {
        merged.push(a[i++]);
      }
      merged.push(row);
    }
    while (i < a.length) {
      merged.push(a[i++]);
    }
    return merged;
  }

  #isFound(row) {
    if (row.flags & kStock) {
      return true; // the service has found it
    }
    return this.found !== null ? this.found.has(row.id) : this.terms.every((term) => textOf(row).includes(term));
  }

  labelOf(row) {
    return row.flags & kStock ? 'Stock' : (this.folders[row.folder] ?? '');
  }

  // A folder stands for all below it.
  #isInFolder(row) {
    const label = this.labelOf(row);
    return label === this.filter.folder || label.startsWith(`${this.filter.folder}/`);
  }

  // Each filter tells how many there would be with the others as they are.
  #select() {
    const byFolder = new Map();
    const byState = { ready: 0, newer: 0, bad: 0 };
    const byAuthor = new Map();
    const { folder, state, author } = this.filter;
    this.shown = this.sorted.filter((row) => {
      const label = row.flags & kStock ? 'Stock' : row.folder; // by number: texts of a hundred thousand take longer
      byFolder.has(label) || byFolder.set(label, 0);
      byAuthor.has(row.author) || byAuthor.set(row.author, 0);
      if (!this.#isFound(row)) {
        return false;
      }
      const rowState = row.flags & kUnreadable ? 'bad' : row.flags & kNeedsNewer ? 'newer' : 'ready';
      const isInFolder = folder === '' || this.#isInFolder(row);
      const isInState = state === '' || state === rowState;
      const isByAuthor = author === '' || author === row.author;
      byFolder.set(label, byFolder.get(label) + Number(isInState && isByAuthor));
      byState[rowState] += Number(isInFolder && isByAuthor);
      byAuthor.set(row.author, byAuthor.get(row.author) + Number(isInFolder && isInState));
      return isInFolder && isInState && isByAuthor;
    });
    this.counts = { byFolder, byState, byAuthor };
    this.dispatchEvent(new Event('change'));
  }
}
