/* Second script of the list page: fetches the grid while the page is still arriving. */
(() => {
  'use strict';
  const { base, insertHead, start } = window.fileman;

  window.fileman.page = 'list';
  window.onInitPages = () => start('list');

  insertHead('link', { rel: 'stylesheet', href: `${base}vendor/slick.grid.css` });
  window.fileman.grid = Promise.all(
    ['core', 'interactions', 'grid'].map((part) => {
      const script = document.createElement('script');
      script.src = `${base}vendor/slick.${part}.js`;
      script.async = false; // the parts build on each other
      return new Promise((resolve, reject) => {
        script.onload = resolve;
        script.onerror = () => reject(new Error(`${script.src} is missing`));
        document.head.append(script);
      });
    }),
  );
  const modules = '@MODULES@'; // scripts/build-web lists them
  for (const module of modules.split(' ')) insertHead('link', { rel: 'modulepreload', href: `${base}${module}` });
})();
