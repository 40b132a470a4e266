/*
 * The list: selection, active row, mouse and keyboard. table.js draws the visible rows. The element "rsltgrid" always
 * keeps the keyboard focus, and aria-activedescendant names the active row. For screen readers each row has its index
 * and its selection state. The column heads are buttons. On a narrow screen there is one column with two lines per
 * entry.
 */
import { announce } from '../common/announce.js';
import { Columns, keepWidths, tellingColumns } from './columns.js';
import { shownName } from '../common/controlchars.js';
import { keep, recall } from '../common/memory.js';
import { NEWEST_FIRST } from './order.js';
import { Table } from './table.js';
import { t } from '../common/texts.js';

const NARROW = 960; // all columns need at least this width, see columns.js
const ROW_HEIGHT = 36;
const DENSE_ROW_HEIGHT = 28;
const NARROW_ROW_HEIGHT = 44; // two lines; also the least height for a finger
const LONG_TAP = 500; // milliseconds
const STILL = 10; // pixels that a finger may move during a long tap

const sizeOf = ({ clientWidth, clientHeight }) => `${clientWidth} ${clientHeight}`;
export const isDense = () => recall('dense', false);
const isNarrow = (host) => host.clientWidth < NARROW || document.documentElement.classList.contains('is-compact');

export class FileGrid {
  /**
   * `tools` is the element that replaces the column heads on a narrow screen. `events` has sort(field), open(entry),
   * menu(entry, rectangle), drawn() after rows were drawn, changed() after a change of the selection or the active row,
   * and escape(), which returns true if it has closed something. Otherwise Escape clears the selection.
   */
  constructor(host, tools, events) {
    this.host = host;
    this.tools = tools;
    this.events = events;
    this.view = [];
    this.chosen = new Set();
    this.hits = 0;
    this.active = -1;
    this.anchor = -1;
    this.sort = NEWEST_FIRST;
    this.columns = new Columns({
      sort: events.sort,
      resize: (id, step) => this.#resize(id, step),
      chooseAll: (on) => this.chooseAll(on),
    });
    this.#create();
  }

