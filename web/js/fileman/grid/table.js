/*
 * A table whose rows all have the same height. Only the visible rows are in the document. The widths of the columns are
 * in one style property of the host, so that one change applies to all rows.
 */
import { el } from '../common/dom.js';

const BEYOND = 8; // additional rows that are drawn above and below the visible ones

export class Table {
  /**
   * `source` has count(), the number of rows, and entry(row). `events` has drawn() after rows were drawn or all removed,
   * and resized() after the user has changed a width. A column is { id, head, className, width, minWidth, isFixed,
   * fill(cell, entry) }.
   */
  constructor(host, source, events) {
    this.host = host;
    this.source = source;
    this.events = events;
    this.first = 0; // index of the first row in the document
    this.rows = []; // elements of the rows in the document
    // The scroll position and height of the viewport in pixels. They are remembered, because reading them from the document
    // makes the browser compute its layout.
    this.scrolled = 0;
    this.height = null; // not read yet
    this.heads = el('div', { class: 'fm-heads', role: 'row', 'aria-rowindex': 1 });
    this.frame = el('div', { class: 'fm-heads-frame', role: 'rowgroup' }, this.heads);
    this.canvas = el('div', { class: 'fm-canvas' });
    this.viewport = el('div', { class: 'fm-viewport', role: 'rowgroup', tabindex: '-1' }, this.canvas);
    this.viewport.addEventListener('scroll', () => {
      this.frame.scrollLeft = this.viewport.scrollLeft;
      this.scrolled = this.viewport.scrollTop;
      this.draw();
    });
    host.append(this.frame, this.viewport);
  }

  /** Sets the columns and the height of the rows. After this, renew() must draw them. */
  lay(columns, { rowHeight, hasHeads }) {
    this.columns = columns;
    this.rowHeight = rowHeight;
    this.height = null;
    this.frame.hidden = !hasHeads;
    const focused = this.heads.contains(document.activeElement) && document.activeElement;
    this.heads.replaceChildren(...columns.map((column) => this.#head(column)));
    if (focused) focused.focus();
    this.host.style.setProperty('--row', `${rowHeight}px`);
    this.showWidths();
  }

  showWidths() {
    const widths = this.columns.map(({ width }) => width);
    this.host.style.setProperty('--columns', widths.map((width) => `${width}px`).join(' '));
    // Set the width even if no row is drawn. Otherwise the horizontal scroll position is lost.
    this.canvas.style.minWidth = `${widths.reduce((sum, width) => sum + width, 0)}px`;
  }

  #head(column) {
    const handle = !column.isFixed && el('div', { class: 'fm-handle' });
    if (handle) handle.addEventListener('pointerdown', (event) => this.#resize(event, handle, column));
    return el('div', { class: 'fm-head-cell', role: 'columnheader', 'data-id': column.id }, column.head, handle);
  }

  #resize(event, handle, column) {
    event.preventDefault();
    const start = column.width - event.pageX;
    const move = ({ pageX }) => {
      column.width = Math.max(column.minWidth, start + pageX);
      this.showWidths();
    };
    const end = () => {
      handle.removeEventListener('pointermove', move);
      this.events.resized();
    };
    handle.setPointerCapture(event.pointerId);
    handle.addEventListener('pointermove', move);
    handle.addEventListener('lostpointercapture', end, { once: true });
  }

  /** The visible rows, { from, to }; `to` is the index after the last one. */
  get visibleRange() {
    this.height ??= this.viewport.clientHeight;
    const row = (y) => Math.min(y / this.rowHeight, this.source.count());
    return { from: Math.floor(row(this.scrolled)), to: Math.ceil(row(this.scrolled + this.height)) };
  }

  /** Removes all rows and draws the visible ones again. */
  renew() {
    this.rows = [];
    this.canvas.replaceChildren();
    const whole = this.source.count() * this.rowHeight;
    this.canvas.style.height = `${whole}px`;
    this.height ??= this.viewport.clientHeight;
    this.scrolled = Math.min(this.scrolled, Math.max(0, whole - this.height)); // as the browser does
    this.draw();
    if (!whole) this.events.drawn();
  }

  /** Draws the rows that have become visible, and removes those that are far away. */
  draw() {
    const { from, to } = this.visibleRange;
    const first = Math.max(0, from - BEYOND);
    const end = Math.min(this.source.count(), to + BEYOND);
    const oldEnd = this.first + this.rows.length;
    const isApart = end <= this.first || oldEnd <= first;
    const rowsOf = (start, stop) => Array.from({ length: Math.max(0, stop - start) }, (_, i) => this.#row(start + i));
    const above = isApart ? [] : rowsOf(first, this.first);
    const below = rowsOf(isApart ? first : oldEnd, end);
    const isKept = (_, i) => !isApart && this.first + i >= first && this.first + i < end;
    const kept = this.rows.filter(isKept);
    if (!above.length && !below.length && kept.length === this.rows.length) return;
    this.rows.forEach((node, i) => isKept(node, i) || node.remove());
    this.canvas.prepend(...above);
    this.canvas.append(...below);
    this.rows = [...above, ...kept, ...below];
    this.first = first;
    this.events.drawn();
  }

  #row(row) {
    const node = el('div', { class: 'fm-row', role: 'row', 'data-row': row }, this.#cells(row));
    node.style.transform = `translateY(${row * this.rowHeight}px)`;
    return node;
  }

  #cells(row) {
    const entry = this.source.entry(row);
    return this.columns.map(({ className, fill }) => {
      const cell = el('div', { class: `fm-cell ${className}`, role: 'gridcell' });
      fill(cell, entry);
      return cell;
    });
  }

  /** Fills the cells of a row again if it is drawn. The element of the row stays. */
  redraw(row) {
    this.rows[row - this.first]?.replaceChildren(...this.#cells(row));
  }

  /** Scrolls until a row is visible. */
  reveal(row) {
    const top = row * this.rowHeight;
    if (top < this.scrolled) this.top = top;
    else if (top + this.rowHeight > this.scrolled + this.height) this.top = top + this.rowHeight - this.height;
  }

  get top() {
    return this.scrolled;
  }

  set top(top) {
    if (top === this.scrolled) return;
    this.viewport.scrollTop = top;
    this.scrolled = this.viewport.scrollTop;
    this.draw();
  }
}
