/* What fileman.js starts; scripts/build-web makes one file of it and of everything that it needs. */
import { later } from './later.js';

export { start as list } from './list.js';
export const filterpage = async () => (await later()).startFilterPage();
