// Stores whose names were chosen to confuse a reader of their list, and the page that the program prints for them.
import { FIELDS } from '../../web/js/fileman/answers/readrows.js';

const ID_BYTES = 255;
const NAME_BYTES = 255;

/** A repeatable source of choices. */
export function dice(seed) {
  let state = seed;
  const below = (n) => {
    state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
    return Math.floor((state / 2 ** 32) * n);
  };
  return { below, oneOf: (list) => list[below(list.length)], chance: (percent) => below(100) < percent };
}

const fields = (row) => FIELDS.map((field) => `${field}: '${row[field]}'`).join(', ');
const line = (row) => `\t\t{ ${fields(row)} },\n`;
export const script = (rows) => `\n\tvar griddata = [\n${rows.map(line).join('')}\t\t];\n`;
export const page = (rows) => `<html>\n<script type="text/javascript">${script(rows)}</script>\n</head>\n<body>\n`;
export const bytesOf = (binary) => Uint8Array.from(binary, (char) => char.charCodeAt(0));
export const valuesOf = (rows) => rows.map((row) => FIELDS.map((field) => row[field]));

/** A record as the store makes it, from what lies on the disk. All texts are binary: one character a byte. */
export function record({ folder, file, isMeasurement = false, ...rest }) {
  const row = { module: '10G', mode: 'SDH/PDH', test: 'bert', port: 'P1', rsltype: 'Result', ...rest };
  row.name = isMeasurement ? file : file.split('.', 1)[0];
  row.datetime = '2026-01-02 03:04:05';
  row.path = `${folder}/${file}`;
  row.id = [row.mode, row.port, row.test, row.rsltype, row.name].join('_').slice(0, ID_BYTES);
  return row;
}

/** Pieces of which hostile names are made; `like` is another row, which they may imitate, `own` the name so far. */
const PLAIN_PIECES = ["'", 'x', '.', '\n', '\r', '\r\n', "' },\n", "' },\n\t\t{ id: '", "' },\r\n\t\t{ id: '", '\t\t];\n']
  .concat(["' },\n\t\t];\n", '<!--<script>', '\xc3\xbc', '\xff', '\\', '.html', '_'])
  .concat(["', datetime: '2026-01-01 00:00:00', rsltype: 'Result', path: '", ...FIELDS.map((field) => `', ${field}: '`)]);
const PIECES = [
  ...PLAIN_PIECES.map((piece) => () => piece),
  (like) => like.id,
  (like) => like.name,
  (like) => `${like.mode}_${like.port}_${like.test}_${like.rsltype}_`,
  (like, own) => own,
  (like, own) => `', name: '${own}', module: '`,
  (like) => `', name: '${like.name}', module: '${like.module}', mode: '${like.mode}', test: '`,
  (like) => `${like.test}', port: '${like.port}`,
  (like) => fields(like).replaceAll('/', ':'),
  (like) => fields(like).slice(0, fields(like).indexOf("', path: '")),
];

export function hostileName(random, like, longest) {
  let name = '';
  for (let i = 1 + random.below(7); i > 0; i--) name += random.oneOf(PIECES)(like, name);
  return name.replace(/[/\0]/g, '').slice(0, longest);
}

function hostileRecord(random, rows) {
  const like = rows.length && random.chance(80) ? random.oneOf(rows) : record({ folder: '/home/a/b', file: 'n.html' });
  const name = (longest) => hostileName(random, like, longest);
  const plain = `file ${rows.length}`;
  if (random.chance(15)) {
    const file = random.chance(80) ? name(NAME_BYTES) : plain;
    return record({ folder: `/home/2g5/mtie-results/${file}`, file, isMeasurement: true, module: '2G5', port: '' });
  }
  const port = random.chance(20) ? `10gport${name(240)}port` : '10gport';
  const type = random.chance(40) ? `${name(240)}-result` : 'bert-result';
  const base = random.chance(60) ? name(240) : plain;
  const extension = random.chance(30) ? `.${name(100)}.html` : '.html';
  const mode = random.oneOf(['SDH/PDH', 'Ethernet', '']);
  const odd = random.chance(5) ? { test: "it's", port: "', port: '", module: "', mode: '" } : {};
  return record({
    folder: `/home/10g/kte-rslt/${port}/${type}`,
    file: base.slice(0, NAME_BYTES - extension.length) + extension,
    mode,
    port: random.oneOf(['P1', '10G P2', '']),
    test: random.oneOf(['bert', '']),
    rsltype: random.oneOf(['Result', 'Profile']),
    ...odd,
  });
}

export function hostileStore(random) {
  const rows = [];
  for (let i = 2 + random.below(10); i > 0; i--) {
    if (random.chance(40)) rows.push(record({ folder: '/home/10g/kte-rslt/10gport/bert-result', file: `n${i}.html` }));
    else if (rows.length && random.chance(10)) rows.push(random.oneOf(rows));
    else rows.push(hostileRecord(random, rows));
  }
  return rows;
}
