/*
 * The view of an entry of the list, or of two side by side: opening, stepping and closing. An open view has a history
 * entry of its own, and the part of the address after "#" names what it shows.
 */
import { visible } from '../common/controlchars.js';
import { afterPaint } from '../common/dom.js';
import { inHash } from '../search/hash.js';
import { t } from '../common/texts.js';
import { Viewer } from './viewer.js';

/** Returns a text that differs if a file was replaced. */
const keysOf = (some) => some.map(({ path, datetime }) => `${path}\n${datetime}`).join('\n');

export class Viewing {
  #viewer;
  #list;
  #isLeaving = false; // true from history.back() until the browser has left the history entry of the view

  /**
   * `list` has grid, gallery, entries(), host(), which takes the keyboard focus, address(), which is that of the current
   * state, opened(entries) and gone(text), which shows that an entry is gone. `events` are those of the Viewer, without
   * close() and step().
   */
  constructor(aside, list, events) {
    this.#list = list;
    this.#viewer = new Viewer(aside, { ...events, close: () => this.close(), step: (by) => this.step(by) });
  }

  get isOpen() {
    return this.#viewer.isOpen;
  }

  get isLeaving() {
    return this.#isLeaving;
  }

  /** The paths of the viewed entries. */
  get paths() {
    return this.isOpen ? this.#viewer.entries.map(({ path }) => path) : [];
  }

  #placeOf(entry) {
    const { view } = this.#list.grid;
    return { at: view.indexOf(entry), count: view.length };
  }

  /** Shows where the viewed entry is in the list. */
  showPlace() {
    if (this.isOpen) this.#viewer.showPlace(this.#placeOf(this.#viewer.entry));
  }

  /** Opens the view of one entry or of two. The first view adds a history entry, later ones replace it. */
  open(...targets) {
    if (!targets.length) return;
    const change = this.isOpen ? 'replaceState' : 'pushState';
    this.#list.opened(targets);
    this.#show(targets);
    history[change]({ viewing: true }, '', this.#list.address());
  }

  #show(targets) {
    if (targets.length > 1) this.#viewer.compare(targets);
    else this.#viewer.open(targets[0], this.#placeOf(targets[0]));
  }

  /** Opens the view that the part of the address after "#" names. If it names none, closes the view. */
  take(hash = location.hash) {
    const paths = [inHash('view', hash), inHash('with', hash)].filter((path) => path !== null);
    const entries = this.#list.entries();
    const targets = paths.map((path) => entries.find((entry) => entry.path === path));
    const gone = targets.indexOf(undefined);
    if (!targets.length || gone >= 0) {
      this.dismiss();
      if (gone < 0) return;
      history.replaceState(null, '', this.#list.address());
      this.#list.gone(t('viewGone', { path: visible(paths[gone]) }));
    } else if (this.isOpen && keysOf(this.#viewer.entries) === keysOf(targets)) {
      this.#viewer.renew(targets, this.#placeOf(targets[0]));
    } else {
      const { at } = this.#placeOf(targets[0]);
      if (at >= 0) this.#list.grid.activate(at);
      this.#show(targets);
    }
  }

  /** Removes the view, but does not touch the focus and the history. */
  dismiss() {
    if (this.isOpen) this.#viewer.hide();
  }

  /** Closes the view. If it has its own history entry, goes back. */
  close() {
    this.#isLeaving = Boolean(history.state?.viewing);
    if (this.#isLeaving) history.back();
    this.#hide();
  }

  /** Closes the view when the browser has gone to an address without one. Returns false if there was none. */
  leave() {
    if (!this.#isLeaving && !this.isOpen) return false;
    this.#isLeaving = false;
    this.#hide();
    return true;
  }

  #hide() {
    const { grid, gallery, host, address } = this.#list;
    this.#viewer.hide();
    host().focus();
    afterPaint(() => {
      grid.reveal(); // the list may have been hidden while the active row changed
      gallery.reveal();
    });
    // Keep the text that was typed while the view was open.
    if (!this.#isLeaving) history.replaceState(history.state, '', address());
  }

  /**
   * Views the next entry (1) or the previous one (-1). If only the viewed entry was selected, the new one is selected
   * instead.
   */
  step(by) {
    const { grid, gallery } = this.#list;
    const { entries, entry } = this.#viewer;
    if (entries.length > 1) return;
    const at = grid.view.indexOf(entry) + by;
    if (at < 0 || at >= grid.view.length) return;
    const isChoice = grid.chosen.size === 1 && grid.chosen.has(entry);
    grid.activate(at);
    if (isChoice) grid.choose([grid.view[at]]);
    gallery.reveal();
    this.open(grid.view[at]);
  }

  /** While a view is open, the keys Left and Right in the list show the previous and the next entry. */
  stepByKey(event) {
    const by = { ArrowLeft: -1, ArrowRight: 1 }[event.key];
    const isModified = event.altKey || event.ctrlKey || event.metaKey;
    if (!by || !this.isOpen || event.target !== this.#list.host() || isModified) return;
    event.preventDefault();
    this.step(by);
  }
}
