/*
 * Moves the parts of the list page to the places that fit the window. In a compact window (the instrument's own screen,
 * tablets) there is only one row of tools: the actions move to the footer, and the active filter is beside the tabs. On
 * a phone the settings move to the footer too. css/fileman.css changes the rest by the classes "is-compact" and
 * "is-phone".
 */
import { COMPACT, PHONE } from '../common/windowwidths.js';

/** Arranges the parts (elements of the page) now, and again when the window crosses one of the limits. */
export function arrange({ header, tabs, settings, bar, actions, chips, banner, foot }) {
  const place = () => {
    const { classList } = document.documentElement;
    classList.toggle('is-compact', COMPACT.matches);
    classList.toggle('is-phone', PHONE.matches);
    (COMPACT.matches ? foot : bar).append(actions);
    (PHONE.matches ? foot : header).append(settings);
    (COMPACT.matches ? tabs : banner).after(chips);
  };
  for (const limit of [COMPACT, PHONE]) limit.addEventListener('change', place);
  place();
}
