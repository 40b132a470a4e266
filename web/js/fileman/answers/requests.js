/* Sends requests to the instrument and receives its responses. */
import { AnswerError, refusal } from './refusals.js';

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
