/* The entry point of the bundle that scripts/build-web makes. js/fileman.js calls list() or filterpage(). */
import { later } from './list/later.js';

export { start as list } from './list/list.js';
export const filterpage = async () => (await later()).startFilterPage();
