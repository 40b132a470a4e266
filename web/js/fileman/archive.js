/*
 * Looks into a zip archive, so that a person learns what is missing before the archive is opened elsewhere. It may hold
 * gigabytes, so it is read in place: a library for browsers would take all of it into memory.
 */
import { toBinary, toText } from './wire.js';

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
const LONGEST_FOLDER = 255; // the instrument cuts a folder's name to this length

const view = async (blob, from, to) => new DataView(await blob.slice(from, to).arrayBuffer());
const number64 = (data, at) => Number(data.getBigUint64(at, true));

/** Where an archive's directory stands: { count, size, start }; null when the archive is cut off. */
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
  // More than 65,535 members or more than 4 GB.
  const largeAt = number64(tail, placeAt + 8);
  const large = await view(blob, largeAt, largeAt + LARGE_END_BYTES);
  if (large.byteLength < LARGE_END_BYTES || large.getUint32(0, true) !== LARGE_END) return null;
  return { count: number64(large, 32), size: number64(large, 40), start: number64(large, 48) };
}

/**
 * An archive's members, [{ name, method, size, at }]: the name as a binary string, the packed size, the place of the
 * member's data. Null when the blob is not a whole archive.
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

/** A member's content as a blob. Throws when it cannot be unpacked. */
async function unpack(blob, { at, method, size }) {
  const head = await view(blob, at, at + LOCAL_HEAD_BYTES);
  const start = at + LOCAL_HEAD_BYTES + head.getUint16(26, true) + head.getUint16(28, true);
  const packed = blob.slice(start, start + size);
  if (method !== DEFLATED) return packed;
  return new Response(packed.stream().pipeThrough(new DecompressionStream('deflate-raw'))).blob();
}

/** Whether a PDF was written to its end. */
export async function isWholePdf(blob) {
  const [head, tail] = await Promise.all([blob.slice(0, 5).text(), blob.slice(-64).text()]);
  return head === '%PDF-' && /%%EOF[\s\0]*$/.test(tail);
}

/** A pattern's source for a name. Archives keep what is not ASCII in more than one way, so that part may be anything. */
const pattern = (text) => text.replace(/[\\^$.*+?()[\]{}|/]/g, '\\$&').replace(/[^\0-\x7f]+/g, '.+');

/** Whether a member's name, as text, is this name. */
export const nameMatches = (name, found) => found === name || new RegExp(`^${pattern(name)}$`, 's').test(found);

export const fileOf = (path) => path.slice(path.lastIndexOf('/') + 1);
const baseOf = (path) => fileOf(path).split('.', 1)[0];

/** The name of an entry's PDF. */
export const pdfNameOf = ({ path }) => `${baseOf(path)}.pdf`;

function groupBy(items, keyOf) {
  const groups = new Map();
  for (const item of items) {
    const key = keyOf(item);
    if (!groups.has(key)) groups.set(key, []);
    groups.get(key).push(item);
  }
  return [...groups.values()];
}

const countOf = (items, keyOf) => new Set(items.map(keyOf)).size;

/**
 * What a download lacks of the entries: { missing, shared }. Each record has a folder "[name]-[type]-[port]-[mode]" in
 * which its files lie; the labels in it are not known here. `shared` are entries of one name with fewer folders than
 * there should be: the files of one may have replaced those of another. A folder without a file counts for nothing.
 */
export function lacksOfDownload(members, entries) {
  const folders = new Map();
  for (const { name } of members) {
    const [folder, ...rest] = name.split('/');
    if (!rest.at(-1)) continue;
    if (!folders.has(folder)) folders.set(folder, []);
    folders.get(folder).push(rest.join('/'));
  }
  const missing = [];
  const shared = [];
  for (const group of groupBy(entries, ({ name }) => name)) {
    const start = toText(toBinary(`[${group[0].name}]-[`).slice(0, LONGEST_FOLDER));
    const startPattern = new RegExp(`^${pattern(start)}`, 's');
    const own = [...folders].filter(([folder]) => startPattern.test(folder)).map(([, files]) => files);
    const arrived = [];
    let isShared = false;
    for (const same of groupBy(group, ({ path }) => fileOf(path))) {
      const file = fileOf(same[0].path);
      const filePattern = new RegExp(`^${pattern(file)}$`, 's');
      // The path of a measurement ends with a directory: any file below it counts.
      const isThere = (files) => file === same[0].name || files.some((one) => filePattern.test(one));
      const found = own.filter(isThere).length;
      (found ? arrived : missing).push(...same);
      isShared ||= found > 0 && found < countOf(same, ({ path }) => path);
    }
    isShared ||= own.length < countOf(arrived, ({ test, port, mode }) => [test, port, mode].join('\n'));
    if (isShared && arrived.length > 1) shared.push(...arrived);
  }
  return { missing, shared };
}

/** What an archive of PDFs lacks of the entries: { missing, shared }. A broken PDF is missing; one name has one PDF. */
export async function lacksOfPdfs(blob, members, entries) {
  const missing = [];
  const shared = [];
  for (const group of groupBy(entries, ({ path }) => baseOf(path))) {
    const name = baseOf(group[0].path);
    const member = members.find((one) => new RegExp(`^${pattern(name)}\\.pdf$`, 's').test(one.name));
    const content = member && (await unpack(blob, member).catch(() => null));
    if (!content || !(await isWholePdf(content))) missing.push(...group);
    else if (countOf(group, ({ path }) => path) > 1) shared.push(...group);
  }
  return { missing, shared };
}
