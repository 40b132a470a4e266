// What differs between two reports.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { align, change, differingCells } from '../../../web/js/fileman/view/differences.js';

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
