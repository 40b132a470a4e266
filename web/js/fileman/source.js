/* Where the list comes from: the page that the browser has just read, or a page that is fetched. */
import { parsePage, parseScript, toEntries } from './rows.js';
import { AnswerError, decodePage, fetchBytes } from './wire.js';

/** What the browser's own page lists, { entries, lost }; null when its rows can only be read from its bytes. */
export function readOwnPage() {
  for (const script of document.scripts) {
    const parsed = script.src ? null : parseScript(script.textContent);
    if (!parsed) continue;
    script.remove(); // some megabytes that nobody needs any more
    return parsed.sure && !parsed.lost ? { entries: toEntries(parsed, false), lost: 0 } : null;
  }
  return null;
}

/** What the list at an address holds, { entries, lost }; `onProgress(received)` sees how far it is. */
export async function fetchList(address, signal, onProgress) {
  const page = decodePage(await fetchBytes(address, { signal, onProgress }));
  const parsed = parsePage(page.text);
  if (!parsed) throw new AnswerError('errorPage');
  return { entries: toEntries(parsed, page.raw), lost: parsed.lost };
}
