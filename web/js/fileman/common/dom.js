/* Creates elements and buttons. Values are inserted as texts, never as markup. */
import { icon } from './icons.js';

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

/** Runs a task when the browser has painted what is in the document now. In a hidden tab it waits for that. */
export function afterPaint(task) {
  requestAnimationFrame(() => setTimeout(task));
}
