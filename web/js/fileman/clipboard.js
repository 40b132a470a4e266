/* What a person copies. Most instruments are reached without encryption, where browsers offer the old way only. */
import { announce, el } from './dom.js';
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
