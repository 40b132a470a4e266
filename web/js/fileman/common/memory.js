/*
 * Stores preferences in the browser permanently, and the state of a list as long as its window is open. A store that is
 * full or blocked is not an error.
 */

function access(store, work) {
  try {
    return work(store());
  } catch {
    return null;
  }
}

export function recall(name, fallback, store = () => localStorage) {
  return access(store, (kept) => JSON.parse(kept.getItem(`fileman.${name}`))) ?? fallback;
}

export function keep(name, value, store = () => localStorage) {
  access(store, (kept) => kept.setItem(`fileman.${name}`, JSON.stringify(value)));
}

const ofWindow = () => sessionStorage;

/** The state of one list: { chosen: [paths], top, active }. */
export const recallList = (query) => recall(`list${query}`, {}, ofWindow);
export const keepList = (query, state) => keep(`list${query}`, state, ofWindow);

/** The text of the search. All lists of a window share it. */
export const recallFind = () => recall('find', '', ofWindow);
export const keepFind = (text) => keep('find', text, ofWindow);
