/* The modules that later.js loads. */
export { showAbout } from '../common/about.js';
export { showCapture } from '../view/packetsummary.js';
export { showComparison } from '../view/compare.js';
export { deliver } from '../delivery/deliver.js';
export { start as startFilterPage } from '../filter/filterpage.js';
export { askFilter, fetchFilter } from '../filter/filters.js';
export { fetchEntryArchive, rested } from '../view/entryarchive.js';
