/*
 * What travels between the page and the instrument: query strings out, page bytes in.
 *
 * Names are byte strings without a declared encoding, so a value is kept as a "binary" string (one
 * character a byte) wherever it must return to the instrument unchanged, and turned into text only to
 * be shown.
 */
import { errorSentence, isStrict } from './answers.js';

const encoder = new TextEncoder();
const decoder = new TextDecoder();

/** Keys of the listing's filter: the lists, then the single texts. The order is that of the page's form. */
export const LIST_KEYS = ['module', 'mode', 'test', 'port'];
export const TEXT_KEYS = ['jobid', 'account', 'locator', 'type', 'fname', 'prefix', 'suffix'];
/** The lists that a person can open; only 'rslt' and 'prof' obey the filter. */
export const KINDS = ['all', 'rslt', 'prof', 'screen'];

/**
 * Text to its UTF-8 bytes, one character a byte. A lone surrogate U+DC80 to U+DCFF stands for the byte 0x80 to 0xFF that
 * belongs to no UTF-8, as strict answers write it.
 */
export function toBinary(text) {
  if (/^[\0-\x7f]*$/.test(text)) return text;
  return text.replace(/[^\0-\x7f]+/g, (part) =>
    part.replace(/[\udc80-\udcff]|[^\udc80-\udcff]+/gu, (piece) =>
      /^[\udc80-\udcff]$/u.test(piece)
        ? String.fromCharCode(piece.charCodeAt(0) - 0xdc00)
        : Array.from(encoder.encode(piece), (byte) => String.fromCharCode(byte)).join(''),
    ),
  );
}

/** Bytes to text; what is no UTF-8 shows as replacement characters. */
export function toText(binary) {
  if (/^[\0-\x7f]*$/.test(binary)) return binary;
  return decoder.decode(Uint8Array.from(binary, (char) => char.charCodeAt(0)));
}

/** Percent-encodes a binary string; commas of a list are added by the caller. */
export function escape(binary) {
  return binary.replace(/[^A-Za-z0-9\-_.~:/@()!*]/g, (char) =>
    `%${char.charCodeAt(0).toString(16).toUpperCase().padStart(2, '0')}`,
  );
}

/**
 * Whether a value survives the way. For default answers the instrument decodes the whole query first and cuts it at
 * "&" and (lists) at "," afterwards, so an escaped one is a separator too; a zero byte ends the query. Any "=" after a
 * key's own stays in the value. For strict answers it cuts first.
 */
export function isSendable(value, inList = true) {
  if (isStrict()) return !value.includes('\0');
  return inList ? !/[,&\0]/.test(value) : !/[&\0]/.test(value);
}

/** Decodes as the instrument does for default answers: any two characters after "%" count as digits. */
function unescapeLoosely(text) {
  return text.replace(/\+|%(.?)(.?)/gs, (escape2, high, low) => {
    if (escape2 === '+') return ' ';
    if (!low) return '';
    const digit = (char) => (/[0-9a-f]/i.test(char) ? parseInt(char, 16) : 0);
    return String.fromCharCode(digit(high) * 16 + digit(low));
  });
}

/** Undoes what escape() does. */
export const unescape = (text) => text.replace(/%([0-9a-f]{2})/gi, (_, digits) => String.fromCharCode(parseInt(digits, 16)));

/** Cuts a query into keys and values; the first of equal keys stays. */
function cutQuery(text) {
  const values = new Map();
  for (const piece of text.split('&')) {
    const at = piece.indexOf('=');
    if (at >= 0 && !values.has(piece.slice(0, at))) values.set(piece.slice(0, at), piece.slice(at + 1));
  }
  return values;
}

/**
 * A query by the instrument's rules: { text(key), list(key) }. Default answers decode it as a whole before it is cut,
 * strict ones cut it first.
 */
export function parseQuery(search) {
  const query = search.replace(/^\?/, '');
  const values = cutQuery(isStrict() ? query : unescapeLoosely(query).split('\0', 1)[0]);
  const read = isStrict() ? unescape : (value) => value;
  const raw = (key) => values.get(key) ?? '';
  return { text: (key) => read(raw(key)), list: (key) => raw(key).split(',').filter(Boolean).map(read) };
}

/** The listing that a query names: { kind, lists: {module: [...] ...}, texts: {jobid: '' ...} }, all binary. */
export function readListing(search) {
  const query = parseQuery(search);
  const asked = query.text('fmtype').toLowerCase();
  const listing = { kind: KINDS.includes(asked) ? asked : 'all', lists: {}, texts: {} };
  for (const key of LIST_KEYS) listing.lists[key] = query.list(key);
  for (const key of TEXT_KEYS) listing.texts[key] = query.text(key);
  return listing;
}

