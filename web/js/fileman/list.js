/*
 * The list page: tabs, actions, search, filter chips, the grid, the viewer. Another list is fetched and
 * shown in place, with its address in the history, so that nothing that the person has set up is lost.
 */
import { deliver, wording } from './deliver.js';
import { announce, button, el, icon, visible } from './dom.js';
import { askFilter, fetchFilter } from './filters.js';
import { FileGrid } from './grid.js';
import { obstacle } from './kinds.js';
import { keep, keepList, recall, recallList } from './memory.js';
import { holdsWords, orderBy, wordsOf } from './order.js';
import { dressPage, switchLook } from './page.js';
import { parseRows, toEntries } from './rows.js';
import { LANGUAGES, language, languageName, size, t } from './texts.js';
import {
  AnswerError, KINDS, LIST_KEYS, TEXT_KEYS, decodePage, fetchBytes, isFiltered, listingQuery, readListing, toText,
} from './wire.js';
import { Viewer } from './viewer.js';

const TAB_TEXTS = { all: 'listAll', rslt: 'listRslt', prof: 'listProf', screen: 'listScreen' };
const MOST_KEPT = 2000;
const TYPING_PAUSE = 120;

const state = {
  listing: null, // what is shown: kind, lists, texts
  entries: [], // all rows of the list, in the instrument's order
  order: [], // their indices in the order shown
  words: [], // typed words that narrow the list
  lost: 0, // rows that could not be read
  sort: recall('sort', { field: 'datetime', ascending: false }),
};
const ui = {};
let grid;
let viewer;
let loading = null;

const addressOf = (listing) => `fileman.cgi${listingQuery(listing)}`;
const obeysFilter = ({ kind }) => kind === 'rslt' || kind === 'prof';

// ---- reading the list

/** Rows of the page that the browser has just read, or null when they need its bytes. */
function readOwnPage() {
  let parsed = null;
  for (const script of [...document.scripts]) {
    parsed ??= script.src ? null : parseRows(script.textContent);
    if (parsed) script.remove(); // some megabytes that nobody needs any more
    if (parsed) break;
  }
  return parsed && parsed.whole && !parsed.odd ? { entries: toEntries(parsed, false), lost: parsed.lost } : null;
}

async function fetchList(query, signal) {
  const bytes = await fetchBytes(`fileman.cgi${query}`, {
    signal, onProgress: (received) => { ui.wait.textContent = t('loadingSize', { size: size(received) }); },
  });
  const page = decodePage(bytes);
  const parsed = parseRows(page.text);
  if (!parsed) throw new AnswerError('errorPage');
  return { entries: toEntries(parsed, page.raw), lost: parsed.lost + (parsed.whole ? 0 : 1) };
}

function say(error) {
  const module = state.listing?.lists.module.map(toText).join(', ');
  if (error.key === 'errorStatus' && module) return t('errorModule', { ...error.values, module });
  return wording(error);
}

/** Fetches a listing and shows it; the old list stays until the new one is there. */
async function load(listing, { push = true, keepState = false } = {}) {
  loading?.abort();
  loading = new AbortController();
  const { signal } = loading;
  remember();
  const old = keepState ? snapshot() : null;
  ui.wait.textContent = t('loading');
  ui.wait.hidden = false;
  ui.banner.hidden = true;
  try {
    const list = await fetchList(listingQuery(listing), signal);
    state.listing = listing;
    if (push) history.pushState(null, '', addressOf(listing));
    takeList(list, old ?? recallList(listingQuery(listing)));
    announce(`${t(TAB_TEXTS[listing.kind])}. ${countText()}`);
  } catch (error) {
    if (error.name === 'AbortError') return;
    if (error instanceof AnswerError) complain(error, () => load(listing, { push, keepState }));
    else throw error;
  } finally {
    if (loading?.signal === signal) ui.wait.hidden = true;
  }
}

function complain(error, retry) {
  const asked = say(error);
  ui.banner.replaceChildren(icon('warn'), el('span', { text: asked }),
    retry && button(t('retry'), { class: 'fm-button', press: retry }),
    button(t('close'), { image: 'close', bare: true, class: 'fm-quiet', press: () => { ui.banner.hidden = true; } }));
  ui.banner.hidden = false;
}

