/* The texts that a person reads, in the person's language: js/languages holds one file per language. */
import de from '../languages/de.js';
import en from '../languages/en.js';
import { recall } from './memory.js';

const TABLES = { en, de };

export const LANGUAGES = Object.keys(TABLES);

function preferred() {
  const wished = [recall('language', null), ...(navigator.languages ?? [navigator.language])];
  return wished.map((tag) => String(tag).slice(0, 2)).find((tag) => tag in TABLES) ?? 'en';
}

export const language = typeof navigator === 'object' ? preferred() : 'en';
const numbers = new Intl.NumberFormat(language);
const plural = new Intl.PluralRules(language);

/**
 * The text named `key` with its {places} filled; numbers are written the language's way. A text that the language lacks
 * is English.
 */
export function t(key, values = {}) {
  let entry = TABLES[language][key] ?? TABLES.en[key];
  if (Array.isArray(entry)) entry = entry[plural.select(values.n ?? 0) === 'one' ? 0 : 1];
  return entry.replace(/\{(\w+)\}/g, (place, name) => {
    const value = values[name];
    return typeof value === 'number' ? numbers.format(value) : (value ?? place);
  });
}

/** A number as a person reads it. */
export const number = (n) => numbers.format(n);

/** A text out of a group of texts; empty when the group lacks it. */
export const tIn = (group, key) => (TABLES[language][group] ?? TABLES.en[group])[key] ?? '';

/** A group of texts in the person's language and in English, which is understood everywhere. */
export const allTexts = (group) => [...new Set([TABLES[language], TABLES.en])].map((table) => table[group]);

export const languageName = (tag) => TABLES[tag].language;

/** A number of bytes as a person reads it. */
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