  #create() {
    const { host } = this;
    host.classList.toggle('is-dense', isDense());
    host.tabIndex = 0;
    host.setAttribute('role', 'grid');
    host.setAttribute('aria-label', t('grid'));
    host.setAttribute('aria-multiselectable', 'true');
    const source = { count: () => this.view.length, entry: (row) => this.view[row] };
    const drawn = () => {
      this.#mark();
      this.events.drawn();
    };
    this.table = new Table(host, source, { drawn, resized: () => this.#keepWidths() });
    host.addEventListener('keydown', (event) => {
      this.#point(false);
      this.#key(event);
    });
    host.addEventListener('focusout', () => this.#point(false));
    host.addEventListener('mousedown', (event) => this.#press(event));
    host.addEventListener('click', (event) => this.#click(event));
    host.addEventListener('dblclick', (event) => this.#openRow(event));
    host.addEventListener('pointerdown', (event) => this.#touch(event));
    for (const end of ['pointerup', 'pointercancel']) host.addEventListener(end, () => clearTimeout(this.touching));
    host.addEventListener('pointermove', (event) => this.#touchMoves(event));
    host.addEventListener('contextmenu', (event) => this.#menu(event));
    new ResizeObserver(() => {
      if (sizeOf(host) !== this.fitted) this.#fit();
    }).observe(host);
  }

  /** Rows with two lines have the least height for a finger, so the setting "dense" does not change them. */
  get #rowHeight() {
    if (this.narrow) return NARROW_ROW_HEIGHT;
    return isDense() ? DENSE_ROW_HEIGHT : ROW_HEIGHT;
  }

  switchDense(on) {
    keep('dense', on);
    this.host.classList.toggle('is-dense', on);
    this.#fit();
  }

  // ---- columns

  #resize(id, step) {
    const column = this.table.columns.find((one) => one.id === id);
    column.width = Math.max(column.minWidth, column.width + step);
    this.table.showWidths();
    this.#keepWidths();
  }

  #keepWidths() {
    if (!this.narrow) keepWidths(this.table.columns);
  }

  showSort(sort) {
    this.sort = sort;
    this.columns.showSort(sort);
  }

  #fit() {
    this.fitted = sizeOf(this.host);
    if (!this.host.clientWidth && this.table.columns) return; // the list is hidden
    const { top, rowHeight: before } = this.table;
    const { from, to } = before ? this.table.visibleRange : {};
    const isSeen = this.active >= from && this.active < to;
    this.narrow = isNarrow(this.host);
    this.columns.showTools(this.tools, this.narrow);
    const columns = this.columns.list(this.narrow, this.host.clientWidth);
    this.table.lay(columns, { rowHeight: this.#rowHeight, hasHeads: !this.narrow });
    this.showSort(this.sort);
    this.table.renew();
    if (before) this.top = (top / before) * this.#rowHeight; // the same rows as before
    if (isSeen) this.reveal();
  }

  /** Hides the columns that have the same value in all of these entries. */
  fold(entries) {
    const telling = tellingColumns(entries);
    if (telling.join() === this.columns.telling?.join()) return;
    this.columns.telling = telling;
    if (!this.narrow || !this.table.columns) this.#fit();
  }

  /** Returns true if fold() has left this column in the list. */
  hasColumn(id) {
    return this.columns.telling.includes(id);
  }

  // ---- drawing

  /** Updates the state of the drawn rows. Runs after each drawing and each change of the selection. */
  #mark() {
    this.host.setAttribute('aria-rowcount', this.view.length + 1);
    let activeId = null;
    for (const node of this.table.rows) {
      const row = Number(node.dataset.row);
      const entry = this.view[row];
      if (!entry) continue;
      const chosen = this.chosen.has(entry);
      node.id = `fm-row-${row}`;
      node.setAttribute('aria-rowindex', row + 2);
      node.setAttribute('aria-selected', chosen);
      const box = node.querySelector('.fm-check');
      box.setAttribute('aria-checked', chosen);
      box.setAttribute('aria-label', shownName(entry));
      node.classList.toggle('is-chosen', chosen);
      node.classList.toggle('is-active', row === this.active);
      if (row === this.active) activeId = node.id;
    }
    if (activeId) this.host.setAttribute('aria-activedescendant', activeId);
    else this.host.removeAttribute('aria-activedescendant');
  }

  /** Counts the selected entries among the shown ones, and updates the box for all. */
  #count() {
    const shown = this.view.length;
    this.hits = 0;
    if (this.chosen.size) for (const entry of this.view) this.hits += this.chosen.has(entry);
    this.columns.checkAll.checked = shown > 0 && this.hits === shown;
    this.columns.checkAll.indeterminate = this.hits > 0 && this.hits < shown;
    this.columns.checkAll.disabled = !shown;
  }

  /** The entries whose rows are visible. */
  get visibleEntries() {
    const { from, to } = this.table.visibleRange;
    return this.view.slice(from, to);
  }

  /**
   * Draws the row of an entry again if it is visible. The element stays, so that screen readers keep their position.
   */
  redrawEntry(entry) {
    const row = this.visibleEntries.includes(entry) ? this.view.indexOf(entry) : -1;
    if (row < 0) return;
    this.table.redraw(row);
    this.#mark();
  }

  /** Shows other entries, in this order. The active entry stays active if it is one of them. `words` are marked. */
  show(view, words = []) {
    const was = this.view[this.active];
    this.view = view;
    this.columns.words = words;
    this.active = was ? view.indexOf(was) : -1;
    this.anchor = this.active;
    this.#count();
    this.table.renew();
    if (!view.length) this.#mark();
  }

  get top() {
    return this.table.top;
  }

  set top(top) {
    this.table.top = top;
  }

  get activeEntry() {
    return this.view[this.active] ?? null;
  }

  // ---- choice

  /** Returns the entries for an action: the selected ones in the shown order, or else the active one. */
  targets() {
    if (!this.chosen.size) return this.activeEntry ? [this.activeEntry] : [];
    return [...new Set([...this.view.filter((entry) => this.chosen.has(entry)), ...this.chosen])];
  }

  choose(entries) {
    this.chosen = new Set(entries);
    this.#changed();
  }

  chooseAll(on) {
    for (const entry of this.view) {
      if (on) this.chosen.add(entry);
      else this.chosen.delete(entry);
    }
    this.#changed();
  }

  #changed() {
    this.#count();
    this.#mark();
    this.events.changed();
  }

  #toggle(row) {
    const entry = this.view[row];
    if (!this.chosen.delete(entry)) this.chosen.add(entry);
  }

  #range(to) {
    const from = this.anchor < 0 ? to : this.anchor;
    for (let row = Math.min(from, to); row <= Math.max(from, to); row++) this.chosen.add(this.view[row]);
  }

  activate(row) {
    this.active = Math.max(0, Math.min(row, this.view.length - 1));
    this.reveal();
    this.#changed();
  }

  /** Scrolls until the active row is visible. */
  reveal() {
    if (this.active >= 0) this.table.reveal(this.active);
  }

  // ---- mouse and keyboard

  #rowAt(event) {
    const node = event.target.closest?.('.fm-row');
    return node ? Number(node.dataset.row) : -1;
  }

