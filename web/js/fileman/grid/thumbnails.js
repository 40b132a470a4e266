/* Fetches the visible pictures, a few at a time, and aborts the requests for those that are no longer visible. */
import { obstacle } from '../answers/candeliver.js';
import { fetchFile } from '../answers/fetchfile.js';
import { sniff } from '../answers/kinds.js';

const AT_ONCE = 4;
const MOST_KEPT = 300; // pictures

const keyOf = ({ path, datetime }) => `${path}\n${datetime}`;

export class Thumbnails {
  /** Calls `ready(entry)` when addressOf(entry) has changed. */
  constructor(ready) {
    this.ready = ready;
    this.addresses = new Map(); // key to the address of a blob, or '' if the file cannot be shown
    this.running = new Map(); // key to the AbortController of the request
    this.requested = [];
  }

  /** Returns the address of an entry's picture, '' if it cannot be shown, or undefined if it is not known yet. */
  addressOf(entry) {
    // If several entries have the same id, the instrument sends the first one.
    if (entry.twin || obstacle(entry, 'view')) return '';
    return this.addresses.get(keyOf(entry));
  }

  /** Requests the pictures of the visible entries. */
  request(entries) {
    this.requested = entries;
    const keys = new Set(entries.map(keyOf));
    for (const [key, stop] of this.running) if (!keys.has(key)) stop.abort();
    this.#next();
  }

  #next() {
    for (const entry of this.requested) {
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

  /** Removes failed pictures from the cache, so that they are requested again. */
  retry() {
    for (const [key, address] of this.addresses) if (!address) this.addresses.delete(key);
  }
}
