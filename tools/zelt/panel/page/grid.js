// The grid of posters. Only the cards near the window are in the document, however many templates there are.
import { endLoading, h } from './dom.js';
import { kNeedsNewer, kPoster, kPremium, kStock, kUnreadable, kVideo } from './catalogue.js';
import { authorText, durationText, sentence, sizeText, tagOf } from './text.js';

const kLabelHeight = 54;
const kRowsBeyond = 2;
const kTallest = 30_000_000; // browsers cut taller elements off
const kHoverDelay = 120;
const kMostFetched = 2; // stock pictures at a time: where the service stalls, connections are left for all else

const calm = matchMedia('(prefers-reduced-motion: reduce)');

/// What a template cannot do and why, as pairs of a class and two texts.
export function badgesOf(row) {
  const badges = [];
  if (row.flags & kUnreadable) {
    badges.push(['bad', 'Cannot be read', sentence(row.reason)]);
  }
  if (row.flags & kNeedsNewer) {
    badges.push(['warn', 'Needs a newer host', row.reason || 'Made for a newer version of the compositing host than this one.']);
  }
  if (row.flags & kStock) {
    badges.push(['stock', row.flags & kPremium ? 'Stock · Premium' : 'Stock', '']);
  }
  return badges;
}

function metaOf(row) {
  if (row.flags & kUnreadable && row.reason) {
    return sentence(row.reason);
  }
  const frame = row.width > 0 ? `${row.width} × ${row.height}` : '';
  return [authorText(row.author), frame, row.size > 0 ? sizeText(row.size) : ''].filter(Boolean).join(' · ');
}

export class Grid extends EventTarget {
  #cards = new Map(); // by id, those in the document
  #rows = [];
  #active = 0; // position of the row that the keyboard is at
  #columns = 1;
  #playing = null; // the id whose video plays
  #hover = 0;
  selected = null; // the id whose details are shown
  cardWidth = 220;
  language = 'en_US';

