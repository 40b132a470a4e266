/*
 * Reads the list page's rows from its text. The page writes every value between apostrophes exactly as
 * it is stored, so a name may hold apostrophes, line ends or a whole row; executing the array would run
 * such a name. Reading it as text needs no escaping: almost every row has its eight separators once,
 * in order; for the others the row's own redundancy tells where the name ends (the id is built from the
 * other fields, the path ends with the name).
 */
import { toBinary, toText } from './wire.js';

export const FIELDS = ['id', 'name', 'module', 'mode', 'test', 'port', 'datetime', 'rsltype', 'path'];

const START = '\tvar griddata = [\n';
const FIRST = "\t\t{ id: '";
const SEPARATORS = FIELDS.slice(1).map((field) => `', ${field}: '`);
const LAST = "' },\n";
const END = '\t\t];\n';
const ID_BYTES = 255; // the instrument cuts an id to this length
const MOST_TRIES = 5000;

/**
 * A row whose values hold no apostrophe and no line end can be read in one way only. The path's "/" keeps a
 * name from passing for the rest of its row, since names have none.
 */
const PLAIN_ROW = new RegExp(
  `${FIRST.replace('{', '\\{')}${['', ...SEPARATORS].join("([^'\n]*)")}(/[^'\n]*)' \\},\n`,
  'y',
);

const fileOf = (path) => path.slice(path.lastIndexOf('/') + 1);

/**
 * Whether nine values are one record: the id is built from the others, and the name is the path's file up to
 * its first dot. Not every source names a row exactly like that, so `exact` is asked first, the looser form after.
 */
function isOneRecord(values, exact) {
  const [id, name, , mode, test, port, datetime, rsltype, path] = values;
  const whole = [mode, port, test, rsltype, name].join('_');
  return (
    /^\d{4,}-\d\d-\d\d \d\d:\d\d:\d\d$/.test(datetime) &&
    path.startsWith('/') &&
    (exact ? fileOf(path).split('.', 1)[0] === name : fileOf(path).startsWith(name)) &&
    (id === whole || toBinary(whole).slice(0, ID_BYTES) === toBinary(id))
  );
}

function* occurrences(text, part, from) {
  for (let at = text.indexOf(part, from); at >= 0; at = text.indexOf(part, at + 1)) yield at;
}

/** Splits the text between a row's first and last mark where id and name end at the two given places. */
function splitAt(body, idEnd, nameEnd) {
  const values = [body.slice(0, idEnd), body.slice(idEnd + SEPARATORS[0].length, nameEnd)];
  let from = nameEnd + SEPARATORS[1].length;
  for (const separator of SEPARATORS.slice(2)) {
    const next = body.indexOf(separator, from);
    if (next < 0) return null;
    values.push(body.slice(from, next));
    from = next + separator.length;
  }
  values.push(body.slice(from));
  return values;
}

/** All ways to read a row: every text that may be its end, every place where its id and its name may end. */
function* readings(text, from) {
  for (const stop of occurrences(text, LAST, from)) {
    const next = stop + LAST.length;
    if (!text.startsWith(FIRST, next) && !text.startsWith(END, next)) continue;
    const body = text.slice(from, stop);
    for (const idEnd of occurrences(body, SEPARATORS[0], 0)) {
      for (const nameEnd of occurrences(body, SEPARATORS[1], idEnd + SEPARATORS[0].length)) {
        yield { values: splitAt(body, idEnd, nameEnd), next };
      }
    }
  }
}

/** A row whose name disturbs the page: the first reading whose fields agree with each other, or null. */
function readDisturbedRow(text, at) {
  for (const exact of [true, false]) {
    let tries = 0;
    for (const { values, next } of readings(text, at + FIRST.length)) {
      if (values && isOneRecord(values, exact)) return { values, next };
      if (++tries > MOST_TRIES) break;
    }
  }
  return null;
}

/**
 * Parses a list page (or its script's text). Returns null when it holds no list, else { rows, lost, whole,
 * odd }: rows as value arrays in FIELDS order, the number of rows that could not be told apart, whether the
 * list's end was found, and whether some value needs the page's own bytes to be right.
 */
export function parseRows(text) {
  const start = text.indexOf(START);
  if (start < 0) return null;
  const result = { rows: [], lost: 0, whole: false, odd: false };
  let at = start + START.length;
  for (;;) {
    PLAIN_ROW.lastIndex = at;
    const plain = PLAIN_ROW.exec(text);
    if (plain) {
      result.rows.push(plain.slice(1));
      at = PLAIN_ROW.lastIndex;
      continue;
    }
    if (!text.startsWith(FIRST, at)) break;
    const row = readDisturbedRow(text, at);
    if (row) {
      result.rows.push(row.values);
      result.odd ||= /[\r\n]/.test(row.values[1]); // a browser has made every line end alike
      at = row.next;
      continue;
    }
    result.lost += 1;
    const skip = text.indexOf(`\n${FIRST}`, at + 1);
    if (skip < 0) break;
    at = skip + 1;
  }
  result.whole = text.startsWith(END, at);
  result.odd ||= text.includes('\ufffd');
  return result;
}

/**
 * Rows as entries of texts. `sent` is the id as the instrument must get it back (binary), `twin` whether an
 * earlier entry of the list bears the same one.
 */
export function toEntries({ rows }, raw) {
  const show = raw ? toText : (value) => value;
  const seen = new Set();
  return rows.map((values) => {
    const [id, name, module, mode, test, port, datetime, rsltype, path] = values.map(show);
    const sent = raw ? values[0] : toBinary(id);
    const twin = seen.has(sent);
    seen.add(sent);
    return { id, name, module, mode, test, port, datetime, rsltype, path, sent, twin, searched: null };
  });
}
