// What the stock service finds, a page at a time: the next one when the end of the last comes into sight.
import { makeRow } from './catalogue.js';

export class StockPages {
  problems = []; // why there are none
  #terms = [];
  #ids = []; // those shown
  #total = Infinity;
  #isBusy = false;

  constructor(templates, catalogue) {
    this.templates = templates;
    this.catalogue = catalogue;
  }

  /// Another search begins: what the last one found goes.
  begin(terms) {
    this.#terms = terms;
    this.#total = Infinity;
    this.#isBusy = false;
    this.problems = [];
    const gone = this.#ids;
    this.#ids = [];
    if (gone.length > 0) {
      this.catalogue.update([], gone);
    }
    this.more();
  }

  async more() {
    if (!this.templates.state.hasStock || this.#isBusy || this.#ids.length >= this.#total || this.problems.length > 0) {
      return;
    }
    const terms = this.#terms;
    const first = this.#ids.length;
    this.#isBusy = true;
    try {
      const { rows, total } = await this.templates.stock(terms, first);
      if (terms === this.#terms) {
        this.#total = rows.length === 0 ? first : total; // an empty page is the last, whatever it tells
        this.#ids.push(...rows.map(([id]) => id));
        this.#isBusy = false;
        this.catalogue.update(rows.map((row, i) => makeRow(row, this.catalogue.language, first + i)));
      }
    } catch (error) {
      if (terms === this.#terms) {
        this.problems = [`Stock service: ${error.message}`];
        this.#isBusy = false;
        this.templates.dispatchEvent(new Event('state'));
      }
    }
  }
}
