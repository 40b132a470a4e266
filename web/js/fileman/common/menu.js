/* A small menu that opens at a button or at a rectangle. */
import { button, el } from './dom.js';

let open = null; // a function that closes the open menu

function place(node, { left, right, top, bottom }) {
  const { width, height } = node.getBoundingClientRect();
  const x = left + width <= innerWidth ? left : Math.max(0, right - width);
  const y = bottom + height <= innerHeight ? bottom : Math.max(0, top - height);
  node.style.left = `${x}px`;
  node.style.top = `${y}px`;
}

/**
 * Shows a menu of items, [{ text, press }], at a rectangle { left, right, top, bottom }. A click, Escape or Tab closes
 * it and returns the focus to `opener`. A click outside closes it too.
 */
export function showMenu(items, rectangle, opener, label) {
  open?.();
  const close = (back = true) => {
    node.remove();
    removeEventListener('pointerdown', outside, true);
    removeEventListener('blur', lose);
    opener?.setAttribute('aria-expanded', 'false');
    open = null;
    if (back) opener?.focus();
  };
  const outside = (event) => {
    if (!node.contains(event.target)) close(false);
  };
  const lose = () => close(false); // the user has clicked into the frame of a report
  const run = (press) => {
    close();
    press();
  };
  const entries = items.map(({ text, press }) =>
    button(text, { role: 'menuitem', tabindex: '-1', press: () => run(press) }),
  );
  const keys = (event) => {
    const at = entries.indexOf(document.activeElement);
    const to = { ArrowDown: at + 1, ArrowUp: at - 1, Home: 0, End: -1 }[event.key];
    if (to !== undefined) entries.at(to % entries.length).focus();
    else if (event.key === 'Escape' || event.key === 'Tab') close();
    else return;
    event.preventDefault();
    event.stopPropagation();
  };
  const node = el('div', { class: 'fm-menu', role: 'menu', 'aria-label': label, on: { keydown: keys } }, entries);
  // Inside a landmark screen readers can find the menu.
  (document.querySelector('main') ?? document.body).append(node);
  place(node, rectangle);
  addEventListener('pointerdown', outside, true);
  addEventListener('blur', lose);
  opener?.setAttribute('aria-expanded', 'true');
  open = close;
  entries[0].focus();
}

/** Creates a button that opens a menu. `items()` returns its items. */
export function menuButton(text, items, options = {}) {
  const press = () => showMenu(items(), opener.getBoundingClientRect(), opener, text);
  const opener = button(text, { 'aria-haspopup': 'menu', 'aria-expanded': 'false', ...options, press });
  return opener;
}
