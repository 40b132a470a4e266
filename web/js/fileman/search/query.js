/*
 * The search language:
 *
 *   bert north            both words, anywhere in an entry         "two words"   exactly this text
 *   port:P1 test:bert     in this column, at the start of a word   port:"P1"     the whole value
 *   test:bert,latency     one of these values                      -word         entries without this word
 *   fail                  this verdict, or this word anywhere in an entry
 *   today, last week, 20.11., 20.11.-22.11., since yesterday       by date (searchdates.js)
 */
import { KIND_TEXTS, kindOf } from '../answers/kinds.js';
import { dateAt } from './searchdates.js';
import { allTexts, t } from '../common/texts.js';
import { VERDICT_TEXTS, verdictOf } from '../view/verdicts.js';

const VERDICT_LINES = Object.fromEntries(Object.entries(VERDICT_TEXTS).map(([key, text]) => [key, `${key}\n${t(text)}`]));

/** Returns the text that a key is compared with. If a value has several names, each one is on its own line. */
const VALUES = {
  module: (entry) => entry.module,
  mode: (entry) => entry.mode,
  test: (entry) => entry.test,
  port: (entry) => entry.port,
  kind: (entry) => kindLines(kindOf(entry), entry.rsltype),
  verdict: (entry) => VERDICT_LINES[verdictOf(entry) || 'unread'],
  name: (entry) => entry.name,
  path: (entry) => entry.path,
};
/** Keys with few different values. For them the results of comparisons are cached. */
const FEW = new Set(['module', 'mode', 'test', 'port', 'kind', 'verdict']);

const kinds = new Map();
function kindLines(kind, rsltype) {
  const key = `${kind}\n${rsltype}`;
  if (!kinds.has(key)) kinds.set(key, `${key}\n${t(KIND_TEXTS[kind])}`);
  return kinds.get(key);
}

/** Returns the key that a word in the user's language or in English stands for, or undefined. */
function keyNamed(text) {
  const lower = text.toLowerCase();
  return Object.keys(VALUES).find((key) =>
    allTexts('findKeys').some((names) => key === lower || names[key].split('|').includes(lower)),
  );
}

const plain = (text) => text.replace(/[.*+?^${}()|[\]\\/]/g, '\\$&');

/** Returns a pattern: "P1" matches the start of a word, but not "P10". A quoted value matches only the whole value. */
function valuePattern({ text, exact }) {
  if (exact) return `^${plain(text)}$`;
  return `(?<![\\p{L}\\p{N}])${plain(text)}${/\d$/.test(text) ? '(?!\\d)' : ''}`;
}

/** In a quoted text a quotation mark is doubled. */
const WORD = /(-?)(?:(\p{L}+):)?((?:"(?:[^"]|"")*(?:"|$)|[^\s"])*)/uy;
const VALUE = /"((?:[^"]|"")*)(?:"|$)|([^,"]+)/g;
const unquoted = (text) => text.replace(/""/g, '"');
const written = ({ text, exact }) => (exact ? `"${text.replace(/"/g, '""')}"` : text);

function fieldClause(key, text) {
  const values = Array.from(text.matchAll(VALUE), ([, quoted, bare]) =>
    bare ? { text: bare, exact: false } : { text: unquoted(quoted), exact: true },
  );
  if (!values.length) return null; // so far the user has typed only "port:"
  const pattern = new RegExp(values.map(valuePattern).join('|'), 'ium');
  const valueOf = VALUES[key];
  const known = new Map();
  const test = (entry) => {
    const value = valueOf(entry);
    let fits = known.get(value);
    if (fits === undefined) {
      fits = pattern.test(value);
      if (FEW.has(key)) known.set(value, fits);
    }
    return fits;
  };
  return { key, values, test };
}

