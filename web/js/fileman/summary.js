/* What changes with the list: counts, which actions make sense, tabs, filter chips, the word for an empty list, forms. */
import { button, el, icon, visible } from './dom.js';
import { obstacle } from './kinds.js';
import { dressPage } from './page.js';
import { TAB_TEXTS, addressOf, countText, obeysFilter, state, targets, ui, unfiltered, without } from './state.js';
import { t } from './texts.js';
import { LIST_KEYS, TEXT_KEYS, isFiltered, toText } from './wire.js';

const MOST_EXAMINED = 200; // entries whose names are looked at before an action is offered

export function showCounts() {
  const chosen = ui.grid.chosen.size;
  ui.count.textContent = countText();
  ui.chosen.textContent = !chosen
    ? ''
    : ui.grid.hits === chosen
      ? t('chosen', { n: chosen })
      : t('chosenHidden', { n: chosen, hidden: chosen - ui.grid.hits });
  ui.clearChoice.hidden = !chosen;
  ui.lost.hidden = !state.lost;
  ui.lost.textContent = t('lost', { n: state.lost });
  showActions();
}

function showActions() {
  const count = ui.grid.chosen.size || (ui.grid.activeEntry ? 1 : 0);
  const some = count && count <= MOST_EXAMINED ? targets() : null;
  const can = (operation) => (some ? some.some((entry) => !obstacle(entry, operation)) : count > 0);
  ui.view.disabled = count !== 1;
  ui.pdf.disabled = !can('pdf');
  ui.download.disabled = !can('download');
  for (const one of [ui.filter, ui.advanced]) one.disabled = state.listing.kind === 'screen';
}

export function showTabs() {
  for (const [kind, link] of ui.tabs) {
    link.href = addressOf({ ...state.listing, kind });
    if (kind === state.listing.kind) link.setAttribute('aria-current', 'page');
    else link.removeAttribute('aria-current');
  }
  dressPage(t(TAB_TEXTS[state.listing.kind]));
}

function chip(key, value, load) {
  const name = `${t(key)}: ${visible(toText(value))}`;
  return el(
    'li',
    { class: 'fm-chip' },
    el('span', {}, el('b', { text: `${t(key)} ` }), visible(toText(value))),
    button(t('removeChip', { name }), {
      image: 'close',
      bare: true,
      class: 'fm-chip-x',
      press: () => load(without(key, value)).then(() => ui.grid.host.focus()),
    }),
  );
}

/** `load(listing)` shows another listing. */
export function showChips(load) {
  const { listing } = state;
  const filtered = isFiltered(listing);
  ui.chips.hidden = !filtered;
  if (!filtered) return;
  if (!obeysFilter(listing)) {
    ui.chips.replaceChildren(
      el('span', { class: 'fm-rest', text: t('filterRests') }),
      button(t('useFilter'), { class: 'fm-link', press: () => load({ ...listing, kind: 'rslt' }) }),
    );
    return;
  }
  const chips = LIST_KEYS.flatMap((key) => listing.lists[key].map((value) => chip(key, value, load))).concat(
    TEXT_KEYS.filter((key) => listing.texts[key]).map((key) => chip(key, listing.texts[key], load)),
  );
  ui.chips.replaceChildren(
    el('ul', {}, chips),
    button(t('clearFilter'), { class: 'fm-link', press: () => load(unfiltered()) }),
  );
}

export function showEmpty(load, clearFind) {
  const nothing = !ui.grid.view.length;
  ui.empty.hidden = !nothing;
  if (!nothing) return;
  const fill = (image, title, hint, way) =>
    ui.empty.replaceChildren(icon(image), el('h2', { text: title }), el('p', { text: hint }), way ?? '');
  const count = state.entries.length;
  if (count) {
    fill(
      'search',
      t('emptyFind', { text: visible(ui.find.value.trim()) }),
      t('emptyFindHint', { n: count }),
      button(t('clearFind'), { class: 'fm-button fm-primary', press: clearFind }),
    );
  } else if (obeysFilter(state.listing) && isFiltered(state.listing)) {
    fill(
      'filter',
      t('emptyFilter'),
      t('emptyFilterHint'),
      button(t('clearFilter'), { class: 'fm-button fm-primary', press: () => load(unfiltered()) }),
    );
  } else {
    const other =
      state.listing.kind !== 'all' &&
      button(t('showAll'), { class: 'fm-button fm-primary', press: () => load({ ...unfiltered(), kind: 'all' }) });
    fill('box', t('emptyStored'), t('emptyStoredHint'), other || null);
  }
}

/** The page's form says what is shown; the command's form, what was last asked for. */
export function showForms() {
  const form = ui.filterForm;
  const fields = { fmtype: state.listing.kind };
  for (const key of LIST_KEYS) fields[key] = state.listing.lists[key].map(toText).join(',');
  for (const key of TEXT_KEYS) fields[key] = toText(state.listing.texts[key]);
  for (const [name, value] of Object.entries(fields)) setField(form, name, value);
}

export function setField(form, name, value) {
  let field = form.elements.namedItem(name);
  if (!(field instanceof HTMLInputElement)) {
    field = el('input', { type: 'hidden', name });
    form.append(field);
  }
  field.value = value;
}
