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

const LONGEST_SENTENCE = 300;

/** Returns the error message in the body of a strict response, or '' if there is none. */
export async function errorSentence(response) {
  if (!isStrict() || !/^text\/html\b/i.test(response.headers.get('content-type') ?? '')) return '';
  const page = await response.text().catch(() => '');
  const text = new DOMParser().parseFromString(page.slice(0, 4096), 'text/html').body.textContent;
  return text.trim().replace(/\s+/g, ' ').slice(0, LONGEST_SENTENCE);
}
