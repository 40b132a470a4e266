/*
 * Reads dates and ranges in the search: "yesterday", "20.11.", "last 3 days", "20.11.-22.11.", "since 20.11.". The
 * words come from the user's language and from English (js/languages). Weeks begin on Monday (ISO 8601). The current
 * time is that of the browser, because the list does not contain the time of the instrument.
 */
import { allTexts } from '../common/texts.js';

const DAY = 'day';
/** For each key of words: the unit, and how many units before the current one the range begins and ends. */
const NAMED = {
  today: [DAY, 0, -1],
  yesterday: [DAY, 1, 0],
  dayBefore: [DAY, 2, 1],
  thisWeek: ['week', 0, -1],
  lastWeek: ['week', 1, 0],
  thisMonth: ['month', 0, -1],
  lastMonth: ['month', 1, 0],
  thisYear: ['year', 0, -1],
  lastYear: ['year', 1, 0],
};
const COUNTED = { lastHours: 'hour', lastDays: DAY, lastWeeks: 'week', lastMonths: 'month' };

/** Returns the start of the current unit, moved back by a number of units. */
function startOf(unit, back, now) {
  const [year, month, day] = [now.getFullYear(), now.getMonth(), now.getDate()];
  if (unit === 'hour') return new Date(now.getTime() - back * 3600e3);
  if (unit === DAY) return new Date(year, month, day - back);
  if (unit === 'week') return new Date(year, month, day - ((now.getDay() + 6) % 7) - 7 * back);
  if (unit === 'month') return new Date(year, month - back, 1);
  return new Date(year - back, 0, 1);
}

const two = (number) => String(number).padStart(2, '0');

/** Writes a time in the format of the list. */
export function stamp(date) {
  const day = `${date.getFullYear()}-${two(date.getMonth() + 1)}-${two(date.getDate())}`;
  return `${day} ${two(date.getHours())}:${two(date.getMinutes())}:${two(date.getSeconds())}`;
}

/** Returns a date, or null if it does not exist. Without a year it is the latest such day that is not in the future. */
function dayAt(year, month, day, now) {
  const at = (some) => new Date(some, month - 1, day);
  let date = at(year ?? now.getFullYear());
  if (year === null && date > now) date = at(now.getFullYear() - 1);
  return date.getDate() === day && date.getMonth() === month - 1 ? date : null;
}

const nextDay = (date) => new Date(date.getFullYear(), date.getMonth(), date.getDate() + 1);
const fullYear = (text) => (text ? Number(text.length === 2 ? `20${text}` : text) : null);

/**
 * Returns a pattern for a word in all languages. Long alternatives come first, so that "last week" wins over "last".
 */
function alternatives(key) {
  const texts = new Set(allTexts('findWords').flatMap((words) => words[key].split('|')));
  const escaped = [...texts].map((text) => text.replace(/[.*+?^${}()|[\]\\]/g, '\\$&').replace(/ /g, '\\s+'));
  return escaped.sort((a, b) => b.length - a.length).join('|');
}

let patterns;

/** Builds the patterns of single dates and of whole expressions. */
function build() {
  const named = Object.keys(NAMED).map((key) => [key, new RegExp(`^(?:${alternatives(key)})$`, 'i')]);
  const counted = Object.keys(COUNTED).map((key) => {
    const source = alternatives(key).replace(/#/g, '(\\d{1,4})');
    return [key, new RegExp(`^(?:${source})$`, 'i')];
  });
  const words = [...Object.keys(NAMED), ...Object.keys(COUNTED)].map(alternatives).join('|').replace(/#/g, '\\d{1,4}');
  const point = `(?:${words}|\\d{1,2}\\.\\d{1,2}\\.(?:\\d{4}|\\d{2})?|\\d{4}-\\d{2}-\\d{2})`;
  const short = `(?:${point}|\\d{1,2}\\.)`; // "20." in "20.-22.11."
  const to = `\\s*(?:\\.\\.|[-–]|\\s(?:${alternatives('to')})\\s)\\s*`;
  const side = ['since', 'after', 'until', 'before'].map((key) => `(?<${key}>(?:${alternatives(key)})\\s+)`).join('|');
  const whole = `(?<first>${short})${to}(?<last>${point})|(?:${side})(?<side>${point})|(?<open>${point})\\.\\.|\\.\\.(?<end>${point})|(?<only>${point})`;
  return { named, counted, whole: new RegExp(`(?:${whole})(?=\\s|$)`, 'iy') };
}

/** Reads a single date. Returns { from, to }, where `to` is the first moment after it, or null. */
function readPoint(text, now) {
  for (const [key, pattern] of patterns.named) {
    if (!pattern.test(text)) continue;
    const [unit, from, to] = NAMED[key];
    return { from: startOf(unit, from, now), to: startOf(unit, to, now) };
  }
  for (const [key, pattern] of patterns.counted) {
    const found = pattern.exec(text);
    if (!found) continue;
    const count = Number(found.slice(1).find(Boolean) ?? 1);
    const unit = COUNTED[key];
    // "last 3 days" means today and the two days before. "last 2 hours" ends now.
    const from = unit === 'hour' ? startOf(unit, count, now) : startOf(DAY, { day: 1, week: 7, month: 30 }[unit] * count - 1, now);
    return { from, to: startOf(DAY, -1, now) };
  }
  const german = /^(\d{1,2})\.(\d{1,2})\.(\d*)$/.exec(text);
  const iso = /^(\d{4})-(\d{2})-(\d{2})$/.exec(text);
  const date = german
    ? dayAt(fullYear(german[3]), Number(german[2]), Number(german[1]), now)
    : iso && dayAt(Number(iso[1]), Number(iso[2]), Number(iso[3]), now);
  return date && { from: date, to: nextDay(date) };
}

function readRange(first, last, now) {
  const end = readPoint(last, now);
  if (!end) return null;
  const month = end.from.getMonth() + 1;
  const short = /^(\d{1,2})\.$/.exec(first);
  const whole = short ? `${first}${month}.${end.from.getFullYear()}` : first;
  // If the first day has no year, it is the latest such day before the last day.
  const start = readPoint(whole, /^\d{1,2}\.\d{1,2}\.$/.test(whole) ? end.from : now);
  return start && { from: start.from, to: end.to };
}

/**
 * Reads the date or range at a place of a text. Returns { from, to, length } in the format of the list; `to` is the
 * first moment after the range. Returns null if there is none. A single date like "2026-11-20" is not read as a date,
 * because as a word it finds names too.
 */
export function dateAt(text, at, now = new Date()) {
  patterns ??= build();
  patterns.whole.lastIndex = at;
  const found = patterns.whole.exec(text);
  if (!found) return null;
  const { first, last, side, since, after, until, open, end, only } = found.groups;
  let range = null;
  if (last) range = readRange(first, last, now);
  else if (only) range = /^\d{4}-/.test(only) ? null : readPoint(only, now);
  else {
    const point = readPoint(side ?? open ?? end, now);
    if (!point) return null;
    if (since || open) range = { from: point.from, to: null };
    else if (after) range = { from: point.to, to: null };
    else range = { from: null, to: until || end ? point.to : point.from };
  }
  return range && { from: range.from ? stamp(range.from) : '', to: range.to ? stamp(range.to) : '~', length: found[0].length };
}
