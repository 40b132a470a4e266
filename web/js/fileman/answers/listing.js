/*
 * A listing is what a list shows: its kind and its filter, { kind, lists, texts }. queries.js reads it from a query.
 * These functions never change a listing, they return a new one.
 */
import { LIST_KEYS, TEXT_KEYS, listingQuery } from './queries.js';

export const TAB_TEXTS = { all: 'listAll', rslt: 'listRslt', prof: 'listProf', screen: 'listScreen' };

export const addressOf = (listing) => `fileman.cgi${listingQuery(listing)}`;
export const obeysFilter = ({ kind }) => kind === 'rslt' || kind === 'prof';

/** Returns the listing without one value of its filter. */
export function without(listing, key, value) {
  const { lists, texts } = listing;
  return key in lists
    ? { ...listing, lists: { ...lists, [key]: lists[key].filter((one) => one !== value) } }
    : { ...listing, texts: { ...texts, [key]: '' } };
}

/** Returns the listing without its filter. */
export function unfiltered(listing) {
  return {
    ...listing,
    lists: Object.fromEntries(LIST_KEYS.map((key) => [key, []])),
    texts: Object.fromEntries(TEXT_KEYS.map((key) => [key, ''])),
  };
}
