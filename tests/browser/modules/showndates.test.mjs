// Dates as the list shows them.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { shortDate } from '../../../web/js/fileman/grid/showndates.js';

test('near days have a name, other years are told, and an unknown date stays as it is', () => {
  const now = new Date(2026, 10, 22);
  for (const [date, shown] of [
    ['2026-11-22 19:32:10', 'Today 19:32'],
    ['2026-11-21 00:05:00', 'Yesterday 00:05'],
    ['2026-11-23 10:00:00', 'Mon, Nov 23 10:00'],
    ['2024-02-29 09:10:59', 'Feb 29, 2024 09:10'],
    ['0000-00-00 00:00:00', '0000-00-00 00:00:00'],
  ])
    assert.equal(shortDate(date, now), shown);
});
