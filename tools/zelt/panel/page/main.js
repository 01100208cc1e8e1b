// Puts the parts of the page together.
import { readAddress, writeAddress } from './address.js';
import { Catalogue } from './catalogue.js';
import { Details } from './details.js';
import { byId, debounced, fill, h } from './dom.js';
import { Filters } from './filters.js';
import { GalleryTemplates } from './gallery.js';
import { Grid } from './grid.js';
import { LiveTemplates } from './live.js';
import { SearchField, termsOf } from './search.js';
import { StockPages } from './stock.js';
import { count, languageName } from './text.js';

const templates = document.documentElement.dataset.kind === 'gallery' ? new GalleryTemplates() : new LiveTemplates();
const catalogue = new Catalogue();
const grid = new Grid(byId('grid'), templates.preview);
const filters = new Filters();
const field = new SearchField((text) => templates.suggest(text).catch(() => []));
const details = new Details(templates);
const stock = new StockPages(templates, catalogue);
let asked = readAddress(); // what the address says is to be shown

// What is shown, and what is said of it.

let keepPlace = true;

function showRows() {
  grid.language = catalogue.language;
  grid.setRows(catalogue.shown, keepPlace);
  keepPlace = true;
  filters.show(catalogue);
  const all = catalogue.rows.size;
  const shown = catalogue.shown.length;
  tell(shown === all ? count(all, 'template') : `${shown.toLocaleString('en')} of ${count(all, 'template')}`);
  showEmpty();
  details.follow(catalogue);
}

// Screen readers speak what changes here: often is too often.
const speak = debounced((text) => { byId('spoken').textContent = text; }, 500);
function tell(text) {
  byId('count').textContent = text;
  speak(text);
}

function showEmpty() {
  const { listing, places } = templates.state;
  const empty = byId('empty');
  empty.hidden = catalogue.shown.length > 0 || (listing && catalogue.rows.size === 0);
  if (empty.hidden) {
    return;
  }
  if (catalogue.rows.size === 0) {
    fill(empty, h('h2', {}, 'There are no templates here'),
      h('p', {}, 'Files that end in .zelt will appear as soon as they are in one of these folders:'),
      places.map((place) => h('p', {}, place)));
  } else {
    fill(empty, h('h2', {}, asked.q ? `Nothing fits “${asked.q}”` : 'Nothing fits these filters'),
      h('button', { type: 'button', onclick: () => go({ q: '', folder: '', state: '', author: '' }, true) }, 'Clear search and filters'));
  }
}

function showState() {
  const { listing, cancelled, fraction, languages, language, problems } = templates.state;
  byId('progress').hidden = !listing && !cancelled;
  byId('progress-bar').hidden = !listing;
  byId('cancel').textContent = listing ? 'Cancel' : 'Read on';
  byId('cancel').hidden = !templates.cancel;
  if (listing && fraction > 0) {
    byId('progress-bar').value = fraction;
  } else {
    byId('progress-bar').removeAttribute('value');
  }
  byId('progress-text').textContent = listing
    ? `Reading templates … ${fraction > 0 ? `${Math.floor(fraction * 100)} %` : ''}`
    : 'Reading was cancelled. Not all templates are shown.';
  showLanguages(languages, language);
  showProblems([...problems, ...stock.problems]);
  showEmpty();
}

function showLanguages(languages, language) {
  const select = byId('language');
  const all = [...new Set([...languages, language])].filter(Boolean).sort();
  if (select.dataset.all !== all.join()) {
    select.dataset.all = all.join();
    fill(select, all.map((locale) => h('option', { value: locale }, languageName(locale))));
  }
  select.value = language;
  if (catalogue.language !== language) {
    catalogue.language = language; // rows in it follow
  }
}

let dismissed = '';
function showProblems(problems, lost = false) {
  const notice = byId('notice');
  const text = lost ? 'zelt has ended, or cannot be reached. What is shown here is as it was.' : problems.slice(0, 3).join('\n');
  notice.hidden = text === '' || text === dismissed;
  fill(notice, text.split('\n').map((line) => h('p', {}, line)),
    problems.length > 3 && !lost ? h('p', {}, `and ${problems.length - 3} more`) : null,
    h('button', { type: 'button', onclick: () => { dismissed = text; notice.hidden = true; } }, 'Close'));
}

