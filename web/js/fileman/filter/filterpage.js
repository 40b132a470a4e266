/* A filter page that was opened by its own address. It shows the same form as the dialog, and then opens the list. */
import { el } from '../common/dom.js';
import { fetchFilter, filterForm } from './filters.js';
import { dressPage } from '../common/page.js';
import { listingQuery, parseQuery, readListing } from '../answers/queries.js';
import { t } from '../common/texts.js';
import { wording } from '../answers/wording.js';

export async function start() {
  const which = parseQuery(location.search).text('filter').toLowerCase() === 'fadv' ? 'fadv' : 'fpri';
  const listing = readListing(location.search);
  dressPage(t(which === 'fadv' ? 'advancedTitle' : 'filterTitle'));
  const main = el('main', { class: 'fm-filter-page' }, el('p', { text: t('opening') }));
  document.body.replaceChildren(main);
  try {
    const offer = await fetchFilter(which, listing);
    main.replaceChildren(
      filterForm(
        which,
        listing,
        offer,
        (chosen) => {
          location.href = `fileman.cgi${listingQuery(chosen ?? listing)}`;
        },
        'h1',
      ),
    );
    main.addEventListener('keydown', (event) => {
      if (event.key === 'Escape') location.href = `fileman.cgi${listingQuery(listing)}`;
    });
    main.querySelector('input:not(:disabled)')?.focus();
  } catch (error) {
    main.replaceChildren(
      el('p', { class: 'fm-error', role: 'alert', text: wording(error) }),
      el('a', { href: `fileman.cgi${listingQuery(listing)}`, text: t('showAll') }),
    );
  }
}
