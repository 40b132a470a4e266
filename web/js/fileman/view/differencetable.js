/* The table above two compared reports: one row for each difference. */
import { change } from './differences.js';
import { el } from '../common/dom.js';
import { t } from '../common/texts.js';

const MOST_LISTED = 500;

/** `found` are the differences, [{ where, texts: [a, b] }]; `names` are the names of the two reports. */
export function differenceTable(found, names) {
  const heads = [t('where'), ...names, t('change')].map((text) => el('th', { scope: 'col', text }));
  const rows = found.slice(0, MOST_LISTED).map(({ where, texts }) =>
    el(
      'tr',
      {},
      el('th', { scope: 'row', text: where }),
      texts.map((text) => el('td', { text })),
      el('td', { text: change(...texts) }),
    ),
  );
  return el('table', {}, el('thead', {}, el('tr', {}, heads)), el('tbody', {}, rows));
}
