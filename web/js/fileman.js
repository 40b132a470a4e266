/*
 * The first script of every page, both of the list and of the filter pages. It runs before the browser parses the rest
 * of the page, so that no name of a stored file can run as code. Default answers do not escape the values in the array
 * of the list. So this script turns the array into plain text, which js/fileman/answers/readrows.js reads. It also applies a
 * Content-Security-Policy like the one of the packaged web server, because small servers do not send one. Then it
 * starts the module that the page needs.
 */
(() => {
  'use strict';

  const POLICY = `@PAGE_POLICY@`; // scripts/build-web inserts it
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

  // The browser calls this for a new script element before it runs the script.
  const watch = new MutationObserver((records) => {
    for (const record of records) record.addedNodes.forEach(disarm);
  });
  // Strict answers have no inline script that could run, and they have their own policy.
  const isStrict = document.head.querySelector('meta[name=fileman-answers]')?.content === 'strict';
  if (!isStrict) {
    watch.observe(document, { childList: true, subtree: true });
    insertHead('meta', { 'http-equiv': 'Content-Security-Policy', content: POLICY });
  }
  insertHead('meta', { name: 'viewport', content: 'width=device-width, initial-scale=1' });
  insertHead('meta', { name: 'color-scheme', content: 'light dark' });
  insertHead('meta', { name: 'referrer', content: 'same-origin' });
  insertHead('link', { rel: 'icon', href: 'data:image/svg+xml;base64,@ICON@' });

  // scripts/build-web inserts the list of modules. The first one starts the pages. The browser loads the modules while the
  // rest of the page arrives.
  const modules = '@MODULES@'.split(' ').map((name) => `${base}${name}`);
  for (const href of modules) insertHead('link', { rel: 'modulepreload', href });
  const ready = import(modules[0]);
  ready.catch(() => {}); // start() shows the error

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
   * Browsers cache this script. If an update of the instrument has replaced the modules that it names, fetches the
   * script again and reloads the page. A second failure has another cause, so it throws the error.
   */
  async function renewOnce(error) {
    if (sessionStorage.getItem('fileman.renewed')) throw error;
    sessionStorage.setItem('fileman.renewed', 'yes');
    const named = ['../css/fileman.css', 'fileman.js', 'homepage.js'];
    await Promise.all(named.map((name) => fetch(new URL(name, base), { cache: 'reload' })));
    location.reload();
    return new Promise(() => {}); // never resolves, because the page is being replaced
  }

  /** Shows that a part of the page is missing. The texts are here, because the module with all texts may be missing. */
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

  // A broken page may lack the element or the script that calls start().
  document.addEventListener('DOMContentLoaded', () => start(window.fileman.page));
})();
