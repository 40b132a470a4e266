/*
 * A stored file as the instrument sends it. The usual answer calls every file text/html and puts four bytes in front of
 * it, and most servers cut its last four; so the bytes decide what it is.
 */
import { isStrict } from './answers.js';
import { AnswerError, deliveryQuery, fetchPieces, sentId } from './wire.js';

const MOST_BYTES = 64 << 20;
const MAGIC = [
  ['image/png', '\x89PNG'],
  ['image/jpeg', '\xff\xd8\xff'],
  ['image/gif', 'GIF8'],
  ['image/bmp', 'BM'],
];

/** What the program says while it reads the storage; all there is when it sends no file. */
const DIAGNOSTICS = /^(?:(?:Find at|Common port result|Common profile):[^\n]*\n)+$/;

/** The type that a file's first bytes show: that of a picture, 'text/html', or '' for anything else. */
export function sniff(bytes) {
  const head = String.fromCharCode(...bytes.subarray(0, 512));
  const picture = MAGIC.find(([, magic]) => head.startsWith(magic));
  if (picture) return picture[0];
  return /^(?:\xef\xbb\xbf)?\s*<[!?a-z]/i.test(head) ? 'text/html' : '';
}

/** Removes the line ends that the view header leaves before the file's first byte. */
export function stripLead(bytes) {
  const lead = [13, 10, 13, 10];
  return lead.every((byte, i) => bytes[i] === byte) ? bytes.subarray(lead.length) : bytes;
}

/** Fetches 'view' or 'download' of one entry as a blob; one that is too large to look at is an error. */
export async function fetchBlob(operation, entry, signal) {
  const pieces = [];
  await fetchPieces(`fileman.cgi${deliveryQuery(operation, [sentId(entry)])}`, {
    signal,
    onPiece(piece, soFar, total) {
      if (Math.max(soFar, total) > MOST_BYTES) throw new AnswerError('tooLarge');
      pieces.push(piece);
    },
  });
  return new Blob(pieces);
}

/** The bytes of an entry's file. An empty usual answer means that it has gone; a strict one has a status for that. */
export async function fetchFile(entry, signal) {
  const blob = await fetchBlob('view', entry, signal);
  const bytes = stripLead(new Uint8Array(await blob.arrayBuffer()));
  if (isStrict()) return bytes;
  if (!bytes.length || (bytes.length < 65536 && DIAGNOSTICS.test(new TextDecoder().decode(bytes))))
    throw new AnswerError('errorGone');
  return bytes;
}
