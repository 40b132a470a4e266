/*
 * The list itself: SlickGrid draws the rows that are in sight; this file adds what it lacks. The element
 * "rsltgrid" always keeps the keyboard focus (aria-activedescendant names the active row), rows
 * carry their place and choice for assistive software, headers are buttons, and on a narrow screen one
 * column shows an entry in two lines.
 */
import { SlickGrid } from 'slickgrid';
import { Columns, hasOwnWidths, keepWidths } from './columns.js';
import { t } from './texts.js';

const NARROW = 720;
const ROW_HEIGHT = 36;
const NARROW_ROW_HEIGHT = 64;

export class FileGrid {
  /**
   * `events`: sort(field), changed() after another choice or active row, open(entry), escape() which is true when
   * something else than the choice was given up.
   */
  constructor(host, events) {
    this.host = host;
    this.events = events;
    this.view = [];
    this.chosen = new Set();
    this.hits = 0;
    this.active = -1;
    this.anchor = -1;
    this.sort = { field: 'datetime', ascending: false };
    this.columns = new Columns({
      sort: events.sort,
      resize: (id, step) => this.#resize(id, step),
      chooseAll: (on) => this.chooseAll(on),
    });
    this.#create();
  }

  #create() {
    const { host } = this;
    this.narrow = host.clientWidth < NARROW;
    this.grid = new SlickGrid(
      host,
      {
        getLength: () => this.view.length,
        getItem: (row) => this.view[row],
      },
      this.columns.list(this.narrow, this.host.clientWidth),
      {
        rowHeight: this.narrow ? NARROW_ROW_HEIGHT : ROW_HEIGHT,
        enableCellNavigation: false,
        enableColumnReorder: false,
        enableHtmlRendering: false,
        enableMouseWheelScrollHandler: false,
        fullWidthRows: true,
        syncColumnCellResize: true,
        rowTopOffsetRenderType: 'transform',
        showCellSelection: false,
      },
    );
    // One tab stop instead of the grid's dozen; the others would hold the keyboard without showing it.
    host.querySelectorAll('div[tabindex]').forEach((node) => node.removeAttribute('tabindex'));
    host.tabIndex = 0;
    host.setAttribute('aria-label', t('grid'));
    host.setAttribute('aria-multiselectable', 'true');
    this.canvas = this.grid.getCanvasNode();
    this.viewport = this.grid.getViewportNode();
    this.grid.onRendered.subscribe(() => this.#mark());
    this.grid.onColumnsResized.subscribe(() => this.#keepWidths());
    host.addEventListener('keydown', (event) => this.#key(event));
    host.addEventListener('mousedown', (event) => this.#press(event));
    host.addEventListener('click', (event) => this.#click(event));
    host.addEventListener('dblclick', (event) => this.#openRow(event));
    new ResizeObserver(() => this.#fit()).observe(host);
    this.showSort(this.sort);
  }

  // ---- columns

  #resize(id, step) {
    const columns = this.grid.getColumns();
    const column = columns.find((one) => one.id === id);
    column.width = Math.max(column.minWidth, column.width + step);
    this.grid.setColumns(columns);
    this.#keepWidths();
    this.showSort(this.sort);
  }

  #keepWidths() {
    if (!this.narrow) keepWidths(this.grid.getColumns());
  }

  showSort(sort) {
    this.sort = sort;
    this.columns.showSort(sort);
  }

  #fit() {
    const narrow = this.host.clientWidth < NARROW;
    if (narrow || narrow !== this.narrow || !hasOwnWidths()) {
      const { top } = this;
      this.narrow = narrow;
      this.grid.setOptions({ rowHeight: narrow ? NARROW_ROW_HEIGHT : ROW_HEIGHT }, true, true);
      this.grid.setColumns(this.columns.list(this.narrow, this.host.clientWidth));
      this.showSort(this.sort);
      this.#redraw();
      this.top = top;
    } else {
      this.grid.resizeCanvas();
    }
  }

  // ---- drawing

  /** Gives the rows in sight their state; runs after every drawing and every change of the choice. */
  #mark() {
    if (!this.canvas) return;
    this.host.setAttribute('aria-rowcount', this.view.length + 1);
    this.host.querySelector('.slick-header-columns').setAttribute('aria-rowindex', 1);
    let activeId = null;
    for (const node of this.canvas.children) {
      const row = Number(node.dataset.row);
      const entry = this.view[row];
      if (!entry) continue;
      const chosen = this.chosen.has(entry);
      node.id = `fm-row-${row}`;
      node.setAttribute('aria-rowindex', row + 2);
      node.setAttribute('aria-selected', chosen);
      node.classList.toggle('is-chosen', chosen);
      node.classList.toggle('is-active', row === this.active);
      if (row === this.active) activeId = node.id;
    }
    if (activeId) this.host.setAttribute('aria-activedescendant', activeId);
    else this.host.removeAttribute('aria-activedescendant');
  }

  /** Counts how many of the shown entries are chosen. */
  #count() {
    const shown = this.view.length;
    this.hits = 0;
    if (this.chosen.size) for (const entry of this.view) this.hits += this.chosen.has(entry);
    this.columns.checkAll.checked = shown > 0 && this.hits === shown;
    this.columns.checkAll.indeterminate = this.hits > 0 && this.hits < shown;
    this.columns.checkAll.disabled = !shown;
  }

  #redraw() {
    this.grid.invalidateAllRows();
    this.grid.updateRowCount();
    this.grid.render();
    this.#mark();
  }

