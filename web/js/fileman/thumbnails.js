/* Fetches the pictures that are in sight, a few at a time, and gives up those that no longer are. */
import { obstacle } from './kinds.js';
import { fetchFile, sniff } from './stored.js';

const AT_ONCE = 4;
const MOST_KEPT = 300; // pictures

const keyOf = ({ path, datetime }) => `${path}\n${datetime}`;

export class Thumbnails {
  /** `ready(entry)` is called when addressOf(entry) has changed. */
  constructor(ready) {
    this.ready = ready;
    this.addresses = new Map(); // by key: a blob's address, or '' for what shows no picture
    this.running = new Map(); // by key: what stops a request
    this.wanted = [];
  }

  /** The address of an entry's picture, '' when there is none to show, undefined when it is not known yet. */
  addressOf(entry) {
    // The instrument sends the first of those that share an identity.
    if (entry.twin || obstacle(entry, 'view')) return '';
    return this.addresses.get(keyOf(entry));
  }

  /** Names the entries in sight. */
  want(entries) {
    this.wanted = entries;
    const keys = new Set(entries.map(keyOf));
    for (const [key, stop] of this.running) if (!keys.has(key)) stop.abort();
    this.#next();
  }

  #next() {
    for (const entry of this.wanted) {
      if (this.running.size >= AT_ONCE) return;
      if (this.addressOf(entry) === undefined && !this.running.has(keyOf(entry))) this.#fetch(entry);
    }
  }

  async #fetch(entry) {
    const key = keyOf(entry);
    const stop = new AbortController();
    this.running.set(key, stop);
    try {
      const bytes = await fetchFile(entry, stop.signal);
      const type = sniff(bytes);
      this.#keep(key, /^image\//.test(type) ? URL.createObjectURL(new Blob([bytes], { type })) : '');
    } catch {
      if (!stop.signal.aborted) this.#keep(key, '');
    }
    this.running.delete(key);
    this.ready(entry);
    this.#next();
  }

  #keep(key, address) {
    this.addresses.set(key, address);
    if (this.addresses.size <= MOST_KEPT) return;
    const [oldest, old] = this.addresses.entries().next().value;
    this.addresses.delete(oldest);
    if (old) URL.revokeObjectURL(old);
  }

  /** Forgets what could not be shown, so that it is tried again. */
  retry() {
    for (const [key, address] of this.addresses) if (!address) this.addresses.delete(key);
  }
}
