/* What a person takes from the list: rows as text, or the whole list on paper. */
import { columnText } from './columns.js';
import { announce, el, visible } from './dom.js';
import { t } from './texts.js';

const PRINTED = ['name', 'test', 'port', 'datetime'];

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

/** Whenever the page is printed and no view asks for it, all rows that `shown()` gives go to the paper. */
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
