/* Tells the kind of an entry's file, and why an entry cannot be viewed or downloaded. */
import { isStrict } from './answers.js';
import { isSendable } from './requests.js';

const KINDS = {
  html: 'report',
  htm: 'report',
  xml: 'report',
  png: 'picture',
  jpg: 'picture',
  jpeg: 'picture',
  bmp: 'picture',
  gif: 'picture',
  pcap: 'capture',
  pcapng: 'capture',
};

export function extension({ path }) {
  const dot = path.lastIndexOf('.');
  return dot < 0 || path.indexOf('/', dot) >= 0 ? '' : path.slice(dot + 1).toLowerCase();
}

/** Returns 'report', 'picture', 'capture' or 'other' by the name of the file. The viewer checks the bytes as well. */
export const kindOf = (entry) => KINDS[extension(entry)] ?? 'other';

const CONTROL = /[\0-\x1f\x7f]/;
/**
 * Characters that the path of a folder must not have, because it is part of a shell command without quotes. The shell
 * splits only at " ", not at other white space.
 */
const SPECIAL = /[ |&;<>()$`\\"'*?[\]{}]/;

/**
 * Returns the key of the text that says why an operation ('view', 'download' or 'pdf') cannot deliver an entry, or null
 * if it can. For default answers the instrument packs archives with shell commands, which fail for some names. It
 * leaves such entries out without a message, so the page must know them before the request.
 */
export function obstacle(entry, operation) {
  if (!isSendable(entry.id)) return 'whyId';
  const folder = entry.path.slice(0, entry.path.lastIndexOf('/'));
  const file = entry.path.slice(folder.length + 1);
  if (operation === 'download' && !isStrict()) {
    if (!entry.name || entry.name.startsWith('-') || entry.name.includes("'") || CONTROL.test(entry.name))
      return 'whyName';
    if (SPECIAL.test(folder) || CONTROL.test(folder)) return 'whyPlace';
  }
  if (operation === 'pdf') {
    if (kindOf(entry) === 'capture') return 'whyCapture';
    if (file.startsWith('-') || CONTROL.test(entry.path)) return 'whyName';
  }
  return null;
}

// If several entries have the same id, the instrument sends the first one. So the reports of the others cannot be read.
const isReadable = (entry) => !entry.twin && kindOf(entry) === 'report' && !obstacle(entry, 'view');

/** Returns the verdict of an entry: 'pass', 'fail', 'none', or '' if its report has not been read yet. */
export function verdictOf(entry) {
  entry.verdict ??= isReadable(entry) ? '' : 'none';
  return entry.verdict;
}

/** The texts for verdicts (verdicts.js). 'unread' means that the report has not been read yet. */
export const VERDICT_TEXTS = { pass: 'verdictPass', fail: 'verdictFail', none: 'verdictNone', unread: 'verdictUnread' };
