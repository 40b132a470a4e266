/* A listing says what a list shows: { kind, lists, texts } (wire.js reads it from a query). Nothing here changes one. */
import { LIST_KEYS, TEXT_KEYS, listingQuery } from './wire.js';

export const TAB_TEXTS = { all: 'listAll', rslt: 'listRslt', prof: 'listProf', screen: 'listScreen' };

export const addressOf = (listing) => `fileman.cgi${listingQuery(listing)}`;
export const obeysFilter = ({ kind }) => kind === 'rslt' || kind === 'prof';

/** The listing without one value of its filter. */
export function without(listing, key, value) {
  const { lists, texts } = listing;
  return key in lists
    ? { ...listing, lists: { ...lists, [key]: lists[key].filter((one) => one !== value) } }
    : { ...listing, texts: { ...texts, [key]: '' } };
}

/** The listing without any filter. */
export function unfiltered(listing) {
  return {
    ...listing,
    lists: Object.fromEntries(LIST_KEYS.map((key) => [key, []])),
    texts: Object.fromEntries(TEXT_KEYS.map((key) => [key, ''])),
  };
}
