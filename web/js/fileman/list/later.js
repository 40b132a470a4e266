/*
 * Loads the modules that the list does not need at the start. They are one file. With a file for each module, the code
 * that they share would be in further files, and each file would need its own request.
 */
import { AnswerError } from '../answers/refusals.js';

/** Resolves with these modules. Throws AnswerError if they cannot be loaded. */
export const later = () =>
  import('./laterparts.js').catch(() => {
    throw new AnswerError('errorNetwork');
  });
