/* What is remembered: preferences for good, a list's state as long as its window. A full or closed store is no error. */

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

/** State of one list: { chosen: [paths], top, active }. */
export const recallList = (query) => recall(`list${query}`, {}, ofWindow);
export const keepList = (query, state) => keep(`list${query}`, state, ofWindow);

/** What is typed in the search; it holds for all lists of a window. */
export const recallFind = () => recall('find', '', ofWindow);
export const keepFind = (text) => keep('find', text, ofWindow);
