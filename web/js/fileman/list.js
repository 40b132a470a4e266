/*
 * The list page: reads the list, changes it and remembers it. Another list is fetched and shown in place,
 * with its address in the history, so that nothing that the person has set up is lost.
 *
 * What is shown is kept here and nowhere else. The other modules get what they need as arguments.
 */
import { copyRows, copyText } from './clipboard.js';
import { columnText } from './columns.js';
import { announce, button, el, icon, visible } from './dom.js';
import { Facets } from './facets.js';
import { buildFrame } from './frame.js';
import { Gallery } from './gallery.js';
import { FileGrid, isDense } from './grid.js';
import { hashOf, inHash } from './hash.js';
import { later } from './later.js';
import { TAB_TEXTS, addressOf } from './listing.js';
import { keep, keepFind, keepList, recall, recallFind, recallList } from './memory.js';
import { verdictOf } from './kinds.js';
import { News } from './news.js';
import { orderBy } from './order.js';
import { showMenu } from './menu.js';
import { dressPage } from './page.js';
import { printRows } from './printing.js';
import { Query } from './query.js';
import { fetchList, readOwnPage } from './source.js';
import { countText, setField, showChips, showCounts, showEmpty, showForms, showTabs } from './summary.js';
import { size, t } from './texts.js';
import { AnswerError, listingQuery, readListing, toText } from './wire.js';
import { Verdicts } from './verdicts.js';
import { Viewer } from './viewer.js';
import { wording } from './wording.js';

const MOST_KEPT = 2000;
const TYPING_PAUSE = 50;

let frame; // the page's parts by name
let grid;
let viewer;
let facets;
let gallery;
let verdicts;
let news;

let listing; // what is shown: kind, lists, texts
let entries = []; // all rows of the list, in the instrument's order
let lost = 0; // rows that could not be read
let order = []; // indices of the entries in the order shown
let query = new Query(''); // what is typed to narrow the list
let found = null; // what a query found in an order: { query, order, view }
let sort = recall('sort', { field: 'datetime', ascending: false });
let loading = null; // stops what is being fetched

const count = () => countText(grid.view.length, entries.length);

// ---- reading the list

/** The address of a listing with what is typed. */
const addressWith = (wanted) => `${addressOf(wanted)}${hashOf({ find: frame.find.value })}`;

/** The address of what is shown, the viewed entry included. */
function addressShown() {
  const [view, other] = viewer.isOpen ? viewer.entries.map(({ path }) => path) : [];
  return `${addressOf(listing)}${hashOf({ find: frame.find.value, view, with: other })}`;
}

/**
 * Fetches another listing and shows it; the old list stays until the new one is there. `kept` is the state to show it in,
 * the one remembered for it unless given; `find` what is to be typed there, the same as now unless given.
 */
async function load(wanted, { push = true, kept = recallList(listingQuery(wanted)), find = null } = {}) {
  loading?.abort();
  loading = new AbortController();
  const { signal } = loading;
  remember();
  frame.wait.textContent = t('loading');
  showLoading(true);
  frame.banner.hidden = true;
  const showSize = (received) => {
    frame.wait.textContent = t('loadingSize', { size: size(received) });
  };
  try {
    const list = await fetchList(addressOf(wanted), signal, showSize);
    if (list.early && entries.length && listingQuery(wanted) === listingQuery(listing)) {
      showNotice(t('endedEarlyKept'), () => load(wanted, { push, kept, find }));
      return;
    }
    listing = wanted;
    if (find !== null) frame.find.value = find;
    if (push) {
      viewer.hide();
      history.pushState(null, '', addressWith(listing));
    }
    takeList(list, kept);
    announce(`${t(TAB_TEXTS[listing.kind])}. ${count()}`);
  } catch (error) {
    if (error.name === 'AbortError') return;
    if (error instanceof AnswerError) complain(error, () => load(wanted, { push, kept, find }));
    else throw error;
  } finally {
    if (loading?.signal === signal) showLoading(false);
  }
}

function showLoading(on) {
  frame.wait.hidden = !on;
  frame.list.classList.toggle('is-loading', on);
  frame.list.setAttribute('aria-busy', on);
}

function say(error) {
  const module = listing.lists.module.map(toText).join(', ');
  if (error.key === 'errorStatus' && module) return t('errorModule', { ...error.values, module });
  return wording(error);
}

const complain = (error, retry) => showNotice(say(error), retry);

/** Tells something above the list that stays there until it is closed or done again. */
function showNotice(text, retry) {
  const { banner } = frame;
  const close = () => {
    banner.hidden = true;
  };
  banner.replaceChildren(
    icon('warn'),
    el('span', { text }),
    button(t('retry'), { class: 'fm-button', press: retry }),
    button(t('close'), { image: 'close', bare: true, class: 'fm-quiet', press: close }),
  );
  banner.hidden = false;
}

