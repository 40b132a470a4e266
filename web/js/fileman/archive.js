/* Looks into a zip archive, so that a person learns what is missing before the archive is opened elsewhere. */

const END = 0x06054b50;
const ENTRY = 0x02014b50;
const END_BYTES = 22;
const ENTRY_BYTES = 46;
const MOST_COMMENT = 65535;

/** Place of the end record in the archive's last bytes, or -1 when the archive is cut off. */
function findEnd(view) {
  for (let at = view.byteLength - END_BYTES; at >= 0; at--) if (view.getUint32(at, true) === END) return at;
  return -1;
}

/**
 * Names of an archive's entries as binary strings; null when it is no whole archive, empty when it uses the
 * large format, which this does not read.
 */
export async function archiveNames(blob) {
  const tail = new DataView(await blob.slice(-END_BYTES - MOST_COMMENT).arrayBuffer());
  const end = findEnd(tail);
  if (end < 0) return null;
  const count = tail.getUint16(end + 10, true);
  const size = tail.getUint32(end + 12, true);
  const start = tail.getUint32(end + 16, true);
  if (count === 0xffff || start === 0xffffffff) return [];
  const list = new DataView(await blob.slice(start, start + size).arrayBuffer());
  const names = [];
  for (let at = 0; at + ENTRY_BYTES <= list.byteLength && list.getUint32(at, true) === ENTRY;) {
    const length = list.getUint16(at + 28, true);
    names.push(String.fromCharCode(...new Uint8Array(list.buffer, at + ENTRY_BYTES, length)));
    at += ENTRY_BYTES + length + list.getUint16(at + 30, true) + list.getUint16(at + 32, true);
  }
  return names.length === count ? names : null;
}

/**
 * Names beyond ASCII are stored in archives in more than one way, and the instrument cuts very long ones, so only the
 * others can be looked for.
 */
const canBeSought = (entry) => /^[\x20-\x7e]{0,240}$/.test(entry.name);

/** Entries that an archive lacks, and whether it holds none of those that can be looked for. */
export function compare(names, entries, operation) {
  const start = operation === 'pdf' ? (name) => `${name}.pdf` : (name) => `[${name}]-[`;
  const sought = names.length ? entries.filter(canBeSought) : [];
  const missing = sought.filter((entry) => !names.some((one) => one.startsWith(start(entry.name))));
  return { missing, foreign: sought.length > 0 && missing.length === sought.length };
}
