// Modules that need no browser: query encoding, order, the filter pages' options, what a file is.
import assert from 'node:assert/strict';
import fs from 'node:fs';
import { test } from 'node:test';
import { membersOf } from '../../web/js/fileman/answers/archive.js';
import { align, change, differingCells } from '../../web/js/fileman/view/differences.js';
import { lacksOfDownload, lacksOfPdfs } from '../../web/js/fileman/delivery/missing.js';
import { FIELDS } from '../../web/js/fileman/answers/readrows.js';
import english from '../../web/js/languages/en.js';
import { parsePrimary } from '../../web/js/fileman/filter/options.js';
import { dateAt } from '../../web/js/fileman/search/searchdates.js';
import { naturalKey } from '../../web/js/fileman/common/naturalorder.js';
import { orderBy } from '../../web/js/fileman/grid/order.js';
import { Query } from '../../web/js/fileman/search/query.js';
import { escape, isSendable, listingQuery, parseQuery, readListing, toBinary, toText } from '../../web/js/fileman/answers/requests.js';
import { sniff, stripLead } from '../../web/js/fileman/answers/stored.js';
import { archiveOf } from './archives.mjs';

const bytesOf = (binary) => Uint8Array.from(binary, (char) => char.charCodeAt(0));

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
  for (const [query, values] of cases)
    for (const [key, value] of Object.entries(values)) assert.equal(parseQuery(query).text(key), value, query);
  const all = Array.from({ length: 255 }, (_, i) => String.fromCharCode(i + 1))
    .join('')
    .replace(/[&=]/g, '');
  assert.equal(parseQuery(`x=${escape(all)}`).text('x'), all);
  assert.equal(toText(toBinary('Grüße 漢')), 'Grüße 漢');
  assert.deepEqual([isSendable('a,b'), isSendable('a,b', false), isSendable('a&b', false)], [false, true, false]);
  const query = '?fmtype=rslt&module=10G,2G5&fname=a%20b';
  assert.equal(listingQuery(readListing(query), 'filter=fpri'), '?filter=fpri&fmtype=rslt&module=10G,2G5&fname=a%20b');
});

test('for strict answers a query is cut before it is decoded, and every byte travels', () => {
  globalThis.document = { head: { querySelector: () => ({ content: 'strict' }) } };
  try {
    const query = parseQuery('?a=x%26y%3Dz+&l=%2C,b,,%2526');
    assert.deepEqual([query.text('a'), query.list('l')], ['x&y=z+', [',', 'b', '%26']]);
    const all = Array.from({ length: 256 }, (_, i) => String.fromCharCode(i)).join('');
    assert.deepEqual(parseQuery(`x=${[all, all].map(escape)}`).list('x'), [all, all]);
    const text = '\udcff\udc80ü\u{1f600}';
    assert.equal(toBinary(text), '\xff\x80\xc3\xbc\xf0\x9f\x98\x80');
    assert.deepEqual([isSendable('a,b&'), isSendable('\0')], [true, false]);
    const field = '<input type="checkbox" id="id_module_opt_a%22%20%FF" value="a&quot; \ufffd" />';
    const [modules] = parsePrimary({ text: `<form id="pri_form"><fieldset id="field_module">${field}</fieldset>` });
    assert.deepEqual(modules.options, [{ value: 'a" \xff', text: 'a" \ufffd' }]);
  } finally {
    delete globalThis.document;
  }
});

test('order is natural; equal values keep their places, and equal dates go by name in both directions', () => {
  const ordered = (entries, field, up) => Array.from(orderBy(entries, field, up), (i) => entries[i].text).join(', ');
  const named = ['P10', 'P2', 'p1', 'P02', 'Öl', 'Oz'].map((name) => ({ name, text: name }));
  assert.equal(ordered(named, 'name', true), 'Öl, Oz, p1, P2, P02, P10');
  assert.equal(ordered(named, 'name', false), 'P10, P2, P02, p1, Oz, Öl');
  const dated = ['2 b10', '1 z', '2 a', '2 b9', '1 y'].map((text) => ({ datetime: text[0], name: text.slice(2), text }));
  assert.equal(ordered(dated, 'datetime', true), '1 y, 1 z, 2 a, 2 b9, 2 b10');
  assert.equal(ordered(dated, 'datetime', false), '2 a, 2 b9, 2 b10, 1 y, 1 z');
  assert.ok(naturalKey('99999999999999999999') < naturalKey('100000000000000000000'));
});

