/* The boxes in the corner of the page. Each one shows the progress of a download or a PDF export, and how it ended. */
import { announce } from '../common/announce.js';
import { button, el } from '../common/dom.js';
import { icon } from '../common/icons.js';
import { size, t } from '../common/texts.js';

const SAVED_STAYS = 12000; // milliseconds
const STATE_ICONS = { done: 'done', partial: 'warn', cancelled: 'stopped', failed: 'failed' };
const STATE_TEXTS = { done: 'stateDone', partial: 'statePartial', cancelled: 'stateCancelled', failed: 'stateFailed' };

let corner;

/** Adds a box with progress and a Cancel button to the corner of the page. Returns the functions that change it. */
export function task(title) {
  const opener = document.activeElement;
  /** Removes the box. If it had the focus, gives it back. */
  const leave = () => {
    const hadFocus = node.contains(document.activeElement);
    node.remove();
    if (hadFocus) opener.focus();
  };
  const bar = el('progress', { 'aria-label': title });
  const detail = el('span', { class: 'fm-task-detail' });
  const head = el('strong', { text: title });
  const stop = button(t('cancel'), { class: 'fm-button' });
  const done = button(t('close'), { image: 'close', bare: true, class: 'fm-quiet', press: leave });
  const node = el(
    'section',
    { class: 'fm-task', 'aria-label': title },
    head,
    bar,
    detail,
    el('div', { class: 'fm-task-foot' }, stop, done),
  );
  done.hidden = true;
  if (!corner) {
    corner = el('aside', { class: 'fm-tasks', 'aria-label': t('actions') });
    document.body.append(corner);
  }
  corner.append(node);
  const controller = new AbortController();
  stop.addEventListener('click', () => controller.abort());
  let told = 0;
  let noted = false;
  return {
    signal: controller.signal,
    start(text) {
      head.textContent = text;
      bar.removeAttribute('value');
      detail.textContent = '';
      told = 0;
      announce(text);
    },
    progress(received, total) {
      if (total) {
        bar.max = total;
        bar.value = received;
      }
      detail.textContent = total ? t('ofTotal', { size: size(received), total: size(total) }) : size(received);
      const quarter = total ? Math.floor((4 * received) / total) : 0;
      if (quarter > told) {
        told = quarter;
        announce(detail.textContent);
      }
    },
    /** Adds a note for the user. The task then ends as 'partial' instead of 'done'. */
    note(text) {
      noted = true;
      node.insertBefore(el('span', { class: 'fm-task-note', text }), detail);
    },
    /**
     * Ends the task. `state` is 'done', 'cancelled' or 'failed'; a note turns 'done' into 'partial'. A box that is
     * 'done' disappears after a while, all others stay until the user closes them. A button calls `retry`, if there is
     * one.
     */
    end(text, { state = 'done', retry = null } = {}) {
      const shown = state === 'done' && noted ? 'partial' : state;
      bar.remove();
      done.hidden = false;
      if (document.activeElement === stop) done.focus();
      stop.remove();
      head.replaceChildren(icon(STATE_ICONS[shown]), `${title}: ${t(STATE_TEXTS[shown])}`);
      detail.textContent = text;
      node.classList.add(`is-${shown}`);
      node.setAttribute('aria-label', head.textContent);
      announce(`${head.textContent}. ${text}`);
      if (retry) {
        const again = () => {
          leave();
          retry();
        };
        done.before(button(t('retry'), { class: 'fm-button', press: again }));
      }
      if (shown === 'done') setTimeout(leave, SAVED_STAYS);
    },
  };
}
