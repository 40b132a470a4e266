// The order of the list.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { naturalKey } from '../../../web/js/fileman/common/naturalorder.js';
import { orderBy } from '../../../web/js/fileman/grid/order.js';

test('order is natural; equal values keep their places, and equal dates go by name in both directions', () => {
  const ordered = (entries, field, up) => Array.from(orderBy(entries, field, up), (i) => entries[i].text).join(', ');
  const named = ['P10', 'P2', 'p1', 'P02', 'Öl', 'Oz'].map((name) => ({ name, text: name }));
  assert.equal(ordered(named, 'name', true), 'Öl, Oz, p1, P2, P02, P10');
  assert.equal(ordered(named, 'name', false), 'P10, P2, P02, p1, Oz, Öl');
  const dated = ['2 b10', '1 z', '2 a', '2 b9', '1 y'].map((text) => ({ datetime: text[0], name: text.slice(2), text }));
  assert.equal(ordered(dated, 'datetime', true), '1 y, 1 z, 2 a, 2 b9, 2 b10');
  assert.equal(ordered(dated, 'datetime', false), '2 a, 2 b9, 2 b10, 1 y, 1 z');
  assert.equal(ordered([{ verdict: 'pass', text: 'read' }, { text: 'unread' }], 'verdict', true), 'unread, read');
  assert.ok(naturalKey('99999999999999999999') < naturalKey('100000000000000000000'));
});
