// A template's controls, drawn as what they are. Each kind is one function: from the control as the document holds it to
// an element. `form` tells whether values can be changed and takes the changes: in the form that `zelt set` takes, and
// as the document would hold them, for drawing the control again.
import { h } from './dom.js';
import { count, kMostDrawn, languageName, pick, tagOf } from './text.js';

/// A localised text of a document as an object from locale to text.
export const textsOf = (localised) =>
  Object.fromEntries((localised?.strDB ?? []).map(({ localeString, str }) => [localeString ?? 'en_US', str ?? '']));

const kWidest = 50; // menu entries and cells that are drawn at most
const round = (number) => Number(number.toFixed(4));
const decimal = (number) => (Number.isInteger(number) ? `${number}.0` : String(number));

const numberInput = (value, name, form, onchange, attributes = {}) =>
  h('input', { type: 'number', step: 'any', value: String(round(value)), 'aria-label': name, disabled: !form.editable, ...attributes,
    oninput: (event) => Number.isFinite(event.target.valueAsNumber) && onchange(event.target.valueAsNumber) });

/// Calls `onmove` with where in the element, 0 to 1, a pointer is dragged.
function draggable(element, form, onmove) {
  const move = (event) => {
    const box = element.getBoundingClientRect();
    onmove((event.clientX - box.left) / box.width, (event.clientY - box.top) / box.height);
  };
  element.addEventListener('pointerdown', (event) => {
    if (form.editable) {
      element.setPointerCapture(event.pointerId);
      move(event);
    }
  });
  element.addEventListener('pointermove', (event) => element.hasPointerCapture(event.pointerId) && move(event));
  return element;
}

function checkbox(control, name, form) {
  return h('input', { type: 'checkbox', role: 'switch', class: 'switch', 'aria-label': name, checked: control.value, disabled: !form.editable,
    onchange: (event) => form.change(control.id, event.target.checked ? 'on' : 'off', event.target.checked) });
}

function slider(control, name, form) {
  const { min, max, value } = control;
  const set = (number) => form.change(control.id, decimal(number), number);
  const exact = numberInput(value, name, form, (number) => {
    range.value = number;
    set(number);
  });
  const range = h('input', { type: 'range', min: String(min), max: String(max), step: 'any', value: String(value), 'aria-label': `${name}, slider`,
    disabled: !form.editable, oninput: (event) => {
      exact.value = round(event.target.valueAsNumber);
      set(Number(exact.value));
    } });
  return h('div', { class: 'row' }, range, exact);
}

function angle(control, name, form) {
  const dial = h('span', { class: 'dial', 'aria-hidden': 'true' }, h('i'));
  const turn = (degrees) => dial.firstChild.style.setProperty('transform', `rotate(${degrees}deg)`);
  const set = (degrees) => {
    turn(degrees);
    form.change(control.id, decimal(degrees), degrees);
  };
  const exact = numberInput(control.value, `${name}, degrees`, form, set);
  draggable(dial, form, (x, y) => {
    exact.value = Math.round((Math.atan2(y - 0.5, x - 0.5) * 180) / Math.PI + 90);
    set(Number(exact.value));
  });
  turn(control.value);
  return h('div', { class: 'row' }, dial, exact, h('span', { class: 'unit' }, '°'));
}

const hex = (part) => Math.round(Math.min(1, Math.max(0, part)) * 255).toString(16).padStart(2, '0');

function colour(control, name, form) {
  const [red, green, blue, alpha] = control.value;
  const chosen = { rgb: [red, green, blue], alpha };
  const set = () => {
    const parts = [...chosen.rgb, chosen.alpha].map(round);
    form.change(control.id, parts.map(decimal).join(), parts);
  };
  const told = h('code', {}, `#${hex(red)}${hex(green)}${hex(blue)}`.toUpperCase());
  return h('div', { class: 'row' },
    h('input', { type: 'color', value: `#${hex(red)}${hex(green)}${hex(blue)}`, 'aria-label': name, disabled: !form.editable,
      oninput: (event) => {
        told.textContent = event.target.value.toUpperCase();
        chosen.rgb = [1, 3, 5].map((at) => parseInt(event.target.value.slice(at, at + 2), 16) / 255);
        set();
      } }),
    told,
    h('span', { class: 'unit' }, 'Opacity'),
    numberInput(alpha * 100, `${name}, opacity in per cent`, form, (per) => {
      chosen.alpha = per / 100;
      set();
    }, { min: '0', max: '100' }), h('span', { class: 'unit' }, '%'));
}

