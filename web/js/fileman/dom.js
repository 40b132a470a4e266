/* Small helpers for the document. They insert texts and elements, but never markup. */

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

/**
 * Creates an element. `properties` are attributes, except `text`, `value` and `on` (event listeners). Properties that
 * are null, undefined or false are left out.
 */
export function el(tag, properties = {}, ...children) {
  const node = document.createElement(tag);
  for (const [name, value] of Object.entries(properties)) {
    if (value === null || value === undefined || value === false) continue;
    if (name === 'text') node.textContent = value;
    else if (name === 'on') for (const [event, run] of Object.entries(value)) node.addEventListener(event, run);
    else if (name === 'value') node.value = value;
    else node.setAttribute(name, value === true ? '' : value);
  }
  node.append(...children.flat().filter((child) => child !== null && child !== undefined && child !== false));
  return node;
}

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

/**
 * Creates a button with an icon and a text. `bare` hides the text, and `short` shows another text in its place. Screen
 * readers always get the full text.
 */
export function button(text, { image, press, bare = false, short = null, ...rest } = {}) {
  return el(
    'button',
    {
      type: 'button',
      title: bare || short ? text : null,
      ...rest,
      on: { click: press },
    },
    image && icon(image),
    short && el('span', { class: 'fm-label', 'aria-hidden': 'true', text: short }),
    el('span', { class: bare || short ? 'fm-hidden' : 'fm-label', text }),
  );
}

let live;
let pending;

/** Announces a text to screen readers. If several texts follow quickly, only the last one is announced (debounce). */
export function announce(text) {
  if (!live) {
    live = el('div', { class: 'fm-hidden', role: 'status', 'aria-live': 'polite' });
    document.body.append(live);
  }
  clearTimeout(pending);
  pending = setTimeout(() => {
    live.textContent = text;
  }, 400);
}

const CONTROL_NAMES = { 9: 'TAB', 10: 'LF', 13: 'CR' };

/** Replaces control and direction characters by visible names, so that no name can look like another one. */
export function visible(text) {
  return text.replace(/[\0-\x1f\x7f\u200e\u200f\u202a-\u202e\u2066-\u2069]/g, (char) => {
    const code = char.charCodeAt(0);
    return `‹${CONTROL_NAMES[code] ?? `U+${code.toString(16).toUpperCase().padStart(4, '0')}`}›`;
  });
}
