/* Where the list comes from: the page that the browser has just read, or a page that is fetched. */
import { parsePage, parseScript, toEntries } from './rows.js';
import { AnswerError, decodePage, fetchBytes } from './wire.js';

/** How many places of the storage the page says that it could not read. Only what stands before the list counts. */
function incompleteBefore(script) {
  const meta = document.querySelector('meta[name=fileman-incomplete]');
  const isBefore = meta && meta.compareDocumentPosition(script) & Node.DOCUMENT_POSITION_FOLLOWING;
  return isBefore ? Number(meta.content) || 0 : 0;
}

/** What the browser's own page lists (see fetchList); null when its rows can only be read from its bytes. */
export function readOwnPage() {
  for (const script of document.scripts) {
    const parsed = script.src ? null : parseScript(script.textContent);
    if (!parsed) continue;
    const incomplete = incompleteBefore(script);
    script.remove(); // some megabytes that nobody needs any more
    const isSound = parsed.sure && parsed.whole && !parsed.lost;
    return isSound ? { entries: toEntries(parsed, false), lost: 0, early: false, incomplete } : null;
  }
  return null;
}

/** The bytes of a page, and whether they are all: an answer that breaks off leaves what has arrived. */
async function fetchPage(address, options) {
  try {
    return { bytes: await fetchBytes(address, options), broken: null };
  } catch (error) {
    if (error.key !== 'errorBroken') throw error;
    return { bytes: error.bytes, broken: new AnswerError('errorListBroken', error.values) };
  }
}

/**
 * What the list at an address holds: { entries, lost, early, incomplete }. `lost` rows could not be read, `early` says
 * that the list ended before its end, `incomplete` in how many places the instrument could not read its storage.
 * `onProgress(received)` sees how far it is.
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
  // The row that was cut off is no row that could not be read.
  return { entries: toEntries(parsed, page.raw), lost: early ? 0 : parsed.lost, early, incomplete };
}
