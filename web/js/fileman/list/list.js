/*
 * The list page. Another list is fetched and shown without loading a new page, and its address becomes a history entry.
 * So no settings of the user are lost.
 *
 * Only this module keeps which list is shown. Each part of the page keeps its own state, and gets what it needs as
 * arguments.
 */
import { announce } from '../common/announce.js';
import { copyRows, copyText } from '../common/clipboard.js';
import { columnText } from '../grid/columns.js';
import { shownName } from '../common/controlchars.js';
import { afterPaint } from '../common/dom.js';
import { Facets } from '../search/facets.js';
import { FoundEntries } from './foundentries.js';
import { buildFrame } from './frame.js';
import { Gallery } from '../grid/gallery.js';
import { FileGrid, isDense } from '../grid/grid.js';
import { hashOf, inHash } from '../search/hash.js';
import { later } from './later.js';
import { TAB_TEXTS, addressOf } from '../answers/listing.js';
import { keep, keepFind, keepList, recall, recallFind, recallList } from '../common/memory.js';
import { showMenu } from '../common/menu.js';
import { News } from './news.js';
import { Notice } from './notice.js';
import { dressPage } from '../common/page.js';
import { printRows } from '../grid/printing.js';
import { toText } from '../answers/encoding.js';
import { listingQuery, readListing } from '../answers/queries.js';
import { AnswerError } from '../answers/refusals.js';
import { fetchList, readOwnPage } from '../answers/fetchlist.js';
import { countText, setField, showChips, showCounts, showEmpty, showForms, showTabs } from './summary.js';
import { size, t } from '../common/texts.js';
import { Verdicts, verdictOf } from '../view/verdicts.js';
import { Viewing } from './viewing.js';
import { wording } from '../answers/wording.js';

const MOST_KEPT = 2000; // selected entries that are stored

let frame; // the parts of the page by name
let grid;
let viewing;
let facets;
let gallery;
let verdicts;
let news;
let notice;

let listing; // the kind and the filter of the list (listing.js)
const found = new FoundEntries(); // the entries of the list, the search and the order
let lost = 0; // rows that could not be read
let loading = null; // the AbortController of the last request for a list
let asking = null; // the AbortController of the last request for a filter form

const count = () => countText(grid.view.length, found.entries.length);

// ---- reading the list

/** Returns the address of a listing with the text of the search. */
const addressWith = (other) => `${addressOf(other)}${hashOf({ find: frame.find.value })}`;

/** Returns the address of the current state, with the text of the search and the open view. */
function addressShown() {
  const [view, other] = viewing.paths;
  return `${addressOf(listing)}${hashOf({ find: frame.find.value, view, with: other })}`;
}

/**
 * Fetches another listing and shows it. The old list stays until the new one is there. On failure it shows a message.
 * `push` adds a history entry. `kept` is the state of the list (selection, active row, scroll position), by default the
 * stored one. `find` is the new text of the search; null keeps the current text.
 */
async function load(next, { push = true, kept = recallList(listingQuery(next)), find = null } = {}) {
  loading?.abort();
  asking?.abort();
  loading = new AbortController();
  const { signal } = loading;
  const focused = document.activeElement;
  remember();
  frame.wait.textContent = t('loading');
  showLoading(true);
  notice.hide();
  const showSize = (received) => {
    frame.wait.textContent = t('loadingSize', { size: size(received) });
  };
  try {
    const list = await fetchList(addressOf(next), signal, showSize);
    if (list.early && found.entries.length && listingQuery(next) === listingQuery(listing)) {
      notice.show(t('endedEarlyKept'), () => load(next, { push, kept, find }));
      return;
    }
    listing = next;
    if (find !== null) frame.find.value = find;
    if (push) {
      viewing.dismiss();
      history.pushState(null, '', addressWith(listing));
    }
    takeList(list, kept);
    announce(`${t(TAB_TEXTS[listing.kind])}. ${count()}`);
  } catch (error) {
    if (error.name === 'AbortError') return;
    if (error instanceof AnswerError) complain(error, () => load(next, { push, kept, find }));
    else throw error;
  } finally {
    if (loading?.signal === signal) {
      showLoading(false);
      replaceFocus(focused);
    }
  }
}

