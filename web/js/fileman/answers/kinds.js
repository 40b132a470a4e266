/* Tells the kind of an entry's file. */

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

/** Keys of the kinds' names in the texts. */
export const KIND_TEXTS = { report: 'kindReport', picture: 'kindPicture', capture: 'kindCapture', other: 'kindOther' };
