/* Messages for errors, in the user's language. */
import { size, t } from './texts.js';
import { AnswerError } from './wire.js';

/** Returns the message for an error. */
export function wording(error) {
  if (!(error instanceof AnswerError)) return error.message;
  const { received, ...values } = error.values;
  return t(error.key, { ...values, size: size(received ?? 0) });
}
