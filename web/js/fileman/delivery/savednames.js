/* The names of downloads: the one in a response, and the one under which the browser saves it. */
import { visible } from '../common/controlchars.js';
import { toText } from '../answers/encoding.js';
import { t } from '../common/texts.js';

/**
 * Returns the file name in a Content-Disposition header: quoted, bare or encoded (RFC 6266, RFC 8187). Null if none.
 */
export function attachmentName(header) {
  const encoded = /filename\*=UTF-8''([^;\s]+)/i.exec(header)?.[1];
  if (encoded) return decodeURIComponent(encoded);
  const plain = /filename=(?:"((?:[^"\\]|\\.)*)"|(.*))/i.exec(header);
  return plain && toText(plain[1]?.replace(/\\(.)/g, '$1') ?? plain[2]);
}

/** Returns the name under which a PDF or archive of these entries is saved. */
export function savedName(operation, entries, type, part) {
  const day = new Intl.DateTimeFormat('sv').format(new Date());
  const many = `${t('resultFiles')}${operation === 'pdf' ? '-pdf' : ''}-${day}-${entries.length}`;
  const base = entries.length === 1 ? visible(entries[0].name) : many;
  return `${base.replace(/[/\\:*?"<>|]/g, '_')}${part}.${type}`;
}
