/*
 * The list itself: SlickGrid draws the rows that are in sight; this file adds what it lacks. The element
 * "rsltgrid" keeps the keyboard focus whatever is drawn (aria-activedescendant names the active row), rows
 * carry their place and choice for assistive software, headers are buttons, and on a narrow screen one
 * column shows an entry in two lines.
 */
import { el, icon, visible } from './dom.js';
import { kindOf, obstacle } from './kinds.js';
import { keep, recall } from './memory.js';
import { t } from './texts.js';

const COLUMNS = [
  { id: 'name', width: 240, minWidth: 140 },
  { id: 'module', width: 90 },
  { id: 'mode', width: 124 },
  { id: 'test', width: 140 },
  { id: 'port', width: 104 },
  { id: 'datetime', width: 176 },
  { id: 'rsltype', width: 92 },
  { id: 'path', width: 260 },
];
const CHECK_WIDTH = 44;
const NARROW = 720;
const ROW_HEIGHT = 36;
const NARROW_ROW_HEIGHT = 64;
const WIDTH_STEP = 16;

const columnText = (id) => t(`col${id[0].toUpperCase()}${id.slice(1)}`);

function scrollbarWidth() {
  const probe = el('div', { class: 'fm-probe' });
  document.body.append(probe);
  const width = probe.offsetWidth - probe.clientWidth;
  probe.remove();
  return width;
}

export class FileGrid {
  /** `events`: sort(field), changed() after another choice or active row, open(entry). */
  constructor(host, events) {
    this.host = host;
    this.events = events;
    this.view = [];
    this.words = [];
    this.chosen = new Set();
    this.hits = 0;
    this.active = -1;
    this.anchor = -1;
    this.sort = { field: 'datetime', ascending: false };
    this.heads = new Map(COLUMNS.map(({ id }) => [id, this.#head(id)]));
    this.checkAll = el('input', {
      type: 'checkbox', 'aria-label': t('chooseAll'), title: t('chooseAll'),
      on: { change: () => this.chooseAll(this.checkAll.checked) },
    });
    this.#create();
  }

  #create() {
    const { host } = this;
    this.narrow = host.clientWidth < NARROW;
    this.grid = new window.Slick.Grid(host, {
      getLength: () => this.view.length,
      getItem: (row) => this.view[row],
    }, this.#columns(), {
      rowHeight: this.narrow ? NARROW_ROW_HEIGHT : ROW_HEIGHT,
      enableCellNavigation: false,
      enableColumnReorder: false,
      enableHtmlRendering: false,
      enableMouseWheelScrollHandler: false,
      fullWidthRows: true,
      syncColumnCellResize: true,
      rowTopOffsetRenderType: 'transform',
      showCellSelection: false,
    });
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

  #columns() {
    const check = {
      id: 'chosen', name: this.checkAll, width: CHECK_WIDTH, minWidth: CHECK_WIDTH, maxWidth: CHECK_WIDTH, resizable: false,
      cssClass: 'fm-check-cell', headerCssClass: 'fm-check-head', formatter: () => el('span', { class: 'fm-check', 'aria-hidden': 'true' }),
    };
    if (this.narrow) {
      return [check, {
        id: 'entry', name: this.#sortChooser(), width: Math.max(200, this.host.clientWidth - CHECK_WIDTH - 2), resizable: false,
        cssClass: 'fm-entry', formatter: (row, cell, value, column, entry) => this.#drawEntry(entry),
      }];
    }
    const widths = this.#widths();
    return [check, ...COLUMNS.map(({ id, minWidth = 56 }) => ({
      id, field: id, name: this.heads.get(id), width: widths[id], minWidth, cssClass: `fm-col-${id}`,
      formatter: id === 'name' ? (row, cell, value, column, entry) => this.#drawName(entry)
        : (row, cell, value) => ({ text: visible(value), toolTip: id === 'path' ? visible(value) : '' }),
    }))];
  }

  /** Remembered widths; without any, name and path share the room that the others leave. */
  #widths() {
    const kept = recall('widths', null);
    const widths = Object.fromEntries(COLUMNS.map(({ id, width }) => [id, kept?.[id] ?? width]));
    if (kept) return widths;
    const room = this.host.clientWidth - CHECK_WIDTH - scrollbarWidth();
    const rest = room - Object.values(widths).reduce((sum, width) => sum + width, 0);
    const name = Math.max(0, Math.min(Math.floor(rest / 2), 260));
    widths.name += name;
    widths.path = Math.max(140, widths.path + rest - name);
    return widths;
  }

