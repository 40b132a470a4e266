/* The modules that later.js loads. */
export { showAbout } from './about.js';
export { showCapture } from './capture.js';
export { showComparison } from './compare.js';
export { deliver } from './deliver.js';
export { start as startFilterPage } from './filterpage.js';
export { askFilter, fetchFilter } from './filters.js';
export { fetchInsides } from './insides.js';