  #press(event) {
    if (this.#rowAt(event) < 0) return;
    event.preventDefault(); // prevents a text selection and the focus on a cell
    this.host.focus({ preventScroll: true });
    this.#point(true);
  }

  /** The ring around the active row is for the keyboard. Browsers would also show it here after a press of the mouse. */
  #point(on) {
    this.host.classList.toggle('is-pointed', on);
  }

  #touch(event) {
    clearTimeout(this.touching);
    this.tapIsLong = false;
    const row = this.#rowAt(event);
    if (event.pointerType !== 'touch' || row < 0) return;
    this.touchedAt = [event.clientX, event.clientY];
    this.touching = setTimeout(() => {
      this.tapIsLong = true;
      this.#toggle(row);
      this.anchor = row;
      this.activate(row);
    }, LONG_TAP);
  }

  #touchMoves(event) {
    const [x, y] = this.touchedAt ?? [0, 0];
    if (Math.hypot(event.clientX - x, event.clientY - y) > STILL) clearTimeout(this.touching);
  }

  /** A tap opens a row; the box or a long tap selects it. A mouse click selects a row; a double click opens it. */
  #click(event) {
    const row = this.#rowAt(event);
    if (row < 0) return;
    const box = event.target.closest('.fm-check-cell');
    const isTap = event.pointerType === 'touch' && !box;
    if (isTap && this.tapIsLong) return;
    if (event.shiftKey) {
      if (!event.ctrlKey && !box) this.chosen.clear();
      this.#range(row);
    } else if (!isTap) {
      if (box || event.ctrlKey || event.metaKey) this.#toggle(row);
      else this.chosen = new Set([this.view[row]]);
      this.anchor = row;
    }
    this.activate(row);
    if (isTap) this.events.open(this.view[row]);
  }

  /** Opens the menu of a row: at the pointer, or (by keyboard) at the active row. A long tap selects instead. */
  #menu(event) {
    event.preventDefault();
    if (event.pointerType === 'touch') return;
    const pressed = this.#rowAt(event);
    const row = pressed < 0 ? this.active : pressed;
    if (!this.view[row]) return;
    if (!this.chosen.has(this.view[row])) this.chosen.clear();
    this.activate(row);
    const at = { left: event.clientX, right: event.clientX, top: event.clientY, bottom: event.clientY };
    const place = pressed < 0 ? document.getElementById(`fm-row-${row}`).getBoundingClientRect() : at;
    this.events.menu(this.view[row], place);
  }

  #openRow(event) {
    const row = this.#rowAt(event);
    if (row >= 0 && event.pointerType !== 'touch' && !event.target.closest('.fm-check-cell')) this.events.open(this.view[row]);
  }

  #key(event) {
    if (!this.view.length) return;
    if (event.target !== this.host) {
      // An arrow key moves the focus from the column heads to the rows.
      if (!/^Arrow(Down|Up)$/.test(event.key)) return;
      this.host.focus();
    }
    const page = Math.max(1, Math.floor(this.table.viewport.clientHeight / this.#rowHeight) - 1);
    const moves = {
      ArrowDown: this.active + 1,
      ArrowUp: this.active - 1,
      PageDown: this.active + page,
      PageUp: this.active - page,
      Home: 0,
      End: this.view.length - 1,
    };
    if (event.key in moves && !event.altKey) this.#move(moves[event.key], event.shiftKey);
    else if (event.key === ' ' && this.active >= 0) this.#chooseByKey(event.shiftKey);
    else if (event.key === 'Enter' && this.activeEntry) this.events.open(this.activeEntry);
    else if (event.key.toLowerCase() === 'a' && (event.ctrlKey || event.metaKey)) this.#chooseAllByKey();
    else if (event.key === 'Escape') {
      if (!this.events.escape()) this.choose([]);
    } else return;
    event.preventDefault();
  }

  #chooseAllByKey() {
    this.chooseAll(true);
    announce(t('chosen', { n: this.chosen.size }));
  }

  #move(row, extend) {
    const from = this.active;
    if (row < 0 && from === 0) announce(t('startOfList'));
    if (row >= this.view.length && from === this.view.length - 1) announce(t('endOfList'));
    const to = Math.max(0, Math.min(row, this.view.length - 1));
    if (extend) {
      if (this.anchor < 0) this.anchor = Math.max(from, 0);
      this.chosen.clear();
      this.#range(to);
    } else {
      this.anchor = to;
    }
    this.activate(to);
  }

  #chooseByKey(range) {
    if (range) this.#range(this.active);
    else {
      this.#toggle(this.active);
      this.anchor = this.active;
    }
    this.#changed();
  }
}
