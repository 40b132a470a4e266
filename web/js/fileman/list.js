/*
 * The list page: reads the list, changes it and remembers it. Another list is fetched and shown in place,
 * with its address in the history, so that nothing that the person has set up is lost.
 */
import { columnText } from './columns.js';
import { deliver, wording } from './deliver.js';
import { announce, button, el, icon } from './dom.js';
import { askFilter, fetchFilter } from './filters.js';
import { buildFrame } from './frame.js';
import { FileGrid } from './grid.js';
import { keep, keepList, recallList } from './memory.js';
import { holdsWords, orderBy, wordsOf } from './order.js';
import { dressPage } from './page.js';
import { parsePage, parseScript, toEntries } from './rows.js';
import { TAB_TEXTS, addressOf, countText, state, ui } from './state.js';
import { setField, showChips, showCounts, showEmpty, showForms, showTabs } from './summary.js';
import { size, t } from './texts.js';
import { AnswerError, decodePage, fetchBytes, listingQuery, readListing, toText } from './wire.js';
import { Viewer } from './viewer.js';

const MOST_KEPT = 2000;
const TYPING_PAUSE = 120;

let loading = null;

// ---- reading the list

/** Rows of the page that the browser has just read, or null when they need its bytes. */
function readOwnPage() {
  let parsed = null;
  for (const script of [...document.scripts]) {
    parsed ??= script.src ? null : parseScript(script.textContent);
    if (parsed) script.remove(); // some megabytes that nobody needs any more
    if (parsed) break;
  }
  return parsed?.sure && !parsed.lost ? { entries: toEntries(parsed, false), lost: 0 } : null;
}

async function fetchList(query, signal) {
  const bytes = await fetchBytes(`fileman.cgi${query}`, {
    signal,
    onProgress: (received) => {
      ui.wait.textContent = t('loadingSize', { size: size(received) });
    },
  });
  const page = decodePage(bytes);
  const parsed = parsePage(page.text);
  if (!parsed) throw new AnswerError('errorPage');
  return { entries: toEntries(parsed, page.raw), lost: parsed.lost };
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
  showLoading(true);
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
    if (loading?.signal === signal) showLoading(false);
  }
}

function showLoading(on) {
  ui.wait.hidden = !on;
  ui.list.classList.toggle('is-loading', on);
  ui.list.setAttribute('aria-busy', on);
}

function complain(error, retry) {
  ui.banner.replaceChildren(
    icon('warn'),
    el('span', { text: say(error) }),
    button(t('retry'), { class: 'fm-button', press: retry }),
    button(t('close'), {
      image: 'close',
      bare: true,
      class: 'fm-quiet',
      press: () => {
        ui.banner.hidden = true;
      },
    }),
  );
  ui.banner.hidden = false;
}

/** The typed words that the address carries, or null. */
function wordsInAddress() {
  try {
    return decodeURIComponent(/[#&]find=([^&]*)/.exec(location.hash)[1]);
  } catch {
    return null;
  }
}

function takeList({ entries, lost }, kept) {
  state.entries = entries;
  state.lost = lost;
  state.order = orderBy(entries, state.sort.field, state.sort.ascending);
  ui.find.value = wordsInAddress() ?? kept.find ?? '';
  state.words = wordsOf(ui.find.value);
  showForms();
  showTabs();
  showChips(load);
  narrow();
  // By path: two files of one name share their id.
  const paths = new Set(kept.chosen ?? []);
  ui.grid.choose(paths.size ? entries.filter((entry) => paths.has(entry.path)) : []);
  if (kept.active) ui.grid.active = ui.grid.view.findIndex((entry) => entry.path === kept.active);
  ui.grid.top = kept.top ?? 0;
}

// ---- what is remembered

function snapshot() {
  return {
    find: ui.find.value,
    chosen: [...ui.grid.chosen].slice(0, MOST_KEPT).map((entry) => entry.path),
    active: ui.grid.activeEntry?.path,
    top: ui.grid.top,
  };
}

function remember() {
  if (ui.grid && state.listing) keepList(listingQuery(state.listing), snapshot());
}

// ---- narrowing and order

function narrow() {
  const { entries, order, words } = state;
  const shown = [];
  for (const i of order) if (!words.length || holdsWords(entries[i], words)) shown.push(entries[i]);
  ui.grid.show(shown, words);
  showEmpty(load, clearFind);
  showCounts();
}

let typing;
function typed() {
  clearTimeout(typing);
  typing = setTimeout(() => {
    state.words = wordsOf(ui.find.value);
    narrow();
    ui.grid.top = 0;
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
  ui.grid.showSort(state.sort);
  announce(
    t('sorted', {
      column: columnText(field),
      order: t(state.sort.ascending ? 'ascending' : 'descending'),
    }),
  );
}

// ---- actions

/** Writes a command into the page's form, which always says what was last asked for. */
function command(operation, entries) {
  setField(ui.commandForm, 'opertype', operation);
  setField(ui.commandForm, 'rsltid', entries.map((entry) => entry.id).join(','));
}

function view(entry) {
  if (!entry) return;
  command('view', [entry]);
  ui.viewer.open(entry, entry.twin);
}

function step(by) {
  const at = ui.grid.view.indexOf(ui.viewer.entry) + by;
  if (at < 0 || at >= ui.grid.view.length) return;
  ui.grid.activate(at);
  view(ui.grid.view[at]);
}

function fetchFiles(operation, entries) {
  if (!entries.length) return;
  command(operation, entries);
  deliver(operation, entries, state.entries);
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

const handlers = {
  load,
  typed,
  view,
  fetchFiles,
  changeFilter,
  refresh: () => load(state.listing, { push: false, keepState: true }),
};

/** Escape in the list closes the view first. */
function escape() {
  if (!ui.viewer.isOpen) return false;
  ui.viewer.close();
  return true;
}

export async function start() {
  dressPage();
  state.listing = readListing(location.search);
  const own = readOwnPage();
  buildFrame(handlers);
  ui.viewer = new Viewer(ui.aside, {
    closed: () => ui.host.focus(),
    step,
    download: (entry) => fetchFiles('download', [entry]),
  });
  await window.fileman.grid;
  ui.grid = new FileGrid(ui.host, { sort: sortBy, changed: showCounts, open: view, escape });
  ui.grid.showSort(state.sort);
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
