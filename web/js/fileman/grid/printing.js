/* Prints the whole list. */
import { columnText } from './columns.js';
import { visible } from '../common/controlchars.js';
import { el } from '../common/dom.js';

const PRINTED = ['name', 'test', 'port', 'datetime'];

/** Makes the browser print all rows that `shown()` returns, unless a view is printed. */
export function printRows(shown) {
  let paper = null;
  addEventListener('beforeprint', () => {
    if (document.documentElement.classList.contains('prints-view')) return;
    const line = (tag, cells) => el('tr', {}, cells.map((text) => el(tag, { text })));
    const rows = shown().map((entry) => line('td', PRINTED.map((field) => visible(entry[field]))));
    paper = el(
      'table',
      { class: 'fm-paper' },
      el('caption', { text: document.title }),
      el('thead', {}, line('th', PRINTED.map(columnText))),
      el('tbody', {}, rows),
    );
    document.body.append(paper);
  });
  addEventListener('afterprint', () => paper?.remove());
}
