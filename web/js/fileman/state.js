/* What the list page shows, shared by the modules that change it and those that draw it. */
import { recall } from './memory.js';
import { t } from './texts.js';
import { LIST_KEYS, TEXT_KEYS, listingQuery } from './wire.js';

export const TAB_TEXTS = { all: 'listAll', rslt: 'listRslt', prof: 'listProf', screen: 'listScreen' };

export const state = {
  listing: null, // what is shown: kind, lists, texts
  entries: [], // all rows of the list, in the instrument's order
  order: [], // their indices in the order shown
  words: [], // typed words that narrow the list
  lost: 0, // rows that could not be read
  sort: recall('sort', { field: 'datetime', ascending: false }),
};

/** The page's parts by name (frame.js), the grid and the viewer among them. */
export const ui = {};

export const addressOf = (listing) => `fileman.cgi${listingQuery(listing)}`;
export const obeysFilter = ({ kind }) => kind === 'rslt' || kind === 'prof';

/** The listing without one value of its filter. */
export function without(key, value) {
  const { lists, texts } = state.listing;
  return key in lists
    ? { ...state.listing, lists: { ...lists, [key]: lists[key].filter((one) => one !== value) } }
    : { ...state.listing, texts: { ...texts, [key]: '' } };
}

/** The listing without any filter. */
export function unfiltered(listing = state.listing) {
  return {
    ...listing,
    lists: Object.fromEntries(LIST_KEYS.map((key) => [key, []])),
    texts: Object.fromEntries(TEXT_KEYS.map((key) => [key, ''])),
  };
}

export function countText() {
  const shown = ui.grid.view.length;
  const all = state.entries.length;
  return shown === all ? t('shown', { n: all }) : t('shownOf', { n: shown, all });
}

/** The entries that an action is about: the chosen ones in the order shown, else the active one. */
export function targets() {
  const { chosen, view, activeEntry } = ui.grid;
  if (!chosen.size) return activeEntry ? [activeEntry] : [];
  const shown = view.filter((entry) => chosen.has(entry));
  return [...new Set([...shown, ...chosen])];
}
