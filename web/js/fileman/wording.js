/* Failures in the person's words. */
import { size, t } from './texts.js';
import { AnswerError } from './wire.js';

/** The worded form of a failure. */
export function wording(error) {
  if (!(error instanceof AnswerError)) return error.message;
  const { received, ...values } = error.values;
  return t(error.key, { ...values, size: size(received ?? 0) });
}
