/* The queries of requests: writes them, and reads them by the rules of the instrument. */
import { escape, toBinary, unescape } from './encoding.js';
import { isStrict } from './strict.js';

/** The keys of a filter: first those with a list of values, then those with one text. The form has the same order. */
export const LIST_KEYS = ['module', 'mode', 'test', 'port'];
export const TEXT_KEYS = ['jobid', 'account', 'locator', 'type', 'fname', 'prefix', 'suffix'];
/** The kinds of lists. The filter applies only to 'rslt' and 'prof'. */
export const KINDS = ['all', 'rslt', 'prof', 'screen'];

/**
 * Returns true if a value reaches the instrument unchanged. For default answers the instrument first decodes the whole
 * query and then splits it at "&", and lists at ",". So an escaped "&" or "," is a separator too, and a zero byte ends
 * the query. A "=" in a value is safe. For strict answers the instrument splits first.
 */
export function isSendable(value, inList = true) {
  if (isStrict()) return !value.includes('\0');
  return inList ? !/[,&\0]/.test(value) : !/[&\0]/.test(value);
}

/** Decodes like the instrument for default answers: any two characters after "%" are taken as digits. */
function unescapeLoosely(text) {
  return text.replace(/\+|%(.?)(.?)/gs, (escape2, high, low) => {
    if (escape2 === '+') return ' ';
    if (!low) return '';
    const digit = (char) => (/[0-9a-f]/i.test(char) ? parseInt(char, 16) : 0);
    return String.fromCharCode(digit(high) * 16 + digit(low));
  });
}

/** Splits a query into keys and values. If a key occurs more than once, the first one counts. */
function cutQuery(text) {
  const values = new Map();
  for (const piece of text.split('&')) {
    const at = piece.indexOf('=');
    if (at >= 0 && !values.has(piece.slice(0, at))) values.set(piece.slice(0, at), piece.slice(at + 1));
  }
  return values;
}

/** Parses a query by the rules of the instrument (see isSendable). Returns { text(key), list(key) }. */
export function parseQuery(search) {
  const query = search.replace(/^\?/, '');
  const values = cutQuery(isStrict() ? query : unescapeLoosely(query).split('\0', 1)[0]);
  const read = isStrict() ? unescape : (value) => value;
  const raw = (key) => values.get(key) ?? '';
  return { text: (key) => read(raw(key)), list: (key) => raw(key).split(',').filter(Boolean).map(read) };
}

/** Reads a listing from a query: { kind, lists: {module: [...] ...}, texts: {jobid: '' ...} }, with binary strings. */
export function readListing(search) {
  const query = parseQuery(search);
  const kind = query.text('fmtype').toLowerCase();
  const listing = { kind: KINDS.includes(kind) ? kind : 'all', lists: {}, texts: {} };
  for (const key of LIST_KEYS) listing.lists[key] = query.list(key);
  for (const key of TEXT_KEYS) listing.texts[key] = query.text(key);
  return listing;
}

/** Returns true if the listing has a filter, even if the filter does not apply to its kind. */
export function isFiltered({ lists, texts }) {
  return LIST_KEYS.some((key) => lists[key].length) || TEXT_KEYS.some((key) => texts[key]);
}

/**
 * Returns the query of a listing. `first` is put at the start, because rules of web servers match the start of a query.
 */
export function listingQuery({ kind, lists, texts }, first = '') {
  const pieces = [first, `fmtype=${kind}`];
  for (const key of LIST_KEYS) if (lists[key].length) pieces.push(`${key}=${lists[key].map(escape).join(',')}`);
  for (const key of TEXT_KEYS) if (texts[key]) pieces.push(`${key}=${escape(texts[key])}`);
  return `?${pieces.filter(Boolean).join('&')}`;
}

/** Returns the id of an entry as a binary string, exactly as the instrument has sent it. */
export const sentId = ({ id, sent }) => sent ?? toBinary(id);

/** Returns the query for 'view', 'pdf' or 'download' of the records with these ids (binary strings). */
export function deliveryQuery(operation, ids) {
  return `?opertype=${operation}&rsltid=${ids.map(escape).join(',')}`;
}
