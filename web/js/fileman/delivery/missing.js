/* Finds the entries that are missing in a download or a PDF export, so that the page can tell the user. */
import { fileOf, pattern, unpack } from '../answers/archive.js';
import { toBinary, toText } from '../answers/encoding.js';

/** The most names of missing entries in one message. */
export const MOST_NAMED = 20;
const LONGEST_FOLDER = 255; // the instrument cuts a folder's name to this length

/** Returns true if a PDF is complete. */
export async function isWholePdf(blob) {
  const [head, tail] = await Promise.all([blob.slice(0, 5).text(), blob.slice(-64).text()]);
  return head === '%PDF-' && /%%EOF[\s\0]*$/.test(tail);
}

const baseOf = (path) => fileOf(path).split('.', 1)[0];

/** Returns the file name of an entry's PDF. */
const pdfNameOf = ({ path }) => `${baseOf(path)}.pdf`;

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
 * Compares the members of a downloaded archive with the chosen entries. Returns { missing, shared }: the entries that
 * are not in the archive, and the entries that may have been replaced by another one. Each record has a folder
 * "[name]-[type]-[port]-[mode]" with its files. This function does not know the labels in that name. So entries with
 * the same name are `shared` if they have too few folders. A folder without files is ignored.
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
      // The path of a measurement ends with a directory. Any file below it is enough.
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

/**
 * Compares an archive of PDFs with the chosen entries. Returns { missing, shared } like lacksOfDownload(). A broken PDF
 * counts as missing. Entries with the same name are `shared`, because the archive has only one PDF for them.
 */
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

/**
 * Compares a single PDF with the chosen entries, like lacksOfPdfs(). The PDF holds the entries whose PDF name is
 * `sentName`. If no name matches, it is not known which entry it holds.
 */
export function lacksOfOnePdf(sentName, entries) {
  const missing = entries.filter((entry) => pdfNameOf(entry) !== sentName);
  if (missing.length < entries.length) return { missing, shared: [] };
  return { missing: [], shared: entries.length > 1 ? entries : [] };
}