function wordClause(text) {
  const word = text.replace(/"/g, '').toLowerCase();
  if (!word) return null;
  const pattern = new RegExp(plain(word), 'iu');
  // The path comes first, because it contains most of the others. Written out, this is faster than a list of fields.
  const test = (entry) =>
    pattern.test(entry.path) ||
    pattern.test(entry.test) ||
    pattern.test(entry.port) ||
    pattern.test(entry.module) ||
    pattern.test(entry.mode) ||
    pattern.test(entry.datetime) ||
    pattern.test(entry.rsltype) ||
    pattern.test(entry.name);
  return { key: 'word', word, test };
}

/** Returns true if the word is "pass" or "fail" in English or in the user's language. */
const isVerdict = (word) =>
  ['pass', 'fail'].some((key) => [key, ...allTexts(VERDICT_TEXTS[key])].some((text) => text.toLowerCase() === word));

/** A word like "fail" finds entries with this verdict, and all entries that contain the word. */
function verdictClause(word) {
  const verdict = fieldClause('verdict', word);
  const anywhere = wordClause(word);
  return { ...verdict, test: (entry) => verdict.test(entry) || anywhere.test(entry) };
}

function dateClause({ from, to }, text) {
  return { key: 'date', values: [{ text }], test: ({ datetime }) => datetime >= from && datetime < to };
}

/**
 * Reads the clause at a place of the text. Returns { ..., start, end }; `test` is null if the clause has no value yet.
 */
function clauseAt(text, start) {
  const isNot = text[start] === '-' && start + 1 < text.length;
  const date = dateAt(text, start + isNot);
  let clause;
  let end;
  if (date) {
    end = start + isNot + date.length;
    clause = dateClause(date, text.slice(start + isNot, end));
  } else {
    WORD.lastIndex = start;
    const [whole, minus, name, rest] = WORD.exec(text);
    const key = name && keyNamed(name);
    end = start + whole.length;
    const word = whole.slice(minus.length);
    if (key) clause = fieldClause(key, rest);
    else clause = isVerdict(word.toLowerCase()) ? verdictClause(word) : wordClause(word);
  }
  if (!clause) return { key: '', isNot, start, end, test: null };
  const { test } = clause;
  return { ...clause, isNot, start, end, test: isNot ? (entry) => !test(entry) : test };
}

/** Returns true if every entry that matches one of `others` also matches `clause`. */
const isImplied = (clause, others, text, otherText) =>
  others.some((other) =>
    clause.key === 'word' && other.key === 'word' && !clause.isNot && !other.isNot
      ? other.word.includes(clause.word)
      : text.slice(clause.start, clause.end) === otherText.slice(other.start, other.end),
  );

export class Query {
  constructor(text) {
    this.text = text;
    this.clauses = [];
    for (let at = 0; ; ) {
      while (/\s/.test(text[at] ?? '')) at += 1;
      if (at >= text.length) break;
      const clause = clauseAt(text, at);
      if (clause.test) this.clauses.push(clause);
      at = Math.max(clause.end, at + 1);
    }
  }

  /** The words that are marked in names. */
  get words() {
    return this.clauses.flatMap(({ key, isNot, word, values }) => {
      if (isNot) return [];
      return key === 'word' ? [word] : key === 'name' ? values.map((value) => value.text.toLowerCase()) : [];
    });
  }

  /** Returns true if an entry matches. */
  matches(entry) {
    return this.clauses.every(({ test }) => test(entry));
  }

  /** Returns true if every entry that matches this query also matches the other one. */
  isWithin(other) {
    return other.clauses.every((clause) => isImplied(clause, this.clauses, other.text, this.text));
  }

  /**
   * Tells why an entry does not match: returns the key if the clauses of only one key exclude it, null if there is any
   * other reason, and '' if the entry matches.
   */
  obstacleOf(entry) {
    let obstacle = '';
    for (const { key, isNot, test } of this.clauses) {
      if (test(entry)) continue;
      if (isNot || key === 'word' || (obstacle && obstacle !== key)) return null;
      obstacle = key;
    }
    return obstacle;
  }

  /** Returns the values for which the query searches with a key. */
  valuesOf(key) {
    return this.#valuesOf(key).map(({ text }) => text);
  }

  /** Returns true if the query searches for this value with a key. */
  asksFor(key, value) {
    return this.valuesOf(key).some((text) => text.toLowerCase() === value.toLowerCase());
  }

  #clausesOf(key) {
    return this.clauses.filter((clause) => clause.key === key && !clause.isNot);
  }

  #valuesOf(key) {
    return this.#clausesOf(key).flatMap(({ values }) => values);
  }

  /** Returns the text of the query with a value added, or removed if it was there. Only one date is kept at a time. */
  toggled(key, value) {
    const had = this.asksFor(key, value);
    if (key === 'date') return this.#replaced(key, had ? '' : value);
    const others = this.#valuesOf(key).filter(({ text }) => text.toLowerCase() !== value.toLowerCase());
    const values = had ? others : [...others, { text: value, exact: true }];
    return this.#replaced(key, values.length ? `${key}:${values.map(written).join(',')}` : '');
  }

  /** Returns the text of the query with the clauses of a key replaced by another clause. */
  #replaced(key, clause) {
    let rest = this.text;
    for (const { start, end } of this.#clausesOf(key).reverse())
      rest = `${rest.slice(0, start).trimEnd()} ${rest.slice(end).trimStart()}`;
    return `${rest.trim()} ${clause}`.trim();
  }
}
