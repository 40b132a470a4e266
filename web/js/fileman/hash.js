/* The part of the address behind "#": what a person has typed (find) and looks at (view). */

/** The value of a key, or null. */
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

/** The text behind "#" for these values, "#" included; empty when there are none. */
export function hashOf(values) {
  const pieces = Object.entries(values).filter(([, value]) => value);
  return pieces.length ? `#${pieces.map(([key, value]) => `${key}=${encodeURIComponent(value).replace(/%2F/g, '/')}`).join('&')}` : '';
}
