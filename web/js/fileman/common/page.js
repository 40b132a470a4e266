/* The common set-up of list page and filter pages: language, title, colours. */
import { applyLook } from './look.js';
import { language, t } from './texts.js';

export function dressPage(title) {
  document.documentElement.lang = language;
  document.documentElement.classList.add('fm');
  document.title = title ? `${title} – ${t('title')}` : t('title');
  applyLook();
}
