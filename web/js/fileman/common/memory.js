/*
 * Stores preferences in the browser permanently, and the state of a list as long as its window is open. If a store is
 * full or blocked, the page itself keeps the values, until it is closed.
 */

const inBrowser = () => localStorage;
const ofWindow = () => sessionStorage;
const inPage = new Map(); // values that no store has taken

/**
 * Returns true if a value has the types of an example. In an object these are the types of the example's keys, in an
 * array the types of the example's first item.
 */
function isLike(value, example) {
  if (typeof value !== typeof example || value === null || Array.isArray(value) !== Array.isArray(example)) return false;
  if (Array.isArray(value)) return !example.length || value.every((item) => isLike(item, example[0]));
  return typeof value !== 'object' || Object.keys(example).every((key) => isLike(value[key], example[key]));
}

/**
 * Returns a stored value, or `fallback` if there is none or if it is not like the example. Other pages and older
 * versions may have stored something else.
 */
export function recall(name, fallback, { store = inBrowser, like = fallback } = {}) {
  try {
    const value = JSON.parse(inPage.get(name) ?? store().getItem(`fileman.${name}`));
    return isLike(value, like) ? value : fallback;
  } catch {
    return fallback;
  }
}

export function keep(name, value, store = inBrowser) {
  const text = JSON.stringify(value);
  inPage.delete(name);
  try {
    store().setItem(`fileman.${name}`, text);
  } catch {
    inPage.set(name, text);
  }
}

/** The state of one list: { chosen: [paths], top, active }. */
export const recallList = (query) => recall(`list${query}`, {}, { store: ofWindow, like: { chosen: [''], top: 0 } });
export const keepList = (query, state) => keep(`list${query}`, state, ofWindow);

/** The text of the search. All lists of a window share it. */
export const recallFind = () => recall('find', '', { store: ofWindow });
export const keepFind = (text) => keep('find', text, ofWindow);
