/* Order of the list; it stays quick at 100,000 entries. */

/** A key by which plain comparison gives natural order: numbers by value, letters without case or accent. */
export function naturalKey(text) {
  let key = text.toLowerCase();
  if (/[^\0-\x7f]/.test(key)) key = key.normalize('NFKD').replace(/[\u0300-\u036f]/g, '');
  // A run of digits becomes its length and its digits: "2" < "10" because 1 digit < 2 digits.
  return key.replace(/0*(\d+)/g, (run, digits) => String.fromCharCode(0x30 + Math.min(digits.length, 60)) + digits);
}

/** Indices of `entries` ordered by date; equal dates are ordered by name, whichever way the dates go. */
function orderByDate(entries, ascending) {
  const runs = new Map();
  entries.forEach(({ datetime }, i) => {
    const run = runs.get(datetime);
    if (run) run.push(i);
    else runs.set(datetime, [i]);
  });
  const dates = [...runs.keys()].sort();
  if (!ascending) dates.reverse();
  const order = new Uint32Array(entries.length);
  let at = 0;
  for (const run of dates.map((date) => runs.get(date))) {
    const names = run.map((i) => entries[i]);
    order.set(run.length > 1 ? orderBy(names, 'name', true).map((place) => run[place]) : run, at);
    at += run.length;
  }
  return order;
}

/**
 * Indices of `entries` ordered by a field; equal values keep the order in which the instrument lists them, except dates.
 * The index goes behind its key as two characters, so that the engine sorts plain texts without calling back:
 * at 100,000 different names a tenth of the time that a comparing function takes.
 */
export function orderBy(entries, field, ascending) {
  if (field === 'datetime') return orderByDate(entries, ascending);
  const last = entries.length - 1;
  const marked = entries
    .map((entry, i) => {
      const tie = ascending ? i : last - i;
      return `${naturalKey(entry[field])}\0${String.fromCharCode(tie >>> 15, tie & 0x7fff)}`;
    })
    .sort();
  if (!ascending) marked.reverse();
  return Uint32Array.from(marked, (mark) => {
    const tie = (mark.charCodeAt(mark.length - 2) << 15) | mark.charCodeAt(mark.length - 1);
    return ascending ? tie : last - tie;
  });
}
