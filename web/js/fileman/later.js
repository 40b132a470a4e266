/*
 * What the list does not need until somebody asks for it. All of it comes as one file: a file for each would make the
 * bundle of parts that they share, each with a request of its own.
 */
import { AnswerError } from './wire.js';

/** The modules that come later; a connection that is gone fails as any other answer does. */
export const later = () =>
  import('./laterparts.js').catch(() => {
    throw new AnswerError('errorNetwork');
  });
