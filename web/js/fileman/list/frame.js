/*
 * The fixed parts of the list page. `on` holds the functions that they call: showKind(kind), typed(),
 * leadToList(event), view(), fetchFiles(operation), changeFilter(which), refresh(), switchGallery(), clearChoice().
 */
import { arrange } from './arrange.js';
import { button, el } from '../common/dom.js';
import { icon } from '../common/icons.js';
import { TAB_TEXTS } from '../answers/listing.js';
import { switchLook } from '../common/look.js';
import { keep } from '../common/memory.js';
import { KINDS } from '../answers/queries.js';
import { LANGUAGES, language, languageName, t } from '../common/texts.js';

function tab(kind, on) {
  const link = el('a', {
    href: '#',
    text: t(TAB_TEXTS[kind]),
    on: {
      click: (event) => {
        if (event.ctrlKey || event.metaKey || event.shiftKey) return;
        event.preventDefault();
        on.showKind(kind);
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
  const tabs = KINDS.map((kind) => tab(kind, on));
  const nav = el(
    'nav',
    { 'aria-label': t('lists') },
    tabs.map(([, link]) => link),
  );
  const settings = el(
    'div',
    { class: 'fm-settings' },
    button(t('switchLook'), { image: 'light', bare: true, class: 'fm-quiet', press: switchLook }),
    languageChooser(),
  );
  const node = el('header', { class: 'fm-top' }, el('h1', { text: t('title') }), nav, settings);
  return { node, nav, settings, tabs };
}

function buildBar(on) {
  const find = el('input', {
    type: 'search',
    placeholder: t('findHint'),
    'aria-label': t('find'),
    autocomplete: 'off',
    spellcheck: 'false',
    on: { input: on.typed, keydown: on.leadToList },
  });
  const refine = button(t('refine'), { image: 'refine', class: 'fm-button fm-refine', 'aria-expanded': 'false' });
  const filter = button(t('filter'), { image: 'filter', class: 'fm-button', press: () => on.changeFilter('fpri') });
  const advanced = button(t('advanced'), {
    image: 'sliders',
    class: 'fm-button',
    press: () => on.changeFilter('fadv'),
  });
  const refresh = button(t('refresh'), { image: 'refresh', bare: true, class: 'fm-quiet', press: on.refresh });
  const pictures = button(t('asPictures'), { image: 'picture', class: 'fm-button', press: on.switchGallery });
  const view = button(t('view'), { image: 'eye', class: 'fm-button', press: on.view });
  const pdf = button(t('pdf'), { image: 'pdf', class: 'fm-button', press: () => on.fetchFiles('pdf') });
  const download = button(t('download'), {
    image: 'download',
    class: 'fm-button fm-primary',
    press: () => on.fetchFiles('download'),
  });
  const actions = el('div', { class: 'fm-group-buttons fm-actions' }, view, pdf, download);
  const tools = el('div', { class: 'fm-list-tools', hidden: true });
  const node = el(
    'section',
    { class: 'fm-bar', 'aria-label': t('actions') },
    tools,
    el('div', { class: 'fm-search', role: 'search' }, icon('search'), find),
    refine,
    el('div', { class: 'fm-group-buttons' }, filter, advanced, pictures, refresh),
    actions,
  );
  return { node, tools, actions, find, refine, filter, advanced, pictures, view, pdf, download };
}

function buildFoot(on) {
  const count = el('span');
  const chosen = el('b');
  const clearChoice = button(t('clearChoice'), { class: 'fm-link', press: on.clearChoice });
  const news = button('', { class: 'fm-button fm-news', hidden: true });
  const lost = el('span', { class: 'fm-lost' });
  const wait = el('span', { class: 'fm-wait', hidden: true });
  const node = el('footer', { class: 'fm-foot' }, count, news, chosen, clearChoice, lost, wait);
  return { node, count, news, chosen, clearChoice, lost, wait };
}

/** Returns the element of the page, or a new one if the page is broken and lacks it. */
const element = (id, tag) => {
  const found = document.getElementById(id);
  return found?.localName === tag ? found : el(tag, { id });
};

/**
 * Builds the page around the element "rsltgrid" and the two forms, which are kept from the page if it has them. Returns
 * the parts by name.
 */
export function buildFrame(on) {
  const host = element('rsltgrid', 'div');
  const [filterForm, commandForm] = ['fm_form', 'cmd_form'].map((id) => element(id, 'form'));
  host.removeAttribute('style');
  const { node: header, ...ofHeader } = buildHeader(on);
  const { node: bar, ...ofBar } = buildBar(on);
  const { node: foot, ...ofFoot } = buildFoot(on);
  const banner = el('div', { class: 'fm-banner', role: 'alert', hidden: true });
  const chips = el('div', { class: 'fm-chips', role: 'region', 'aria-label': t('chips'), hidden: true });
  const empty = el('div', { class: 'fm-empty', hidden: true });
  const aside = el('section', { class: 'fm-viewer', hidden: true });
  const facets = el('section', { class: 'fm-facets', 'aria-label': t('refine'), hidden: true });
  const gallery = el('div', {
    class: 'fm-gallery',
    role: 'listbox',
    tabindex: '0',
    'aria-label': t('gallery'),
    'aria-multiselectable': 'true',
    hidden: true,
  });
  const list = el('div', { class: 'fm-list' }, host, gallery, empty);
  const main = el('main', { class: 'fm-main' }, list, facets, aside);
  const forms = el('div', { hidden: true }, filterForm, commandForm);
  // This also removes all markup that a hostile file name may have added to the old body.
  document.body.replaceChildren(header, bar, banner, chips, main, foot, forms);
  document.body.removeAttribute('style');
  arrange({ header, tabs: ofHeader.nav, settings: ofHeader.settings, bar, actions: ofBar.actions, chips, banner, foot });
  const own = { host, filterForm, commandForm, banner, chips, empty, aside, list, facets, gallery };
  return { ...ofHeader, ...ofBar, ...ofFoot, ...own };
}
