/*
 * What the instrument stores beside an entry's file: its pictures, and the document with its advanced information. The
 * instrument sends them with the entry's archive only, so that is fetched and read.
 */
import { unzipSync } from 'fflate';
import { fileOf, nameMatches } from './archive.js';
import { fetchBlob, sniff } from './stored.js';
import { AnswerError, toText } from './wire.js';

const MOST_KEPT = 4; // archives that are remembered
const LARGEST_KEPT = 8 << 20;
const MOST_PICTURES = 200;
const MOST_UNPACKED = 64 << 20; // bytes of one file
const MOST_DOCUMENT = 1 << 20; // the instrument reads no longer one either
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
  // A data address needs no change of the frame's policy and no clearing up.
  return type.startsWith('image/') ? dataAddress(new Blob([bytes], { type })) : null;
}

/** The advanced information in a document: { jobid, account, locator, type }; null when it holds none. */
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

/** What stands beside the entry's file: each record has a folder in the archive. */
const placeIn = (name) => (/[^\0-\xff]/.test(name) ? name : toText(name)).split('/').slice(1).join('/');

class Insides {
  /** Throws AnswerError when the bytes are no archive. */
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
      throw new AnswerError(this.bytes.length ? 'insidesBroken' : 'insidesEmpty');
    }
  }

  /** The bytes of a file beside the entry's, or below that directory; null when there is none. */
  file(path) {
    const found = this.names.find((name) => nameMatches(path, placeIn(name)));
    return found ? this.#unpack(({ name }) => name === found)[found] : null;
  }

  /** The entry's own file. */
  own() {
    return this.file(fileOf(this.entry.path));
  }

  advanced() {
    const base = fileOf(this.entry.path).replace(/\.[^.]*$/, '');
    for (const name of [base, `${base}.xml`]) {
      const bytes = this.file(name);
      const found = bytes && bytes.length <= MOST_DOCUMENT && advancedOf(textOf(bytes));
      if (found) return found;
    }
    return null;
  }

  /** The files that a report refers to: two functions of their paths, the address of a picture and a file's text. */
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

/** Fetches an entry's archive, or takes it from those that have been fetched last. */
export async function fetchInsides(entry, signal) {
  const key = `${entry.datetime} ${entry.path}`;
  if (kept.has(key)) return kept.get(key);
  const blob = await fetchBlob('download', entry, signal);
  const insides = new Insides(new Uint8Array(await blob.arrayBuffer()), entry);
  if (blob.size <= LARGEST_KEPT) kept.set(key, insides);
  if (kept.size > MOST_KEPT) kept.delete(kept.keys().next().value);
  return insides;
}
