/* The common set-up of list page and filter pages: language, title, light or dark colours. */
import { keep, recall } from './memory.js';
import { language, t } from './texts.js';

const systemIsDark = matchMedia('(prefers-color-scheme: dark)');
const systemLook = () => (systemIsDark.matches ? 'dark' : 'light');

/** Applies the colours that the user has chosen, or those of the system if there is no choice ('auto'). */
function applyLook() {
  const choice = recall('look', 'auto');
  document.documentElement.dataset.look = choice === 'auto' ? systemLook() : choice;
}

systemIsDark.addEventListener('change', applyLook);

export function dressPage(title) {
  document.documentElement.lang = language;
  document.documentElement.classList.add('fm');
  document.title = title ? `${title} – ${t('title')}` : t('title');
  applyLook();
}

/** Switches between light and dark. */
export function switchLook() {
  const other = document.documentElement.dataset.look === 'dark' ? 'light' : 'dark';
  keep('look', other === systemLook() ? 'auto' : other);
  applyLook();
}
