/*
 * Fetches a stored file. Default answers declare every file as text/html and write four bytes before it, and most web
 * servers cut off its last four bytes.
 */
import { isStrict } from './strict.js';
import { deliveryQuery, sentId } from './queries.js';
import { AnswerError } from './refusals.js';
import { fetchPieces } from './requests.js';

const MOST_BYTES = 64 << 20;

/** The diagnostic lines of the program. If the response holds nothing else, the program has sent no file. */
const DIAGNOSTICS = /^(?:(?:Find at|Common port result|Common profile):[^\n]*\n)+$/;

/** Removes the line ends that the header of default answers leaves before the file. */
export function stripLead(bytes) {
  const lead = [13, 10, 13, 10];
  return lead.every((byte, i) => bytes[i] === byte) ? bytes.subarray(lead.length) : bytes;
}

/** Fetches 'view' or 'download' of one entry as a blob. Throws AnswerError, also if it is too large. */
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

/**
 * Fetches the file of an entry and returns its bytes. Throws AnswerError. An empty default answer means that the file
 * no longer exists. A strict answer has a status code for that.
 */
export async function fetchFile(entry, signal) {
  const blob = await fetchBlob('view', entry, signal);
  const bytes = stripLead(new Uint8Array(await blob.arrayBuffer()));
  if (isStrict()) return bytes;
  if (!bytes.length || (bytes.length < 65536 && DIAGNOSTICS.test(new TextDecoder().decode(bytes))))
    throw new AnswerError('errorGone');
  return bytes;
}
