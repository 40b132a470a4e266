/*
 * First script of every page of the file manager, and the only one that both the list and the filter
 * pages load. It runs before the rest of the page is read, so that nothing a stored file's name can
 * smuggle into the page is executed: the list's array is kept as text (its values stand unescaped) and
 * read by js/fileman/rows.js, and a policy like the web server's own is laid over the page, because
 * small servers cannot send one. Then it starts the module that the page needs.
 */
(() => {
  'use strict';

  // Keep in step with packaging/lighttpd/fileman.conf; tests/browser recomputes every hash.
  const POLICY = [
    "default-src 'none'",
    "script-src 'self' 'unsafe-hashes'" +
      " 'sha256-9ZHjXz9dGCeEhpu/OMfqo0bvFL0BGWNrjFyYLIkVzr0='" + // onInitPages();
      " 'sha256-AlG7OMlLSB5wC0azTVNwEY1k21+EhA27bEkPqbl7r6Y='" + // primary filter page
      " 'sha256-cXfnwBEIRIbEb0bKndBsmhLgQb6gKZPmz8uO/uWBv+8='", // advanced filter page
    "style-src-elem 'self' 'sha256-47DEQpj8HBSa+/TImW+5JCeuQeRkm5NMpJWZG3hSuFU='", // the grid's empty <style>
    "style-src-attr 'unsafe-hashes'" + // the style attributes that the pages carry
      " 'sha256-d5OxFx5tmNpJHg7MsOE5HlxrhPhNySDgaVd4Ip8HovI=' 'sha256-TJuW91qhAzLdOldAQQYQ8g/ZEE4UkZhIoQwP9OUo9n0='" +
      " 'sha256-0EZqoz+oBhx7gF4nvY2bSqoGyy4zLjNF+SDQXGp/ZrY=' 'sha256-SWKOPifCZnO7nwLBaktZGpVR5u4w/RLg1pyfQeWgpMo='" +
      " 'sha256-Cl3rgVY2mBmVTyPAB2BseXo+C2w05+MhrBZiItgsLkc=' 'sha256-EXXZvAEzZNIplgiReWijBw97KmvH8Sx9C9Tw7SrQzp4='" +
      " 'sha256-TkQEhgatO0tm/yqps35DBRUbR0QPH+7TiaRN6ZJJUBE=' 'sha256-Jc/m3HR//+PsqHC8JHo39ACSou+HpxtWaNtlKF/Da6c='",
    "connect-src 'self'",
    "img-src 'self' blob: data:",
    "frame-src 'self'",
    "form-action 'self'",
    "base-uri 'none'",
  ];
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
  watch.observe(document, { childList: true, subtree: true });

  insertHead('meta', { 'http-equiv': 'Content-Security-Policy', content: POLICY.join('; ') });
  insertHead('meta', { name: 'viewport', content: 'width=device-width, initial-scale=1' });
  insertHead('meta', { name: 'color-scheme', content: 'light dark' });
  insertHead('meta', { name: 'referrer', content: 'same-origin' });
  insertHead('link', { rel: 'icon', type: 'image/svg+xml', href: new URL('../css/icon.svg', base).href });

  function start(kind) {
    if (started) return;
    started = true;
    watch.disconnect();
    import(`${base}fileman/${kind}.js`)
      .then((page) => page.start())
      .catch((error) => {
        document.body.append(`The file manager could not start: ${error.message}`);
        throw error;
      });
  }

  window.fileman = { base, insertHead, start, page: 'filterpage' };
  window.initPriFilter = () => start('filterpage');
  window.initAdvFilter = () => start('filterpage');

  // A broken page may have lost the element or the script that calls us.
  document.addEventListener('DOMContentLoaded', () => start(window.fileman.page));
})();
