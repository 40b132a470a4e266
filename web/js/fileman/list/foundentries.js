/* The entries of the list that fit the search, in the chosen order. */
import { isColumn } from '../grid/columns.js';
import { keep, recall } from '../common/memory.js';
import { NEWEST_FIRST, orderBy } from '../grid/order.js';
import { Query } from '../search/query.js';

export class FoundEntries {
  #order = []; // indices of the entries in the chosen order
  #last = null; // the result of the last search: { query, entries, fits }

  constructor() {
    this.entries = []; // all rows of the list, in the instrument's order
    this.query = new Query('');
    this.sort = recall('sort', NEWEST_FIRST);
    if (!isColumn(this.sort.field)) this.sort = NEWEST_FIRST;
  }

  /** Takes the entries of another list, and the text of the search. */
  take(entries, text) {
    this.entries = entries;
    this.#arrange();
    this.search(text);
  }

  search(text) {
    this.query = new Query(text);
  }

  /** Sorts by a field. If the list is sorted by it already, reverses the order. */
  sortBy(field) {
    const again = field === this.sort.field;
    this.sort = { field, ascending: again ? !this.sort.ascending : field !== 'datetime' };
    keep('sort', this.sort);
    this.#arrange();
  }

  #arrange() {
    this.#order = orderBy(this.entries, this.sort.field, this.sort.ascending);
  }

  /** Forgets the result of the last search. Call it after a change of values in entries. */
  forget() {
    this.#last = null;
  }

  /**
   * Returns the entries that match the query, in order. A longer query searches only the result of the shorter one. The
   * search goes through the entries as they lie in memory: in the shown order it would take twice as long.
   */
  list() {
    const { entries, query } = this;
    const isWithin = this.#last?.entries === entries && query.isWithin(this.#last.query);
    const fits = isWithin ? this.#last.fits : new Uint8Array(entries.length).fill(1);
    for (let i = 0; i < entries.length; i++) if (fits[i] && !query.matches(entries[i])) fits[i] = 0;
    this.#last = { query, entries, fits };
    return this.#order.filter((i) => fits[i]).map((i) => entries[i]);
  }
}