test('days and ranges are read as people write them', () => {
  const now = new Date(2026, 10, 22, 15, 30); // a Sunday
  const cases = [
    ['today', '11-22', '11-23'], ['Yesterday', '11-21', '11-22'], ['this week', '11-16', '11-23'],
    ['last  week', '11-09', '11-16'], ['last month', '10-01', '11-01'], ['last 3 days', '11-20', '11-23'],
    ['last 2 hours', '11-22 13:30:00', '11-23'], ['20.11.', '11-20', '11-21'], ['20.11.26', '11-20', '11-21'],
    ['20.-22.11.', '11-20', '11-23'], ['20.11.-22.11.', '11-20', '11-23'], ['20.11. to yesterday', '11-20', '11-22'],
    ['2026-11-01..2026-11-03', '11-01', '11-04'], ['since yesterday', '11-21', null], ['20.11...', '11-20', null],
    ['after 20.11.', '11-21', null], ['before 2026-11-20', null, '11-20'], ['until 20.11.', null, '11-21'],
  ];
  const day = (text) => text && (text.includes(':') ? `2026-${text}` : `2026-${text} 00:00:00`);
  for (const [text, from, to] of cases) {
    const range = dateAt(`x ${text} y`, 2, now);
    assert.deepEqual(range, { from: day(from) ?? '', to: day(to) ?? '~', length: text.length }, text);
  }
  assert.equal(dateAt('30.12.', 0, now).from, '2025-12-30 00:00:00', 'the last one, not one to come');
  assert.equal(dateAt('20.12.-10.1.26', 0, now).from, '2025-12-20 00:00:00');
  for (const none of ['todays', '31.2.', '2026-11-20', '20.11', 'last', 'since', '10.10.10.5'])
    assert.equal(dateAt(none, 0, now), null, none);
});

test('a query asks by word, phrase, column, exclusion and date', () => {
  const entries = [
    ['a', 'bert_north 1', 'bert', '10G P1', '/h/a.html', '2020-02-03'],
    ['b', 'bert_south', 'bert', '10G P10', '/h/b.html', '2020-02-04'],
    ['c', 'ping "x" north', 'ping', 'RJ45', '/h/c.pcap', '2020-02-05'],
    ['d', 'north 1 d', 'latency', '', '/h/d-[1]{2}.png', '2020-02-06'],
  ].map(([letter, name, test, port, path, day]) => ({ letter, name, test, port, path, datetime: `${day} 10:00:00` }));
  const found = (text) => {
    const query = new Query(text);
    return query.filter(entries).map(({ letter }) => letter).join('');
  };
  const cases = [
    ['', 'abcd'], ['NORTH bert', 'a'], ['"north 1"', 'ad'], ['north -bert', 'cd'], ['-"north 1" -ping', 'b'],
    ['port:P1', 'a'], ['port:10g', 'ab'], ['port:"10G P1"', 'a'], ['port:"P1"', ''], ['port:""', 'd'],
    ['test:ber,ping', 'abc'], ['-test:bert,ping', 'd'], ['kind:report', 'ab'], ['kind:Picture,capture', 'cd'],
    ['name:"ping ""x"" north"', 'c'], ['name:north path:d', 'd'], ['path:"/h/d-[1]{2}.png"', 'd'], ['path:d-[', 'd'],
    ['NORTH 2020-02-06', 'd'], ['D-[1]{2}', 'd'], ['3.2.20-4.2.20 bert', 'ab'], ['bert -3.2.20', 'b'],
    ['port:', 'abcd'], ['-', 'abcd'], ['x:y', ''], ['"no end', ''],
  ];
  for (const [text, letters] of cases) assert.equal(found(text), letters, text);
  entries[0].verdict = 'fail';
  entries[1].verdict = 'pass';
  Object.assign(entries[3], { name: 'FAIL over', verdict: 'none' });
  const verdicts = [['Fail', 'ad'], ['verdict:fail', 'a'], ['-fail', 'bc'], ['pass', 'b'], ['failed', '']];
  for (const [text, letters] of verdicts) assert.equal(found(text), letters, text);
  assert.deepEqual(new Query('bert -north name:so "a b"').words, ['bert', 'so', 'a b']);
});

