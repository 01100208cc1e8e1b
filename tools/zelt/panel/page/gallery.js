// The templates of a gallery: files beside the page. They are scripts rather than JSON, for a page that is opened from
// a disk may load those alone.
import { makeRow } from './catalogue.js';

const kPart = 1000; // as many files a folder

const told = new Map(); // by name, what a file has told until its end is reached
globalThis.zeltGallery = (name, content) => told.set(name, content);

/// What a file of the gallery holds.
function load(name) {
  return new Promise((resolve, reject) => {
    const script = document.createElement('script');
    script.src = `${name}.js`;
    script.onerror = () => reject(new Error(`${name}.js is missing`));
    script.onload = () => {
      resolve(told.get(name));
      script.remove();
    };
    document.head.append(script);
  });
}

const placeOf = (kind, id) => `${kind}/${Math.floor(id / kPart)}/${id}`;

export class GalleryTemplates extends EventTarget {
  canEdit = false;
  state = { listing: true, language: '', languages: [], fraction: 0, cancelled: false, problems: [], places: [] };

  async open(catalogue) {
    const { parts, folders, languages, language } = await load('data/gallery');
    this.catalogue = catalogue;
    catalogue.folders = folders;
    this.state = { ...this.state, languages, language: catalogue.language || language };
    catalogue.language = this.state.language;
    for (let part = 0; part < parts; ++part) {
      const rows = await load(`data/rows-${part}`);
      this.state = { ...this.state, fraction: (part + 1) / parts, listing: part + 1 < parts };
      catalogue.update(rows.map((row) => makeRow(row, catalogue.language)));
      this.dispatchEvent(new Event('state'));
    }
    this.state = { ...this.state, listing: false };
    this.dispatchEvent(new Event('state'));
  }

  search = async () => null; // the page matches by itself
  suggest = async (text) => this.catalogue.suggest(text);
  preview = (row, kind) => placeOf(kind, row.id) + (kind === 'poster' ? '.png' : '.mp4');
  details = (row) => load(placeOf('details', row.id));

  async setLanguage(language) {
    this.state = { ...this.state, language };
    this.catalogue.setLanguage(language);
    this.dispatchEvent(new Event('state'));
  }
}
