/*
 * First script of every page of the file manager, and the only one that both the list and the filter
 * pages load. It runs before the rest of the page is read, so that nothing a stored file's name can
 * smuggle into the page is executed: the list's array is kept as text (its values stand unescaped) and
 * read by js/fileman/rows.js, and a policy like the web server's own is laid over the page, because
 * small servers cannot send one. Then it starts the module that the page needs.
 */
(() => {
  'use strict';

  const POLICY = `@PAGE_POLICY@`; // scripts/build-web puts it in
  const KNOWN_SCRIPT = /^\s*\$\(function\(\) \{\s*init(?:Pri|Adv)Filter\(\);\s*\}\);\s*$/;

  const base = new URL('.', document.currentScript.src).href;
  let started = false;

  function insertHead(tag, attributes) {
    const node = document.createElement(tag);
    for (const [name, value] of Object.entries(attributes)) node.setAttribute(name, value);
    document.head.append(node);
    return node;
  }

  function disarm(node) {
    if (node.nodeName === 'SCRIPT' && !node.src && !KNOWN_SCRIPT.test(node.textContent)) {
      node.type = 'text/plain';
    }
  }

  // The parser delivers these records before it runs the script they are about.
  const watch = new MutationObserver((records) => {
    for (const record of records) record.addedNodes.forEach(disarm);
  });
  // Strict answers have no script that could run, and bring the program's own policy.
  const isStrict = document.head.querySelector('meta[name=fileman-answers]')?.content === 'strict';
  if (!isStrict) {
    watch.observe(document, { childList: true, subtree: true });
    insertHead('meta', { 'http-equiv': 'Content-Security-Policy', content: POLICY });
  }
  insertHead('meta', { name: 'viewport', content: 'width=device-width, initial-scale=1' });
  insertHead('meta', { name: 'color-scheme', content: 'light dark' });
  insertHead('meta', { name: 'referrer', content: 'same-origin' });
  insertHead('link', { rel: 'icon', href: 'data:image/svg+xml;base64,@ICON@' });

  // scripts/build-web lists the modules; the first one starts the pages. They get ready while the rest of the page arrives.
  const modules = '@MODULES@'.split(' ').map((name) => `${base}${name}`);
  for (const href of modules) insertHead('link', { rel: 'modulepreload', href });
  const ready = import(modules[0]);
  ready.catch(() => {}); // start() tells of it

  function start(kind) {
    if (started) return;
    started = true;
    watch.disconnect();
    ready
      .catch(renewOnce)
      .then((pages) => pages[kind]())
      .catch(tellBroken);
  }

  /**
   * Browsers keep this script for a while. When it names modules that an update of the instrument has replaced, it is
   * fetched anew, and the page with it; a second failure has another cause.
   */
  async function renewOnce(error) {
    if (sessionStorage.getItem('fileman.renewed')) throw error;
    sessionStorage.setItem('fileman.renewed', 'yes');
    const named = ['../css/fileman.css', 'fileman.js', 'homepage.js'];
    await Promise.all(named.map((name) => fetch(new URL(name, base), { cache: 'reload' })));
    location.reload();
    return new Promise(() => {}); // this page is on its way out
  }

  /** The texts of the other modules may be what is missing, so these two stand here. */
  function tellBroken(error) {
    const [text, again] = /^de\b/i.test(navigator.language)
      ? ['Ein Teil dieser Seite konnte nicht geladen werden', 'Seite neu laden']
      : ['A part of this page could not be loaded', 'Load the page again'];
    const note = document.createElement('div');
    note.className = 'fm-broken';
    note.setAttribute('role', 'alert');
    const button = document.createElement('button');
    button.textContent = again;
    button.addEventListener('click', () => location.reload());
    note.append(`${text}: ${error.message} `, button);
    document.body.prepend(note);
    throw error;
  }

  window.fileman = { base, insertHead, start, page: 'filterpage' };
  window.initPriFilter = () => start('filterpage');
  window.initAdvFilter = () => start('filterpage');

  // A broken page may have lost the element or the script that calls us.
  document.addEventListener('DOMContentLoaded', () => start(window.fileman.page));
})();