/** A list that is not all of the storage is told as such; what it holds is shown. */
function tellGaps({ early, incomplete }) {
  const texts = [];
  if (early) texts.push(t('endedEarly', { n: entries.length }));
  if (incomplete) texts.push(t('incomplete', { n: incomplete }));
  if (texts.length) showNotice(texts.join(' '), () => load(listing, { push: false, kept: snapshot() }));
}

function takeList(list, kept) {
  ({ entries, lost } = list);
  verdicts.recallFor(entries);
  frame.news.hidden = true;
  news.restart();
  order = orderBy(entries, sort.field, sort.ascending);
  query = new Query(frame.find.value);
  showForms(frame, listing);
  showTabs(frame, listing, addressWith);
  showChips(frame, listing, load);
  grid.fold(entries);
  narrow();
  // By path: two files of one name share their id.
  const paths = new Set(kept.chosen ?? []);
  if (kept.active) grid.active = grid.view.findIndex((entry) => entry.path === kept.active);
  grid.choose(paths.size ? entries.filter((entry) => paths.has(entry.path)) : []);
  if (kept.top || grid.top) grid.top = kept.top ?? 0;
  tellGaps(list);
  takeView();
}

// ---- what is remembered

function snapshot() {
  return {
    chosen: [...grid.chosen].slice(0, MOST_KEPT).map((entry) => entry.path),
    active: grid.activeEntry?.path,
    top: grid.top,
  };
}

function remember() {
  keepList(listingQuery(listing), snapshot());
  keepFind(frame.find.value);
}

// ---- narrowing and order

function showState() {
  showCounts(frame, grid, { all: entries.length, lost });
  gallery.mark();
}

/** What holds the keyboard: the list, or the gallery in its place. */
const listHost = () => (gallery.isShown ? frame.gallery : frame.host);

/** Screenshots are shown as pictures unless a person prefers the list. */
function showGallery() {
  const canShow = listing.kind === 'screen';
  const isOn = canShow && recall('gallery', true) && grid.view.length > 0;
  const changes = gallery.isShown !== isOn;
  frame.pictures.hidden = !canShow;
  frame.pictures.setAttribute('aria-pressed', String(recall('gallery', true)));
  frame.host.hidden = isOn;
  gallery.show(isOn ? grid.view : null);
  if (changes) gallery.reveal();
}

function switchGallery() {
  keep('gallery', !recall('gallery', true));
  showGallery();
}

/** The entries that the query finds, in order. A longer query looks only at what the shorter one found. */
function findEntries() {
  const isWithin = found?.order === order && query.isWithin(found.query);
  const among = isWithin ? found.view : Array.from(order, (i) => entries[i]);
  found = { query, order, view: query.isEmpty ? among : among.filter((entry) => query.matches(entry)) };
  return found.view;
}

function narrow() {
  const shown = findEntries();
  grid.show(shown, query.words);
  showEmpty(frame, listing, { all: entries.length, isEmpty: !shown.length, load, clearFind });
  showState();
  showGallery();
  facets.show(entries, query);
}

/** Offers a newer list; it is shown when the person asks for it. */
function offerNews(list, n) {
  const { news: offer } = frame;
  offer.querySelector('span').textContent = t('news', { n });
  offer.hidden = false;
  offer.onclick = () => {
    takeList(list, { ...snapshot(), top: 0 });
    announce(count());
    listHost().focus();
  };
  announce(t('news', { n }));
}

/** Has the verdicts read that are in sight, or all that may matter when a verdict is asked for. */
function wantVerdicts() {
  const isAsked = query.valuesOf('verdict').length > 0;
  const mayFit = (entry) => !verdictOf(entry) && query.obstacleOf(entry) !== null;
  verdicts.want(isAsked ? entries.filter(mayFit) : grid.inSight);
}

let renewing = null;
function takeVerdict(entry) {
  grid.redrawEntry(entry);
  renewing ??= setTimeout(() => {
    renewing = null;
    grid.fold(entries);
    found = null;
    const { top } = grid;
    if (query.valuesOf('verdict').length) narrow();
    else facets.show(entries, query);
    grid.top = top;
  }, 500);
}

/** Narrows by what is typed now; the address follows. */
function applyFind() {
  clearTimeout(typing);
  typing = null;
  query = new Query(frame.find.value);
  narrow();
  grid.top = 0;
  announce(count());
  showTabs(frame, listing, addressWith);
  history.replaceState(history.state, '', addressShown());
}

