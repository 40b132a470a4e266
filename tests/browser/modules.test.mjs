// Modules that need no browser: query encoding, order, the filter pages' options, what a file is.
import assert from 'node:assert/strict';
import { test } from 'node:test';
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

test('the bytes tell what a file is', () => {
  assert.equal(sniff(bytesOf('\x89PNG\r\n')), 'image/png');
  assert.equal(sniff(bytesOf(' <!DOCTYPE html>')), 'text/html');
  assert.equal(sniff(bytesOf('\xd4\xc3\xb2\xa1')), '');
  assert.deepEqual([...stripLead(bytesOf('\r\n\r\n\n<'))], [10, 60]);
  assert.deepEqual([...stripLead(bytesOf('\r\n<'))], [13, 10, 60]);
});
