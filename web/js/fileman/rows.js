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

const plainName = (path) => path.slice(path.lastIndexOf('/') + 1);

/** Whether nine values can be one record: every listed file lies below a directory and bears the row's name. */
function isCoherent(values) {
  const [id, name, , , , , , , path] = values;
  return path.startsWith('/') && plainName(path).startsWith(name)
    && (id.endsWith(name) || toBinary(id).length >= ID_BYTES);
}

function isExact(values) {
  const [id, name, , mode, test, port, datetime, rsltype, path] = values;
  const whole = [mode, port, test, rsltype, name].join('_');
  return /^\d{4,}-\d\d-\d\d \d\d:\d\d:\d\d$/.test(datetime) && path.startsWith('/')
    && plainName(path).startsWith(name)
    && (id === whole || toBinary(whole).slice(0, ID_BYTES) === toBinary(id));
}

/** The row on one line at `at` whose separators stand once and in order, or null. */
function readPlainRow(text, at) {
  const end = text.indexOf('\n', at);
  if (end < 0 || !text.startsWith(LAST, end - LAST.length + 1)) return null;
  const stop = end - LAST.length + 1;
  const values = [];
  let from = at + FIRST.length;
  for (let next = text.indexOf("', ", from); next >= 0 && next < stop; next = text.indexOf("', ", from)) {
    const separator = SEPARATORS[values.length];
    if (!separator || !text.startsWith(separator, next)) return null;
    values.push(text.slice(from, next));
    from = next + separator.length;
  }
  if (values.length !== SEPARATORS.length || from > stop) return null;
  values.push(text.slice(from, stop));
  return { values, next: end + 1 };
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

/** A row whose name disturbs the page: tries row ends and splits until one row's fields agree with each other. */
function readDisturbedRow(text, at) {
  let tries = 0;
  const from = at + FIRST.length;
  for (const stop of occurrences(text, LAST, from)) {
    const next = stop + LAST.length;
    if (!text.startsWith(FIRST, next) && !text.startsWith(END, next)) continue;
    const body = text.slice(from, stop);
    for (const idEnd of occurrences(body, SEPARATORS[0], 0)) {
      for (const nameEnd of occurrences(body, SEPARATORS[1], idEnd + SEPARATORS[0].length)) {
        if (++tries > MOST_TRIES) return null;
        const values = splitAt(body, idEnd, nameEnd);
        if (values && isExact(values)) return { values, next };
      }
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
  while (text.startsWith(FIRST, at)) {
    const plain = readPlainRow(text, at);
    const row = plain && isCoherent(plain.values) ? plain : readDisturbedRow(text, at) ?? plain;
    if (row) {
      result.rows.push(row.values);
      at = row.next;
      continue;
    }
    result.lost += 1;
    const skip = text.indexOf(`\n${FIRST}`, at + 1);
    if (skip < 0) break;
    at = skip + 1;
  }
  result.whole = text.startsWith(END, at);
  result.odd = text.slice(start, at).includes('\ufffd') || result.rows.some((values) => /[\r\n]/.test(values[1]));
  return result;
}

/** Rows as objects of texts; `sent` is the id as the instrument must get it back (binary). */
export function toEntries({ rows }, raw) {
  const show = raw ? toText : (value) => value;
  return rows.map((values) => {
    const entry = { sent: raw ? values[0].replace(/[^\0-\x7f]/g, (char) => String.fromCharCode(char.charCodeAt(0) & 0xff)) : null };
    FIELDS.forEach((field, i) => { entry[field] = show(values[i]); });
    entry.sent ??= toBinary(entry.id);
    return entry;
  });
}
