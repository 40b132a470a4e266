/* What fileman.js starts; scripts/build-web makes one file of it and of everything that it needs. */
export { start as filterpage } from './filterpage.js';
export { start as list } from './list.js';
