/*
 * The list's columns: their heads (buttons that sort, with the keyboard too), their widths, what a cell shows, and
 * the one column that replaces them where there is no room.
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
  { id: 'path', width: 260, least: 140 },
];
const LEAST_WIDTH = 56;
const MOST_FOR_NAME = 260; // of the room that is left over
const CHECK_WIDTH = 44;
const WIDTH_STEP = 16;
const KIND_ICONS = { report: 'report', picture: 'picture', capture: 'capture', other: 'box' };

/** A column's title. */
export const columnText = (id) => t(`col${id[0].toUpperCase()}${id.slice(1)}`);

/** Whether the person has set widths, which then hold in any window. */
export const hasOwnWidths = () => recall('widths', null) !== null;

export function keepWidths(columns) {
  const widths = columns.filter(({ id }) => id !== 'chosen').map(({ id, width }) => [id, width]);
  keep('widths', Object.fromEntries(widths));
}

function scrollbarWidth() {
  const probe = el('div', { class: 'fm-probe' });
  document.body.append(probe);
  const width = probe.offsetWidth - probe.clientWidth;
  probe.remove();
  return width;
}

/** Remembered widths; without any, name and path share the room that the others leave. */
function widthsFor(hostWidth) {
  const kept = recall('widths', null);
  const widths = Object.fromEntries(COLUMNS.map(({ id, width }) => [id, kept?.[id] ?? width]));
  if (kept) return widths;
  const taken = Object.values(widths).reduce((sum, width) => sum + width, CHECK_WIDTH + scrollbarWidth());
  const rest = hostWidth - taken;
  const name = Math.max(0, Math.min(Math.floor(rest / 2), MOST_FOR_NAME));
  widths.name += name;
  widths.path = Math.max(COLUMNS.find(({ id }) => id === 'path').least, widths.path + rest - name);
  return widths;
}

/** The text with the first of the words that are searched for marked. */
function highlight(text, words) {
  const lower = text.toLowerCase();
  const word = words.find((one) => lower.includes(one));
  if (!word || lower.length !== text.length) return [text];
  const at = lower.indexOf(word);
  return [text.slice(0, at), el('mark', { text: text.slice(at, at + word.length) }), text.slice(at + word.length)];
}

function warning(text) {
  return el('span', { class: 'fm-obstacle', role: 'img', 'aria-label': text, title: text }, icon('warn'));
}

function drawName(entry, words) {
  const name = visible(entry.name);
  const why = obstacle(entry, 'view');
  const cell = document.createDocumentFragment();
  cell.append(icon(KIND_ICONS[kindOf(entry)]), el('span', { class: 'fm-name', title: name }, highlight(name, words)));
  if (why) cell.append(warning(t('cannotDeliver', { why: t(why) })));
  return cell;
}

function drawEntry(entry, words) {
  const more = [entry.test, entry.port, entry.module, entry.datetime].filter(Boolean).map(visible).join(' · ');
  const cell = document.createDocumentFragment();
  cell.append(el('span', { class: 'fm-line' }, drawName(entry, words)), el('span', { class: 'fm-more', text: more }));
  return cell;
}

const drawText = (text, tip) => ({ text: visible(text), toolTip: tip ? visible(text) : '' });

export class Columns {
  /** `events`: sort(field), resize(id, step) by keyboard, chooseAll(on). */
  constructor(events) {
    this.events = events;
    this.words = []; // marked in names
    this.heads = new Map(COLUMNS.map(({ id }) => [id, this.#head(id)]));
    this.checkAll = el('input', {
      type: 'checkbox',
      'aria-label': t('chooseAll'),
      title: t('chooseAll'),
      on: { change: () => events.chooseAll(this.checkAll.checked) },
    });
    this.#buildChooser();
  }

  /** The columns for a list of this width. */
  list(narrow, hostWidth) {
    return narrow ? [this.#check(), this.#only(hostWidth)] : [this.#check(), ...this.#all(widthsFor(hostWidth))];
  }

  #check() {
    return {
      id: 'chosen',
      name: this.checkAll,
      width: CHECK_WIDTH,
      minWidth: CHECK_WIDTH,
      maxWidth: CHECK_WIDTH,
      resizable: false,
      cssClass: 'fm-check-cell',
      headerCssClass: 'fm-check-head',
      formatter: () => el('span', { class: 'fm-check', 'aria-hidden': 'true' }),
    };
  }

  #only(hostWidth) {
    return {
      id: 'entry',
      name: this.chooser,
      width: Math.max(200, hostWidth - CHECK_WIDTH - 2),
      resizable: false,
      cssClass: 'fm-entry',
      formatter: (row, cell, value, column, entry) => drawEntry(entry, this.words),
    };
  }

  #all(widths) {
    return COLUMNS.map(({ id, minWidth = LEAST_WIDTH }) => ({
      id,
      field: id,
      name: this.heads.get(id),
      width: widths[id],
      minWidth,
      cssClass: `fm-col-${id}`,
      formatter: (row, cell, value, column, entry) =>
        id === 'name' ? drawName(entry, this.words) : drawText(value, id === 'path'),
    }));
  }

  #head(id) {
    const step = { ArrowLeft: -WIDTH_STEP, ArrowRight: WIDTH_STEP };
    const resize = (event) => {
      if (!event.altKey || !step[event.key]) return;
      event.preventDefault();
      this.events.resize(id, step[event.key]);
      this.heads.get(id).focus();
    };
    return el(
      'button',
      {
        type: 'button',
        class: 'fm-head',
        title: t('sortHint'),
        on: { click: () => this.events.sort(id), keydown: resize },
      },
      el('span', { text: columnText(id) }),
      el('span', { class: 'fm-arrow', 'aria-hidden': 'true' }),
    );
  }

  /** Stands in the one column's head: what to sort by, and a button that turns the order round. */
  #buildChooser() {
    this.choose = el(
      'select',
      { 'aria-label': t('sortLabel'), on: { change: () => this.events.sort(this.choose.value) } },
      COLUMNS.map(({ id }) => el('option', { value: id, text: columnText(id) })),
    );
    const turn = () => this.events.sort(this.choose.value);
    this.turn = el('button', { type: 'button', class: 'fm-turn', on: { click: turn } });
    const label = el('span', { 'aria-hidden': 'true', text: t('sortLabel') });
    this.chooser = el('span', { class: 'fm-sort-choice' }, label, this.choose, this.turn);
  }

  showSort({ field, ascending }) {
    const order = ascending ? 'ascending' : 'descending';
    this.choose.value = field;
    this.turn.textContent = ascending ? '↑' : '↓';
    this.turn.setAttribute('aria-label', t(order));
    for (const [id, head] of this.heads) {
      head.dataset.order = id === field ? order : '';
      const cell = head.closest('[role=columnheader]');
      if (id === field) cell?.setAttribute('aria-sort', order);
      else cell?.removeAttribute('aria-sort');
    }
  }
}
