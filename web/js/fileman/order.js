/* Order and narrowing of the list; both stay quick at 100,000 entries. */

/** A key by which plain comparison gives natural order: numbers by value, letters without case or accent. */
export function naturalKey(text) {
  let key = text.toLowerCase();
  if (/[^\0-\x7f]/.test(key)) key = key.normalize('NFKD').replace(/[\u0300-\u036f]/g, '');
  // A run of digits becomes its length and its digits: "2" < "10" because 1 digit < 2 digits.
  return key.replace(/0*(\d+)/g, (run, digits) => String.fromCharCode(0x30 + Math.min(digits.length, 60)) + digits);
}

/**
 * Indices of `entries` ordered by a field; equal values keep the order in which the instrument lists them.
 * The index goes behind its key as two characters, so that the engine sorts plain texts without calling back:
 * at 100,000 different names a tenth of the time that a comparing function takes.
 */
export function orderBy(entries, field, ascending) {
  const last = entries.length - 1;
  const marked = entries
    .map((entry, i) => {
      const tie = ascending ? i : last - i;
      const key = field === 'datetime' ? entry.datetime : naturalKey(entry[field]);
      return `${key}\0${String.fromCharCode(tie >>> 15, tie & 0x7fff)}`;
    })
    .sort();
  if (!ascending) marked.reverse();
  return Uint32Array.from(marked, (mark) => {
    const tie = (mark.charCodeAt(mark.length - 2) << 15) | mark.charCodeAt(mark.length - 1);
    return ascending ? tie : last - tie;
  });
}

const FOUND_IN = ['name', 'module', 'mode', 'test', 'port', 'datetime', 'rsltype', 'path'];

/** The words of a typed text; every one must occur somewhere in an entry. */
export function wordsOf(typed) {
  return typed.toLowerCase().split(/\s+/).filter(Boolean);
}

/** Whether an entry holds all words. The searched text is made once for each entry. */
export function holdsWords(entry, words) {
  entry.searched ??= FOUND_IN.map((field) => entry[field])
    .join('\n')
    .toLowerCase();
  return words.every((word) => entry.searched.includes(word));
}
