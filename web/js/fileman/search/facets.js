/*
 * The Refine panel beside the list shows the values of each column and their counts. A click on a value changes the
 * text of the search, so that panel, search and address always agree. In a narrow window the panel covers the list
 * until it is closed.
 */
import { visible } from '../common/controlchars.js';
import { countValues } from './counts.js';
import { button, el } from '../common/dom.js';
import { KeptFilters } from './keptfilters.js';
import { keep, recall } from '../common/memory.js';
import { naturalKey } from '../common/naturalorder.js';
import { COMPACT, ROOMY } from '../common/windowwidths.js';
import { KIND_TEXTS } from '../answers/kinds.js';
import { dateAt } from './searchdates.js';
import { allTexts, t } from '../common/texts.js';
import { VERDICT_TEXTS } from '../view/verdicts.js';

const FEW_VALUES = 7; // per column, until the user opens the others
const DATES = ['today', 'yesterday', 'thisWeek', 'lastWeek', 'thisMonth']; // keys of their words in the texts
const TITLES = { date: 'colDatetime', module: 'module', mode: 'mode', test: 'test', port: 'port', kind: 'kindOfFile', verdict: 'colVerdict' };

const NAMED = { kind: KIND_TEXTS, verdict: VERDICT_TEXTS };
const textOf = (key, value) => (NAMED[key]?.[value] ? t(NAMED[key][value]) : visible(value) || t('noValue'));

/** Returns the offered days, weeks and months: the text that the user would type, and its range. */
function offeredDates() {
  return DATES.map((key) => {
    const [text] = allTexts('findWords')[0][key].split('|');
    return { text, ...dateAt(text, 0) };
  });
}

