/*
 * Updates the parts of the page that depend on the list: counts, actions, tabs, filter chips, the message for an empty
 * list, and the forms. `frame` holds the parts of the page (frame.js).
 */
import { visible } from '../common/controlchars.js';
import { button, el } from '../common/dom.js';
import { icon } from '../common/icons.js';
import { kindOf } from '../answers/kinds.js';
import { TAB_TEXTS, obeysFilter, unfiltered, without } from '../answers/listing.js';
import { obstacle } from '../answers/candeliver.js';
import { dressPage } from '../common/page.js';
import { toText } from '../answers/encoding.js';
import { LIST_KEYS, TEXT_KEYS, isFiltered } from '../answers/queries.js';
import { number, t } from '../common/texts.js';

const MOST_EXAMINED = 200; // with more selected entries, actions are enabled without a check of each name

/** Returns the text for the number of shown entries and the number of all entries. */
export const countText = (shown, all) => (shown === all ? t('shown', { n: all }) : t('shownOf', { n: shown, all }));

/** Shows the number of entries, of selected entries and of lost rows, and updates the actions. */
export function showCounts(frame, grid, { all, lost }) {
  const chosen = grid.chosen.size;
  frame.count.textContent = countText(grid.view.length, all);
  frame.chosen.textContent = !chosen
    ? ''
    : grid.hits === chosen
      ? t('chosen', { n: chosen })
      : t('chosenHidden', { n: chosen, hidden: chosen - grid.hits });
  frame.clearChoice.hidden = !chosen;
  frame.lost.hidden = !lost;
  frame.lost.textContent = t('lost', { n: lost });
  showActions(frame, grid);
}

/** Shows in the toolbar how many entries the actions apply to. */
function sayTargets(frame, grid, count) {
  const what = grid.chosen.size ? t('actsOnChosen', { n: count }) : t('actsOnActive');
  for (const action of [frame.view, frame.pdf, frame.download]) action.title = count ? what : t('actsOnNone');
  for (const action of [frame.pdf, frame.download]) {
    const badge = action.querySelector('.fm-count') ?? el('span', { class: 'fm-count', 'aria-hidden': 'true' });
    badge.textContent = count ? number(count) : '';
    action.append(badge);
  }
}

function showActions(frame, grid) {
  const count = grid.chosen.size || (grid.activeEntry ? 1 : 0);
  const some = count && count <= MOST_EXAMINED ? grid.targets() : null;
  const can = (operation) => (some ? some.some((entry) => !obstacle(entry, operation)) : count > 0);
  sayTargets(frame, grid, count);
  const isPair = some?.length === 2 && some.every((entry) => kindOf(entry) === 'report' && !obstacle(entry, 'view'));
  frame.view.disabled = count !== 1 && !isPair;
  frame.view.querySelector('.fm-label').textContent = t(isPair ? 'compare' : 'view');
  frame.pdf.disabled = !can('pdf');
  frame.download.disabled = !can('download');
}

/** Updates the tabs. `addressOf(listing)` returns the address for a tab. */
export function showTabs(frame, listing, addressOf) {
  for (const [kind, link] of frame.tabs) {
    link.href = addressOf({ ...listing, kind });
    if (kind === listing.kind) link.setAttribute('aria-current', 'page');
    else link.removeAttribute('aria-current');
  }
  for (const one of [frame.filter, frame.advanced]) one.disabled = listing.kind === 'screen';
  dressPage(t(TAB_TEXTS[listing.kind]));
}

function chip(listing, key, value, load) {
  const name = `${t(key)}: ${visible(toText(value))}`;
  return el(
    'li',
    { class: 'fm-chip' },
    el('span', {}, el('b', { text: `${t(key)} ` }), visible(toText(value))),
    button(t('removeChip', { name }), {
      image: 'close',
      bare: true,
      class: 'fm-chip-x',
      press: () => load(without(listing, key, value)),
    }),
  );
}

/** Shows the filter as chips that can be removed. `load(listing)` shows another listing. */
export function showChips(frame, listing, load) {
  const filtered = isFiltered(listing);
  frame.chips.hidden = !filtered;
  if (!filtered) return;
  if (!obeysFilter(listing)) {
    frame.chips.replaceChildren(
      el('span', { class: 'fm-rest', text: t('filterRests') }),
      button(t('useFilter'), { class: 'fm-link', press: () => load({ ...listing, kind: 'rslt' }) }),
    );
    return;
  }
  const ofLists = LIST_KEYS.flatMap((key) => listing.lists[key].map((value) => [key, value]));
  const ofTexts = TEXT_KEYS.filter((key) => listing.texts[key]).map((key) => [key, listing.texts[key]]);
  const chips = [...ofLists, ...ofTexts].map(([key, value]) => chip(listing, key, value, load));
  frame.chips.replaceChildren(
    el('ul', {}, chips),
    button(t('clearFilter'), { class: 'fm-link', press: () => load(unfiltered(listing)) }),
  );
}

/** If the list is empty, says why and offers a button. `all` is the number of entries before the search. */
export function showEmpty(frame, listing, { all, isEmpty, load, clearFind }) {
  frame.empty.hidden = !isEmpty;
  if (!isEmpty) return;
  const fill = (image, title, hint, way) =>
    frame.empty.replaceChildren(icon(image), el('h2', { text: title }), el('p', { text: hint }), ...way);
  const way = (text, press) => [button(text, { class: 'fm-button fm-primary', press })];
  if (all) {
    const title = t('emptyFind', { text: visible(frame.find.value.trim()) });
    fill('search', title, t('emptyFindHint', { n: all }), way(t('clearFind'), clearFind));
  } else if (obeysFilter(listing) && isFiltered(listing)) {
    const clear = () => load(unfiltered(listing));
    fill('filter', t('emptyFilter'), t('emptyFilterHint'), way(t('clearFilter'), clear));
  } else {
    const showAll = () => load({ ...unfiltered(listing), kind: 'all' });
    fill('box', t('emptyStored'), t('emptyStoredHint'), listing.kind === 'all' ? [] : way(t('showAll'), showAll));
  }
}

/** Writes the listing into the form of the page, as the program does. */
export function showForms(frame, listing) {
  const fields = { fmtype: listing.kind };
  for (const key of LIST_KEYS) fields[key] = listing.lists[key].map(toText).join(',');
  for (const key of TEXT_KEYS) fields[key] = toText(listing.texts[key]);
  for (const [name, value] of Object.entries(fields)) setField(frame.filterForm, name, value);
}

export function setField(form, name, value) {
  let field = form.elements.namedItem(name);
  if (!(field instanceof HTMLInputElement)) {
    field = el('input', { type: 'hidden', name });
    form.append(field);
  }
  field.value = value;
}
