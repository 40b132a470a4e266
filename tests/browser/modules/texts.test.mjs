// The texts of the user interface.
import assert from 'node:assert/strict';
import fs from 'node:fs';
import { test } from 'node:test';
import { FIELDS } from '../../../web/js/fileman/answers/readrows.js';
import { number } from '../../../web/js/fileman/common/texts.js';
import english from '../../../web/js/languages/en.js';

test('every language has every text, and no text is left over', async () => {
  const folder = new URL('../../../web/js/', import.meta.url);
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

test('thousands are grouped', () => {
  assert.deepEqual([0, 999, 1000, 1234567, 0.5].map(number), ['0', '999', '1,000', '1,234,567', '0.5']);
});
