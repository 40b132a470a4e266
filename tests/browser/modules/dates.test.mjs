// Dates as people write them in the search, and as the list shows them.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { shortDate } from '../../../web/js/fileman/grid/showndates.js';
import { dateAt } from '../../../web/js/fileman/search/searchdates.js';

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
