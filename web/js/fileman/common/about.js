/* The About dialog: product name, version and licences. */
import { button, el } from './dom.js';
import { t } from './texts.js';

export function showAbout() {
  const notices = el('a', { class: 'fm-link', href: `${window.fileman.base}third-party.html`, target: '_blank', text: t('notices') });
  const head = el(
    'div',
    { class: 'fm-filter-head' },
    el('h2', { id: 'fm-about-title', text: t('title') }),
    el('p', { text: t('version', { version: FILEMAN_VERSION }) }), // scripts/build-web inserts the number
    el('p', { text: t('licence') }),
    el('p', {}, notices),
  );
  const close = button(t('close'), { class: 'fm-button', press: () => dialog.close() });
  const dialog = el(
    'dialog',
    { class: 'fm-dialog fm-about', 'aria-labelledby': 'fm-about-title', on: { close: () => dialog.remove() } },
    el('div', { class: 'fm-filter' }, head, el('div', { class: 'fm-filter-foot' }, close)),
  );
  document.body.append(dialog);
  dialog.showModal();
  close.focus();
}
