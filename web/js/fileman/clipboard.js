/* What a person copies. Most instruments are reached without encryption, where browsers offer the old way only. */
import { announce, el, visible } from './dom.js';
import { t } from './texts.js';

/** Copies by a selected field; returns whether the browser has done it. */
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

/** Puts a text into the clipboard and says so; `what` names it. */
export async function copyText(text, what) {
  const done = await (navigator.clipboard?.writeText(text) ?? Promise.reject(new Error('no clipboard')))
    .then(() => true)
    .catch(() => copySelected(text));
  announce(t(done ? 'copied' : 'notCopied', { what }));
  return done;
}

/** Name, date and path of each entry, as tables take them. */
const rowsAsText = (entries) =>
  entries.map(({ name, datetime, path }) => [name, datetime, path].map(visible).join('\t')).join('\n');

/** Ctrl-C in the list copies the entries that `targets()` gives; the browser's own event works without encryption, too. */
export function copyRows(host, targets) {
  document.addEventListener('copy', (event) => {
    const entries = document.activeElement === host ? targets() : [];
    if (!entries.length) return;
    event.clipboardData.setData('text/plain', rowsAsText(entries));
    event.preventDefault();
    announce(t('rowsCopied', { n: entries.length }));
  });
}