function point(control, name, form) {
  const place = { ...control.value };
  // Points are fractions of the frame in some documents and pixels in others.
  const isFraction = Math.abs(place.x) <= 1 && Math.abs(place.y) <= 1;
  const [width, height] = isFraction || !form.frame[0] ? [1, 1] : form.frame;
  const dot = h('i');
  const draw = () => {
    dot.style.left = `${Math.min(100, Math.max(0, (place.x / width) * 100))}%`;
    dot.style.top = `${Math.min(100, Math.max(0, (place.y / height) * 100))}%`;
  };
  const set = (x, y) => {
    Object.assign(place, { x: round(x), y: round(y) });
    draw();
    form.change(control.id, `${decimal(place.x)},${decimal(place.y)}`, { ...place });
  };
  const xs = numberInput(place.x, `${name}, x`, form, (x) => set(x, place.y));
  const ys = numberInput(place.y, `${name}, y`, form, (y) => set(place.x, y));
  const pad = draggable(h('span', { class: 'pad', 'aria-hidden': 'true' }, dot), form, (x, y) => {
    set(Math.min(1, Math.max(0, x)) * width, Math.min(1, Math.max(0, y)) * height);
    [xs.value, ys.value] = [place.x, place.y];
  });
  draw();
  return h('div', { class: 'row' }, pad, h('span', { class: 'unit' }, 'x'), xs, h('span', { class: 'unit' }, 'y'), ys);
}

function text(control, name, form) {
  const texts = textsOf(control.value);
  const shown = pick(texts, form.language);
  const has = form.language in texts;
  return h('div', {},
    h('textarea', { rows: String(Math.min(6, shown.split(/\n|\r/).length)), 'aria-label': name, lang: tagOf(form.language), dir: 'auto', disabled: !form.editable,
      oninput: (event) => form.change(control.id, event.target.value, null, form.language) }, shown),
    has ? null : h('p', { class: 'hint' }, `No text of its own in ${languageName(form.language)}.`));
}

const comment = (control, name, form) => h('p', { class: 'note', dir: 'auto', lang: tagOf(form.language) }, pick(textsOf(control.value), form.language));

function scale(control, name, form) {
  const values = [...control.value];
  const inputs = values.map((value, i) => numberInput(value, `${name}, ${'xyz'[i] ?? i + 1} in per cent`, form, (per) => {
    const factor = values[i] !== 0 ? per / values[i] : 1;
    values.forEach((old, k) => {
      if (k === i || control.linked) {
        values[k] = k === i ? per : round(old * factor);
        if (k !== i) {
          inputs[k].value = values[k];
        }
      }
    });
    form.change(control.id, values.map(decimal).join(), [...values]);
  }));
  return h('div', { class: 'row' }, inputs.map((input) => [input, h('span', { class: 'unit' }, '%')]).flat(),
    control.linked ? h('span', { class: 'unit' }, 'linked') : null);
}

function menu(control, name, form) {
  const entries = control.menucontent.map((entry) => pick(textsOf(entry), form.language));
  const outside = control.value < 0 || control.value >= entries.length;
  return h('select', { 'aria-label': name, disabled: !form.editable, onchange: (event) => form.change(control.id, event.target.value, Number(event.target.value)) },
    outside ? h('option', { value: String(control.value), selected: true }, `${control.value} (no such entry)`) : null,
    entries.slice(0, 10 * kWidest).map((entry, i) => h('option', { value: String(i), selected: i === control.value }, entry)));
}

function media(control, name, form) {
  return h('div', { class: 'row slot' }, h('span', { 'aria-hidden': 'true' }, '▦'),
    h('input', { type: 'text', value: control.cacheID, 'aria-label': `${name}, media`, placeholder: 'No media', disabled: !form.editable,
      oninput: (event) => form.change(control.id, event.target.value, event.target.value) }));
}

const cellText = (cell) => (cell === null || cell === undefined ? '' : typeof cell === 'object' ? cell.date : String(cell));

function cellOf(textual, type) {
  if (textual === '') {
    return null;
  }
  const asNumber = Number(textual);
  return type === 1 && Number.isFinite(asNumber) ? asNumber
    : type === 2 ? textual === 'true'
    : type === 3 && /^\d{4}-\d\d-\d\d$/.test(textual) ? { date: textual }
    : textual;
}

function cell(value, column, label, form, onchange) {
  const type = column.columnDataType;
  if (type === 2) {
    return h('input', { type: 'checkbox', checked: value === true, 'aria-label': label, disabled: !form.editable,
      onchange: (event) => onchange(String(event.target.checked)) });
  }
  const limited = type === 1 && (column.columnMinValue !== 0 || column.columnMaxValue !== 0);
  return h('input', { type: type === 1 && typeof value !== 'string' ? 'number' : type === 3 ? 'date' : 'text', step: 'any', value: cellText(value), 'aria-label': label,
    min: limited ? String(column.columnMinValue) : null, max: limited ? String(column.columnMaxValue) : null, disabled: !form.editable,
    oninput: (event) => onchange(event.target.value) });
}

