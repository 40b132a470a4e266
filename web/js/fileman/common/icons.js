/* The icons of the user interface. */

const SVG = 'http://www.w3.org/2000/svg';

/** Paths of outline icons in a box of 24 by 24. */
const ICONS = {
  refresh: 'M20 11a8 8 0 1 0-2.3 6.3M20 5v6h-6',
  search: 'M11 4a7 7 0 1 1 0 14 7 7 0 0 1 0-14M16.2 16.2 21 21',
  filter: 'M4 5h16l-6 8v6l-4-2v-4z',
  sliders: 'M4 7h9M17 7h3M4 17h3M11 17h9M15 4.5v5M9 14.5v5',
  refine: 'M4 6h9M4 12h9M4 18h9M18 6h2M18 12h2M18 18h2',
  eye: 'M2 12s4-7 10-7 10 7 10 7-4 7-10 7S2 12 2 12M12 9a3 3 0 1 1 0 6 3 3 0 0 1 0-6',
  pdf: 'M6 3h8l5 5v13H6zM14 3v5h5M9 13h7M9 17h5',
  download: 'M12 4v11M7 11l5 5 5-5M4 20h16',
  print: 'M7 9V3h10v6M7 17H4V9h16v8h-3M7 14h10v7H7z',
  copy: 'M9 9h11v11H9zM15 9V4H4v11h5',
  close: 'M6 6l12 12M18 6 6 18',
  done: 'M12 3a9 9 0 1 1 0 18 9 9 0 0 1 0-18M8 12.5l3 3 5-6',
  stopped: 'M12 3a9 9 0 1 1 0 18 9 9 0 0 1 0-18M9 9h6v6H9z',
  failed: 'M12 3a9 9 0 1 1 0 18 9 9 0 0 1 0-18M9 9l6 6M15 9l-6 6',
  warn: 'M12 4 2.5 20h19zM12 10v4M12 17v.5',
  report: 'M6 3h8l5 5v13H6zM14 3v5h5',
  picture: 'M4 5h16v14H4zM4 16l5-5 4 4 3-3 4 4M15.5 9v.5',
  capture: 'M3 12h4l3-7 4 14 3-7h4',
  wide: 'M4 10V4h6M20 14v6h-6M4 4l6 6M20 20l-6-6',
  back: 'M15 5l-7 7 7 7',
  next: 'M9 5l7 7-7 7',
  light:
    'M12 8a4 4 0 1 1 0 8 4 4 0 0 1 0-8M12 2v2M12 20v2M2 12h2M20 12h2M5 5l1.5 1.5M17.5 17.5 19 19M5 19l1.5-1.5M17.5 6.5 19 5',
  box: 'M3 8l9-5 9 5v8l-9 5-9-5zM3 8l9 5 9-5M12 13v8',
};

/** Creates an icon. */
export function icon(name) {
  const svg = document.createElementNS(SVG, 'svg');
  svg.setAttribute('viewBox', '0 0 24 24');
  svg.setAttribute('class', `fm-icon fm-icon-${name}`);
  svg.setAttribute('aria-hidden', 'true');
  const path = document.createElementNS(SVG, 'path');
  path.setAttribute('d', ICONS[name]);
  svg.append(path);
  return svg;
}
