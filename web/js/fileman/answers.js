/* What a page says about the program's answers: the usual ones, or the strict ones of plain HTTP. */

let read = { page: null, strict: false }; // each row asks, so the page is looked at once

/** Whether the program gives strict answers. The list page says so in its head, where no stored name can stand. */
export function isStrict() {
  const page = globalThis.document;
  if (page !== read.page)
    read = { page, strict: page?.head.querySelector('meta[name=fileman-answers]')?.content === 'strict' };
  return read.strict;
}

const LONGEST_SENTENCE = 300;

/** The sentence in which a strict answer tells its error; empty when there is none. */
export async function errorSentence(response) {
  if (!isStrict() || !/^text\/html\b/i.test(response.headers.get('content-type') ?? '')) return '';
  const page = await response.text().catch(() => '');
  const text = new DOMParser().parseFromString(page.slice(0, 4096), 'text/html').body.textContent;
  return text.trim().replace(/\s+/g, ' ').slice(0, LONGEST_SENTENCE);
}
