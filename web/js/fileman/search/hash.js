/* The part of the address after "#". It holds the text of the search (find) and the open entry (view). */

/** Returns the value of a key, or null if it is missing or badly encoded. */
export function inHash(key, hash = location.hash) {
  for (const piece of hash.replace(/^#/, '').split('&')) {
    const at = piece.indexOf('=');
    if (piece.slice(0, at) !== key) continue;
    try {
      return decodeURIComponent(piece.slice(at + 1));
    } catch {
      return null;
    }
  }
  return null;
}

/** Returns "#" and the encoded values, or '' if there are none. */
export function hashOf(values) {
  const pieces = Object.entries(values).filter(([, value]) => value);
  return pieces.length ? `#${pieces.map(([key, value]) => `${key}=${encodeURIComponent(value).replace(/%2F/g, '/')}`).join('&')}` : '';
}
