/* Messages for errors, in the user's language. */
import { AnswerError } from './refusals.js';
import { size, t } from '../common/texts.js';

/** Returns the message for an error. */
export function wording(error) {
  if (!(error instanceof AnswerError)) return error.message;
  const { received, ...values } = error.values;
  return t(error.key, { ...values, size: size(received ?? 0) });
}
