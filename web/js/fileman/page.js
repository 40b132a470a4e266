/* What both kinds of page need before anything is shown: language, title, light or dark. */
import { keep, recall } from './memory.js';
import { language, t } from './texts.js';

const systemIsDark = matchMedia('(prefers-color-scheme: dark)');
const systemLook = () => (systemIsDark.matches ? 'dark' : 'light');

/** Applies the person's choice, or the system's look when there is none ('auto'). */
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

/** Goes from the system's look to the other one and back. */
export function switchLook() {
  const other = document.documentElement.dataset.look === 'dark' ? 'light' : 'dark';
  keep('look', other === systemLook() ? 'auto' : other);
  applyLook();
}