let typing = null; // runs until a person pauses
function typed() {
  clearTimeout(typing);
  typing = setTimeout(applyFind, TYPING_PAUSE);
}

/** Narrows by a text as if it had been typed. */
function findText(text) {
  frame.find.value = text;
  applyFind();
}

/** Shows what a kept filter holds. */
function applyKept({ query: search, find }) {
  if (search === listingQuery(listing)) findText(find);
  else load(readListing(search), { find });
}

/** "/" leads to the search from anywhere but a field. */
function leadToFind(event) {
  const isField = event.target.closest?.('input:not([type=checkbox]), textarea, select, dialog');
  if (event.key !== '/' || event.ctrlKey || event.metaKey || event.altKey || isField) return;
  event.preventDefault();
  frame.find.focus();
  frame.find.select();
}

/** Down leads from the search into the list. */
function leadToList(event) {
  if (event.key !== 'ArrowDown') return;
  event.preventDefault();
  if (typing) applyFind();
  if (!grid.view.length) return;
  listHost().focus();
  grid.activate(Math.max(grid.active, 0));
  gallery.reveal();
}

function clearFind() {
  findText('');
  frame.find.focus();
}

function sortBy(field) {
  const again = field === sort.field;
  sort = { field, ascending: again ? !sort.ascending : field !== 'datetime' };
  keep('sort', sort);
  order = orderBy(entries, field, sort.ascending);
  narrow();
  grid.showSort(sort);
  const direction = t(sort.ascending ? 'ascending' : 'descending');
  announce(t('sorted', { column: columnText(field), order: direction }));
}

// ---- actions

/** Writes a command into the page's form, which always holds the last command. */
function command(operation, targets) {
  setField(frame.commandForm, 'opertype', operation);
  setField(frame.commandForm, 'rsltid', targets.map((entry) => entry.id).join(','));
}

const placeOf = (entry) => ({ at: grid.view.indexOf(entry), count: grid.view.length });

/** Opens the view of an entry, or of two side by side. It has a place in the history, which the next views share. */
function view(...targets) {
  if (!targets.length) return;
  const change = viewer.isOpen ? 'replaceState' : 'pushState';
  command('view', targets);
  openView(targets);
  history[change]({ viewing: true }, '', addressShown());
}

function openView(targets) {
  if (targets.length > 1) viewer.compare(targets);
  else viewer.open(targets[0], placeOf(targets[0]));
}

/** Shows the view that an address names behind its "#", if any. */
function takeView(hash = location.hash) {
  const paths = [inHash('view', hash), inHash('with', hash)].filter((path) => path !== null);
  const targets = paths.map((path) => entries.find((entry) => entry.path === path));
  const gone = targets.indexOf(undefined);
  if (!targets.length || gone >= 0) {
    if (viewer.isOpen) viewer.hide();
    if (gone < 0 || !entries.length) return;
    history.replaceState(null, '', addressShown());
    showNotice(t('viewGone', { path: visible(paths[gone]) }), handlers.refresh);
  } else if (viewer.isOpen && viewer.entries.map(({ path }) => path).join('\n') === paths.join('\n')) {
    viewer.renew(targets, placeOf(targets[0]));
  } else {
    const { at } = placeOf(targets[0]);
    if (at >= 0) grid.activate(at);
    openView(targets);
  }
}

let isLeaving = false; // on the way out of a view's place in the history

/** Closes the view, and leaves its place in the history when it has one of its own. */
function closeView() {
  isLeaving = Boolean(history.state?.viewing);
  if (isLeaving) history.back();
  hideView();
}

function hideView() {
  viewer.hide();
  listHost().focus();
  // What was typed during the view stays.
  if (!isLeaving) history.replaceState(history.state, '', addressShown());
}

/** Views the next entry (1), the one before (-1) or the same again (0). The choice goes along when it was only that entry. */
function step(by) {
  if (viewer.entries.length > 1) return;
  const at = grid.view.indexOf(viewer.entry) + by;
  if (at < 0 || at >= grid.view.length) return;
  const isChoice = grid.chosen.size === 1 && grid.chosen.has(viewer.entry);
  grid.activate(at);
  if (isChoice) grid.choose([grid.view[at]]);
  gallery.reveal();
  view(grid.view[at]);
}

/** Left and right step through the views from the list, too. */
function stepByKey(event) {
  const by = { ArrowLeft: -1, ArrowRight: 1 }[event.key];
  if (!by || !viewer.isOpen || event.target !== listHost() || event.altKey || event.ctrlKey || event.metaKey) return;
  event.preventDefault();
  step(by);
}

