/*
 * Requests to the instrument and its responses.
 *
 * Names are byte strings without a declared encoding. So a value that is sent back to the instrument is kept as a
 * "binary" string, with one character for each byte. It is decoded to text only for display.
 */
import { errorSentence, isStrict } from './answers.js';

const encoder = new TextEncoder();
const decoder = new TextDecoder();

/** The keys of a filter: first those with a list of values, then those with one text. The form has the same order. */
export const LIST_KEYS = ['module', 'mode', 'test', 'port'];
export const TEXT_KEYS = ['jobid', 'account', 'locator', 'type', 'fname', 'prefix', 'suffix'];
/** The kinds of lists. The filter applies only to 'rslt' and 'prof'. */
export const KINDS = ['all', 'rslt', 'prof', 'screen'];

/**
 * Encodes a text as a binary string in UTF-8. A lone surrogate U+DC80 to U+DCFF becomes the byte 0x80 to 0xFF: this is
 * how strict answers write bytes that are not UTF-8.
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

/** Decodes a binary string. Bytes that are not UTF-8 become replacement characters. */
export function toText(binary) {
  if (/^[\0-\x7f]*$/.test(binary)) return binary;
  return decoder.decode(Uint8Array.from(binary, (char) => char.charCodeAt(0)));
}

/** Percent-encodes a binary string, including commas. The caller adds the commas between the values of a list. */
export function escape(binary) {
  return binary.replace(/[^A-Za-z0-9\-_.~:/@()!*]/g, (char) =>
    `%${char.charCodeAt(0).toString(16).toUpperCase().padStart(2, '0')}`,
  );
}

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

/** Reverses escape(). */
export const unescape = (text) => text.replace(/%([0-9a-f]{2})/gi, (_, digits) => String.fromCharCode(parseInt(digits, 16)));

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

/** A failed request. `key` is the key of the message for the user, `values` fill its places. */
export class AnswerError extends Error {
  constructor(key, values = {}) {
    super(key);
    this.key = key;
    this.values = values;
  }
}

const REFUSALS = { 404: 'errorNotFound', 413: 'errorTooLong', 414: 'errorTooLong', 431: 'errorTooLong', 503: 'errorBusy' };

/** Returns the AnswerError for a response with an error status. A strict answer adds its own message. */
async function refusal(response) {
  const { status } = response;
  const sentence = await errorSentence(response);
  // Some servers refuse a long request with 400. If the status comes from the program, there is a message.
  if (status === 400 && !sentence) return new AnswerError('errorTooLong', { status });
  return new AnswerError(REFUSALS[status] ?? (sentence ? 'errorSaid' : 'errorStatus'), { status, sentence });
}

/**
 * Fetches a response piece by piece. Calls `onPiece(bytes, received, total)` for each piece; `total` is 0 if the length
 * is unknown. If onPiece returns false, the transfer ends early. Returns { received, total }. Throws AnswerError or
 * AbortError.
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

/**
 * Fetches a whole response and returns its bytes. Throws like fetchPieces(). If the response breaks off, the error has
 * the received bytes in `bytes`.
 */
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

/** Decodes the bytes of a page. Returns { text, raw }. If they are not UTF-8, `raw` is true and `text` is binary. */
export function decodePage(bytes) {
  try {
    return { text: new TextDecoder('utf-8', { fatal: true }).decode(bytes), raw: false };
  } catch {
    let text = '';
    for (let at = 0; at < bytes.length; at += 32768) text += String.fromCharCode(...bytes.subarray(at, at + 32768));
    return { text, raw: true };
  }
}
