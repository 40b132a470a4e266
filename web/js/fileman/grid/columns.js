/*
 * The columns of the list: their heads (buttons that sort), their widths, the content of their cells, and the single
 * column that replaces them on a narrow screen.
 */
import { shownName, visible } from '../common/controlchars.js';
import { el } from '../common/dom.js';
import { icon } from '../common/icons.js';
import { kindOf } from '../answers/kinds.js';
import { nameParts } from './longnames.js';
import { keep, recall } from '../common/memory.js';
import { obstacle } from '../answers/candeliver.js';
import { shortDate } from './showndates.js';
import { t } from '../common/texts.js';
import { VERDICT_TEXTS } from '../view/verdicts.js';

/** Each width holds the longest usual value: "Optical Power Meter", "20. Sept. 2025 20:48". */
const COLUMNS = [
  { id: 'name', width: 260, minWidth: 120 },
  { id: 'verdict', width: 84 },
  { id: 'module', width: 84 },
  { id: 'mode', width: 118 },
  { id: 'test', width: 162 },
  { id: 'port', width: 72 },
  { id: 'datetime', width: 170 },
  { id: 'rsltype', width: 84 },
];
const ALWAYS = ['name', 'datetime'];
const LEAST_WIDTH = 56;
const MOST_GROWTH = 1.7;
const CHECK_WIDTH = 44;
const WIDTH_STEP = 16;
const KIND_ICONS = { report: 'report', picture: 'picture', capture: 'capture', other: 'box' };

/** Returns the title of a column. */
export const columnText = (id) => t(`col${id[0].toUpperCase()}${id.slice(1)}`);

export const isColumn = (id) => COLUMNS.some((column) => column.id === id);

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

/**
 * Returns the widths of the columns with these ids: the stored widths, or else the default widths, scaled to the width
 * of the list. The column of the name gets the rest, or gives what is missing. The scale always allows for the verdicts,
 * which are known later than the list. So when their column appears beside the name, only the name becomes narrower and
 * no other column moves.
 */
function widthsFor(hostWidth, ids) {
  const kept = recall('widths', {});
  const some = COLUMNS.filter(({ id }) => ids.includes(id));
  const room = hostWidth - CHECK_WIDTH - scrollbarWidth();
  const scaled = COLUMNS.filter(({ id }) => ids.includes(id) || id === 'verdict');
  const needed = scaled.reduce((sum, { width }) => sum + width, 0);
  const scale = Math.min(Math.max(room / needed, 1), MOST_GROWTH);
  const grown = ({ width }) => Math.floor(width * scale);
  const widths = Object.fromEntries(some.map((column) => [column.id, kept[column.id] > 0 ? Number(kept[column.id]) : grown(column)]));
  const taken = Object.values(widths).reduce((sum, width) => sum + width, 0);
  widths.name = Math.max(COLUMNS[0].minWidth, widths.name + room - taken);
  return widths;
}

/** Returns true if the report of an entry says PASS or FAIL. */
const isVerdict = ({ verdict }) => verdict === 'pass' || verdict === 'fail';

/** Returns the ids of the columns that are shown: name, date, and all columns with more than one value in the entries. */
export function tellingColumns(entries) {
  const tells = (id) => entries.length < 2 || entries.some((entry) => entry[id] !== entries[0][id]);
  const isJudged = entries.some(isVerdict);
  return COLUMNS.map(({ id }) => id).filter((id) => ALWAYS.includes(id) || (id === 'verdict' ? isJudged : tells(id)));
}

function warning(text) {
  return el('span', { class: 'fm-obstacle', role: 'img', 'aria-label': text, title: text }, icon('warn'));
}

function drawName(entry, words) {
  const name = shownName(entry);
  const why = obstacle(entry, 'view');
  const cell = document.createDocumentFragment();
  cell.append(icon(KIND_ICONS[kindOf(entry)]), el('span', { class: 'fm-name', title: name }, nameParts(name, words)));
  if (why) cell.append(warning(t('cannotDeliver', { why: t(why) })));
  return cell;
}

