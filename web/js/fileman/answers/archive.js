/*
 * Reads the directory of a zip archive. The archive may have gigabytes, so it is read in place. The usual libraries for
 * browsers load the whole archive into memory.
 */

const END = 0x06054b50;
const LARGE_END = 0x06064b50;
const LARGE_END_PLACE = 0x07064b50;
const MEMBER = 0x02014b50;
const END_BYTES = 22;
const LARGE_END_BYTES = 56;
const LARGE_END_PLACE_BYTES = 20;
const MEMBER_BYTES = 46;
const LOCAL_HEAD_BYTES = 30;
const MOST_COMMENT = 65535;
const DEFLATED = 8;

const view = async (blob, from, to) => new DataView(await blob.slice(from, to).arrayBuffer());
const number64 = (data, at) => Number(data.getBigUint64(at, true));

/** Finds the directory of an archive. Returns { count, size, start }, or null if the archive is cut off. */
async function findDirectory(blob) {
  const tailAt = Math.max(0, blob.size - END_BYTES - MOST_COMMENT);
  const tail = await view(blob, tailAt);
  let at = tail.byteLength - END_BYTES;
  while (at >= 0 && tail.getUint32(at, true) !== END) at -= 1;
  if (at < 0) return null;
  const placeAt = at - LARGE_END_PLACE_BYTES;
  if (placeAt < 0 || tail.getUint32(placeAt, true) !== LARGE_END_PLACE)
    return {
      count: tail.getUint16(at + 10, true),
      size: tail.getUint32(at + 12, true),
      start: tail.getUint32(at + 16, true),
    };
  // This record exists if the archive has more than 65,535 members or more than 4 GB.
  const largeAt = number64(tail, placeAt + 8);
  const large = await view(blob, largeAt, largeAt + LARGE_END_BYTES);
  if (large.byteLength < LARGE_END_BYTES || large.getUint32(0, true) !== LARGE_END) return null;
  return { count: number64(large, 32), size: number64(large, 40), start: number64(large, 48) };
}

/**
 * Returns the members of an archive, [{ name, method, size, at }]: `name` is a binary string, `size` is the packed
 * size, `at` is the offset of the member. Returns null if the blob is not a complete archive.
 */
export async function membersOf(blob) {
  const directory = await findDirectory(blob);
  if (!directory) return null;
  const list = await view(blob, directory.start, directory.start + directory.size);
  const members = [];
  for (let at = 0; at + MEMBER_BYTES <= list.byteLength && list.getUint32(at, true) === MEMBER;) {
    const length = list.getUint16(at + 28, true);
    members.push({
      name: String.fromCharCode(...new Uint8Array(list.buffer, at + MEMBER_BYTES, length)),
      method: list.getUint16(at + 10, true),
      size: list.getUint32(at + 20, true),
      at: list.getUint32(at + 42, true),
    });
    at += MEMBER_BYTES + length + list.getUint16(at + 30, true) + list.getUint16(at + 32, true);
  }
  return members.length === directory.count ? members : null;
}

/** Returns the content of a member as a blob. Throws if it cannot be unpacked. */
export async function unpack(blob, { at, method, size }) {
  const head = await view(blob, at, at + LOCAL_HEAD_BYTES);
  const start = at + LOCAL_HEAD_BYTES + head.getUint16(26, true) + head.getUint16(28, true);
  const packed = blob.slice(start, start + size);
  if (method !== DEFLATED) return packed;
  return new Response(packed.stream().pipeThrough(new DecompressionStream('deflate-raw'))).blob();
}

/**
 * Returns the source of a regular expression that matches a name. Archives encode characters outside of ASCII in
 * different ways, so any text matches them.
 */
export const pattern = (text) => text.replace(/[\\^$.*+?()[\]{}|/]/g, '\\$&').replace(/[^\0-\x7f]+/g, '.+');

/** Returns true if `found`, the name of an archive member as text, stands for `name`. */
export const nameMatches = (name, found) => found === name || new RegExp(`^${pattern(name)}$`, 's').test(found);

/** Returns the last name of a path. */
export const fileOf = (path) => path.slice(path.lastIndexOf('/') + 1);
