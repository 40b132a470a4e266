/*
 * Which part stands where. Up to COMPACT pixels (the instrument's own screen, tablets) one row of tools is left: the
 * actions and the settings that it has no room for go to the foot, and the active filter stands beside the tabs.
 * css/fileman.css holds what else changes, under the classes "is-compact" and "is-phone".
 */
const COMPACT = matchMedia('(max-width: 1000px)');
const PHONE = matchMedia('(max-width: 640px)');

/** `parts` are elements by name: header, tabs, settings, bar, actions, chips, banner, foot. */
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