  /** Shows other entries, in this order; the active one stays active when it is among them. */
  show(view, words = []) {
    const was = this.view[this.active];
    this.view = view;
    this.columns.words = words;
    this.active = was ? view.indexOf(was) : -1;
    this.anchor = this.active;
    this.#count();
    this.#redraw();
  }

  get top() {
    return this.viewport.scrollTop;
  }

  set top(top) {
    this.viewport.scrollTop = top;
    this.grid.render();
  }

  get activeEntry() {
    return this.view[this.active] ?? null;
  }

  // ---- choice

  /** The entries that an action is about: the chosen ones in the order shown, else the active one. */
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
    this.grid.scrollRowIntoView(this.active);
    this.#changed();
  }

  // ---- mouse and keyboard

  #rowAt(event) {
    const node = event.target.closest?.('.slick-row');
    return node && this.canvas.contains(node) ? Number(node.dataset.row) : -1;
  }

  #press(event) {
    if (this.#rowAt(event) < 0) return;
    event.preventDefault(); // neither text selection nor a focused cell
    this.host.focus({ preventScroll: true });
  }

  #click(event) {
    const row = this.#rowAt(event);
    if (row < 0) return;
    const box = event.target.closest('.fm-check-cell') || event.pointerType === 'touch';
    if (event.shiftKey) {
      if (!event.ctrlKey && !box) this.chosen.clear();
      this.#range(row);
    } else {
      if (box || event.ctrlKey || event.metaKey) this.#toggle(row);
      else this.chosen = new Set([this.view[row]]);
      this.anchor = row;
    }
    this.activate(row);
  }

  #openRow(event) {
    const row = this.#rowAt(event);
    if (row >= 0 && !event.target.closest('.fm-check-cell')) this.events.open(this.view[row]);
  }

  #key(event) {
    if (event.target !== this.host || !this.view.length) return;
    const page = Math.max(1, Math.floor(this.viewport.clientHeight / this.grid.getOptions().rowHeight) - 1);
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
    else if (event.key.toLowerCase() === 'a' && (event.ctrlKey || event.metaKey)) this.chooseAll(true);
    else if (event.key === 'Escape') {
      if (!this.events.escape()) this.choose([]);
    } else return;
    event.preventDefault();
  }

  #move(row, extend) {
    const from = this.active;
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
