/* Order and narrowing of the list; both stay quick at 100,000 entries. */

const cache = new Map();

/** A key by which plain comparison gives natural order: numbers by value, letters without case or accent. */
export function naturalKey(text) {
  let key = cache.get(text);
  if (key === undefined) {
    key = text.toLowerCase();
    if (/[^\0-\x7f]/.test(key)) key = key.normalize('NFKD').replace(/[\u0300-\u036f]/g, '');
    // A run of digits becomes its length and its digits: "2" < "10" because 1 digit < 2 digits.
    key = key.replace(/0*(\d+)/g, (run, digits) => String.fromCharCode(0x30 + Math.min(digits.length, 60)) + digits);
    if (cache.size > 400000) cache.clear();
    cache.set(text, key);
  }
  return key;
}

/** Indices of `entries` ordered by a field; equal values keep the order in which the instrument lists them. */
export function orderBy(entries, field, ascending) {
  const keys = field === 'datetime' ? entries.map((entry) => entry.datetime) : entries.map((entry) => naturalKey(entry[field]));
  const indices = Uint32Array.from(entries, (_, i) => i);
  const sign = ascending ? 1 : -1;
  return indices.sort((a, b) => (keys[a] < keys[b] ? -sign : keys[a] > keys[b] ? sign : a - b));
}

const FOUND_IN = ['name', 'module', 'mode', 'test', 'port', 'datetime', 'rsltype', 'path'];

/** The words of a typed text; every one must occur somewhere in an entry. */
export function wordsOf(typed) {
  return typed.toLowerCase().split(/\s+/).filter(Boolean);
}

/** Whether an entry holds all words. The searched text is made once an entry. */
export function holdsWords(entry, words) {
  entry.searched ??= FOUND_IN.map((field) => entry[field]).join('\n').toLowerCase();
  return words.every((word) => entry.searched.includes(word));
}
