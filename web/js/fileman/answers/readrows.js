/*
 * Reads the rows of the list page from its text. The page writes every value between apostrophes exactly as it is
 * stored. So the name of a file or directory may contain apostrophes, line ends or a text that looks like rows. If the
 * array were executed, such a name would run as code. A wrong reading must never be accepted. Three rules ensure this:
 *
 * - No name contains a "/". ANCHOR matches a text with the fixed first directories of a path, so no name can contain a
 *   match. Therefore each row has exactly one anchor, and the number of anchors is the number of rows.
 * - Between two anchors one row ends and the next one begins. If the text there has only one such border, this is the
 *   right one. If it has several, all of them are tried.
 * - The values of a row agree with each other: the id consists of five of them, and the path ends with the name.
 *
 * A row is accepted if there is exactly one way to read it so that its neighbours can be read too. All other rows are
 * lost, and the lost rows are counted.
 *
 * Strict answers need none of this, because each row is one line of JSON.
 */
import { toBinary, toText } from './encoding.js';

export const FIELDS = ['id', 'name', 'module', 'mode', 'test', 'port', 'datetime', 'rsltype', 'path'];

const STRICT_ROW_START = '\t\t{"';
const LIST_START = '\tvar griddata = [\n';
const ROW_START = "\t\t{ id: '";
const ROW_END = "' },\n";
const LIST_END = '\t\t];\n';
/**
 * The end of the list and the text after it in a page. No path contains this text, because it would need two
 * directories whose names end with "<".
 */
const PAGE_LIST_END = `${LIST_END}</script>\n</head>\n`;
const ID_BYTES = 255; // the instrument cuts an id to this length

const anchorPattern = "', datetime: '([^'/\n]*)', rsltype: '([^'/\n]*)', path: '(?=/home/[^/\n]*/)";
const ANCHOR = new RegExp(anchorPattern, 'g');

/** Matches a row without apostrophes and line ends in its values. */
const PLAIN_ROW = new RegExp(
  `${["\t\t\\{ id: '", "', name: '", "', module: '", "', mode: '", "', test: '", "', port: '"].join("([^'\n]*)")}` +
    `([^'\n]*)${anchorPattern}([^'\n]*)' \\},\n`,
  'y',
);

/** Yields the places of a part in a text. Each place costs one unit of the budget; without budget it ends. */
function* places(text, part, from, budget) {
  for (let at = text.indexOf(part, from); at >= 0 && budget.left > 0; at = text.indexOf(part, at + 1)) {
    budget.left -= 1;
    yield at;
  }
}

function anchorAfter(text, from) {
  ANCHOR.lastIndex = from;
  const found = ANCHOR.exec(text);
  return found && { at: found.index, path: ANCHOR.lastIndex, datetime: found[1], rsltype: found[2] };
}

/**
 * * Returns the names that fit a path: the file name up to its first dot, and for a measurement the name of its
 * directory.
 */
function namesOf(path) {
  const fileAt = path.lastIndexOf('/') + 1;
  const file = path.slice(fileAt);
  const dot = file.indexOf('.');
  const names = dot < 0 ? [] : [file.slice(0, dot)];
  return path.endsWith(`/${file}/`, fileAt) ? [...names, file] : names;
}

/** Yields all ways to read the text before an anchor if the name is known: [id, name, module, mode, test, port]. */
function* headReadings(head, rsltype, name, budget) {
  const afterId = `', name: '${name}', module: '`;
  for (const idEnd of places(head, afterId, 0, budget)) {
    const id = head.slice(0, idEnd);
    const moduleAt = idEnd + afterId.length;
    for (const moduleEnd of places(head, "', mode: '", moduleAt, budget)) {
      const modeAt = moduleEnd + "', mode: '".length;
      for (const modeEnd of places(head, "', test: '", modeAt, budget)) {
        const mode = head.slice(modeAt, modeEnd);
        if (!`${mode}_`.startsWith(id.slice(0, mode.length + 1))) continue;
        const testAt = modeEnd + "', test: '".length;
        for (const testEnd of places(head, "', port: '", testAt, budget)) {
          const test = head.slice(testAt, testEnd);
          const port = head.slice(testEnd + "', port: '".length);
          const whole = [mode, port, test, rsltype, name].join('_');
          if (id === whole || toBinary(id) === toBinary(whole).slice(0, ID_BYTES))
            yield [id, name, head.slice(moduleAt, moduleEnd), mode, test, port];
        }
      }
    }
  }
}

