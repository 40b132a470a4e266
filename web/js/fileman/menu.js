/* A small menu beside the button, or at the place, that opens it. */
import { button, el } from './dom.js';

let open = null; // closes the menu that is open

function place(node, { left, right, top, bottom }) {
  const { width, height } = node.getBoundingClientRect();
  const x = left + width <= innerWidth ? left : Math.max(0, right - width);
  const y = bottom + height <= innerHeight ? bottom : Math.max(0, top - height);
  node.style.left = `${x}px`;
  node.style.top = `${y}px`;
}

/**
 * Shows items, [{ text, press }], at a rectangle { left, right, top, bottom }. `opener` gets the focus back.
 * A press, Escape, Tab or anything outside closes the menu.
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
  const lose = () => close(false); // a report's frame was pressed
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
  // Within a landmark, where assistive software finds it.
  (document.querySelector('main') ?? document.body).append(node);
  place(node, rectangle);
  addEventListener('pointerdown', outside, true);
  addEventListener('blur', lose);
  opener?.setAttribute('aria-expanded', 'true');
  open = close;
  entries[0].focus();
}

/** A button that opens a menu; `items()` gives what it shows. */
export function menuButton(text, items, options = {}) {
  const press = () => showMenu(items(), opener.getBoundingClientRect(), opener, text);
  const opener = button(text, { 'aria-haspopup': 'menu', 'aria-expanded': 'false', ...options, press });
  return opener;
}