/** What a menu offers to copy of one entry or of two. */
function copies(some) {
  const [view, other] = some.map(({ path }) => path);
  const link = new URL(`${addressOf(listing)}${hashOf({ view, with: other })}`, location.href).href;
  const item = (what, text) => ({ text: what, press: () => copyText(text, what) });
  const lines = (field) => some.map((entry) => entry[field]).join('\n');
  return [item(t('copyName'), lines('name')), item(t('copyPath'), lines('path')), item(t('copyLink'), link)];
}

function showRowMenu(entry, place) {
  showMenu([{ text: t('view'), press: () => view(entry) }, ...copies([entry])], place, frame.host, visible(entry.name));
}

function fetchFiles(operation, targets) {
  if (!targets.length) return;
  command(operation, targets);
  later()
    .then(({ deliver }) => deliver(operation, targets, entries))
    .catch((error) => complain(error, () => fetchFiles(operation, targets)));
}

function about() {
  later()
    .then(({ showAbout }) => showAbout())
    .catch((error) => complain(error, about));
}

async function changeFilter(which) {
  const opener = which === 'fadv' ? frame.advanced : frame.filter;
  opener.setAttribute('aria-busy', 'true');
  try {
    const { askFilter, fetchFilter } = await later();
    const chosen = await askFilter(which, listing, await fetchFilter(which, listing));
    if (chosen) await load(chosen);
  } catch (error) {
    if (!(error instanceof AnswerError)) throw error;
    complain(error, () => changeFilter(which));
  } finally {
    opener.removeAttribute('aria-busy');
  }
}

function clearChoice() {
  grid.choose([]);
  listHost().focus();
}

/** Escape in the list closes the view first. */
function escape() {
  if (!viewer.isOpen) return false;
  closeView();
  return true;
}

const handlers = {
  showKind: (kind) => load({ ...listing, kind }),
  typed,
  leadToList,
  switchGallery,
  view: () => view(...grid.targets()),
  fetchFiles: (operation) => fetchFiles(operation, grid.targets()),
  changeFilter,
  refresh: () => load(listing, { push: false, kept: snapshot() }),
  clearChoice,
};

/** Follows the address: Back and Forward, or an address that a person has changed behind its "#". */
function takeAddress() {
  const wanted = readListing(location.search);
  const find = inHash('find') ?? '';
  const path = inHash('view');
  if (listingQuery(wanted) !== listingQuery(listing)) load(wanted, { push: false, find });
  else if (path === null && (isLeaving || viewer.isOpen)) {
    isLeaving = false;
    hideView();
  } else {
    const { hash } = location; // changes with what is found
    if (find !== frame.find.value && !history.state?.viewing) findText(find);
    takeView(hash);
  }
}

export async function start() {
  dressPage();
  listing = readListing(location.search);
  const own = readOwnPage();
  frame = buildFrame(handlers);
  frame.find.value = inHash('find') ?? recallFind();
  history.replaceState(history.state, '', addressOf(listing) + hashOf({ find: frame.find.value, view: inHash('view'), with: inHash('with') }));
  viewer = new Viewer(frame.aside, {
    close: closeView,
    step,
    deliver: fetchFiles,
    copies,
  });
  news = new News({ look: () => fetchList(addressOf(listing)), entries: () => entries, found: offerNews });
  // Before the grid, which measures what the panel leaves.
  facets = new Facets(frame.facets, frame.refine, {
    find: findText,
    current: () => ({ query: listingQuery(listing), find: frame.find.value }),
    apply: applyKept,
    about,
    switches: [
      [t('denseRows'), isDense(), (on) => grid.switchDense(on)],
      [t('lookForNews'), news.isOn, (on) => {
        news.isOn = on;
      }],
    ],
  });
  const ofGrid = { sort: sortBy, changed: showState, open: view, menu: showRowMenu, escape, drawn: wantVerdicts };
  grid = new FileGrid(frame.host, frame.tools, ofGrid);
  verdicts = new Verdicts(takeVerdict);
  gallery = new Gallery(frame.gallery, grid, { open: view, escape, isViewing: () => viewer.isOpen });
  copyRows(frame.host, () => grid.targets());
  printRows(() => grid.view);
  grid.showSort(sort);
  addEventListener('pagehide', remember);
  document.addEventListener('keydown', leadToFind);
  for (const node of [frame.host, frame.gallery]) node.addEventListener('keydown', stepByKey);
  addEventListener('popstate', takeAddress);
  const kept = recallList(listingQuery(listing));
  if (own) takeList(own, kept);
  else {
    takeList({ entries: [], lost: 0 }, {});
    frame.empty.hidden = true;
    await load(listing, { push: false, kept });
  }
}
