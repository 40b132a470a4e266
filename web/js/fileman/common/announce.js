/* Messages for screen readers. */
import { el } from './dom.js';

let live;
let pending;

/** Announces a text to screen readers. If several texts follow quickly, only the last one is announced (debounce). */
export function announce(text) {
  if (!live) {
    live = el('div', { class: 'fm-hidden', role: 'status', 'aria-live': 'polite' });
    document.body.append(live);
  }
  clearTimeout(pending);
  pending = setTimeout(() => {
    live.textContent = text;
  }, 400);
}