/** If the element that had the focus is gone, moves the focus to the message above the list, or else to the list. */
function replaceFocus(from) {
  const isGone = from !== document.body && !from.getClientRects().length;
  if (!isGone || ![from, document.body].includes(document.activeElement)) return;
  (notice.isShown ? notice : listHost()).focus();
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

const complain = (error, retry) => notice.show(say(error), retry);

/** Shows a message if the list is cut off or if the instrument could not read all directories. */
function tellGaps({ early, incomplete }) {
  const texts = [];
  if (early) texts.push(t('endedEarly', { n: found.entries.length }));
  if (incomplete) texts.push(t('incomplete', { n: incomplete }));
  if (texts.length) notice.show(texts.join(' '), () => load(listing, { push: false, kept: snapshot() }));
}

/** Shows a list from fetchList() or readOwnPage(), in the state `kept`. */
function takeList(list, kept) {
  ({ lost } = list);
  verdicts.recallFor(list.entries);
  frame.news.hidden = true;
  news.restart();
  found.take(list.entries, frame.find.value);
  showForms(frame, listing);
  showTabs(frame, listing, addressWith);
  showChips(frame, listing, load);
  grid.fold(found.entries);
  narrow();
  // Compare paths, because files with the same name may have the same id.
  const paths = new Set(kept.chosen ?? []);
  if (kept.active) grid.active = grid.view.findIndex((entry) => entry.path === kept.active);
  grid.choose(paths.size ? found.entries.filter((entry) => paths.has(entry.path)) : []);
  if (kept.top || grid.top) grid.top = kept.top ?? 0;
  tellGaps(list);
  if (!list.isUnread) viewing.take();
}

// ---- stored state

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

// ---- search and order

function showState() {
  showCounts(frame, grid, { all: found.entries.length, lost });
  gallery.mark();
}

/** Returns the element that gets the keyboard focus: the list, or the gallery if it is shown. */
const listHost = () => (gallery.isShown ? frame.gallery : frame.host);

/** Shows screenshots as pictures, unless the user has chosen the list. */
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

/** Applies the query: shows the matching entries and updates everything that depends on them. */
function narrow() {
  const shown = found.list();
  grid.show(shown, found.query.words);
  showEmpty(frame, listing, { all: found.entries.length, isEmpty: !shown.length, load, clearFind });
  showState();
  showGallery();
  viewing.showPlace();
  afterPaint(() => facets.show(found.entries, found.query));
}

/** Offers a newer list with a button. The list is shown when the user presses it. */
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

/** Requests the verdicts of the visible entries. If the query has a verdict, requests those of all possible matches. */
function requestVerdicts() {
  const hasVerdict = found.query.valuesOf('verdict').length > 0;
  const mayFit = (entry) => !verdictOf(entry) && found.query.obstacleOf(entry) !== null;
  verdicts.request(hasVerdict ? found.entries.filter(mayFit) : grid.visibleEntries);
}

let renewing = null;
/** Shows a new verdict in its row at once. The rest of the page is updated at most twice a second (throttle). */
function takeVerdict(entry) {
  grid.redrawEntry(entry);
  renewing ??= setTimeout(() => {
    renewing = null;
    if (!grid.hasColumn('verdict')) grid.fold(found.entries);
    found.forget();
    const { top } = grid;
    if (found.query.valuesOf('verdict').length) narrow();
    else facets.show(found.entries, found.query);
    grid.top = top;
  }, 500);
}

/** Applies the text of the search now. The address follows when the rows are painted. */
function applyFind() {
  clearTimeout(typing);
  typing = null;
  found.search(frame.find.value);
  narrow();
  grid.top = 0;
  announce(count());
  afterPaint(keepFindInAddress);
}

function keepFindInAddress() {
  showTabs(frame, listing, addressWith);
  // history.back() is under way, so the current history entry is still that of the view.
  if (!viewing.isLeaving) history.replaceState(history.state, '', addressShown());
}

let typing = null; // the timer of typed()
/** Applies the search when the browser has handled all keys that were pressed so far. */
function typed() {
  clearTimeout(typing);
  typing = setTimeout(applyFind);
}

/** Sets the text of the search and applies it. */
function findText(text) {
  frame.find.value = text;
  applyFind();
}

/** Applies a named filter. */
function applyKept({ query: search, find }) {
  if (search === listingQuery(listing)) findText(find);
  else load(readListing(search), { find });
}

/** The key "/" moves the focus to the search, except in a text field. */
function leadToFind(event) {
  const isField = event.target.closest?.('input:not([type=checkbox]), textarea, select, dialog');
  if (event.key !== '/' || event.ctrlKey || event.metaKey || event.altKey || isField) return;
  event.preventDefault();
  frame.find.focus();
  frame.find.select();
}

/** Without a focus, Escape closes the view, and Down moves the focus to the list. */
function leadFromNowhere(event) {
  if (event.target !== document.body) return;
  if (event.key === 'Escape') closeView();
  else if (!viewing.isOpen) leadToList(event);
}

/** The key Down moves the focus from the search to the list. */
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
  found.sortBy(field);
  narrow();
  grid.showSort(found.sort);
  const direction = t(found.sort.ascending ? 'ascending' : 'descending');
  announce(t('sorted', { column: columnText(field), order: direction }));
}

// ---- actions

/** Writes a command into the form of the page, which always holds the last command. */
function command(operation, targets) {
  setField(frame.commandForm, 'opertype', operation);
  setField(frame.commandForm, 'rsltid', targets.map((entry) => entry.id).join(','));
}

