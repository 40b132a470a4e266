/*
 * Reads the files that belong to an entry: the pictures of its report, and the document with its advanced information.
 * The instrument sends them only in the archive of the entry, so this module fetches and reads the archive.
 */
import { unzipSync } from 'fflate';
import { fileOf, nameMatches } from '../answers/archive.js';
import { toText } from '../answers/encoding.js';
import { AnswerError } from '../answers/refusals.js';
import { fetchBlob } from '../answers/fetchfile.js';
import { sniff } from '../answers/kinds.js';

const REST = 500; // debounce: milliseconds before the archive of a view is fetched
const MOST_KEPT = 4; // archives in the cache
const LARGEST_KEPT = 8 << 20;
const MOST_PICTURES = 200;
const MOST_UNPACKED = 64 << 20; // bytes of one file
const MOST_DOCUMENT = 1 << 20; // bytes; the instrument has the same limit
const kept = new Map();

function dataAddress(blob) {
  return new Promise((resolve, reject) => {
    const reader = new FileReader();
    reader.onload = () => resolve(reader.result);
    reader.onerror = () => reject(reader.error);
    reader.readAsDataURL(blob);
  });
}

async function pictureAddress(path, bytes) {
  const type = /\.svg$/i.test(path) ? 'image/svg+xml' : sniff(bytes);
  // The policy of the frame allows data: addresses, and they need no clean-up.
  return type.startsWith('image/') ? dataAddress(new Blob([bytes], { type })) : null;
}

/** Returns the advanced information in a document, { jobid, account, locator, type }, or null if there is none. */
export function advancedOf(text) {
  const root = new DOMParser().parseFromString(text, 'text/xml').documentElement;
  const found = [...root.children].filter((node) => node.localName.toLowerCase() === 'ktb_advinfo').at(-1);
  if (!found) return null;
  const names = { jobid: 'job_id', account: 'account_id', locator: 'locator', type: 'advtype' };
  const isSaid = ([, value]) => value && value.toLowerCase() !== 'none';
  return Object.fromEntries(
    Object.entries(names)
      .map(([key, name]) => [key, found.getAttribute(name)])
      .filter(isSaid),
  );
}

const textOf = (bytes) => new TextDecoder().decode(bytes);

/** Returns the path of an archive member without its first folder. Each record has its own folder in the archive. */
const placeIn = (name) => (/[^\0-\xff]/.test(name) ? name : toText(name)).split('/').slice(1).join('/');

class EntryArchive {
  /** Throws AnswerError if the bytes are not an archive. */
  constructor(bytes, entry) {
    this.bytes = bytes;
    this.entry = entry;
    this.names = [];
    this.#unpack(({ name, originalSize }) => {
      if (placeIn(name) && originalSize <= MOST_UNPACKED) this.names.push(name);
      return false;
    });
  }

  #unpack(filter) {
    try {
      return unzipSync(this.bytes, { filter });
    } catch {
      throw new AnswerError(this.bytes.length ? 'archiveBroken' : 'archiveEmpty');
    }
  }

  /**
   * Returns the bytes of a file, given by its path from the directory of the entry's file, or null if there is none.
   */
  file(path) {
    const found = this.names.find((name) => nameMatches(path, placeIn(name)));
    return found ? this.#unpack(({ name }) => name === found)[found] : null;
  }

  /** Returns the bytes of the entry's file, or null. */
  own() {
    return this.file(fileOf(this.entry.path));
  }

  /** Returns the advanced information of the entry, or null. */
  advanced() {
    const base = fileOf(this.entry.path).replace(/\.[^.]*$/, '');
    for (const name of [base, `${base}.xml`]) {
      const bytes = this.file(name);
      const found = bytes && bytes.length <= MOST_DOCUMENT && advancedOf(textOf(bytes));
      if (found) return found;
    }
    return null;
  }

  /**
   * Reads the files that a report refers to. Returns two functions that take a path: the first one returns the address
   * of a picture, the second one the text of a style sheet.
   */
  async references(paths) {
    const addresses = new Map();
    const texts = new Map();
    for (const path of [...paths].slice(0, MOST_PICTURES)) {
      const bytes = this.file(path);
      if (bytes && /\.css$/i.test(path)) texts.set(path, textOf(bytes));
      else if (bytes) addresses.set(path, await pictureAddress(path, bytes));
    }
    return [(path) => addresses.get(path), (path) => texts.get(path)];
  }
}

/** Resolves when a view has stayed open for a moment. Throws AbortError if it was left before that. */
export async function rested(signal) {
  await new Promise((resolve) => setTimeout(resolve, REST));
  signal.throwIfAborted();
}

/** Fetches the archive of an entry, or takes it from the cache. Throws AnswerError or AbortError. */
export async function fetchEntryArchive(entry, signal) {
  const key = `${entry.datetime} ${entry.path}`;
  if (kept.has(key)) return kept.get(key);
  const blob = await fetchBlob('download', entry, signal);
  const archive = new EntryArchive(new Uint8Array(await blob.arrayBuffer()), entry);
  if (blob.size <= LARGEST_KEPT) kept.set(key, archive);
  if (kept.size > MOST_KEPT) kept.delete(kept.keys().next().value);
  return archive;
}
