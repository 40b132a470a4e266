// Queries as the instrument reads them, with default and with strict answers.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { escape, toBinary, toText } from '../../../web/js/fileman/answers/encoding.js';
import { isSendable, listingQuery, parseQuery, readListing } from '../../../web/js/fileman/answers/queries.js';
import { parsePrimary } from '../../../web/js/fileman/filter/options.js';

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