test('a value is tapped into a query and out of it again', () => {
  const toggle = (text, key, value) => new Query(text).toggled(key, value);
  assert.equal(toggle('', 'port', '10G P1'), 'port:"10G P1"');
  assert.equal(toggle('north port:P1 -x', 'port', 'a"b'), 'north -x port:P1,"a""b"');
  assert.equal(toggle('north port:P1,"a""b" "c  d"', 'port', 'a"b'), 'north "c  d" port:P1');
  assert.equal(toggle('port:"10g p1" north', 'port', '10G P1'), 'north');
  const within = (text, other) => new Query(text).isWithin(new Query(other));
  assert.ok(within('bert nor', 'bert no') && within('bert', '') && within('port:P1 ab', 'a port:P1'));
  assert.ok(!within('be', 'bert') && !within('-bert', '-ber') && !within('port:P1', 'port:P'));
});

test('what belongs together is found in order, and what differs is told by name or place', () => {
  const pairs = (a, b) => align(a.length, b.length, (i, j) => (a[i] === b[j] ? 1 : 0));
  assert.deepEqual(pairs('axbc', 'abyc').filter(([i, j]) => i >= 0 && j >= 0), [[0, 0], [2, 1], [3, 3]]);
  assert.deepEqual(pairs('', 'a'), [[-1, 0]]);
  assert.deepEqual(differingCells(['a', '1', '2'], ['a', '2'], ['n', 'x', 'y'], ['n', 'y']), [[1, -1]]);
  assert.deepEqual(differingCells(['a', '1'], ['a', '1', '2'], null, null), [[-1, 2]]);
  for (const [a, b, wanted] of [
    ['1,000.5 ms', '1,001 ms', '+0.5 ms'],
    ['3', '1E-3', '-2.999'],
    ['5 %', '5 ms', ''],
    ['1GE', '40GE', ''],
    ['PASS', 'FAIL', ''],
  ])
    assert.equal(change(a, b), wanted);
});

test('options are read from the page whatever their names hold', () => {
  const box = (name) =>
    `\t<div style="x"><input type="checkbox" id="id_test_opt_${name}" value="${name}" checked>${name}</input></div>\n`;
  const wanted = ['bert', 'a"b', '<b>x</b>', 'v" value="v', "it's"];
  const text = `<form id="pri_form"><fieldset id="field_test" style="y">\n\t<legend>Tests</legend>\n${['', ...wanted].map(box).join('')}</fieldset>`;
  const tests = parsePrimary({ text, raw: false }).find(({ key }) => key === 'test');
  assert.deepEqual(tests.options.map((option) => option.text), wanted);
});

const archive = (...given) => new Blob([archiveOf(...given)]);
const entry = (file, more = {}) => ({ name: file.split('.', 1)[0], path: `/home/a/${file}`, port: 'P1', ...more });

