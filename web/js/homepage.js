/* Second script of the list page. */
(() => {
  'use strict';
  const { fileman } = window;
  fileman.page = 'list';
  window.onInitPages = () => fileman.start('list');
})();
