/*
 * Looks for new results now and then while the page is visible. There is never more than one request, and a look is
 * followed by a pause of at least twenty times what it took, so that an instrument spends no more than a twentieth on it.
 * Where the window is as narrow as an instrument's own screen, a person has to ask for it.
 */
import { keep, recall } from './memory.js';

const LEAST_PAUSE = 60e3;
const TIMES = 20; // pause by duration of the last look
const OWN_SCREEN = 1000; // pixels

const keyOf = ({ path, datetime }) => `${path}\n${datetime}`;

export class News {
  /** `events`: look() resolves to the list as it is now, or throws; entries() are those shown; found(list, count). */
  constructor(events) {
    this.events = events;
    this.pause = LEAST_PAUSE;
    this.turn = 0; // of the list that is shown; a look at an older one counts for nothing
    document.addEventListener('visibilitychange', () => this.#wait());
    this.#wait();
  }

  get isOn() {
    return recall('news', innerWidth > OWN_SCREEN);
  }

  set isOn(on) {
    keep('news', on);
    this.#wait();
  }

  /** Starts anew with a list that has just been shown. */
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
      // An instrument that does not answer now may do so later; a person who asks is told.
    }
    this.isLooking = false;
    this.pause = Math.max(LEAST_PAUSE, TIMES * (performance.now() - began));
    this.#wait();
  }
}
