/* Failed requests: what each status of a response means for the user. */
import { isStrict } from './strict.js';

/** A failed request. `key` is the key of the message for the user, `values` fill its places. */
export class AnswerError extends Error {
  constructor(key, values = {}) {
    super(key);
    this.key = key;
    this.values = values;
  }
}

const REFUSALS = { 404: 'errorNotFound', 413: 'errorTooLong', 414: 'errorTooLong', 431: 'errorTooLong', 503: 'errorBusy' };

const LONGEST_SENTENCE = 300;

/** Returns the error message in the body of a strict response, or '' if there is none. */
async function errorSentence(response) {
  if (!isStrict() || !/^text\/html\b/i.test(response.headers.get('content-type') ?? '')) return '';
  const page = await response.text().catch(() => '');
  const text = new DOMParser().parseFromString(page.slice(0, 4096), 'text/html').body.textContent;
  return text.trim().replace(/\s+/g, ' ').slice(0, LONGEST_SENTENCE);
}

/** Returns the AnswerError for a response with an error status. A strict answer adds its own message. */
export async function refusal(response) {
  const { status } = response;
  const sentence = await errorSentence(response);
  // Some servers refuse a long request with 400. If the status comes from the program, there is a message.
  if (status === 400 && !sentence) return new AnswerError('errorTooLong', { status });
  return new AnswerError(REFUSALS[status] ?? (sentence ? 'errorSaid' : 'errorStatus'), { status, sentence });
}