function drawEntry(entry, words, telling) {
  const more = ['test', 'port', 'module', 'mode', 'rsltype'].filter((id) => telling.includes(id) && entry[id]);
  const cell = document.createDocumentFragment();
  cell.append(
    el('span', { class: 'fm-line' }, drawName(entry, words), drawDate(entry.datetime)),
    el('span', { class: 'fm-more' }, el('span', { text: more.map((id) => visible(entry[id])).join(' · ') }), drawVerdict(entry)),
  );
  return cell;
}

function drawVerdict(entry) {
  const cell = document.createDocumentFragment();
  if (isVerdict(entry))
    cell.append(el('span', { class: `fm-verdict is-${entry.verdict}`, text: t(VERDICT_TEXTS[entry.verdict]) }));
  return cell;
}

function drawDate(datetime) {
  return el('time', { class: 'fm-date', title: visible(datetime), text: visible(shortDate(datetime)) });
}

function drawCell(id, entry, words) {
  if (id === 'name') return drawName(entry, words);
  if (id === 'verdict') return drawVerdict(entry);
  return id === 'datetime' ? drawDate(entry.datetime) : visible(entry[id]);
}

export class Columns {
  /** `events` has sort(field), resize(id, step), which is called by keyboard, and chooseAll(on). */
  constructor(events) {
    this.events = events;
    this.words = []; // the words that are marked in names
    this.telling = null; // ids of the columns that are shown
    this.heads = new Map(COLUMNS.map(({ id }) => [id, this.#head(id)]));
    this.checkAll = el('input', {
      type: 'checkbox',
      'aria-label': t('chooseAll'),
      title: t('chooseAll'),
      on: { change: () => events.chooseAll(this.checkAll.checked) },
    });
    this.#buildChooser();
  }

  /** Returns the columns for a list of this width. */
  list(narrow, hostWidth) {
    return narrow ? [this.#check(true), this.#only(hostWidth)] : [this.#check(false), ...this.#all(hostWidth)];
  }

  /** In a narrow list, which has no column heads, moves the box for all and the sort order into `place`. */
  showTools(place, narrow) {
    place.hidden = !narrow;
    if (narrow) place.replaceChildren(el('label', { class: 'fm-check-all' }, this.checkAll), this.chooser);
  }

  #check(narrow) {
    return {
      id: 'chosen',
      head: narrow ? el('span', { text: t('chooseAll') }) : this.checkAll,
      width: CHECK_WIDTH,
      isFixed: true,
      className: 'fm-check-cell',
      fill: (cell) => cell.append(el('span', { class: 'fm-check', role: 'checkbox', tabindex: '-1' })),
    };
  }

  #only(hostWidth) {
    return {
      id: 'entry',
      head: columnText('name'),
      width: Math.max(200, hostWidth - CHECK_WIDTH - scrollbarWidth()),
      isFixed: true,
      className: 'fm-entry',
      fill: (cell, entry) => cell.append(drawEntry(entry, this.words, this.telling)),
    };
  }

  #all(hostWidth) {
    const widths = widthsFor(hostWidth, this.telling);
    const some = COLUMNS.filter(({ id }) => this.telling.includes(id));
    return some.map(({ id, minWidth = LEAST_WIDTH }) => ({
      id,
      head: this.heads.get(id),
      width: widths[id],
      minWidth,
      className: `fm-col-${id}`,
      fill: (cell, entry) => cell.append(drawCell(id, entry, this.words)),
    }));
  }

  #head(id) {
    const step = { ArrowLeft: -WIDTH_STEP, ArrowRight: WIDTH_STEP };
    const resize = (event) => {
      if (!event.altKey || !step[event.key]) return;
      event.preventDefault();
      this.events.resize(id, step[event.key]);
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

  /** Builds the controls for a narrow list: the field to sort by, and a button that reverses the order. */
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
