/* The fixed parts of the list page. `on` is what they call: load, typed, view, fetchFiles, changeFilter, refresh. */
import { button, el, icon } from './dom.js';
import { keep } from './memory.js';
import { switchLook } from './page.js';
import { TAB_TEXTS, state, targets, ui } from './state.js';
import { LANGUAGES, language, languageName, t } from './texts.js';
import { KINDS } from './wire.js';

function tab(kind, on) {
  const link = el('a', {
    href: '#',
    text: t(TAB_TEXTS[kind]),
    on: {
      click: (event) => {
        if (event.ctrlKey || event.metaKey || event.shiftKey) return;
        event.preventDefault();
        on.load({ ...state.listing, kind }).then(() => link.focus());
      },
    },
  });
  return [kind, link];
}

function languageChooser() {
  const choose = el(
    'select',
    {
      'aria-label': t('switchLanguage'),
      on: {
        change: () => {
          keep('language', choose.value);
          location.reload();
        },
      },
    },
    LANGUAGES.map((tag) => el('option', { value: tag, text: languageName(tag), lang: tag })),
  );
  choose.value = language;
  return choose;
}

function buildHeader(on) {
  ui.tabs = KINDS.map((kind) => tab(kind, on));
  return el(
    'header',
    { class: 'fm-top' },
    el('h1', { text: t('title') }),
    el(
      'nav',
      { 'aria-label': t('lists') },
      ui.tabs.map(([, link]) => link),
    ),
    el(
      'div',
      { class: 'fm-settings' },
      button(t('switchLook'), { image: 'light', bare: true, class: 'fm-quiet', press: switchLook }),
      languageChooser(),
    ),
  );
}

function buildBar(on) {
  ui.find = el('input', {
    type: 'search',
    placeholder: t('findHint'),
    'aria-label': t('find'),
    autocomplete: 'off',
    spellcheck: 'false',
    on: { input: on.typed },
  });
  ui.filter = button(t('filter'), { image: 'filter', class: 'fm-button', press: () => on.changeFilter('fpri') });
  ui.advanced = button(t('advanced'), { image: 'sliders', class: 'fm-button', press: () => on.changeFilter('fadv') });
  ui.view = button(t('view'), { image: 'eye', class: 'fm-button', press: () => on.view(targets()[0]) });
  ui.pdf = button(t('pdf'), { image: 'pdf', class: 'fm-button', press: () => on.fetchFiles('pdf', targets()) });
  ui.download = button(t('download'), {
    image: 'download',
    class: 'fm-button fm-primary',
    press: () => on.fetchFiles('download', targets()),
  });
  const again = button(t('refresh'), {
    image: 'refresh',
    bare: true,
    class: 'fm-quiet',
    press: on.refresh,
  });
  return el(
    'section',
    { class: 'fm-bar', 'aria-label': t('actions') },
    el('div', { class: 'fm-search', role: 'search' }, icon('search'), ui.find),
    el('div', { class: 'fm-group-buttons' }, ui.filter, ui.advanced, again),
    el('div', { class: 'fm-group-buttons fm-actions' }, ui.view, ui.pdf, ui.download),
  );
}

function buildFoot() {
  ui.count = el('span');
  ui.chosen = el('b');
  ui.clearChoice = button(t('clearChoice'), {
    class: 'fm-link',
    press: () => {
      ui.grid.choose([]);
      ui.grid.host.focus();
    },
  });
  ui.lost = el('span', { class: 'fm-lost' });
  ui.wait = el('span', { class: 'fm-wait' });
  return el('footer', { class: 'fm-foot' }, ui.count, ui.chosen, ui.clearChoice, ui.lost, ui.wait);
}

/** The page's own element, or a new one when a broken page has lost it. */
const element = (id, tag) => {
  const found = document.getElementById(id);
  return found?.localName === tag ? found : el(tag, { id });
};

/** Builds the page around the element "rsltgrid" and the two forms, which stay the page's own where it has them. */
export function buildFrame(on) {
  ui.host = element('rsltgrid', 'div');
  const forms = ['fm_form', 'cmd_form'].map((id) => element(id, 'form'));
  [ui.filterForm, ui.commandForm] = forms;
  ui.host.removeAttribute('style');
  ui.banner = el('div', { class: 'fm-banner', role: 'alert', hidden: true });
  ui.chips = el('div', { class: 'fm-chips', role: 'region', 'aria-label': t('chips'), hidden: true });
  ui.empty = el('div', { class: 'fm-empty', hidden: true });
  ui.aside = el('section', { class: 'fm-viewer', hidden: true });
  ui.list = el('div', { class: 'fm-list' }, ui.host, ui.empty);
  const main = el('main', { class: 'fm-main' }, ui.list, ui.aside);
  // Whatever markup a name may have brought into the page goes with the old body.
  document.body.replaceChildren(
    buildHeader(on),
    buildBar(on),
    ui.banner,
    ui.chips,
    main,
    buildFoot(),
    el('div', { hidden: true }, forms),
  );
  document.body.removeAttribute('style');
  ui.wait.hidden = true;
}
