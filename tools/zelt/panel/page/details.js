// Everything about one template, and its changes.
import { kPoster, kStock, kVideo } from './catalogue.js';
import { drawControls } from './controls.js';
import { byId, endLoading, fill, h } from './dom.js';
import { badgesOf } from './grid.js';
import { askWhere } from './saving.js';
import { authorText, count, dateText, durationText, kMostDrawn, languageName, pick, sentence, sizeText, tagOf } from './text.js';

const section = (title, ...children) => h('section', {}, h('h3', {}, title), ...children);
const list = (items) => h('ul', { class: 'chips' }, items.slice(0, kMostDrawn).map((item) => h('li', { dir: 'auto' }, item)));

function factsOf(row, found) {
  const facts = [
    ['Made with', authorText(row.author)], ['Made by', found.creator ?? ''], ['Frame', row.width > 0 ? `${row.width} × ${row.height}` : ''],
    ['Duration', durationText(row.duration)], ['Size', row.size > 0 ? sizeText(row.size) : ''], ['Changed', dateText(row.modified)],
    ['File', found.file ?? ''], ['Folder', found.folder ?? ''], ['Identity', found.capsuleID ?? ''], ['Format', found.apiVersion ?? ''],
    ['Licence', found.licenseID ?? ''], ['Works in', (found.platforms ?? []).map(authorText).join(', ')],
    ['Effects', (found.effects ?? []).join(', ')],
  ];
  return h('dl', {}, facts.filter(([, value]) => value !== '').map(([name, value]) => [h('dt', {}, name), h('dd', { dir: 'auto' }, value)]).flat());
}

function fontsOf(fonts) {
  return Object.entries(fonts).slice(0, kMostDrawn).map(([locale, names]) => h('div', {}, h('h4', {}, languageName(locale)),
    h('ul', { class: 'lines' }, names.slice(0, kMostDrawn).map(({ name, installed }) => h('li', {}, h('span', {}, name),
      installed === false ? h('span', { class: 'badge warn' }, 'Missing on this machine') : null)))));
}

function findingsOf(findings) {
  if (findings === null) {
    return h('p', { class: 'hint' }, 'Checking …');
  }
  if (findings.length === 0) {
    return h('p', { class: 'hint' }, 'Nothing is wrong with this template.');
  }
  return h('ul', { class: 'findings' }, findings.map(({ severity, text, entry, line, column, nearest }) => h('li', { class: severity },
    h('span', { class: `badge ${severity === 'error' ? 'bad' : 'warn'}` }, severity === 'error' ? 'Error' : 'Warning'),
    h('span', {}, sentence(text)),
    h('span', { class: 'hint' }, [entry, line ? `line ${line}, column ${column}` : '', nearest ? `Did you mean “${nearest}”?` : ''].filter(Boolean).join(' · ')))));
}

export class Details extends EventTarget {
  #panel = byId('details');
  #row = null;
  #found = null;
  #problems = null; // null: not known yet
  #language = '';
  #changes = new Map(); // by "kind id locale"
  #expected = null;

  constructor(templates) {
    super();
    this.templates = templates;
    this.#panel.addEventListener('keydown', (event) => event.key === 'Escape' && this.close());
  }

  async show(row) {
    if (!this.#mayLeave()) {
      return;
    }
    this.#row = row;
    this.#found = null;
    this.#problems = null;
    this.#changes.clear();
    this.#panel.hidden = false;
    this.#draw();
    this.#panel.querySelector('button').focus();
    await this.#load();
  }

  close() {
    if (this.#row && this.#mayLeave()) {
      this.#row = null;
      this.#changes.clear();
      this.#panel.hidden = true;
      this.#empty();
      this.dispatchEvent(new Event('close'));
    }
  }

  /// Follows the template that is shown: it may have changed, or be gone.
  follow(catalogue) {
    const expected = this.#expected && catalogue.rows.get(this.#expected);
    if (expected) {
      this.#expected = null;
      this.show(expected);
      return;
    }
    const now = this.#row && catalogue.rows.get(this.#row.id);
    if (this.#row && !now && !(this.#row.flags & kStock)) { // stock templates come and go with the search
      this.#tell('This template is no longer there.');
    } else if (now && now !== this.#row && this.#changes.size === 0) {
      this.#row = now;
      this.#load();
    }
  }

