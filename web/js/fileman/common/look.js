/* Light or dark colours: the choice of the user, or else the one of the system. */
import { keep, recall } from './memory.js';

const systemIsDark = matchMedia('(prefers-color-scheme: dark)');
const systemLook = () => (systemIsDark.matches ? 'dark' : 'light');

/** Applies the colours that the user has chosen, or those of the system if there is no choice ('auto'). */
export function applyLook() {
  const choice = recall('look', 'auto');
  document.documentElement.dataset.look = ['light', 'dark'].includes(choice) ? choice : systemLook();
}

systemIsDark.addEventListener('change', applyLook);

/** Switches between light and dark. */
export function switchLook() {
  const other = document.documentElement.dataset.look === 'dark' ? 'light' : 'dark';
  keep('look', other === systemLook() ? 'auto' : other);
  applyLook();
}