function takeList({ entries, lost }, kept) {
  state.entries = entries;
  state.lost = lost;
  state.order = orderBy(entries, state.sort.field, state.sort.ascending);
  const typed = kept.find ?? decodeURIComponent(/[#&]find=([^&]*)/.exec(location.hash)?.[1] ?? '');
  ui.find.value = typed;
  state.words = wordsOf(typed);
  showForms();
  showTabs();
  showChips();
  narrow();
  const ids = new Set(kept.chosen ?? []);
  grid.choose(ids.size ? entries.filter((entry) => ids.has(entry.sent)) : []);
  if (kept.active) grid.active = grid.view.findIndex((entry) => entry.sent === kept.active);
  grid.top = kept.top ?? 0;
}

// ---- what is remembered

function snapshot() {
  return {
    find: ui.find.value,
    chosen: [...grid.chosen].slice(0, MOST_KEPT).map((entry) => entry.sent),
    active: grid.activeEntry?.sent,
    top: grid.top,
  };
}

function remember() {
  if (grid && state.listing) keepList(listingQuery(state.listing), snapshot());
}

// ---- narrowing and order

function narrow() {
  const { entries, order, words } = state;
  const view = [];
  for (const i of order) if (!words.length || holdsWords(entries[i], words)) view.push(entries[i]);
  grid.show(view, words);
  showEmpty();
  showCounts();
}

let typing;
function typed() {
  clearTimeout(typing);
  typing = setTimeout(() => {
    state.words = wordsOf(ui.find.value);
    narrow();
    grid.top = 0;
    announce(countText());
    const hash = ui.find.value ? `#find=${encodeURIComponent(ui.find.value)}` : '';
    history.replaceState(history.state, '', `${location.pathname}${location.search}${hash}`);
  }, TYPING_PAUSE);
}

function clearFind() {
  ui.find.value = '';
  typed();
  ui.find.focus();
}

function sortBy(field) {
  const again = field === state.sort.field;
  state.sort = { field, ascending: again ? !state.sort.ascending : field !== 'datetime' };
  keep('sort', state.sort);
  state.order = orderBy(state.entries, field, state.sort.ascending);
  narrow();
  grid.showSort(state.sort);
  announce(t('sorted', { column: t(`col${field[0].toUpperCase()}${field.slice(1)}`), order: t(state.sort.ascending ? 'ascending' : 'descending') }));
}

// ---- showing

function countText() {
  const shown = grid.view.length;
  const all = state.entries.length;
  return shown === all ? t('shown', { n: all }) : t('shownOf', { n: shown, all });
}

function showCounts() {
  const chosen = grid.chosen.size;
  ui.count.textContent = countText();
  ui.chosen.textContent = !chosen ? '' : grid.hits === chosen ? t('chosen', { n: chosen }) : t('chosenHidden', { n: chosen, hidden: chosen - grid.hits });
  ui.clearChoice.hidden = !chosen;
  ui.lost.hidden = !state.lost;
  ui.lost.textContent = t('lost', { n: state.lost });
  showActions();
}

/** The entries that an action is about: the chosen ones in the order shown, else the active one. */
function targets() {
  if (!grid.chosen.size) return grid.activeEntry ? [grid.activeEntry] : [];
  const shown = grid.view.filter((entry) => grid.chosen.has(entry));
  return shown.length === grid.chosen.size ? shown : [...shown, ...[...grid.chosen].filter((entry) => !shown.includes(entry))];
}

function showActions() {
  const size2 = grid.chosen.size || (grid.activeEntry ? 1 : 0);
  const some = size2 && size2 <= 200 ? targets() : null;
  const can = (operation) => (some ? some.some((entry) => !obstacle(entry, operation)) : size2 > 0);
  ui.view.disabled = size2 !== 1;
  ui.pdf.disabled = !can('pdf');
  ui.download.disabled = !can('download');
  for (const one of [ui.filter, ui.advanced]) one.disabled = state.listing.kind === 'screen';
}

function showTabs() {
  for (const [kind, link] of ui.tabs) {
    link.href = addressOf({ ...state.listing, kind });
    if (kind === state.listing.kind) link.setAttribute('aria-current', 'page'); else link.removeAttribute('aria-current');
  }
  dressPage(t(TAB_TEXTS[state.listing.kind]));
}

function without(key, value) {
  const { lists, texts } = state.listing;
  return key in lists
    ? { ...state.listing, lists: { ...lists, [key]: lists[key].filter((one) => one !== value) } }
    : { ...state.listing, texts: { ...texts, [key]: '' } };
}

function unfiltered(listing = state.listing) {
  return {
    ...listing,
    lists: Object.fromEntries(LIST_KEYS.map((key) => [key, []])),
    texts: Object.fromEntries(TEXT_KEYS.map((key) => [key, ''])),
  };
}

function chip(key, value) {
  const name = `${t(key)}: ${visible(toText(value))}`;
  return el('li', { class: 'fm-chip' }, el('span', {}, el('b', { text: `${t(key)} ` }), visible(toText(value))),
    button(t('removeChip', { name }), { image: 'close', bare: true, class: 'fm-chip-x', press: () => load(without(key, value)).then(() => grid.host.focus()) }));
}

function showChips() {
  const { listing } = state;
  const filtered = isFiltered(listing);
  ui.chips.hidden = !filtered;
  if (!filtered) return;
  if (!obeysFilter(listing)) {
    ui.chips.replaceChildren(el('span', { class: 'fm-rest', text: t('filterRests') }),
      button(t('useFilter'), { class: 'fm-link', press: () => load({ ...listing, kind: 'rslt' }) }));
    return;
  }
  const chips = LIST_KEYS.flatMap((key) => listing.lists[key].map((value) => chip(key, value)))
    .concat(TEXT_KEYS.filter((key) => listing.texts[key]).map((key) => chip(key, listing.texts[key])));
  ui.chips.replaceChildren(el('ul', {}, chips),
    button(t('clearFilter'), { class: 'fm-link', press: () => load(unfiltered()) }));
}

function showEmpty() {
  const nothing = !grid.view.length;
  ui.empty.hidden = !nothing;
  if (!nothing) return;
  const fill = (image, title, hint, way) => ui.empty.replaceChildren(icon(image), el('h2', { text: title }), el('p', { text: hint }), way ?? '');
  const count = state.entries.length;
  if (count) {
    fill('search', t('emptyFind', { text: visible(ui.find.value.trim()) }), t('emptyFindHint', { n: count }),
      button(t('clearFind'), { class: 'fm-button fm-primary', press: clearFind }));
  } else if (obeysFilter(state.listing) && isFiltered(state.listing)) {
    fill('filter', t('emptyFilter'), t('emptyFilterHint'),
      button(t('clearFilter'), { class: 'fm-button fm-primary', press: () => load(unfiltered()) }));
  } else {
    const other = state.listing.kind !== 'all' && button(t('showAll'), { class: 'fm-button fm-primary', press: () => load({ ...unfiltered(), kind: 'all' }) });
    fill('box', t('emptyStored'), t('emptyStoredHint'), other || null);
  }
}

/** The page's two forms say what is shown; commands and filters are written into them before they are sent. */
function showForms() {
  const form = ui.filterForm;
  const fields = { fmtype: state.listing.kind };
  for (const key of LIST_KEYS) fields[key] = state.listing.lists[key].map(toText).join(',');
  for (const key of TEXT_KEYS) fields[key] = toText(state.listing.texts[key]);
  for (const [name, value] of Object.entries(fields)) setField(form, name, value);
}

function setField(form, name, value) {
  let field = form.elements.namedItem(name);
  if (!(field instanceof HTMLInputElement)) {
    field = el('input', { type: 'hidden', name });
    form.append(field);
  }
  field.value = value;
}

// ---- actions

function command(operation, entries) {
  setField(ui.commandForm, 'opertype', operation);
  setField(ui.commandForm, 'rsltid', entries.map((entry) => entry.id).join(','));
}

function view(entry) {
  if (!entry) return;
  command('view', [entry]);
  viewer.open(entry, entry.twin);
}

function step(by) {
  const at = grid.view.indexOf(viewer.entry) + by;
  if (at < 0 || at >= grid.view.length) return;
  grid.activate(at);
  view(grid.view[at]);
}

function fetchFiles(operation, entries) {
  if (!entries.length) return;
  command(operation, entries);
  deliver(operation, entries);
}

async function changeFilter(which) {
  const opener = which === 'fadv' ? ui.advanced : ui.filter;
  opener.setAttribute('aria-busy', 'true');
  try {
    const listing = await askFilter(which, state.listing, await fetchFilter(which, state.listing));
    if (listing) await load(listing);
  } catch (error) {
    if (!(error instanceof AnswerError)) throw error;
    complain(error, () => changeFilter(which));
  } finally {
    opener.removeAttribute('aria-busy');
  }
}

// ---- building the page

function tab(kind) {
  const link = el('a', {
    href: '#', text: t(TAB_TEXTS[kind]),
    on: {
      click: (event) => {
        if (event.ctrlKey || event.metaKey || event.shiftKey) return;
        event.preventDefault();
        load({ ...state.listing, kind }).then(() => link.focus());
      },
    },
  });
  return [kind, link];
}

function languageChooser() {
  const choose = el('select', { 'aria-label': t('switchLanguage'), on: { change: () => { keep('language', choose.value); location.reload(); } } },
    LANGUAGES.map((tag) => el('option', { value: tag, text: languageName(tag), lang: tag })));
  choose.value = language;
  return choose;
}

function buildHeader() {
  ui.tabs = KINDS.map(tab);
  return el('header', { class: 'fm-top' },
    el('h1', { text: t('title') }),
    el('nav', { 'aria-label': t('lists') }, ui.tabs.map(([, link]) => link)),
    el('div', { class: 'fm-settings' },
      button(t('switchLook'), { image: 'light', bare: true, class: 'fm-quiet', press: switchLook }), languageChooser()));
}

function buildBar() {
  ui.find = el('input', { type: 'search', placeholder: t('findHint'), 'aria-label': t('find'), autocomplete: 'off', spellcheck: 'false', on: { input: typed } });
  ui.filter = button(t('filter'), { image: 'filter', class: 'fm-button', press: () => changeFilter('fpri') });
  ui.advanced = button(t('advanced'), { image: 'sliders', class: 'fm-button', press: () => changeFilter('fadv') });
  ui.view = button(t('view'), { image: 'eye', class: 'fm-button', press: () => view(targets()[0]) });
  ui.pdf = button(t('pdf'), { image: 'pdf', class: 'fm-button', press: () => fetchFiles('pdf', targets()) });
  ui.download = button(t('download'), { image: 'download', class: 'fm-button fm-primary', press: () => fetchFiles('download', targets()) });
  const again = button(t('refresh'), { image: 'refresh', bare: true, class: 'fm-quiet', press: () => load(state.listing, { push: false, keepState: true }) });
  return el('section', { class: 'fm-bar', 'aria-label': t('actions') },
    el('div', { class: 'fm-search', role: 'search' }, icon('search'), ui.find),
    el('div', { class: 'fm-group-buttons' }, ui.filter, ui.advanced, again),
    el('div', { class: 'fm-group-buttons fm-actions' }, ui.view, ui.pdf, ui.download));
}

function buildFoot() {
  ui.count = el('span');
  ui.chosen = el('b');
  ui.clearChoice = button(t('clearChoice'), { class: 'fm-link', press: () => { grid.choose([]); grid.host.focus(); } });
  ui.lost = el('span', { class: 'fm-lost' });
  ui.wait = el('span', { class: 'fm-wait' });
  return el('footer', { class: 'fm-foot' }, ui.count, ui.chosen, ui.clearChoice, ui.lost, ui.wait);
}

const element = (id, tag) => {
  const found = document.getElementById(id);
  return found?.localName === tag ? found : el(tag, { id });
};

function build() {
  const host = element('rsltgrid', 'div');
  const forms = ['fm_form', 'cmd_form'].map((id) => element(id, 'form'));
  [ui.filterForm, ui.commandForm] = forms;
  host.removeAttribute('style');
  ui.banner = el('div', { class: 'fm-banner', role: 'alert', hidden: true });
  ui.chips = el('div', { class: 'fm-chips', role: 'region', 'aria-label': t('chips'), hidden: true });
  ui.empty = el('div', { class: 'fm-empty', hidden: true });
  const aside = el('section', { class: 'fm-viewer', hidden: true });
  const main = el('main', { class: 'fm-main' }, el('div', { class: 'fm-list' }, host, ui.empty), aside);
  // Whatever markup a name may have brought into the page goes with the old body.
  document.body.replaceChildren(buildHeader(), buildBar(), ui.banner, ui.chips, main, buildFoot(), el('div', { hidden: true }, forms));
  document.body.removeAttribute('style');
  ui.wait.hidden = true;
  viewer = new Viewer(aside, {
    closed: () => host.focus(), step, download: (entry) => fetchFiles('download', [entry]),
  });
  return host;
}

export async function start() {
  dressPage();
  state.listing = readListing(location.search);
  const own = readOwnPage();
  const host = build();
  await window.fileman.grid;
  grid = new FileGrid(host, { sort: sortBy, changed: showCounts, open: view });
  grid.showSort(state.sort);
  addEventListener('pagehide', remember);
  addEventListener('popstate', () => {
    const listing = readListing(location.search);
    if (listingQuery(listing) !== listingQuery(state.listing)) load(listing, { push: false });
  });
  if (own) takeList(own, recallList(listingQuery(state.listing)));
  else {
    takeList({ entries: [], lost: 0 }, {});
    ui.empty.hidden = true;
    await load(state.listing, { push: false });
  }
}