/**
 * Returns all ways to read the row around an anchor, [{ from, to, values }]. The row begins at one of `starts` and ends
 * at one of `ends`. Returns null if the budget is used up.
 */
function rowReadings(text, anchor, starts, ends, budget) {
  const endsOfName = new Map();
  for (const to of ends) {
    budget.left -= 1;
    for (const name of namesOf(text.slice(anchor.path, to - ROW_END.length))) {
      if (!endsOfName.has(name)) endsOfName.set(name, []);
      endsOfName.get(name).push(to);
    }
  }
  const readings = [];
  for (const from of starts) {
    const head = text.slice(from + ROW_START.length, anchor.at);
    for (const [name, fitting] of endsOfName) {
      budget.left -= 1;
      for (const values of headReadings(head, anchor.rsltype, name, budget)) {
        for (const to of fitting) {
          budget.left -= 1;
          const path = text.slice(anchor.path, to - ROW_END.length);
          readings.push({ from, to, values: [...values, anchor.datetime, anchor.rsltype, path] });
        }
      }
      if (budget.left <= 0) return null;
    }
  }
  return readings;
}

/**
 * Returns the rows around some anchors, with null for a lost one. Row i begins at one of borders[i] and ends at one of
 * borders[i + 1]. `count` gets the number of steps.
 */
function readGroup(text, anchors, borders, count) {
  const readings = [];
  let starts = borders[0];
  anchors.forEach((anchor, i) => {
    const ends = borders[i + 1];
    const budget = { left: Math.max(0, ends.at(-1) - borders[i][0]) || 0 };
    const all = budget.left;
    readings.push(rowReadings(text, anchor, starts, ends, budget));
    count(all - Math.max(budget.left, 0));
    starts = readings[i] ? [...new Set(readings[i].map(({ to }) => to))] : ends;
  });
  let ends = new Set(borders.at(-1));
  const rows = anchors.map(() => null);
  for (let i = anchors.length - 1; i >= 0; i--) {
    const fitting = readings[i]?.filter(({ to }) => ends.has(to));
    if (fitting?.length === 1) rows[i] = fitting[0].values;
    ends = new Set(fitting ? fitting.map(({ from }) => from) : borders[i]);
  }
  return rows;
}

/**
 * Finds the rows from the border at `start` to the next border that has only one possible place. Returns
 * { anchors, borders }. The last border may be the end of the text.
 */
function findGroup(text, start) {
  const anchors = [];
  const borders = [[start]];
  let next = anchorAfter(text, start);
  while (next) {
    const anchor = next;
    next = anchorAfter(text, anchor.path);
    anchors.push(anchor);
    const stretch = next ? text.slice(anchor.path, next.at) : '';
    const found = [];
    for (let at = stretch.indexOf(ROW_END + ROW_START); at >= 0; at = stretch.indexOf(ROW_END + ROW_START, at + 1))
      found.push(anchor.path + at + ROW_END.length);
    borders.push(next ? found : [text.length]);
    if (found.length === 1) break;
  }
  return { anchors, borders };
}

/** Makes a row from values in the order of FIELDS. */
const rowOf = ([id, name, module, mode, test, port, datetime, rsltype, path]) => ({
  id,
  name,
  module,
  mode,
  test,
  port,
  datetime,
  rsltype,
  path,
});

/**
 * Reads the text between the first and the last line of the list. Returns { rows, lost, whole, sure, steps }. A row has
 * a value for each of FIELDS. `lost` is the number of rows that could not be read. `sure` is false if the result
 * depends on line ends or bytes that the browser may have changed. `steps` is the number of attempts.
 */
