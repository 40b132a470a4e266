/*
 * Writes dates for the user: "Today 19:32", "Fri, Nov 20 19:32", "Aug 3, 2024 09:10". The time of day stays as the
 * instrument has written it.
 */
import { t } from '../common/texts.js';

const WRITTEN = /^(\d{4})-(0[1-9]|1[0-2])-(0[1-9]|[12]\d|3[01]) (\d\d:\d\d)/; // not the zeros of an unknown date
const NEAR_DAYS = { 0: 'dayToday', '-1': 'dayYesterday' };
const DAY = 24 * 3600 * 1000;

/**
 * Shortens a date of the list. Any other text is returned unchanged. Intl.DateTimeFormat would delay the first rows by
 * a tenth, because browsers load their data of all languages for it.
 */
export function shortDate(datetime, now = new Date()) {
  const found = WRITTEN.exec(datetime);
  if (!found) return datetime;
  const [, year, month, day, time] = found;
  const date = Date.UTC(year, month - 1, day);
  const days = Math.round((date - Date.UTC(now.getFullYear(), now.getMonth(), now.getDate())) / DAY);
  if (days in NEAR_DAYS) return `${t(NEAR_DAYS[days])} ${time}`;
  const text = Number(year) === now.getFullYear() ? 'dayOfThisYear' : 'dayOfOtherYear';
  const weekday = t('weekdays').split(' ')[new Date(date).getUTCDay()];
  return `${t(text, { weekday, day: String(Number(day)), month: t('months').split(' ')[month - 1], year })} ${time}`;
}
