/* Splits the ids of many entries into groups, one per request, because servers limit the length of a request. */
import { escape } from '../answers/encoding.js';

/** Limits for the bytes of ids in one request. The demo's server accepts 64 KiB of header lines, small ones 8 or 4. */
const LIMITS = [56000, 7000, 3000];

let limit = 0; // index in LIMITS

/** Splits ids into groups that fit the current limit. */
export function partsOf(ids) {
  const groups = [[]];
  let length = 0;
  for (const id of ids) {
    const more = escape(id).length + 1;
    if (length + more > LIMITS[limit] && groups[groups.length - 1].length) {
      groups.push([]);
      length = 0;
    }
    groups[groups.length - 1].push(id);
    length += more;
  }
  return groups;
}

/**
 * Lowers the limit if a request for these ids may have failed because of its length: a server with a lower limit sends
 * an error or closes the connection. Returns false if the length is not the reason, or if there is no lower limit.
 */
export function lowerLimit(error, ids) {
  const next = LIMITS[limit + 1];
  const isLong = error.key === 'errorTooLong' || (error.key === 'errorNetwork' && ids.join().length > next);
  if (!isLong || !next) return false;
  limit += 1;
  return true;
}
