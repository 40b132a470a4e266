/*
 * Checks for new results (polling) while the page is visible. There is never more than one request at a time. After
 * each check there is a pause of at least 20 times the duration of the check, so that the instrument spends at most 5%
 * of its time on it. In a compact window the user has to switch it on.
 */
import { keep, recall } from '../common/memory.js';
import { COMPACT } from '../common/windowwidths.js';

const LEAST_PAUSE = 60e3;
const TIMES = 20; // pause divided by the duration of the last check

const keyOf = ({ path, datetime }) => `${path}\n${datetime}`;

export class News {
  /**
   * `events` has look(), which resolves with the list as it is now or throws, entries(), which returns the shown
   * entries, and found(list, count), which is called if there are new entries.
   */
  constructor(events) {
    this.events = events;
    this.pause = LEAST_PAUSE;
    this.turn = 0; // number of the shown list; the result of a check for an older list is ignored
    document.addEventListener('visibilitychange', () => this.#wait());
    this.#wait();
  }

  get isOn() {
    return recall('news', !COMPACT.matches);
  }

  set isOn(on) {
    keep('news', on);
    this.#wait();
  }

  /** Restarts the timer after a list has been shown. */
  restart() {
    this.turn += 1;
    this.#wait();
  }

  #wait() {
    clearTimeout(this.timer);
    if (this.isOn && !document.hidden && !this.isLooking) this.timer = setTimeout(() => this.#look(), this.pause);
  }

  async #look() {
    const { turn } = this;
    const began = performance.now();
    this.isLooking = true;
    try {
      const list = await this.events.look();
      const known = new Set(this.events.entries().map(keyOf));
      const count = list.entries.filter((entry) => !known.has(keyOf(entry))).length;
      if (count && !list.early && turn === this.turn) this.events.found(list, count);
    } catch {
      // No message: the instrument may answer at the next check. A refresh by the user does show errors.
    }
    this.isLooking = false;
    this.pause = Math.max(LEAST_PAUSE, TIMES * (performance.now() - began));
    this.#wait();
  }
}
