/* What an entry's file is, and what stands in the way of delivering it. */
import { isStrict } from './answers.js';
import { isSendable } from './wire.js';

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

/** 'report', 'picture', 'capture' or 'other', by the file's name; the viewer looks at the bytes as well. */
export const kindOf = (entry) => KINDS[extension(entry)] ?? 'other';

const CONTROL = /[\0-\x1f\x7f]/;
/** What a folder's name may not hold, since it stands in a command without quotes. Other blanks than " " are no blanks there. */
const SPECIAL = /[ |&;<>()$`\\"'*?[\]{}]/;

/**
 * Why an entry cannot be delivered by 'view', 'download' or 'pdf': the key of a text, or null. For default answers
 * archives are packed by shell commands that cannot carry every name; the instrument leaves such entries out, so
 * the person is told beforehand.
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

// The instrument sends the first of those that share an identity, so the others' reports cannot be read.
const isReadable = (entry) => !entry.twin && kindOf(entry) === 'report' && !obstacle(entry, 'view');

/** What an entry's report says: 'pass', 'fail', 'none', or '' when it is still to be read. */
export function verdictOf(entry) {
  entry.verdict ??= isReadable(entry) ? '' : 'none';
  return entry.verdict;
}

/** Texts for what a report says of its test (verdicts.js); 'unread' when nobody has read it yet. */
export const VERDICT_TEXTS = { pass: 'verdictPass', fail: 'verdictFail', none: 'verdictNone', unread: 'verdictUnread' };
