/* Reads the list from the page that the browser has loaded, or fetches it. */
import { parsePage, parseScript, toEntries } from './readrows.js';
import { decodePage } from './encoding.js';
import { AnswerError } from './refusals.js';
import { fetchBytes } from './requests.js';

/**
 * Returns the number of storage directories that the instrument could not read. Only a meta element before the list is
 * trusted.
 */
function incompleteBefore(script) {
  const meta = document.querySelector('meta[name=fileman-incomplete]');
  const isBefore = meta && meta.compareDocumentPosition(script) & Node.DOCUMENT_POSITION_FOLLOWING;
  return isBefore ? Number(meta.content) || 0 : 0;
}

/**
 * Reads the list of the page itself. Returns an object like fetchList(), or null if the list must be fetched again,
 * because its rows can be read only from the bytes of the page.
 */
export function readOwnPage() {
  for (const script of document.scripts) {
    const parsed = script.src ? null : parseScript(script.textContent);
    if (!parsed) continue;
    const incomplete = incompleteBefore(script);
    script.remove(); // frees some megabytes
    const isSound = parsed.sure && parsed.whole && !parsed.lost;
    return isSound ? { entries: toEntries(parsed, false), lost: 0, early: false, incomplete } : null;
  }
  return null;
}

/** Fetches a page. Returns { bytes, broken }. If the response breaks off, `broken` is the error, and `bytes` a part. */
async function fetchPage(address, options) {
  try {
    return { bytes: await fetchBytes(address, options), broken: null };
  } catch (error) {
    if (error.key !== 'errorBroken') throw error;
    return { bytes: error.bytes, broken: new AnswerError('errorListBroken', error.values) };
  }
}

/**
 * Fetches a list. Returns { entries, lost, early, incomplete }: `lost` is the number of rows that could not be read,
 * `early` is true if the list is cut off, `incomplete` is the number of storage directories that the instrument could
 * not read. Calls `onProgress(received)`. Throws AnswerError or AbortError.
 */
export async function fetchList(address, signal, onProgress) {
  let incomplete = 0;
  const onStart = ({ headers }) => {
    incomplete = Number(headers.get('x-fileman-incomplete')) || 0;
  };
  const { bytes, broken } = await fetchPage(address, { signal, onStart, onProgress });
  const page = decodePage(bytes);
  const parsed = parsePage(page.text);
  if (!parsed) throw broken ?? new AnswerError('errorPage');
  const early = !parsed.whole;
  // If the list is cut off, its last row is cut off too. Do not count it as lost.
  return { entries: toEntries(parsed, page.raw), lost: early ? 0 : parsed.lost, early, incomplete };
}
