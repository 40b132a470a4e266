/* Control characters in names and other texts, and names that would not be seen. */

const CONTROL_NAMES = { 9: 'TAB', 10: 'LF', 13: 'CR' };

/** Replaces control and direction characters by visible names, so that no name can look like another one. */
export function visible(text) {
  return text.replace(/[\0-\x1f\x7f\u200e\u200f\u202a-\u202e\u2066-\u2069]/g, (char) => {
    const code = char.charCodeAt(0);
    return `‹${CONTROL_NAMES[code] ?? `U+${code.toString(16).toUpperCase().padStart(4, '0')}`}›`;
  });
}

/** Returns the name of an entry for the user. If it is blank, this is the name of the file. */
export const shownName = ({ name, path }) => visible(name.trim() ? name : path.slice(path.lastIndexOf('/') + 1));
