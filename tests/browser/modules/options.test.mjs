// Options of the filter pages.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { parsePrimary } from '../../../web/js/fileman/filter/options.js';

test('options are read from the page whatever their names hold', () => {
  const box = (name) =>
    `\t<div style="x"><input type="checkbox" id="id_test_opt_${name}" value="${name}" checked>${name}</input></div>\n`;
  const wanted = ['bert', 'a"b', '<b>x</b>', 'v" value="v', "it's"];
  const text = `<form id="pri_form"><fieldset id="field_test" style="y">\n\t<legend>Tests</legend>\n${['', ...wanted].map(box).join('')}</fieldset>`;
  const tests = parsePrimary({ text, raw: false }).find(({ key }) => key === 'test');
  assert.deepEqual(tests.options.map((option) => option.text), wanted);
});
