// What needs no browser: reading rows and options from text, query encoding, order.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { parsePrimary } from '../../web/js/fileman/options.js';
import { naturalKey, orderBy } from '../../web/js/fileman/order.js';
import { FIELDS, parseRows, toEntries } from '../../web/js/fileman/rows.js';
import {
  decodePage,
  deliveryQuery,
  escape,
  isSendable,
  listingQuery,
  parseQuery,
  readListing,
  toBinary,
  toText,
} from '../../web/js/fileman/wire.js';
import { sniff, stripLead } from '../../web/js/fileman/viewer.js';

const bytesOf = (binary) => Uint8Array.from(binary, (char) => char.charCodeAt(0));

function record(name, more = {}) {
  const row = {
    name,
    module: '10G',
    mode: 'SDH/PDH',
    test: 'bert',
    port: 'P1',
    datetime: '2026-01-02 03:04:05',
    rsltype: 'Result',
    path: `/home/10g/bert-result/${name}.html`,
    ...more,
  };
  row.id = [row.mode, row.port, row.test, row.rsltype, row.name].join('_').slice(0, 255);
  return row;
}

const page = (rows) =>
  `<html>\n\tvar griddata = [\n${rows.map((row) => `\t\t{ ${FIELDS.map((field) => `${field}: '${row[field]}'`).join(', ')} },\n`).join('')}\t\t];\n</script>\n</html>\n`;

test('every name comes back as it is stored', () => {
  const fields =
    "', module: 'm', mode: 'm', test: 't', port: 'p', datetime: '2026-01-01 00:00:00', rsltype: 'Result', path: 'p";
  const hard = [
    "it's",
    'back\\slash',
    'a<b',
    '<!--<script>',
    "'",
    "', name: '",
    "x', name: 'x', module: 'y",
    "' },",
    'two\nlines',
    "e' },\n\t\t{ id: 'f",
    `fake${fields}' },\n\t\t{ id: 'next`,
    `fake', name: 'fake${fields}' },\n\t\t{ id: 'n', name: 'n${fields}`,
    'x'.repeat(255),
    "' },\n\t\t];\n",
    '',
    ' ',
    "}];alert(1);'",
  ];
  for (const name of [...hard, hard.filter((one) => one.length < 60).join('')]) {
    const rows = [record('before'), record(name), record('after', { module: "O'Neil", port: '' })];
    const parsed = parseRows(page(rows));
    assert.deepEqual(
      parsed.rows,
      rows.map((row) => FIELDS.map((field) => row[field])),
      JSON.stringify(name),
    );
    assert.equal(parsed.lost, 0);
    assert.ok(parsed.whole);
  }
});

test('what cannot be told apart is counted, and the rest is read', () => {
  const broken = page([record('a'), record('b'), record('c')]).replace("name: 'b', module", "name: 'b' module");
  const parsed = parseRows(broken);
  assert.deepEqual([parsed.rows.length, parsed.lost, parsed.whole], [2, 1, true]);
  assert.equal(parseRows('<html>no list</html>'), null);
  assert.equal(parseRows(page([record('a')]).slice(0, -60)).whole, false);
});

test('bytes that are no UTF-8 return to the instrument unchanged', () => {
  const bytes = bytesOf(page([record('caf\xe9 \xff', { path: '/home/caf\xe9 \xff.html' })]));
  const { text, raw } = decodePage(bytes);
  const [entry] = toEntries(parseRows(text), raw);
  assert.equal(entry.name, 'caf\ufffd \ufffd');
  assert.equal(deliveryQuery('view', [entry.sent]), '?opertype=view&rsltid=SDH/PDH_P1_bert_Result_caf%E9+%FF');
});

test('queries follow the rules of the instrument', () => {
  const cases = [
    ['a=1&a=2', { a: '1' }],
    ['name=x%26y%3Dz', { name: 'x', y: 'z' }],
    ['q=a+b%2Bc', { q: 'a b+c' }],
    ['a=%00&b=1', { a: '' }],
    ['a=%4', { a: '' }],
    ['a=%zz&b=1', { a: '' }],
    ['=x&flag&a=b=c', { '': 'x', a: 'b=c' }],
  ];
  for (const [query, values] of cases) assert.deepEqual(Object.fromEntries(parseQuery(query)), values, query);
  const all = Array.from({ length: 255 }, (_, i) => String.fromCharCode(i + 1))
    .join('')
    .replace(/[&=]/g, '');
  assert.equal(parseQuery(`x=${escape(all)}`).get('x'), all);
  assert.equal(toText(toBinary('Grüße 漢')), 'Grüße 漢');
  assert.deepEqual([isSendable('a,b'), isSendable('a,b', false), isSendable('a&b', false)], [false, true, false]);
  const query = '?fmtype=rslt&module=10G,2G5&fname=a%20b';
  assert.equal(listingQuery(readListing(query), 'filter=fpri'), '?filter=fpri&fmtype=rslt&module=10G,2G5&fname=a+b');
});

test('order is natural, and equal values keep their places', () => {
  const values = ['P10', 'P2', 'p1', 'P02', 'Öl', 'Oz'].map((name) => ({ name }));
  const ordered = (up) => Array.from(orderBy(values, 'name', up), (i) => values[i].name);
  assert.deepEqual(ordered(true), ['Öl', 'Oz', 'p1', 'P2', 'P02', 'P10']);
  assert.deepEqual(ordered(false), ['P10', 'P2', 'P02', 'p1', 'Oz', 'Öl']);
  assert.ok(naturalKey('99999999999999999999') < naturalKey('100000000000000000000'));
});

test('options are read from the page whatever their names hold', () => {
  const box = (name) =>
    `\t<div style="x"><input type="checkbox" id="id_test_opt_${name}" value="${name}" checked>${name}</input></div>\n`;
  const wanted = ['bert', 'a"b', '<b>x</b>', 'v" value="v', "it's"];
  const text = `<form id="pri_form"><fieldset id="field_test" style="y">\n\t<legend>Tests</legend>\n${['', ...wanted].map(box).join('')}</fieldset>`;
  const tests = parsePrimary({ text, raw: false }).find(({ key }) => key === 'test');
  assert.deepEqual(
    tests.options.map((option) => option.text),
    wanted,
  );
});

test('the bytes tell what a file is', () => {
  assert.equal(sniff(bytesOf('\x89PNG\r\n')), 'image/png');
  assert.equal(sniff(bytesOf(' <!DOCTYPE html>')), 'text/html');
  assert.equal(sniff(bytesOf('\xd4\xc3\xb2\xa1')), '');
  assert.deepEqual([...stripLead(bytesOf('\r\n\r\n\n<'))], [10, 60]);
  assert.deepEqual([...stripLead(bytesOf('\r\n<'))], [13, 10, 60]);
});