function readRows(text, whole) {
  const result = { rows: [], lost: 0, whole, sure: !text.includes('\ufffd'), steps: 0 };
  const count = (steps) => {
    result.steps += steps;
  };
  let at = 0;
  let lastPlain = -1; // start of the last plain row; its end is not certain before the next row is read
  for (;;) {
    PLAIN_ROW.lastIndex = at;
    const plain = PLAIN_ROW.exec(text);
    count(1);
    if (plain) {
      result.rows.push(rowOf(plain.slice(1)));
      lastPlain = at;
      at = PLAIN_ROW.lastIndex;
      continue;
    }
    if (whole && at === text.length) return result;
    // A plain row before another one can be read in only one way. Before any other text its path may be longer.
    if (lastPlain >= 0) {
      result.rows.pop();
      at = lastPlain;
      lastPlain = -1;
    }
    const { anchors, borders } = findGroup(text, at);
    const isCutOff = !whole && borders.at(-1)[0] === text.length;
    const rows = isCutOff ? [] : readGroup(text, anchors, borders, count).filter(Boolean);
    for (const row of rows) result.rows.push(rowOf(row));
    result.lost += Math.max(anchors.length, 1) - rows.length;
    result.sure &&= anchors.length === 1 && !rows.some((row) => row.some((value) => value.includes('\n')));
    at = borders.at(-1)[0];
    if (isCutOff || !anchors.length) return result;
  }
}

/** A surrogate that stands for a byte that is not UTF-8. */
const LONE_BYTE = /[\udc80-\udcff]/u;

/**
 * Reads the rows of a strict answer: one object per line, with FIELDS as keys. If the list is cut off, its last line is
 * ignored. Returns an object like readRows(), plus `hasLoneBytes`: true if some values are not UTF-8.
 */
function readStrictRows(text, whole) {
  const end = text.lastIndexOf('\n');
  const rows = JSON.parse(`[${text.slice(0, text[end - 1] === ',' ? end - 1 : end)}]`);
  const hasLoneBytes = text.includes('\\u') && /\\udc[89a-f]/i.test(text);
  return { rows, lost: 0, whole, sure: true, steps: rows.length, hasLoneBytes };
}

const readAll = (text, whole) => (text.startsWith(STRICT_ROW_START) ? readStrictRows : readRows)(text, whole);

/** Parses the text of a list page. Returns an object like readRows(), or null if the page has no list. */
export function parsePage(text) {
  const start = text.indexOf(LIST_START);
  if (start < 0) return null;
  const from = start + LIST_START.length;
  const end = text.indexOf(PAGE_LIST_END, from);
  return readAll(text.slice(from, end < 0 ? text.length : end), end >= 0);
}

/** Parses the text of a script element. Returns an object like readRows(), or null if the script has no list. */
export function parseScript(text) {
  const start = text.indexOf(LIST_START);
  if (start < 0) return null;
  const whole = text.endsWith(LIST_END);
  return readAll(text.slice(start + LIST_START.length, whole ? -LIST_END.length : text.length), whole);
}

/** Returns a row with readable texts. This changes bytes that are not UTF-8, so `sent` keeps the original id. */
function shown(row, raw) {
  const show = raw ? toText : (value) => (LONE_BYTE.test(value) ? toText(toBinary(value)) : value);
  return { ...rowOf(FIELDS.map((field) => show(row[field]))), sent: raw ? row.id : toBinary(row.id) };
}

/** Turns rows into entries with readable texts. An entry is a `twin` if an earlier entry has the same id. */
export function toEntries({ rows, hasLoneBytes }, raw) {
  const entries = raw || hasLoneBytes ? rows.map((row) => shown(row, raw)) : rows;
  const ids = new Set();
  for (const entry of entries) {
    const { size } = ids;
    if (ids.add(entry.sent ?? entry.id).size === size) entry.twin = true;
  }
  return entries;
}