  /// Shows the template with this id as soon as it is there.
  expect(id, catalogue) {
    this.#expected = id;
    this.#changes.clear();
    this.follow(catalogue);
  }

  get isChanged() {
    return this.#changes.size > 0;
  }

  #mayLeave() {
    return !this.isChanged || confirm('The changes to this template have not been saved. Drop them?');
  }

  async #load() {
    const row = this.#row;
    this.#problems = null;
    try {
      const found = await this.templates.details(row);
      if (row !== this.#row) {
        return;
      }
      this.#found = found;
      const locales = this.#locales();
      const language = this.templates.state.language;
      this.#language = locales.includes(language) ? language : locales.includes('en_US') ? 'en_US' : (locales[0] ?? language);
      this.#draw();
      if (row.flags & kStock) {
        return; // its package is not here
      }
      const { problems } = found.check ?? (await this.templates.check(row));
      if (row === this.#row) {
        this.#problems = problems;
        fill(this.#panel.querySelector('.check'), findingsOf(problems));
      }
    } catch (error) {
      if (row === this.#row) {
        this.#tell(error.message);
      }
    }
  }

  #locales() {
    const found = new Set(Object.keys(this.#found.names ?? {}));
    const add = (value) => (value?.strDB ?? []).forEach(({ localeString }) => found.add(localeString ?? 'en_US'));
    (this.#found.controls ?? []).forEach((control) => [control.uiName, control.value].forEach(add));
    return [...found].filter(Boolean).sort().slice(0, kMostDrawn);
  }

  #tell(text) {
    this.#panel.querySelector('.told')?.replaceChildren(sentence(text));
  }

  #empty() {
    endLoading(this.#panel.querySelectorAll('img, video'));
    fill(this.#panel);
  }

  #draw() {
    const row = this.#row;
    const focused = document.activeElement?.dataset?.keep;
    const top = this.#panel.querySelector('.body')?.scrollTop ?? 0;
    this.#empty();
    this.#panel.setAttribute('aria-label', `Details of ${row.name}`);
    fill(this.#panel,
      h('header', {}, h('h2', { dir: 'auto', lang: tagOf(this.templates.state.language) }, row.name),
        h('button', { type: 'button', class: 'plain', 'aria-label': 'Close details', 'data-keep': 'close', onclick: () => this.close() }, '✕')),
      h('div', { class: 'body' }, this.#media(row),
        h('p', { class: 'told', role: 'status' }),
        badgesOf(row).filter(([, , why]) => why).map(([kind, text, why]) => h('p', { class: 'why' }, h('span', { class: `badge ${kind}` }, text), ` ${why}`)),
        this.#found ? this.#sections(row, this.#found) : h('div', { class: 'skeleton', 'aria-label': 'Loading' }, h('i'), h('i'), h('i'))),
      this.#found && this.#isEditable() ? this.#bar() : null);
    this.#panel.querySelector('.body').scrollTop = top;
    if (focused) {
      this.#panel.querySelector(`[data-keep="${focused}"]`)?.focus();
    }
    this.#showChanges();
  }

  #media(row) {
    const poster = row.flags & kPoster ? this.templates.preview(row, 'poster') : null;
    if (!(row.flags & kVideo)) {
      return poster ? h('img', { class: 'media', src: poster, alt: `Picture of ${row.name}` }) : h('div', { class: 'media blank' }, 'No picture');
    }
    const video = h('video', { class: 'media', muted: true, loop: true, playsInline: true, preload: 'none', poster,
      src: this.templates.preview(row, 'video'), 'aria-label': `Preview of ${row.name}` });
    const button = h('button', { type: 'button', class: 'play', onclick: () => (video.paused ? video.play().catch(() => {}) : video.pause()) }, 'Play preview');
    video.addEventListener('click', () => button.click());
    video.addEventListener('play', () => button.replaceChildren('Pause preview'));
    video.addEventListener('pause', () => button.replaceChildren('Play preview'));
    video.addEventListener('error', () => button.replaceWith(h('p', { class: 'hint' }, 'The preview cannot be played here.')));
    return h('div', { class: 'player' }, video, button);
  }

  #isEditable() {
    return this.templates.canEdit && this.#found.editable;
  }

  #sections(row, found) {
    const fonts = found.fonts ?? {};
    return [
      found.description ? h('p', { class: 'description', dir: 'auto' }, found.description) : null,
      found.names ? this.#texts(found) : null,
      (found.controls ?? []).length > 0 ? this.#controls(row, found) : null,
      (found.tags ?? []).length > 0 ? section('Tags', list(found.tags)) : null,
      Object.keys(fonts).length > 0 ? section('Fonts', fontsOf(fonts)) : null,
      row.flags & kStock ? null : section('Check', h('div', { class: 'check' }, findingsOf(this.#problems))),
      section('Facts', factsOf(row, found)),
    ];
  }

  #languageField() {
    return h('label', { class: 'field' }, h('span', {}, 'Texts in'),
      h('select', { 'data-keep': 'language', onchange: (event) => {
        this.#language = event.target.value;
        this.#draw();
      } }, [...new Set([...this.#locales(), this.#language, ...(this.#isEditable() ? this.templates.state.languages : [])])].map((locale) =>
        h('option', { value: locale, selected: locale === this.#language }, languageName(locale)))));
  }

  #texts(found) {
    const all = Object.entries(found.names);
    return section('Name', this.#languageField(),
      h('input', { type: 'text', class: 'wide', value: this.#changed('name', '', this.#language) ?? pick(found.names, this.#language), 'aria-label': `Name in ${languageName(this.#language)}`,
        lang: tagOf(this.#language), dir: 'auto', disabled: !this.#isEditable(),
        oninput: (event) => this.#change('name', '', event.target.value, this.#language) }),
      all.length > 1 ? h('details', {}, h('summary', {}, `Name in ${count(all.length, 'language')}`),
        h('dl', {}, all.slice(0, kMostDrawn).map(([locale, name]) => [h('dt', {}, languageName(locale)), h('dd', { lang: tagOf(locale), dir: 'auto' }, name)]).flat())) : null);
  }

  #controls(row, found) {
    const withChanges = found.controls.map((control) => this.#withChange(control));
    return section(`Controls`, h('div', { class: 'controls' }, drawControls(withChanges, {
      editable: this.#isEditable(),
      language: this.#language,
      frame: [row.width, row.height],
      change: (id, value, asInDocument, locale = '') => this.#change('control', id, value, locale, asInDocument),
    })));
  }

  // A control as it would stand in the document with the changes made so far.
  #withChange(control) {
    const changes = [...this.#changes.values()].filter(({ kind, id }) => kind === 'control' && id === control.id);
    if (changes.length === 0) {
      return control;
    }
    if (control.value?.strDB) {
      const kept = control.value.strDB.filter(({ localeString }) => !changes.some(({ locale }) => locale === localeString));
      return { ...control, value: { strDB: [...kept, ...changes.map(({ locale, value }) => ({ localeString: locale, str: value }))] } };
    }
    return { ...control, [control.type === 14 ? 'cacheID' : 'value']: changes[0].asInDocument };
  }

  #changed(kind, id, locale) {
    return this.#changes.get(JSON.stringify([kind, id, locale]))?.value;
  }

  #change(kind, id, value, locale, asInDocument = null) {
    this.#changes.set(JSON.stringify([kind, id, locale]), { kind, id, value, locale, asInDocument });
    this.#showChanges();
  }

  #bar() {
    return h('footer', {}, h('span', { class: 'changes', role: 'status' }),
      h('button', { type: 'button', class: 'discard', onclick: () => {
        this.#changes.clear();
        this.#draw();
      } }, 'Discard'),
      h('button', { type: 'button', class: 'main', onclick: () => this.#save() }, 'Save as …'));
  }

  #showChanges() {
    const bar = this.#panel.querySelector('footer');
    if (bar) {
      bar.hidden = this.#changes.size === 0;
      bar.querySelector('.changes').textContent = count(this.#changes.size, 'change');
    }
  }

  async #save() {
    const saved = await askWhere(this.#row, this.#found, (where) => this.templates.save({ id: this.#row.id, ...where, ...this.#asChange() }));
    if (saved) {
      this.dispatchEvent(new CustomEvent('saved', { detail: saved }));
    }
  }

  #asChange() {
    const changes = [...this.#changes.values()];
    return {
      names: Object.fromEntries(changes.filter(({ kind }) => kind === 'name').map(({ locale, value }) => [locale, value])),
      controls: changes.filter(({ kind }) => kind === 'control').map(({ id, value, locale }) => ({ id, value, locale })),
    };
  }
}
