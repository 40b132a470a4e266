/*
 * Counts how many of the found entries have each value of a column. It works in short pieces while the browser is idle.
 * The counts of a column ignore the search in that column, so that the user can choose another value of it.
 */
import { kindOf } from '../answers/kinds.js';
import { verdictOf } from '../view/verdicts.js';

const PIECE_MS = 8;

/** The columns that are counted, and how to get an entry's value in each of them. */
export const COUNTED = {
  module: (entry) => entry.module,
  mode: (entry) => entry.mode,
  test: (entry) => entry.test,
  port: (entry) => entry.port,
  kind: kindOf,
  verdict: (entry) => verdictOf(entry) || 'unread',
};
const KEYS = Object.keys(COUNTED);

const idle = () =>
  new Promise((resolve) => {
    if (window.requestIdleCallback) window.requestIdleCallback(resolve, { timeout: 400 });
    else setTimeout(resolve, 16);
  });

/**
 * Counts the entries that match a query. `dates` are days and ranges, [{ text, from, to }]. Returns a map from each key ('module' ..., 'date') to a map from each value to
 * its count. Returns null if `isCurrent()` becomes false before the end.
 */
export async function countValues(entries, query, dates, isCurrent) {
  const counts = new Map([...KEYS, 'date'].map((key) => [key, new Map()]));
  const add = (key, value) => counts.get(key).set(value, (counts.get(key).get(value) ?? 0) + 1);
  let until = 0;
  for (let i = 0; i < entries.length; i++) {
    if (i % 256 === 0 && performance.now() >= until) {
      await idle();
      if (!isCurrent()) return null;
      until = performance.now() + PIECE_MS;
    }
    const entry = entries[i];
    const obstacle = query.obstacleOf(entry);
    if (obstacle === null) continue;
    for (const key of KEYS) if (!obstacle || obstacle === key) add(key, COUNTED[key](entry));
    if (obstacle && obstacle !== 'date') continue;
    for (const { text, from, to } of dates) if (entry.datetime >= from && entry.datetime < to) add('date', text);
  }
  return counts;
}
