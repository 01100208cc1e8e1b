// Texts as a searcher sees them, and numbers as a person reads them.

const kMarks = /[\u0300-\u036f\u0483-\u0489\u0591-\u05bd\u05bf\u05c1\u05c2\u05c4\u05c5\u05c7\u0610-\u061a\u064b-\u065f\u0670\u1ab0-\u1ace\u1dc0-\u1dff\u20d0-\u20f0\ufe20-\ufe2f]/g;
const kPlain = { 'ß': 'ss', 'æ': 'ae', 'œ': 'oe', 'ð': 'd', 'ø': 'o', 'þ': 'th', 'đ': 'd', 'ħ': 'h', 'ı': 'i', 'ł': 'l', 'ŧ': 't' };
const kStrange = /[ßæœðøþđħıłŧ]/g;

/// The form in which spellings that a person takes for the same are equal: case, width and accents do not count.
export function fold(text) {
  if (/^[\x20-\x7e]*$/.test(text)) {
    return text.toLowerCase();
  }
  return text.normalize('NFKD').toLowerCase().replace(kMarks, '').replace(kStrange, (c) => kPlain[c]).normalize('NFC');
}

/// A key by which names sort as people expect: "Title 2" before "Title 10".
export const sortKey = (name) => fold(name).replace(/\d+/g, (digits) => digits.padStart(12, '0'));

/// The text for a language out of an object from locale to text: that language's, else English, else the first.
export function pick(texts, language) {
  if (typeof texts === 'string') {
    return texts;
  }
  return texts[language] ?? texts.en_US ?? texts[Object.keys(texts).sort()[0]] ?? '';
}

export const tagOf = (locale) => locale.replaceAll('_', '-');

/// A language by its own name: "Deutsch (Deutschland)".
export function languageName(locale) {
  try {
    return new Intl.DisplayNames([tagOf(locale)], { type: 'language', languageDisplay: 'standard', style: 'short' }).of(tagOf(locale));
  } catch {
    return locale;
  }
}

export function sizeText(bytes) {
  const units = ['B', 'kB', 'MB', 'GB'];
  let unit = 0;
  let value = bytes;
  for (; value >= 999.5 && unit < 3; ++unit) {
    value /= 1000;
  }
  return `${value >= 100 || unit === 0 ? Math.round(value) : value.toFixed(1)} ${units[unit]}`;
}

export function durationText(ms) {
  if (ms === 0) {
    return '';
  }
  const seconds = ms / 1000;
  if (seconds < 60) {
    return `${Number(seconds.toFixed(1))} s`;
  }
  return `${Math.floor(seconds / 60)}:${String(Math.floor(seconds % 60)).padStart(2, '0')} min`;
}

/// How many elements of a template's lists are drawn: a hostile one has any number.
export const kMostDrawn = 300;

/// A text of a program as a person writes it: with a capital letter, unless it begins with a name of a file or key.
export const sentence = (text) => (/^\p{L}+([\s,:]|$)/u.test(text) ? text.charAt(0).toUpperCase() + text.slice(1) : text);

export const count = (n, noun) => `${n.toLocaleString('en')} ${noun}${n === 1 ? '' : 's'}`;

const kAuthors = { tsfx: 'Tessel', crvd: 'Corvid', brsk: 'Brisk' };
export const authorText = (id) => kAuthors[id] ?? id;

export const dateText = (seconds) =>
  seconds === 0 ? '' : new Date(seconds * 1000).toLocaleString(undefined, { dateStyle: 'medium', timeStyle: 'short' });
