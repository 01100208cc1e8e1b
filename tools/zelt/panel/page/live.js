// The templates as a running zelt serves them: its answers, and news by server-sent events.
import { makeRow } from './catalogue.js';

async function answerOf(response) {
  const answer = await response.json().catch(() => ({ error: `zelt answered ${response.status}` }));
  if (!response.ok) {
    throw new Error(answer.error ?? `zelt answered ${response.status}`);
  }
  return answer;
}

const get = async (name, parameters = [], options = {}) => answerOf(await fetch(`${name}?${new URLSearchParams(parameters)}`, options));

const post = async (name, body = {}) =>
  answerOf(await fetch(name, { method: 'POST', headers: { 'Content-Type': 'application/json' }, body: JSON.stringify(body) }));

export class LiveTemplates extends EventTarget {
  canEdit = true;
  state = { listing: true, language: '', languages: [], fraction: 0, cancelled: false, problems: [], places: [] };
  #catalogue = null;
  #revision = 0;
  #newest = 0;
  #isReading = false;
  #search = new AbortController();

  /// Fills the catalogue from now on; "state" tells how far that is, "lost" and "found" of the connection.
  open(catalogue) {
    this.#catalogue = catalogue;
    const events = new EventSource('events');
    events.addEventListener('state', (event) => this.#onState(JSON.parse(event.data)));
    events.addEventListener('open', () => this.dispatchEvent(new Event('found')));
    events.addEventListener('error', () => this.dispatchEvent(new Event('lost')));
    // A page that goes must not hold a connection, of which a browser has few.
    addEventListener('pagehide', () => events.close());
    addEventListener('pageshow', (event) => event.persisted && location.reload());
  }

  #onState(state) {
    if (state.session !== this.state.session) {
      this.#revision = 0;
      this.#pending.clear();
      this.#catalogue.clear();
    }
    this.state = state;
    this.#newest = state.revision;
    this.dispatchEvent(new Event('state'));
    this.#read();
  }

  // What arrives is shown at once at first; the longer showing takes, the more is gathered, so that the page is free four
  // fifths of the time.
  #pending = new Map(); // by id; null: gone
  #pause = 0;
  #timer = 0;

  #apply() {
    const begin = performance.now();
    const changes = [...this.#pending];
    this.#pending.clear();
    this.#timer = 0;
    this.#catalogue.update(changes.map(([, row]) => row).filter(Boolean), changes.filter(([, row]) => !row).map(([id]) => id));
    this.#pause = Math.min(1000, 4 * (performance.now() - begin));
  }

  async #read() {
    if (this.#isReading) {
      return;
    }
    this.#isReading = true;
    try {
      while (this.#revision < this.#newest) {
        const { revision, folders, rows, gone } = await get('entries', { after: this.#revision });
        if (revision === this.#revision) {
          break;
        }
        this.#revision = revision;
        this.#catalogue.folders = folders;
        rows.forEach((row) => this.#pending.set(row[0], makeRow(row, this.#catalogue.language)));
        gone.forEach((id) => this.#pending.set(id, null));
        this.#timer ||= setTimeout(() => this.#apply(), this.#pause);
      }
    } catch {
      // the connection is gone; its "lost" says so, and the next state asks again
    } finally {
      this.#isReading = false;
    }
  }

  /// The ids of what the search index finds; null while it is being filled, when the page's own eyes do.
  async search(terms) {
    this.#search.abort();
    this.#search = new AbortController();
    if (terms.length === 0 || this.state.listing) {
      return null;
    }
    const { ids } = await get('search', terms.map((term) => ['q', term]), { signal: this.#search.signal });
    return new Set(ids);
  }

  async suggest(text) {
    return this.state.listing ? this.#catalogue.suggest(text) : (await get('tags', { q: text })).tags;
  }

  preview = (row, kind) => `${kind}?id=${row.id}&v=${row.modified}`;
  details = (row) => get('details', { id: row.id });
  check = (row) => get('check', { id: row.id });
  setLanguage = (language) => post('language', { language });
  cancel = () => post('cancel');
  refresh = () => post('refresh');
  stock = (terms, first) => get('stock', [...terms.map((term) => ['q', term]), ['first', first]]);
  save = (change) => post('save', change);
}
