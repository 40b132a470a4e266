/*
 * Finds out if a report says PASS or FAIL. js/verdict.json, which the maker of the instrument may edit, tells where a
 * report says so. Reports are read in the background, one at a time. After each one there is a pause as long as the
 * reading took. The verdicts are cached by path and date.
 */
import { kindOf, sniff } from '../answers/kinds.js';
import { keep, recall } from '../common/memory.js';
import { obstacle } from '../answers/candeliver.js';
import { decodeReport } from './report.js';
import { fetchFile } from '../answers/fetchfile.js';

const MOST_KEPT = 4000;
const STILL = 400; // debounce: milliseconds without a new request before the first report is read
const LEAST_REST = 50;

/** The texts for verdicts. 'unread' means that the report has not been read yet. */
export const VERDICT_TEXTS = { pass: 'verdictPass', fail: 'verdictFail', none: 'verdictNone', unread: 'verdictUnread' };

// If several entries have the same id, the instrument sends the first one. So the reports of the others cannot be read.
const isReadable = (entry) => !entry.twin && kindOf(entry) === 'report' && !obstacle(entry, 'view');

/** Returns the verdict of an entry: 'pass', 'fail', 'none', or '' if its report has not been read yet. */
export function verdictOf(entry) {
  entry.verdict ??= isReadable(entry) ? '' : 'none';
  return entry.verdict;
}

/** Returns the verdict of a report: 'pass', 'fail' or 'none'. If several elements match, one 'fail' is enough. */
export function verdictIn(text, { selector, pass, fail }) {
  // Nothing runs or loads in a parsed document. Disable its styles and its base, because the policy of the page would
  // report them.
  const quiet = text
    .replace(/<(\/?)style\b/gi, '<$1template')
    .replace(/<base\b/gi, '<meta')
    .replace(/(\s)(style|on\w+)(?=\s*=)/gi, '$1data-$2');
  const nodes = new DOMParser().parseFromString(quiet, 'text/html').querySelectorAll(selector);
  const said = [...nodes].map((node) => node.textContent.trim().toLowerCase());
  const says = (words) => words.some((word) => said.some((one) => one.startsWith(word.toLowerCase())));
  return says(fail) ? 'fail' : says(pass) ? 'pass' : 'none';
}

/** Fetches js/verdict.json. Returns { selector, pass, fail }, or null if it is missing or not valid. */
async function fetchDescription() {
  try {
    const response = await fetch(`${window.fileman.base}verdict.json`, { credentials: 'same-origin' });
    const { selector, pass, fail } = await response.json();
    document.createDocumentFragment().querySelector(selector); // throws if the selector is not valid
    const areWords = [pass, fail].every((words) => Array.isArray(words) && words.every((word) => typeof word === 'string'));
    return areWords ? { selector, pass, fail } : null;
  } catch {
    return null;
  }
}

const keyOf = ({ path, datetime }) => `${path}\n${datetime}`;

export class Verdicts {
  /** Calls `changed(entry)` when the verdict of an entry has become known. */
  constructor(changed) {
    this.changed = changed;
    this.known = new Map(recall('verdicts', [], { like: [['']] }).filter(([key]) => key));
    this.knownDates = new Set([...this.known.keys()].map((key) => key.slice(key.lastIndexOf('\n') + 1)));
    this.pending = [];
    this.isReading = false;
    document.addEventListener('visibilitychange', () => this.#start());
    addEventListener('pagehide', () => this.#save());
  }

  /** Sets the cached verdicts of the entries. */
  recallFor(entries) {
    if (!this.known.size) return;
    // In a long list it is faster to look up only the date first than to build the key of each entry.
    const mayBeKnown = (entry) => this.knownDates.has(entry.datetime) && !entry.twin;
    for (const entry of entries) if (mayBeKnown(entry)) entry.verdict = this.known.get(keyOf(entry));
  }

  /** Requests the verdicts of entries, the most urgent first. This replaces the previous request. */
  request(entries) {
    this.pending = entries.filter((entry) => verdictOf(entry) === '');
    clearTimeout(this.timer);
    if (this.pending.length) this.timer = setTimeout(() => this.#start(), STILL);
  }

  async #start() {
    if (this.isReading) return;
    this.isReading = true;
    while (this.pending.length && !document.hidden) {
      this.description ??= (await fetchDescription()) ?? { selector: null };
      if (!this.description.selector) break;
      const entry = this.pending.shift();
      const began = performance.now();
      if (entry?.verdict === '') await this.#read(entry);
      const rest = Math.max(LEAST_REST, performance.now() - began);
      await new Promise((resolve) => setTimeout(resolve, rest));
    }
    this.isReading = false;
  }

  async #read(entry) {
    try {
      const bytes = await fetchFile(entry);
      entry.verdict = sniff(bytes) === 'text/html' ? verdictIn(decodeReport(bytes), this.description) : 'none';
      this.known.set(keyOf(entry), entry.verdict);
      this.knownDates.add(entry.datetime);
      clearTimeout(this.saving);
      this.saving = setTimeout(() => this.#save(), 2000);
    } catch {
      entry.verdict = 'none'; // no retry before the list is loaded again
    }
    this.changed(entry);
  }

  #save() {
    keep('verdicts', [...this.known].slice(-MOST_KEPT));
  }
}
