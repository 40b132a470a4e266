/* Tells why an entry cannot be viewed, downloaded or exported as PDF. */
import { isStrict } from './strict.js';
import { kindOf } from './kinds.js';
import { isSendable } from './queries.js';

const CONTROL = /[\0-\x1f\x7f]/;
/**
 * Characters that the path of a folder must not have, because it is part of a shell command without quotes. The shell
 * splits only at " ", not at other white space.
 */
const SPECIAL = /[ |&;<>()$`\\"'*?[\]{}]/;

/**
 * Returns the key of the text that says why an operation ('view', 'download' or 'pdf') cannot deliver an entry, or null
 * if it can. For default answers the instrument packs archives with shell commands, which fail for some names. It
 * leaves such entries out without a message, so the page must know them before the request.
 */
export function obstacle(entry, operation) {
  if (!isSendable(entry.id)) return 'whyId';
  const folder = entry.path.slice(0, entry.path.lastIndexOf('/'));
  const file = entry.path.slice(folder.length + 1);
  if (operation === 'download' && !isStrict()) {
    if (!entry.name || entry.name.startsWith('-') || entry.name.includes("'") || CONTROL.test(entry.name))
      return 'whyName';
    if (SPECIAL.test(folder) || CONTROL.test(folder)) return 'whyPlace';
  }
  if (operation === 'pdf') {
    if (kindOf(entry) === 'capture') return 'whyCapture';
    if (file.startsWith('-') || CONTROL.test(entry.path)) return 'whyName';
  }
  return null;
}
