/*
 * The two filter forms. Their options come from the instrument's filter pages. The same form is used in a dialog over
 * the list and on a filter page that was opened by its own address.
 */
import { visible } from '../common/controlchars.js';
import { button, el } from '../common/dom.js';
import { parseAdvanced, parsePrimary } from './options.js';
import { naturalKey } from '../common/naturalorder.js';
import { decodePage, toBinary, toText } from '../answers/encoding.js';
import { LIST_KEYS, isSendable, listingQuery } from '../answers/queries.js';
import { AnswerError } from '../answers/refusals.js';
import { fetchBytes } from '../answers/requests.js';
import { t, tIn } from '../common/texts.js';

const GROUP_TITLES = { module: 'modules', mode: 'modes', test: 'tests', port: 'ports' };

/** A filter applies only to results and profiles. From any other list it opens the results. */
const filteredKind = (kind) => (kind === 'prof' ? 'prof' : 'rslt');

/** Fetches the options of a filter form, 'fpri' or 'fadv'. Throws AnswerError on failure. */
export async function fetchFilter(which, listing, signal) {
  const page = decodePage(await fetchBytes(`fileman.cgi${listingQuery(listing, `filter=${which}`)}`, { signal }));
  const offer = which === 'fadv' ? parseAdvanced(page) : parsePrimary(page);
  if (!offer) throw new AnswerError('errorPage');
  return offer;
}

function optionBox(key, option, checked) {
  const sendable = isSendable(option.value);
  const box = el('input', { type: 'checkbox', name: key, disabled: !sendable });
  box.checked = checked && sendable;
  const note = !sendable ? t('cannotAsk') : option.missing ? t('notOffered') : null;
  const label = el(
    'label',
    { class: 'fm-option', title: note },
    box,
    el('span', { text: visible(option.text) }),
    note && el('small', { text: note }),
  );
  return { box, label, value: option.value };
}

function optionGroup({ key, options }, selected) {
  const offered = new Set(options.map((option) => option.value));
  const missing = selected
    .filter((value) => !offered.has(value))
    .map((value) => ({ value, text: toText(value), missing: true }));
  const inOrder = [...options].sort((a, b) => (naturalKey(a.text) < naturalKey(b.text) ? -1 : 1));
  const boxes = [...inOrder, ...missing].map((option) => optionBox(key, option, selected.includes(option.value)));
  const setAll = (on) =>
    boxes.forEach(({ box }) => {
      if (!box.disabled) box.checked = on;
    });
  const title = t(GROUP_TITLES[key]);
  const tools = el(
    'span',
    { class: 'fm-group-tools' },
    button(t('all'), { class: 'fm-link', 'aria-label': `${title}: ${t('all')}`, press: () => setAll(true) }),
    button(t('none'), { class: 'fm-link', 'aria-label': `${title}: ${t('none')}`, press: () => setAll(false) }),
  );
  const field = el(
    'fieldset',
    { class: 'fm-group' },
    el('legend', { text: title }),
    boxes.length > 1 && tools,
    boxes.length
      ? el(
          'div',
          { class: 'fm-options' },
          boxes.map(({ label }) => label),
        )
      : el('p', { class: 'fm-none', text: t('nothingOffered') }),
  );
  return {
    field,
    // If all boxes are ticked, send none: a list of all ports would exclude the entries without a port.
    read() {
      const ticked = boxes.filter(({ box }) => box.checked).map(({ value }) => value);
      return ticked.length === boxes.length ? [] : ticked;
    },
  };
}

function primaryForm(listing, offer) {
  const groups = offer.map((group) => ({ key: group.key, ...optionGroup(group, listing.lists[group.key]) }));
  return {
    title: t('filterTitle'),
    hint: `${tIn('filterFor', listing.kind)} ${t('filterHint')}`,
    fields: groups.map(({ field }) => field),
    read: () => ({
      ...listing,
      kind: filteredKind(listing.kind),
      lists: Object.fromEntries(LIST_KEYS.map((key) => [key, groups.find((group) => group.key === key)?.read() ?? []])),
    }),
  };
}

function textField(key, value) {
  const input = el('input', {
    type: 'text',
    name: key,
    id: `fm-adv-${key}`,
    value: toText(value),
    autocomplete: 'off',
    spellcheck: 'false',
  });
  input.addEventListener('input', () => input.setCustomValidity(isSendable(input.value, false) ? '' : t('badText')));
  return { key, input, row: el('div', { class: 'fm-field' }, el('label', { for: input.id, text: t(key) }), input) };
}

function advancedForm(listing, offer) {
  const fields = offer.map((key) => textField(key, listing.texts[key]));
  return {
    title: t('advancedTitle'),
    hint: `${tIn('filterFor', listing.kind)} ${t('advancedHint')}`,
    fields: fields.map(({ row }) => row),
    read: () => ({
      ...listing,
      kind: filteredKind(listing.kind),
      texts: { ...listing.texts, ...Object.fromEntries(fields.map(({ key, input }) => [key, toBinary(input.value)])) },
    }),
  };
}

/**
 * Creates a filter form. `which` is 'fpri' or 'fadv', `offer` comes from fetchFilter(), `level` is the tag of the
 * heading. The form calls `done` with the new listing, or with null if the user cancels.
 */
export function filterForm(which, listing, offer, done, level = 'h2') {
  const { title, hint, fields, read } = which === 'fadv' ? advancedForm(listing, offer) : primaryForm(listing, offer);
  const heading = el(level, { id: 'fm-filter-title', text: title });
  return el(
    'form',
    {
      class: `fm-filter fm-filter-${which}`,
      on: {
        submit: (event) => {
          event.preventDefault();
          done(read());
        },
      },
    },
    el('div', { class: 'fm-filter-head' }, heading, el('p', { text: hint })),
    el('div', { class: 'fm-filter-body' }, fields),
    el(
      'div',
      { class: 'fm-filter-foot' },
      button(t('cancel'), { class: 'fm-button', press: () => done(null) }),
      el('button', { type: 'submit', class: 'fm-button fm-primary', text: t('ok') }),
    ),
  );
}

/** Shows a filter form in a dialog. Resolves with the new listing, or with null if the user cancels. */
export function askFilter(which, listing, offer) {
  return new Promise((resolve) => {
    let answer = null;
    const dialog = el('dialog', { class: 'fm-dialog', 'aria-labelledby': 'fm-filter-title' });
    dialog.append(
      filterForm(which, listing, offer, (chosen) => {
        answer = chosen;
        dialog.close();
      }),
    );
    dialog.addEventListener('close', () => {
      dialog.remove();
      resolve(answer);
    });
    document.body.append(dialog);
    dialog.showModal();
    (dialog.querySelector('.fm-filter-body input:not(:disabled)') ?? dialog.querySelector('[type=submit]')).focus();
  });
}
