/* Tells the kind of an entry's file: by its name, and by its first bytes, because default answers name no type. */

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

const MAGIC = [
  ['image/png', '\x89PNG'],
  ['image/jpeg', '\xff\xd8\xff'],
  ['image/gif', 'GIF8'],
  ['image/bmp', 'BM'],
];

/** Returns the type by the first bytes of a file: that of a picture, 'text/html', or '' for any other type. */
export function sniff(bytes) {
  const head = String.fromCharCode(...bytes.subarray(0, 512));
  const picture = MAGIC.find(([, magic]) => head.startsWith(magic));
  if (picture) return picture[0];
  return /^(?:\xef\xbb\xbf)?\s*<[!?a-z]/i.test(head) ? 'text/html' : '';
}