  #keepWidths() {
    if (this.narrow) return;
    const widths = this.grid.getColumns().filter(({ id }) => id !== 'chosen').map(({ id, width }) => [id, width]);
    keep('widths', Object.fromEntries(widths));
  }

  #head(id) {
    return el('button', {
      type: 'button', class: 'fm-head', title: t('sortHint'),
      on: {
        click: () => this.events.sort(id),
        keydown: (event) => {
          const step = { ArrowLeft: -WIDTH_STEP, ArrowRight: WIDTH_STEP }[event.key];
          if (!event.altKey || !step) return;
          event.preventDefault();
          this.#resize(id, step);
        },
      },
    }, el('span', { text: columnText(id) }), el('span', { class: 'fm-arrow', 'aria-hidden': 'true' }));
  }

  #resize(id, step) {
    const columns = this.grid.getColumns();
    const column = columns.find((one) => one.id === id);
    column.width = Math.max(column.minWidth, column.width + step);
    this.grid.setColumns(columns);
    this.#keepWidths();
    this.showSort(this.sort);
    this.heads.get(id).focus();
  }

  #sortChooser() {
    const choose = el('select', { 'aria-label': t('sortLabel'), on: { change: () => this.events.sort(choose.value) } },
      COLUMNS.map(({ id }) => el('option', { value: id, text: columnText(id) })));
    const turn = el('button', { type: 'button', class: 'fm-turn', on: { click: () => this.events.sort(this.sort.field) } });
    this.sortChoice = { choose, turn };
    this.#showSortChoice();
    return el('span', { class: 'fm-sort-choice' }, el('span', { 'aria-hidden': 'true', text: t('sortLabel') }), choose, turn);
  }

  #showSortChoice() {
    const { choose, turn } = this.sortChoice;
    choose.value = this.sort.field;
    turn.textContent = this.sort.ascending ? '↑' : '↓';
    turn.setAttribute('aria-label', t(this.sort.ascending ? 'ascending' : 'descending'));
  }

  showSort(sort) {
    this.sort = sort;
    if (this.sortChoice) this.#showSortChoice();
    for (const [id, head] of this.heads) {
      const order = id !== sort.field ? null : sort.ascending ? 'ascending' : 'descending';
      head.dataset.order = order ?? '';
      const cell = head.closest('[role=columnheader]');
      if (order) cell?.setAttribute('aria-sort', order); else cell?.removeAttribute('aria-sort');
    }
  }

  #fit() {
    const narrow = this.host.clientWidth < NARROW;
    if (narrow || narrow !== this.narrow || !recall('widths', null)) {
      const { top } = this;
      this.narrow = narrow;
      this.grid.setOptions({ rowHeight: narrow ? NARROW_ROW_HEIGHT : ROW_HEIGHT }, true, true);
      this.grid.setColumns(this.#columns());
      this.showSort(this.sort);
      this.#redraw();
      this.top = top;
    } else {
      this.grid.resizeCanvas();
    }
  }

  // ---- drawing

  #drawName(entry) {
    const kind = kindOf(entry);
    const why = obstacle(entry, 'view');
    const cell = document.createDocumentFragment();
    cell.append(icon({ report: 'report', picture: 'picture', capture: 'capture' }[kind] ?? 'box'));
    cell.append(el('span', { class: 'fm-name', title: visible(entry.name) }, this.#highlight(visible(entry.name))));
    if (why) cell.append(el('span', { class: 'fm-obstacle', role: 'img', 'aria-label': t('cannotDeliver', { why: t(why) }), title: t('cannotDeliver', { why: t(why) }) }, icon('warn')));
    return cell;
  }

  #drawEntry(entry) {
    const cell = document.createDocumentFragment();
    cell.append(
      el('span', { class: 'fm-line' }, this.#drawName(entry)),
      el('span', { class: 'fm-more', text: [entry.test, entry.port, entry.module, entry.datetime].filter(Boolean).map(visible).join(' · ') }),
    );
    return cell;
  }

  /** The text with the words that are searched for marked. */
  #highlight(text) {
    const lower = text.toLowerCase();
    const word = this.words.find((one) => lower.includes(one));
    if (!word || lower.length !== text.length) return [text];
    const at = lower.indexOf(word);
    return [text.slice(0, at), el('mark', { text: text.slice(at, at + word.length) }), text.slice(at + word.length)];
  }

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
    this.checkAll.checked = shown > 0 && this.hits === shown;
    this.checkAll.indeterminate = this.hits > 0 && this.hits < shown;
    this.checkAll.disabled = !shown;
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
    this.words = words;
    this.active = was ? view.indexOf(was) : -1;
    this.anchor = this.active;
    this.#count();
    this.#redraw();
  }

  get top() { return this.viewport.scrollTop; }

  set top(top) { this.viewport.scrollTop = top; this.grid.render(); }

  get activeEntry() { return this.view[this.active] ?? null; }

  // ---- choice

  choose(entries) {
    this.chosen = new Set(entries);
    this.#changed();
  }

  chooseAll(on) {
    for (const entry of this.view) { if (on) this.chosen.add(entry); else this.chosen.delete(entry); }
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
      ArrowDown: this.active + 1, ArrowUp: this.active - 1,
      PageDown: this.active + page, PageUp: this.active - page,
      Home: 0, End: this.view.length - 1,
    };
    if (event.key in moves && !event.altKey) this.#move(moves[event.key], event.shiftKey);
    else if (event.key === ' ' && this.active >= 0) this.#chooseByKey(event.shiftKey);
    else if (event.key === 'Enter' && this.activeEntry) this.events.open(this.activeEntry);
    else if (event.key.toLowerCase() === 'a' && (event.ctrlKey || event.metaKey)) this.chooseAll(true);
    else if (event.key === 'Escape' && this.chosen.size) this.choose([]);
    else return;
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
    else { this.#toggle(this.active); this.anchor = this.active; }
    this.#changed();
  }
}
