/* Names in the list: long ones are shortened in the middle, and searched words are marked. */
import { el } from '../common/dom.js';

const LONG_NAME = 18;
const KEPT_END = 8; // the last characters of a long name stay visible, because they are often numbers
const RIGHT_TO_LEFT = /[\u0590-\u08ff\ufb1d-\ufdff\ufe70-\ufefc]/;

/** Returns the part of a text from `from` to `to` as nodes. The characters from `at` to `end` are marked. */
function marked(text, from, to, at, end) {
  const [begin, stop] = [at, end].map((place) => Math.max(from, Math.min(place, to)));
  if (begin === stop) return [text.slice(from, to)];
  return [text.slice(from, begin), el('mark', { text: text.slice(begin, stop) }), text.slice(stop, to)];
}

/**
 * Returns the nodes of a name with the first of the searched words marked. A long name has two parts, so that the style
 * sheet can shorten it in the middle.
 */
export function nameParts(text, words) {
  const lower = text.toLowerCase();
  const word = lower.length === text.length && words.find((one) => lower.includes(one));
  const at = word ? lower.indexOf(word) : 0;
  const part = (from, to) => marked(text, from, to, at, at + (word || '').length);
  if (text.length < LONG_NAME || RIGHT_TO_LEFT.test(text)) return part(0, text.length);
  const cut = text.length - KEPT_END;
  return [el('span', { class: 'fm-name-start' }, part(0, cut)), el('span', { class: 'fm-name-end' }, part(cut, text.length))];
}