// What the user asks for.

/// Shows what the address is to say from now on.
/// @param step  true: the back button leads back
async function go(change, step = false) {
  asked = { ...asked, ...change };
  writeAddress(asked, step);
  await show();
}

let searched = null;
async function show() {
  field.text === asked.q || (field.text = asked.q);
  byId('sort').value = asked.sort;
  filters.filter = { folder: asked.folder, state: asked.state, author: asked.author };
  if (JSON.stringify(catalogue.filter) !== JSON.stringify(filters.filter)) {
    keepPlace = false;
    catalogue.setFilter(filters.filter);
  }
  if (catalogue.order !== asked.sort) {
    keepPlace = false;
    catalogue.setOrder(asked.sort);
  }
  if (searched !== asked.q) {
    searched = asked.q;
    keepPlace = false;
    await search();
  }
}

async function search() {
  const terms = termsOf(asked.q);
  stock.begin(terms);
  await find();
}

async function find() {
  const terms = termsOf(asked.q);
  try {
    const found = await templates.search(terms);
    catalogue.setSearch(terms, found);
  } catch (error) {
    if (error.name !== 'AbortError') {
      catalogue.setSearch(terms, null);
    }
  }
}

const searchAgain = debounced(() => asked.q && find(), 300); // in the index, which is whole now

field.addEventListener('search', (event) => go({ q: field.text }, event.detail?.chosen));
filters.addEventListener('change', () => go(filters.filter, true));
byId('sort').addEventListener('change', (event) => go({ sort: event.target.value }, true));
byId('language').addEventListener('change', async (event) => {
  await go({ lang: event.target.value }, true);
  templates.setLanguage(event.target.value);
});
byId('size').addEventListener('input', (event) => grid.setCardWidth(Number(event.target.value)));
byId('cancel').addEventListener('click', () => (templates.state.listing ? templates.cancel() : templates.refresh()));
grid.addEventListener('open', (event) => {
  grid.select(event.detail.id);
  details.show(event.detail);
});
grid.addEventListener('end', () => ['', 'Stock'].includes(asked.folder) && stock.more());
details.addEventListener('close', () => {
  grid.select(null);
  byId('grid').focus();
});
details.addEventListener('saved', (event) => {
  grid.select(event.detail.id);
  details.expect(event.detail.id, catalogue);
});
addEventListener('popstate', () => {
  asked = readAddress();
  show();
  askLanguage(asked.lang || firstLanguage);
});
addEventListener('beforeunload', (event) => details.isChanged && event.preventDefault()); // the browser asks
addEventListener('keydown', (event) => {
  const isTyping = event.target.closest('input, textarea, select');
  if ((event.key === '/' && !isTyping) || (event.key === 'f' && (event.ctrlKey || event.metaKey) && event.shiftKey)) {
    event.preventDefault();
    field.focus();
  }
});

// News of the templates.

let searchedAt = null; // the state of the index that the search has asked
let firstLanguage = ''; // what is shown where the address tells none
function askLanguage(language) {
  if (language !== '' && language !== templates.state.language) {
    templates.setLanguage(language);
  }
}
templates.addEventListener('state', () => {
  const { listing, language, revision } = templates.state;
  if (firstLanguage === '') {
    firstLanguage = language;
    askLanguage(asked.lang);
  }
  showState();
  stock.more();
  if (!listing && searchedAt !== revision) {
    searchedAt = revision;
    searchAgain();
  }
});
templates.addEventListener('lost', () => showProblems([], true));
templates.addEventListener('found', () => showProblems(templates.state.problems));
catalogue.addEventListener('change', showRows);

const size = byId('size');
size.value = innerWidth >= 2400 ? 320 : 220; // a wide screen is far away
grid.cardWidth = Number(size.value);
catalogue.language = asked.lang;
catalogue.order = asked.sort;
catalogue.filter = { folder: asked.folder, state: asked.state, author: asked.author };
show();
templates.open(catalogue);
