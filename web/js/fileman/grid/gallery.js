/*
 * The list as pictures. Only visible tiles are in the document. css/fileman.css sets the measures of a tile. The
 * grid keeps the selection and the active row for both, because they show the same rows and the user can switch between
 * them.
 */
import { shownName, visible } from '../common/controlchars.js';
import { el } from '../common/dom.js';
import { icon } from '../common/icons.js';
import { shortDate } from './showndates.js';
import { t } from '../common/texts.js';
import { Thumbnails } from './thumbnails.js';

export class Gallery {
  /** `events` has open(entry), escape() as for the grid, and isViewing(). */
  constructor(host, grid, events) {
    this.host = host;
    this.grid = grid;
    this.events = events;
    this.view = [];
    this.tiles = new Map(); // by row
    this.space = el('div', { class: 'fm-gallery-space', role: 'presentation' });
    this.thumbnails = new Thumbnails(() => this.#fillTiles());
    host.append(this.space);
    host.addEventListener('scroll', () => this.#draw());
    host.addEventListener('click', (event) => this.#click(event));
    host.addEventListener('keydown', (event) => this.#key(event));
    new ResizeObserver(() => this.#lay()).observe(host);
  }

  get isShown() {
    return !this.host.hidden;
  }

  /** Shows the rows of `view` as pictures. If `view` is null, hides the gallery. */
  show(view) {
    this.host.hidden = !view;
    this.view = view ?? [];
    this.thumbnails.retry();
    this.#lay();
  }

  #lay() {
    for (const tile of this.tiles.values()) tile.remove();
    this.tiles.clear();
    if (!this.isShown) return;
    const style = getComputedStyle(this.host);
    const number = (name) => parseFloat(style.getPropertyValue(name));
    this.gap = number('--tile-gap');
    const width = this.host.clientWidth - this.gap;
    this.columns = Math.max(1, Math.floor(width / (number('--tile-least-width') + this.gap)));
    this.width = Math.floor(width / this.columns) - this.gap;
    this.height = Math.round(this.width * number('--tile-picture-ratio')) + number('--tile-caption');
    const lines = Math.ceil(this.view.length / this.columns);
    this.space.style.height = `${lines * (this.height + this.gap) + this.gap}px`;
    this.#draw();
  }

  #draw() {
    if (!this.isShown || this.width <= 0) return;
    const { scrollTop, clientHeight } = this.host;
    const line = this.height + this.gap;
    const first = Math.floor(scrollTop / line) * this.columns;
    const end = Math.min(this.view.length, Math.ceil((scrollTop + clientHeight) / line) * this.columns);
    for (const [row, tile] of this.tiles) {
      if (row >= first && row < end) continue;
      tile.remove();
      this.tiles.delete(row);
    }
    for (let row = first; row < end; row++) if (!this.tiles.has(row)) this.#add(row);
    this.thumbnails.request(this.view.slice(first, end));
    this.#fillTiles();
    this.mark();
  }

  #add(row) {
    const entry = this.view[row];
    const name = shownName(entry);
    const tile = el(
      'div',
      { class: 'fm-tile', role: 'option', id: `fm-tile-${row}`, 'aria-posinset': row + 1, 'aria-setsize': this.view.length },
      el('div', { class: 'fm-thumb' }),
      el('span', { class: 'fm-check', 'aria-hidden': 'true' }),
      el('span', { class: 'fm-tile-name', text: name, title: name }),
      el('span', { class: 'fm-tile-date', title: entry.datetime, text: visible(shortDate(entry.datetime)) }),
    );
    tile.dataset.row = row;
    const x = this.gap + (row % this.columns) * (this.width + this.gap);
    const y = this.gap + Math.floor(row / this.columns) * (this.height + this.gap);
    Object.assign(tile.style, { left: `${x}px`, top: `${y}px`, width: `${this.width}px`, height: `${this.height}px` });
    this.tiles.set(row, tile);
    this.space.append(tile);
  }

  /** Shows the pictures that have been fetched. */
  #fillTiles() {
    for (const [row, tile] of this.tiles) {
      const address = this.thumbnails.addressOf(this.view[row]);
      const place = tile.querySelector('.fm-thumb');
      if (address === undefined || place.dataset.address === address) continue;
      place.dataset.address = address;
      place.replaceChildren(address ? el('img', { src: address, alt: '', decoding: 'async' }) : icon('picture'));
    }
  }

  /** Marks the selected tiles and the active one. */
  mark() {
    if (!this.isShown) return;
    for (const [row, tile] of this.tiles) {
      const chosen = this.grid.chosen.has(this.view[row]);
      tile.setAttribute('aria-selected', chosen);
      tile.classList.toggle('is-chosen', chosen);
      tile.classList.toggle('is-active', row === this.grid.active);
    }
    const active = this.tiles.get(this.grid.active);
    if (active) this.host.setAttribute('aria-activedescendant', active.id);
    else this.host.removeAttribute('aria-activedescendant');
  }

  /** Scrolls until the active tile is visible. */
  reveal() {
    if (!this.isShown || this.grid.active < 0) return;
    const top = Math.floor(this.grid.active / this.columns) * (this.height + this.gap);
    const { scrollTop, clientHeight } = this.host;
    if (top < scrollTop) this.host.scrollTop = top;
    else if (top + this.height + 2 * this.gap > scrollTop + clientHeight)
      this.host.scrollTop = top + this.height + 2 * this.gap - clientHeight;
    this.#draw();
  }

  #toggle(row) {
    const chosen = new Set(this.grid.chosen);
    if (!chosen.delete(this.view[row])) chosen.add(this.view[row]);
    this.grid.choose([...chosen]);
  }

  #click(event) {
    const tile = event.target.closest('.fm-tile');
    if (!tile) return;
    const row = Number(tile.dataset.row);
    this.grid.activate(row);
    if (event.target.closest('.fm-check') || event.ctrlKey || event.metaKey) this.#toggle(row);
    else this.events.open(this.view[row]);
  }

  #key(event) {
    if (event.altKey || !this.view.length) return;
    const { active } = this.grid;
    const page = this.columns * Math.max(1, Math.floor(this.host.clientHeight / (this.height + this.gap)));
    const sideways = this.events.isViewing() ? {} : { ArrowLeft: active - 1, ArrowRight: active + 1 };
    const moves = {
      ...sideways,
      ArrowUp: active - this.columns,
      ArrowDown: active < 0 ? 0 : active + this.columns,
      PageUp: active - page,
      PageDown: active + page,
      Home: 0,
      End: this.view.length - 1,
    };
    if (event.key in moves) this.grid.activate(moves[event.key]);
    else if (event.key === ' ' && active >= 0) this.#toggle(active);
    else if (event.key === 'Enter' && active >= 0) this.events.open(this.view[active]);
    else if (event.key.toLowerCase() === 'a' && (event.ctrlKey || event.metaKey)) this.grid.chooseAll(true);
    else if (event.key === 'Escape') {
      if (!this.events.escape()) this.grid.choose([]);
    } else return;
    event.preventDefault();
    this.reveal();
  }
}
