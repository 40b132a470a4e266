/* The details in the view of an entry: the values of its row, and the advanced information from its archive. */
import { visible } from '../common/controlchars.js';
import { button, el } from '../common/dom.js';
import { keep, recall } from '../common/memory.js';
import { t } from '../common/texts.js';

const OF_ROW = [
  ['colDatetime', 'datetime'],
  ['colTest', 'test'],
  ['colPort', 'port'],
  ['colModule', 'module'],
  ['colMode', 'mode'],
  ['colRsltype', 'rsltype'],
  ['colPath', 'path'],
];
const ADVANCED = ['jobid', 'account', 'locator', 'type'];
const LOW = 560; // in a lower window the details are closed at first

const fact = (title, value) =>
  el('div', {}, el('dt', { text: title }), el('dd', { text: visible(value), title: visible(value) }));

export class Facts {
  constructor() {
    this.brief = el('span', { class: 'fm-facts-brief' });
    this.list = el('dl');
    this.state = el('p', { class: 'fm-facts-state', hidden: true });
    const open = recall('details', innerHeight >= LOW);
    // The first click of a double click on a picture opens the view, perhaps with the details below the pointer.
    const click = (event) => event.detail > 1 && event.preventDefault();
    this.node = el(
      'details',
      { class: 'fm-facts', open },
      el('summary', { on: { click } }, el('span', { text: t('details') }), this.brief),
      this.list,
      this.state,
    );
    this.node.addEventListener('toggle', () => keep('details', this.node.open));
  }

  show(entry) {
    const facts = OF_ROW.filter(([, key]) => entry[key]);
    this.list.replaceChildren(...facts.map(([title, key]) => fact(t(title), entry[key])));
    this.brief.textContent = '';
    this.say('');
  }

  /** Adds the advanced information. `found` is null if there is none. */
  showAdvanced(found) {
    const known = ADVANCED.filter((key) => found?.[key]);
    this.list.prepend(...known.map((key) => fact(t(key), found[key])));
    this.brief.textContent = known.map((key) => visible(found[key])).join(' · ');
  }

  /** Shows the state of reading the archive, with a button that calls `retry`. An empty text hides it. */
  say(text, retry = null) {
    if (this.state.contains(document.activeElement)) this.node.querySelector('summary').focus();
    this.state.hidden = !text;
    this.state.replaceChildren(text, ...(retry ? [button(t('retry'), { class: 'fm-link', press: retry })] : []));
  }
}
