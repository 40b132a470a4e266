// Modules that need no browser: query encoding, order, the filter pages' options, what a file is.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import fs from 'node:fs';
import path from 'node:path';
import { test } from 'node:test';
import { lacksOfDownload, lacksOfPdfs, membersOf } from '../../web/js/fileman/archive.js';
import { FIELDS } from '../../web/js/fileman/rows.js';
import english from '../../web/js/languages/en.js';
import { parsePrimary } from '../../web/js/fileman/options.js';
import { naturalKey, orderBy } from '../../web/js/fileman/order.js';
import {
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

/** An archive of files by name; a name that ends with "/" is a bare folder. */
function archive(files, ...options) {
  const folder = fs.mkdtempSync('/tmp/archive-');
  for (const [name, content] of Object.entries(files)) {
    fs.mkdirSync(path.dirname(`${folder}/${name}x`), { recursive: true });
    if (!name.endsWith('/')) fs.writeFileSync(`${folder}/${name}`, content);
  }
  execFileSync('zip', ['-qr', ...options, `${folder}.zip`, '.'], { cwd: folder });
  const bytes = fs.readFileSync(`${folder}.zip`);
  fs.rmSync(folder, { recursive: true });
  fs.rmSync(`${folder}.zip`);
  return new Blob([bytes]);
}
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
  const sources = fs
    .readdirSync(new URL('fileman', folder))
    .map((file) => fs.readFileSync(new URL(`fileman/${file}`, folder), 'utf8'));
  const columns = FIELDS.map((field) => `col${field[0].toUpperCase()}${field.slice(1)}`);
  for (const file of fs.readdirSync(new URL('languages', folder))) {
    const { default: texts } = await import(new URL(`languages/${file}`, folder));
    const keys = Object.keys(texts);
    assert.deepEqual(keys, Object.keys(english), file);
    const isUsed = (key) => columns.includes(key) || sources.some((text) => new RegExp(`['.]${key}\\b`).test(text));
    assert.deepEqual(
      keys.filter((key) => !isUsed(key)),
      [],
      file,
    );
  }
});

test('the bytes tell what a file is', () => {
  assert.equal(sniff(bytesOf('\x89PNG\r\n')), 'image/png');
  assert.equal(sniff(bytesOf(' <!DOCTYPE html>')), 'text/html');
  assert.equal(sniff(bytesOf('\xd4\xc3\xb2\xa1')), '');
  assert.deepEqual([...stripLead(bytesOf('\r\n\r\n\n<'))], [10, 60]);
  assert.deepEqual([...stripLead(bytesOf('\r\n<'))], [13, 10, 60]);
});