/** True when the listing carries any restriction (whether or not its kind obeys it). */
export function isFiltered({ lists, texts }) {
  return LIST_KEYS.some((key) => lists[key].length) || TEXT_KEYS.some((key) => texts[key]);
}

/** Query of a listing; `first` goes before everything else, because web servers judge a query by its start. */
export function listingQuery({ kind, lists, texts }, first = '') {
  const pieces = [first, `fmtype=${kind}`];
  for (const key of LIST_KEYS) if (lists[key].length) pieces.push(`${key}=${lists[key].map(escape).join(',')}`);
  for (const key of TEXT_KEYS) if (texts[key]) pieces.push(`${key}=${escape(texts[key])}`);
  return `?${pieces.filter(Boolean).join('&')}`;
}

/** An entry's id as the instrument must get it back (binary). */
export const sentId = ({ id, sent }) => sent ?? toBinary(id);

/** Query of a delivery: 'view', 'pdf' or 'download' of the records with these ids (binary). */
export function deliveryQuery(operation, ids) {
  return `?opertype=${operation}&rsltid=${ids.map(escape).join(',')}`;
}

/** An answer that the person must be told about; `key` names its text, `values` fill it. */
export class AnswerError extends Error {
  constructor(key, values = {}) {
    super(key);
    this.key = key;
    this.values = values;
  }
}

const REFUSALS = { 404: 'errorNotFound', 413: 'errorTooLong', 414: 'errorTooLong', 431: 'errorTooLong', 503: 'errorBusy' };

/** Why an answer is none: by its status, and by the sentence that a strict one holds. */
async function refusal(response) {
  const { status } = response;
  const sentence = await errorSentence(response);
  // A server refuses a long request with 400 as well; the program itself says what it found wrong.
  if (status === 400 && !sentence) return new AnswerError('errorTooLong', { status });
  return new AnswerError(REFUSALS[status] ?? (sentence ? 'errorSaid' : 'errorStatus'), { status, sentence });
}

/**
 * Fetches an answer piece by piece. `onPiece(bytes, received, total)` sees every piece (total is 0 when
 * it is not declared); returning false ends the transfer early. Throws AnswerError or AbortError.
 */
export async function fetchPieces(url, { signal, onStart, onPiece }) {
  let response;
  try {
    response = await fetch(url, { signal, cache: 'no-store', credentials: 'same-origin' });
  } catch (error) {
    if (error.name === 'AbortError') throw error;
    throw new AnswerError('errorNetwork');
  }
  if (!response.ok) throw await refusal(response);
  onStart?.(response);
  const coded = response.headers.get('content-encoding');
  const total = coded ? 0 : Number(response.headers.get('content-length')) || 0;
  const reader = response.body.getReader();
  let received = 0;
  try {
    for (;;) {
      const { done, value } = await reader.read();
      if (done) return { received, total };
      received += value.length;
      if (onPiece(value, received, total) === false) {
        await reader.cancel();
        return { received, total };
      }
    }
  } catch (error) {
    if (error.name === 'AbortError') throw error;
    throw new AnswerError('errorBroken', { received, total });
  }
}

function join(pieces) {
  const bytes = new Uint8Array(pieces.reduce((sum, { length }) => sum + length, 0));
  let at = 0;
  for (const piece of pieces) {
    bytes.set(piece, at);
    at += piece.length;
  }
  return bytes;
}

/** Fetches a whole answer into one array of bytes. The error of an answer that broke off holds `bytes`: what has come. */
export async function fetchBytes(url, { signal, onStart, onProgress } = {}) {
  const pieces = [];
  const onPiece = (piece, soFar) => {
    pieces.push(piece);
    onProgress?.(soFar);
  };
  try {
    await fetchPieces(url, { signal, onStart, onPiece });
  } catch (error) {
    if (error.key === 'errorBroken') error.bytes = join(pieces);
    throw error;
  }
  return join(pieces);
}

/** Page bytes as { text, raw }: text, or (raw) one character a byte when they are no UTF-8. */
export function decodePage(bytes) {
  try {
    return { text: new TextDecoder('utf-8', { fatal: true }).decode(bytes), raw: false };
  } catch {
    let text = '';
    for (let at = 0; at < bytes.length; at += 32768) text += String.fromCharCode(...bytes.subarray(at, at + 32768));
    return { text, raw: true };
  }
}
