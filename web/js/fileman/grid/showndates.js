/*
 * Writes dates for the user: "Today 19:32", "Fri 20 Nov 19:32", "3 Aug 2024 09:10". The time of day stays as the
 * instrument has written it.
 */
import { language } from '../common/texts.js';

const WRITTEN = /^(\d{4})-(0[1-9]|1[0-2])-(0[1-9]|[12]\d|3[01]) (\d\d:\d\d)/; // not the zeros of an unknown date
const NEAR_DAYS = { 0: true, '-1': true };
const DAY = 24 * 3600 * 1000;

const nearDay = new Intl.RelativeTimeFormat(language, { numeric: 'auto' });
const inThisYear = new Intl.DateTimeFormat(language, { weekday: 'short', day: 'numeric', month: 'short', timeZone: 'UTC' });
const inOtherYear = new Intl.DateTimeFormat(language, { day: 'numeric', month: 'short', year: 'numeric', timeZone: 'UTC' });

const capital = (text) => text.charAt(0).toLocaleUpperCase(language) + text.slice(1);

/** Shortens a date of the list. Any other text is returned unchanged. */
export function shortDate(datetime, now = new Date()) {
  const found = WRITTEN.exec(datetime);
  if (!found) return datetime;
  const [, year, month, day, time] = found;
  const date = Date.UTC(year, month - 1, day);
  const days = Math.round((date - Date.UTC(now.getFullYear(), now.getMonth(), now.getDate())) / DAY);
  if (days in NEAR_DAYS) return `${capital(nearDay.format(days, 'day'))} ${time}`;
  return `${(Number(year) === now.getFullYear() ? inThisYear : inOtherYear).format(date)} ${time}`;
}