/** Returns the items of the menu Copy for one entry or two. */
function copies(some) {
  const [view, other] = some.map(({ path }) => path);
  const link = new URL(`${addressOf(listing)}${hashOf({ view, with: other })}`, location.href).href;
  const item = (what, text) => ({ text: what, press: () => copyText(text, what) });
  const lines = (field) => some.map((entry) => entry[field]).join('\n');
  return [item(t('copyName'), lines('name')), item(t('copyPath'), lines('path')), item(t('copyLink'), link)];
}

function showRowMenu(entry, place) {
  showMenu([{ text: t('view'), press: () => viewing.open(entry) }, ...copies([entry])], place, frame.host, shownName(entry));
}

function fetchFiles(operation, targets) {
  if (!targets.length) return;
  command(operation, targets);
  later()
    .then(({ deliver }) => deliver(operation, targets, found.entries))
    .catch((error) => complain(error, () => fetchFiles(operation, targets)));
}

function about() {
  later()
    .then(({ showAbout }) => showAbout())
    .catch((error) => complain(error, about));
}

/** Shows which of the two filter forms the instrument is making, 'fpri' or 'fadv', if any. */
function showAsking(which) {
  frame.filter.setAttribute('aria-busy', which === 'fpri');
  frame.advanced.setAttribute('aria-busy', which === 'fadv');
}

/** Shows a filter form as soon as it arrives, unless the user has asked for another form or list meanwhile. */
async function changeFilter(which) {
  asking?.abort();
  asking = new AbortController();
  const { signal } = asking;
  showAsking(which);
  try {
    const { askFilter, fetchFilter } = await later();
    const offer = await fetchFilter(which, listing, signal);
    showAsking(null);
    const chosen = await askFilter(which, listing, offer);
    if (chosen) await load(chosen);
  } catch (error) {
    if (asking.signal === signal) showAsking(null);
    if (signal.aborted) return;
    if (!(error instanceof AnswerError)) throw error;
    complain(error, () => changeFilter(which));
  }
}

function clearChoice() {
  grid.choose([]);
  listHost().focus();
}

/** Closes the view. Returns false if there was none. */
function closeView() {
  if (!viewing.isOpen) return false;
  viewing.close();
  return true;
}

const handlers = {
  showKind: (kind) => load({ ...listing, kind }),
  typed,
  leadToList,
  switchGallery,
  view: () => viewing.open(...grid.targets()),
  fetchFiles: (operation) => fetchFiles(operation, grid.targets()),
  changeFilter,
  refresh: () => load(listing, { push: false, kept: snapshot() }),
  clearChoice,
};

/** Shows the state of the address after Back, Forward, or a change of the part after "#". */
function takeAddress() {
  const next = readListing(location.search);
  const find = inHash('find') ?? '';
  const path = inHash('view');
  if (listingQuery(next) !== listingQuery(listing)) load(next, { push: false, find });
  else if (path !== null || !viewing.leave()) {
    const { hash } = location; // findText() changes it
    if (find !== frame.find.value && !history.state?.viewing) findText(find);
    viewing.take(hash);
  }
}

export async function start() {
  dressPage();
  listing = readListing(location.search);
  const own = readOwnPage();
  frame = buildFrame(handlers);
  frame.find.value = inHash('find') ?? recallFind();
  notice = new Notice(frame.banner, () => listHost().focus());
  history.replaceState(history.state, '', addressOf(listing) + hashOf({ find: frame.find.value, view: inHash('view'), with: inHash('with') }));
  news = new News({ look: () => fetchList(addressOf(listing)), entries: () => found.entries, found: offerNews });
  // Create the panel before the grid, because the grid measures the remaining width.
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
  const open = (...targets) => viewing.open(...targets);
  const ofGrid = { sort: sortBy, changed: showState, open, menu: showRowMenu, escape: closeView, drawn: requestVerdicts };
  grid = new FileGrid(frame.host, frame.tools, ofGrid);
  verdicts = new Verdicts(takeVerdict);
  gallery = new Gallery(frame.gallery, grid, { open, escape: closeView, isViewing: () => viewing.isOpen });
  const ofViewing = {
    grid,
    gallery,
    entries: () => found.entries,
    host: listHost,
    address: addressShown,
    opened: (targets) => command('view', targets),
    gone: (text) => notice.show(text, handlers.refresh),
  };
  viewing = new Viewing(frame.aside, ofViewing, { deliver: fetchFiles, copies });
  copyRows(frame.host, () => grid.targets());
  printRows(() => grid.view);
  grid.showSort(found.sort);
  addEventListener('pagehide', remember);
  document.addEventListener('keydown', leadToFind);
  document.addEventListener('keydown', leadFromNowhere);
  for (const node of [frame.host, frame.gallery]) node.addEventListener('keydown', (event) => viewing.stepByKey(event));
  addEventListener('popstate', takeAddress);
  const kept = recallList(listingQuery(listing));
  if (own) takeList(own, kept);
  else {
    takeList({ entries: [], lost: 0, isUnread: true }, {});
    frame.empty.hidden = true;
    await load(listing, { push: false, kept });
  }
}
