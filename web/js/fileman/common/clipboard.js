/*
 * Copies texts to the clipboard. Most instruments use plain HTTP. There browsers do not offer navigator.clipboard, so
 * the old command "copy" is used.
 */
import { announce } from './announce.js';
import { visible } from './controlchars.js';
import { el } from './dom.js';
import { t } from './texts.js';

/** Copies a text through a selected text field. Returns true if the browser has copied it. */
function copySelected(text) {
  const field = el('textarea', { class: 'fm-hidden', 'aria-hidden': 'true', value: text });
  const before = document.activeElement;
  document.body.append(field);
  field.select();
  const done = document.execCommand('copy');
  field.remove();
  before?.focus({ preventScroll: true });
  return done;
}

/** Copies a text and announces it; `what` is its name in the announcement. Returns true on success. */
export async function copyText(text, what) {
  const done = await (navigator.clipboard?.writeText(text) ?? Promise.reject(new Error('no clipboard')))
    .then(() => true)
    .catch(() => copySelected(text));
  announce(t(done ? 'copied' : 'notCopied', { what }));
  return done;
}

/** Returns name, date and path of each entry, separated by tabs, so that they can be pasted into a table. */
const rowsAsText = (entries) =>
  entries.map(({ name, datetime, path }) => [name, datetime, path].map(visible).join('\t')).join('\n');

/** Makes Ctrl-C in the list copy the entries that `targets()` returns. The event "copy" works over plain HTTP too. */
export function copyRows(host, targets) {
  document.addEventListener('copy', (event) => {
    const entries = document.activeElement === host ? targets() : [];
    if (!entries.length) return;
    event.clipboardData.setData('text/plain', rowsAsText(entries));
    event.preventDefault();
    announce(t('rowsCopied', { n: entries.length }));
  });
}
