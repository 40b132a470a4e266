/*
 * Named filters that the user keeps in this browser. Each one holds the kind of the list, the filter that the
 * instrument applies, and the text of the search.
 */
import { announce } from '../common/announce.js';
import { button, el } from '../common/dom.js';
import { keep, recall } from '../common/memory.js';
import { naturalKey } from '../common/naturalorder.js';
import { t } from '../common/texts.js';

const MOST_LETTERS = 60;

export class KeptFilters {
  /**
   * `events` has current(), which returns the shown list as { query, find }, and apply(kept), which shows another one.
   */
  constructor(events) {
    this.events = events;
    this.list = el('ul', { class: 'fm-kept' });
    this.name = el('input', {
      type: 'text',
      maxlength: MOST_LETTERS,
      placeholder: t('colName'),
      'aria-label': t('keepHint'),
      autocomplete: 'off',
    });
    const form = el(
      'form',
      {
        class: 'fm-keep',
        on: {
          submit: (event) => {
            event.preventDefault();
            this.#add(this.name.value.trim());
          },
        },
      },
      this.name,
      el('button', { type: 'submit', class: 'fm-button', text: t('keep') }),
    );
    this.node = el('section', { class: 'fm-facet', 'aria-label': t('keptFilters') }, el('h3', { text: t('keptFilters') }));
    this.node.append(this.list, form);
    this.#draw();
  }

  #all() {
    return recall('filters', [], { like: [{ name: '', query: '', find: '' }] });
  }

  #write(filters) {
    keep('filters', filters);
    this.#draw();
  }

  #add(name) {
    if (!name) {
      this.name.focus();
      return;
    }
    const others = this.#all().filter((one) => one.name !== name);
    this.#write([...others, { name, ...this.events.current() }]);
    this.name.value = '';
    announce(t('keptAs', { name }));
  }

  #remove(name) {
    this.#write(this.#all().filter((one) => one.name !== name));
    (this.list.querySelector('button') ?? this.name).focus();
  }

  #draw() {
    const inOrder = this.#all().sort((a, b) => (naturalKey(a.name) < naturalKey(b.name) ? -1 : 1));
    this.list.replaceChildren(
      ...inOrder.map((kept) =>
        el(
          'li',
          {},
          button(kept.name, { class: 'fm-facet-value', title: kept.find, press: () => this.events.apply(kept) }),
          button(t('removeKept', { name: kept.name }), {
            image: 'close',
            bare: true,
            class: 'fm-chip-x',
            press: () => this.#remove(kept.name),
          }),
        ),
      ),
    );
  }
}