export class Facets {
  /**
   * `host` holds the panel beside the list, and `opener` is the button that opens it. `events` has find(text), which
   * sets the text of the search, about(), which opens the About dialog, `switches`, an array of [text, isOn,
   * change(on)] for check boxes, and the functions that KeptFilters needs.
   */
  constructor(host, opener, events) {
    this.host = host;
    this.opener = opener;
    this.events = events;
    this.groups = el('div', { class: 'fm-facet-groups' });
    this.expanded = new Set(); // columns that show all their values
    this.turn = 0; // number of the latest count; older ones stop
    this.over = el('dialog', { class: 'fm-facets fm-facets-over', 'aria-label': t('refine') });
    document.body.append(this.over);
    this.panel = el(
      'div',
      {},
      el(
        'div',
        { class: 'fm-facet-head' },
        el('h2', { text: t('refine') }),
        button(t('close'), { image: 'close', bare: true, class: 'fm-quiet', press: () => this.#close() }),
      ),
      this.groups,
      new KeptFilters(events).node,
      ...events.switches.map(this.#switch),
      el('p', { class: 'fm-facet-hint', text: t('findSyntax') }),
      button(t('about'), { class: 'fm-link', 'aria-haspopup': 'dialog', press: events.about }),
    );
    this.groups.addEventListener('keydown', (event) => this.#move(event));
    opener.addEventListener('click', () => (this.#isOpen ? this.#close() : this.#open()));
    this.over.addEventListener('click', (event) => {
      if (event.target === this.over) this.over.close(); // a click beside the panel
    });
    this.over.addEventListener('close', () => this.#showOpener());
    COMPACT.addEventListener('change', () => this.#fold());
    this.#fold();
  }

  #switch([text, isOn, change]) {
    const box = el('input', { type: 'checkbox', on: { change: () => change(box.checked) } });
    box.checked = isOn;
    return el('label', { class: 'fm-facet-switch' }, box, el('span', { text }));
  }

  get #isOpen() {
    return !this.host.hidden || this.over.open;
  }

  /** Moves the panel beside the list or into the dialog, as the window is wide or narrow. */
  #fold() {
    this.over.close();
    (COMPACT.matches ? this.over : this.host).append(this.panel);
    this.host.hidden = COMPACT.matches || !recall('refine', ROOMY.matches);
    this.#showOpener();
    this.#count();
  }

  #open() {
    if (COMPACT.matches) {
      this.over.showModal();
    } else {
      this.host.hidden = false;
      keep('refine', true);
    }
    this.#showOpener();
    this.#count();
  }

  #close() {
    if (!COMPACT.matches) keep('refine', false);
    this.host.hidden = true;
    this.over.close();
    this.opener.focus();
  }

  #showOpener() {
    this.opener.setAttribute('aria-expanded', this.#isOpen);
  }

  /** Shows the values of these entries. The counts include only entries that the query finds. */
  show(entries, query) {
    this.entries = entries;
    this.query = query;
    this.#count();
  }

  async #count() {
    this.turn += 1;
    const { turn } = this;
    if (!this.#isOpen || !this.entries) return;
    const counts = await countValues(this.entries, this.query, offeredDates(), () => turn === this.turn);
    if (counts) this.#draw(counts);
  }

  #draw(counts) {
    this.counts = counts;
    const { activeElement } = document;
    const focused = activeElement?.dataset?.facet;
    const top = focused && activeElement.getBoundingClientRect().top;
    this.groups.replaceChildren(
      ...Object.keys(TITLES)
        .map((key) => this.#group(key, counts.get(key)))
        .filter(Boolean),
    );
    const buttons = this.#buttons();
    const was = focused && buttons.find((one) => one.dataset.facet === focused);
    this.#lead(was || buttons[0]);
    if (!was) return;
    // Other groups may have fewer values now. The focused value stays where the user has pressed it.
    was.focus({ preventScroll: true });
    this.panel.parentNode.scrollTop += was.getBoundingClientRect().top - top;
  }

  #buttons() {
    return [...this.groups.querySelectorAll('button')];
  }

  /** Makes one button the tab stop of the panel. The arrow keys move from there. */
  #lead(to) {
    for (const one of this.#buttons()) one.tabIndex = one === to ? 0 : -1;
  }

  #move(event) {
    const buttons = this.#buttons();
    const by = { ArrowDown: 1, ArrowRight: 1, ArrowUp: -1, ArrowLeft: -1 }[event.key];
    const to = buttons[buttons.indexOf(event.target) + by];
    if (!to) return;
    event.preventDefault();
    this.#lead(to);
    to.focus();
  }

  /** Returns the element with the values of a column, or null if there is nothing to choose. */
  #group(key, counts) {
    const searched = this.query.valuesOf(key);
    const values = [...counts.keys()];
    for (const value of searched) if (!values.some((one) => one.toLowerCase() === value.toLowerCase())) values.push(value);
    if (values.length < 2 && !searched.length && key !== 'date') return null;
    if (!values.length) return null;
    const all = this.expanded.has(key);
    const shown = all ? values : this.#mostFrequent(values, counts, key);
    if (key !== 'date') shown.sort((a, b) => (naturalKey(textOf(key, a)) < naturalKey(textOf(key, b)) ? -1 : 1));
    const more = values.length - shown.length;
    const title = t(TITLES[key]);
    return el(
      'section',
      { class: 'fm-facet', 'aria-label': title },
      el('h3', { text: title }),
      el(
        'ul',
        {},
        shown.map((value) => el('li', {}, this.#value(key, value, counts.get(value)))),
      ),
      more > 0 && button(t('moreValues', { n: more }), { class: 'fm-link', 'data-facet': `more ${key}`, press: () => this.#expand(key) }),
    );
  }

  #mostFrequent(values, counts, key) {
    const weight = (value) => (this.query.asksFor(key, value) ? Infinity : (counts.get(value) ?? 0));
    return key === 'date' ? values : [...values].sort((a, b) => weight(b) - weight(a)).slice(0, FEW_VALUES);
  }

  #expand(key) {
    this.expanded.add(key);
    this.#draw(this.counts);
    const first = this.#buttons().find((one) => one.dataset.facet.startsWith(`${key}:`));
    this.#lead(first);
    first.focus();
  }

  #value(key, value, count) {
    const node = button(textOf(key, value), {
      class: 'fm-facet-value',
      'aria-pressed': String(this.query.asksFor(key, value)),
      'data-facet': `${key}:${value}`,
      press: () => this.events.find(this.query.toggled(key, value)),
    });
    // A range that the user has typed has no count.
    const text = key === 'date' && count === undefined ? '' : t('count', { n: count ?? 0 });
    node.append(el('span', { class: 'fm-facet-count', text }));
    return node;
  }
}
