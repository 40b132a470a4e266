/* Tells whether the program sends default answers or strict answers, which follow HTTP. */

let read = { page: null, strict: false }; // a cache, because isStrict() runs for every row

/**
 * Returns true if the program sends strict answers. The list page says so in its head, because no stored name can
 * appear there.
 */
export function isStrict() {
  const page = globalThis.document;
  if (page !== read.page)
    read = { page, strict: page?.head.querySelector('meta[name=fileman-answers]')?.content === 'strict' };
  return read.strict;
}