function sheet(control, name, form) {
  const columns = control.columnInfo.slice(0, kWidest);
  const table = structuredClone(control.value);
  const names = columns.map((column, i) => pick(textsOf(column.columnName), form.language) || `Column ${i + 1}`);
  const body = h('tbody');
  const store = () => form.change(control.id, JSON.stringify(table), structuredClone(table));
  const draw = () => {
    const rows = Math.min(Math.max(table.activeRows, 0), kWidest);
    body.replaceChildren(...Array.from({ length: rows }, (_, row) => h('tr', {}, h('th', { scope: 'row' }, String(row + 1)),
      columns.map((column, i) => h('td', {}, cell(table.columnValues[i]?.[row], column, `${names[i]}, row ${row + 1}`, form, (value) => {
        while (table.columnValues.length <= i) {
          table.columnValues.push([]);
        }
        while (table.columnValues[i].length < row) {
          table.columnValues[i].push(null);
        }
        table.columnValues[i][row] = cellOf(value, column.columnDataType);
        store();
      }))))));
    fewer.disabled = !form.editable || table.activeRows <= control.minRows;
    more.disabled = !form.editable || table.activeRows >= control.maxRows;
    told.textContent = `${table.activeRows} of at most ${control.maxRows} rows${rows < table.activeRows ? `, the first ${rows} shown` : ''}`;
  };
  const resize = (step) => {
    table.activeRows += step;
    draw();
    store();
  };
  const more = h('button', { type: 'button', onclick: () => resize(1), 'aria-label': `${name}: add a row` }, 'Add row');
  const fewer = h('button', { type: 'button', onclick: () => resize(-1), 'aria-label': `${name}: remove the last row` }, 'Remove row');
  const told = h('span', { class: 'unit' });
  draw();
  return h('div', { class: 'sheet' },
    h('div', { class: 'scroll' }, h('table', { 'aria-label': name }, h('thead', {}, h('tr', {}, h('td'), names.map((column) => h('th', { scope: 'col', dir: 'auto' }, column)))), body)),
    h('div', { class: 'row' }, form.editable ? [more, fewer] : null, told));
}

const kKinds = {
  1: ['Check box', checkbox], 2: ['Slider', slider], 3: ['Angle', angle], 4: ['Colour', colour], 5: ['Point', point], 6: ['Text', text],
  8: ['Comment', comment], 9: ['Scale', scale], 11: ['Sheet', sheet], 13: ['Menu', menu], 14: ['Media', media],
};

function drawOne(control, byId, drawn, form) {
  if (drawn.has(control)) {
    return null;
  }
  drawn.add(control);
  const name = pick(textsOf(control.uiName), form.language) || control.id;
  if (control.type === 10) {
    const members = control.value.slice(0, kMostDrawn).map((id) => (byId.has(id) ? drawOne(byId.get(id), byId, drawn, form) : h('p', { class: 'hint' }, `There is no control “${id}”.`)));
    return h('details', { class: 'group', open: control.groupexpanded }, h('summary', { dir: 'auto' }, name), members.filter(Boolean));
  }
  const [kind, draw] = kKinds[control.type] ?? ['Unknown kind', () => h('p', { class: 'hint' }, 'This version cannot show it.')];
  return h('div', { class: 'control', 'data-control': control.id },
    h('div', { class: 'control-name' }, h('span', { dir: 'auto', lang: tagOf(form.language) }, name), h('span', { class: 'kind' }, kind)),
    draw(control, name, form));
}

/// All controls in their order; a group's members stand in the group.
/// @param form  { editable, language, frame: [width, height], change(id, value, asInDocument, locale) }
export function drawControls(all, form) {
  const controls = all.slice(0, kMostDrawn);
  const byId = new Map(controls.map((control) => [control.id, control]));
  const members = new Set(controls.filter(({ type }) => type === 10).flatMap(({ value }) => value));
  const drawn = new Set();
  // Members come with their group, but where groups hold each other all would wait for all.
  const first = controls.filter(({ id }) => !members.has(id));
  return [
    ...[...first, ...controls].map((control) => drawOne(control, byId, drawn, form)),
    all.length > kMostDrawn ? h('p', { class: 'hint' }, `${count(all.length - kMostDrawn, 'more control')} not shown.`) : null,
  ].filter(Boolean);
}
