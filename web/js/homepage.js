/* The second script of the list page. It provides onInitPages, which the page calls. */
(() => {
  'use strict';
  const { fileman } = window;
  fileman.page = 'list';
  window.onInitPages = () => fileman.start('list');
})();
