/* What both kinds of page need before anything is shown: language, title, light or dark. */
import { keep, recall } from './memory.js';
import { language, t } from './texts.js';

const LOOKS = ['auto', 'light', 'dark'];

function applyLook(look) {
  document.documentElement.dataset.look = look;
}

export function dressPage(title) {
  document.documentElement.lang = language;
  document.documentElement.classList.add('fm');
  document.title = title ? `${title} – ${t('title')}` : t('title');
  applyLook(recall('look', 'auto'));
}

/** Goes from the system's choice to the other look and back. */
export function switchLook() {
  const dark = matchMedia('(prefers-color-scheme: dark)').matches;
  const isDark = recall('look', 'auto') === 'auto' ? dark : recall('look', 'auto') === 'dark';
  const wanted = isDark ? 'light' : 'dark';
  const look = LOOKS.includes(wanted) && (wanted === 'dark') === dark ? 'auto' : wanted;
  keep('look', look);
  applyLook(look);
}
