/* The texts of the user interface in the user's language. js/languages has one file per language. */
import de from '../../languages/de.js';
import en from '../../languages/en.js';
import { recall } from './memory.js';

const TABLES = { en, de };

export const LANGUAGES = Object.keys(TABLES);

function preferred() {
  const wished = [recall('language', ''), ...(navigator.languages ?? [navigator.language])];
  return wished.map((tag) => String(tag).slice(0, 2)).find((tag) => tag in TABLES) ?? 'en';
}

export const language = typeof navigator === 'object' ? preferred() : 'en';
const plural = new Intl.PluralRules(language);

/**
 * Returns the text `key` with its {places} replaced by `values`. Numbers are formatted for the language. If the
 * language lacks the text, the English one is used.
 */
export function t(key, values = {}) {
  let entry = TABLES[language][key] ?? TABLES.en[key];
  if (Array.isArray(entry)) entry = entry[plural.select(values.n ?? 0) === 'one' ? 0 : 1];
  return entry.replace(/\{(\w+)\}/g, (place, name) => {
    const value = values[name];
    return typeof value === 'number' ? number(value) : (value ?? place);
  });
}

/**
 * Formats a number for the language. Intl.NumberFormat would delay the first rows by a tenth, because browsers load
 * their data of all languages for it. So it formats fractions only, and those come later.
 */
export function number(n) {
  if (!Number.isInteger(n)) return new Intl.NumberFormat(language).format(n);
  return String(n).replace(/\B(?=(\d{3})+$)/g, TABLES[language].digitGroup);
}

/** Returns a text of a group of texts, or '' if the group lacks it. */
export const tIn = (group, key) => (TABLES[language][group] ?? TABLES.en[group])[key] ?? '';

/** Returns a group of texts in the user's language and in English, because the search always accepts English words. */
export const allTexts = (group) => [...new Set([TABLES[language], TABLES.en])].map((table) => table[group]);

export const languageName = (tag) => TABLES[tag].language;

/** Formats a number of bytes, such as "1.5 MB". */
export function size(bytes) {
  const units = ['B', 'KB', 'MB', 'GB'];
  let value = bytes;
  let unit = 0;
  while (value >= 1000 && unit < units.length - 1) {
    value /= 1000;
    unit += 1;
  }
  return `${new Intl.NumberFormat(language, { maximumFractionDigits: unit && value < 100 ? 1 : 0 }).format(value)} ${units[unit]}`;
}