test('a download tells which entries it lacks, and which may have replaced each other', async () => {
  const a = entry('a.html');
  const profile = entry('a.html', { path: '/home/profiles/a.html' });
  const otherPort = entry('a.html', { path: '/home/b/a.html', port: 'P2' });
  const picture = entry('a.png', { port: 'P2' });
  const named = entry('Grüße [1].html');
  const long = entry('l', { name: 'l'.repeat(255), path: `/home/2g5/${'l'.repeat(255)}` });
  const cases = [
    // archive, entries, missing, shared
    [{ '[a]-[t]-[P1]-[m]/a.html': '' }, [a], [], []],
    [{ '[a]-[t]-[P1]-[m]/': '', 'other/a.html': '' }, [a], [a], []],
    [{ '[a]-[t]-[P1]-[m]/a_files/a.html': '', '[ab]-[t]/a.html': '' }, [a], [a], []],
    [{ '[a]-[t]-[P1]-[m]/a.html': '' }, [a, profile], [], [a, profile]],
    [{ '[a]-[t]-[P1]-[m]/a.html': '', '[a]-[t]-[P2]-[m]/a.html': '' }, [a, otherPort], [], []],
    [{ '[a]-[t]-[P1]-[m]/a.html': '', '[a]-[t]-[P1]-[m]/a.png': '' }, [a, picture], [], [a, picture]],
    [{ '[a]-[t]-[P2]-[m]/a.png': '' }, [a, picture], [a], []],
    [{ '[Grüße [1]]-[t]/Grüße [1].html': '', '[Grobe [1]]-[t]/': '' }, [named, a], [a], []],
    [{ [`[${'l'.repeat(254)}/mtie/data`]: '' }, [long], [], []],
  ];
  for (const [files, entries, missing, shared] of cases) {
    const lacks = lacksOfDownload(await membersOf(archive(files)), entries);
    assert.deepEqual(lacks, { missing, shared }, JSON.stringify(files));
  }
  const whole = archive({ '[a]-[]-[]-[]/a.html': '' });
  assert.equal(await membersOf(whole.slice(0, -30)), null);
  const names = (members) => members.map(({ name }) => name);
  assert.deepEqual(names(await membersOf(archive({ 'a.html': '' }, '-fz'))), ['a.html']);
});

test('an archive of PDFs tells which are missing or broken, and which share a name', async () => {
  const pdf = `%PDF-1.4\n${'x'.repeat(5000)}\n%%EOF\n`;
  const [whole, half, empty, gone] = ['whole.html', 'half.html', 'empty.html', 'gone.html'].map((file) => entry(file));
  const twin = entry('whole.png');
  const files = { 'whole.pdf': pdf, 'half.pdf': pdf.slice(0, 3000), 'empty.pdf': '', 'other.pdf': pdf };
  const blob = archive(files, '-0'); // Node 18 cannot inflate what zip packs
  const lacks = await lacksOfPdfs(blob, await membersOf(blob), [whole, half, empty, gone, twin]);
  assert.deepEqual(lacks, { missing: [half, empty, gone], shared: [whole, twin] });
});

test('every language has every text, and no text is left over', async () => {
  const folder = new URL('../../web/js/', import.meta.url);
  const files = fs.readdirSync(new URL('fileman', folder), { recursive: true }).filter((file) => file.endsWith('.js'));
  const sources = files.map((file) => fs.readFileSync(new URL(`fileman/${file}`, folder), 'utf8'));
  const columns = [...FIELDS, 'verdict'].map((field) => `col${field[0].toUpperCase()}${field.slice(1)}`);
  for (const file of fs.readdirSync(new URL('languages', folder))) {
    const { default: texts } = await import(new URL(`languages/${file}`, folder));
    const keys = Object.keys(texts);
    assert.deepEqual(keys, Object.keys(english), file);
    const isUsed = (key) => columns.includes(key) || sources.some((text) => new RegExp(`['.]${key}\\b`).test(text));
    assert.deepEqual(keys.filter((key) => !isUsed(key)), [], file);
  }
});

test('the bytes tell what a file is', () => {
  assert.equal(sniff(bytesOf('\x89PNG\r\n')), 'image/png');
  assert.equal(sniff(bytesOf(' <!DOCTYPE html>')), 'text/html');
  assert.equal(sniff(bytesOf('\xd4\xc3\xb2\xa1')), '');
  assert.deepEqual([...stripLead(bytesOf('\r\n\r\n\n<'))], [10, 60]);
  assert.deepEqual([...stripLead(bytesOf('\r\n<'))], [13, 10, 60]);
});