  /// @param preview  (row, kind) → the address of its "poster" or "video"
  constructor(scroller, preview) {
    super();
    this.scroller = scroller;
    this.space = scroller.firstElementChild;
    this.preview = preview;
    new ResizeObserver(() => this.draw()).observe(scroller);
    scroller.addEventListener('scroll', () => this.#soon(), { passive: true });
    scroller.addEventListener('keydown', (event) => this.#onKey(event));
    this.space.addEventListener('click', (event) => this.#onClick(event));
    this.space.addEventListener('pointerover', (event) => this.#onHover(event));
    this.space.addEventListener('pointerleave', () => this.play(null));
  }

  /// Shows these rows; what is at the top of the window stays there when `keep` is set.
  setRows(rows, keep = true) {
    const active = this.#rows[this.#active];
    this.#rows = rows;
    this.#active = keep && active ? Math.max(0, rows.findIndex((row) => row.id === active.id)) : 0;
    if (!keep) {
      this.scroller.scrollTop = 0;
    }
    this.draw();
  }

  setCardWidth(width) {
    const first = this.#firstShown();
    this.cardWidth = width;
    this.draw();
    this.scroller.scrollTop = Math.floor(first / this.#columns) * this.#rowHeight;
  }

  select(id) {
    this.selected = id;
    this.draw();
  }

  #frame = 0;
  #soon() {
    this.#frame ||= requestAnimationFrame(() => this.draw());
  }

  draw() {
    cancelAnimationFrame(this.#frame);
    this.#frame = 0;
    this.#measure();
    const first = Math.max(0, this.#firstShown() - kRowsBeyond * this.#columns);
    const rowsInWindow = Math.ceil(this.scroller.clientHeight / this.#rowHeight) + 2 * kRowsBeyond + 1;
    const shown = this.#rows.slice(first, first + rowsInWindow * this.#columns);
    const ids = new Set(shown.map((row) => row.id));
    for (const [id, card] of this.#cards) {
      if (!ids.has(id)) {
        this.#drop(card);
        this.#cards.delete(id);
      }
    }
    let previous = null; // the document's order is the order on the screen, for screen readers
    shown.forEach((row, i) => {
      const card = this.#cardFor(row);
      this.#place(card, row, first + i);
      if (previous ? previous.nextSibling !== card.element : this.space.firstChild !== card.element) {
        this.space.insertBefore(card.element, previous ? previous.nextSibling : this.space.firstChild);
      }
      previous = card.element;
    });
    if (first + rowsInWindow * this.#columns >= this.#rows.length) {
      this.dispatchEvent(new Event('end'));
    }
    this.#fetch();
    const active = this.#cards.get(this.#rows[this.#active]?.id);
    this.scroller.setAttribute('aria-activedescendant', active ? active.element.id : '');
  }

  #measure() {
    const style = getComputedStyle(this.scroller);
    this.#gap = parseFloat(style.getPropertyValue('--gap')) || 12;
    const room = this.scroller.clientWidth - parseFloat(style.paddingLeft) - parseFloat(style.paddingRight);
    this.#columns = Math.max(1, Math.floor((room + this.#gap) / (Math.min(this.cardWidth, room) + this.#gap)));
    this.#width = Math.floor((room - this.#gap * (this.#columns - 1)) / this.#columns);
    this.#rowHeight = Math.round((this.#width * 9) / 16) + kLabelHeight + this.#gap;
    const rows = Math.ceil(this.#rows.length / this.#columns);
    this.space.style.height = `${Math.min(kTallest, Math.max(0, rows * this.#rowHeight - this.#gap))}px`;
  }
  #gap = 12;
  #width = 220;
  #rowHeight = 200;

  #firstShown() {
    return Math.floor(this.scroller.scrollTop / this.#rowHeight) * this.#columns;
  }

  #place(card, row, position) {
    const column = position % this.#columns;
    const line = Math.floor(position / this.#columns);
    const { element } = card;
    element.style.transform = `translate(${column * (this.#width + this.#gap)}px, ${line * this.#rowHeight}px)`;
    element.style.width = `${this.#width}px`;
    element.style.height = `${this.#rowHeight - this.#gap}px`;
    element.setAttribute('aria-posinset', position + 1);
    element.setAttribute('aria-setsize', this.#rows.length);
    element.setAttribute('aria-selected', row.id === this.selected);
    element.classList.toggle('active', position === this.#active);
  }

  #cardFor(row) {
    let card = this.#cards.get(row.id);
    if (card && card.row !== row) {
      this.#drop(card);
      card = null;
    }
    if (!card) {
      card = { row, element: this.#makeCard(row) };
      this.#cards.set(row.id, card);
    }
    return card;
  }

  #drop(card) {
    endLoading(card.element.querySelectorAll('img, video'));
    card.element.remove();
  }

  #makeCard(row) {
    const badges = badgesOf(row);
    const duration = durationText(row.duration);
    const stage = h('div', { class: 'stage', 'aria-hidden': 'true' });
    if (row.flags & kPoster) {
      this.#addPoster(stage, row);
    } else {
      stage.append(h('span', { class: 'blank' }, 'No picture'));
    }
    stage.append(
      h('div', { class: 'badges' }, badges.map(([kind, text]) => h('span', { class: `badge ${kind}` }, text))),
      duration ? h('span', { class: 'corner' }, duration) : '',
    );
    const told = [row.name, metaOf(row), duration, ...badges.map(([, text, why]) => (why ? `${text}: ${why}` : text))];
    return h(
      'div',
      {
        class: 'card',
        role: 'option',
        id: `card-${row.id}`,
        'data-id': String(row.id),
        'aria-label': told.filter(Boolean).join(', '),
        title: [row.name, ...badges.map(([, , why]) => why)].filter(Boolean).join('\n'),
      },
      stage,
      h('div', { class: 'label', 'aria-hidden': 'true' },
        h('span', { class: 'name', lang: tagOf(this.language), dir: 'auto' }, row.name),
        h('span', { class: 'meta' }, metaOf(row))),
    );
  }

  #addPoster(stage, row) {
    stage.classList.add('waits');
    const picture = h('img', { alt: '', decoding: 'async', draggable: false });
    const end = () => {
      stage.classList.remove('waits');
      this.#wanted = this.#wanted.filter((one) => one.picture !== picture);
      this.#fetch();
    };
    picture.addEventListener('load', () => {
      picture.classList.add('here');
      end();
    });
    picture.addEventListener('error', () => {
      picture.replaceWith(h('span', { class: 'blank' }, 'The picture cannot be shown'));
      end();
    });
    const src = this.preview(row, 'poster');
    if (row.flags & kStock) {
      this.#wanted.push({ picture, src });
    } else {
      picture.src = src;
    }
    stage.append(picture);
  }

  #wanted = []; // stock pictures that are not there yet
  #fetch() {
    this.#wanted = this.#wanted.filter(({ picture }) => picture.isConnected);
    this.#wanted.slice(0, kMostFetched).filter(({ picture }) => !picture.hasAttribute('src')).forEach(({ picture, src }) => {
      picture.src = src;
    });
  }

  /// Plays the video of one template, and stops the one before; null: none.
  play(id) {
    clearTimeout(this.#hover);
    if (this.#playing === id) {
      return;
    }
    for (const before of this.space.querySelectorAll('video')) {
      endLoading([before]);
      before.remove();
    }
    this.#playing = null;
    const card = this.#cards.get(id);
    if (!card || !(card.row.flags & kVideo)) {
      return;
    }
    this.#playing = id;
    const video = h('video', { muted: true, loop: true, playsInline: true, src: this.preview(card.row, 'video') });
    video.addEventListener('error', () => video.remove());
    card.element.querySelector('.stage').insertBefore(video, card.element.querySelector('.badges'));
    video.play().catch(() => {}); // the pointer may have left before it could
  }

  #idAt(event) {
    const card = event.target.closest('.card');
    return card ? Number(card.dataset.id) : null;
  }

  #onClick(event) {
    const id = this.#idAt(event);
    if (id !== null) {
      this.#active = this.#rows.findIndex((row) => row.id === id);
      this.#open();
    }
  }

  #onHover(event) {
    const id = this.#idAt(event);
    clearTimeout(this.#hover);
    if (id === this.#playing || calm.matches || event.pointerType === 'touch') {
      return;
    }
    this.play(null);
    this.#hover = setTimeout(() => this.play(id), kHoverDelay);
  }

  #open() {
    const row = this.#rows[this.#active];
    if (row) {
      this.dispatchEvent(new CustomEvent('open', { detail: row }));
    }
  }

  #onKey(event) {
    const page = Math.max(1, Math.floor(this.scroller.clientHeight / this.#rowHeight)) * this.#columns;
    const steps = {
      ArrowLeft: -1, ArrowRight: 1, ArrowUp: -this.#columns, ArrowDown: this.#columns, PageUp: -page, PageDown: page,
      Home: -Infinity, End: Infinity,
    };
    if (event.key in steps) {
      this.#moveTo(this.#active + steps[event.key]);
    } else if (event.key === 'Enter') {
      this.#open();
    } else if (event.key === ' ') {
      const id = this.#rows[this.#active]?.id ?? null;
      this.play(this.#playing === id ? null : id);
    } else {
      return;
    }
    event.preventDefault();
  }

  #moveTo(position) {
    this.#active = Math.max(0, Math.min(this.#rows.length - 1, position));
    const top = Math.floor(this.#active / this.#columns) * this.#rowHeight;
    const { scrollTop, clientHeight } = this.scroller;
    if (top < scrollTop) {
      this.scroller.scrollTop = top;
    } else if (top + this.#rowHeight > scrollTop + clientHeight) {
      this.scroller.scrollTop = top + this.#rowHeight - clientHeight;
    }
    this.draw();
  }
}
