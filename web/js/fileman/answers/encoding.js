/*
 * Names are byte strings without a declared encoding. So a value that is sent back to the instrument is kept as a
 * "binary" string, with one character for each byte. It is decoded to text only for display.
 */
const encoder = new TextEncoder();
const decoder = new TextDecoder();

/**
 * Encodes a text as a binary string in UTF-8. A lone surrogate U+DC80 to U+DCFF becomes the byte 0x80 to 0xFF: this is
 * how strict answers write bytes that are not UTF-8.
 */
export function toBinary(text) {
  if (/^[\0-\x7f]*$/.test(text)) return text;
  return text.replace(/[^\0-\x7f]+/g, (part) =>
    part.replace(/[\udc80-\udcff]|[^\udc80-\udcff]+/gu, (piece) =>
      /^[\udc80-\udcff]$/u.test(piece)
        ? String.fromCharCode(piece.charCodeAt(0) - 0xdc00)
        : Array.from(encoder.encode(piece), (byte) => String.fromCharCode(byte)).join(''),
    ),
  );
}

/** Decodes a binary string. Bytes that are not UTF-8 become replacement characters. */
export function toText(binary) {
  if (/^[\0-\x7f]*$/.test(binary)) return binary;
  return decoder.decode(Uint8Array.from(binary, (char) => char.charCodeAt(0)));
}

/** Percent-encodes a binary string, including commas. The caller adds the commas between the values of a list. */
export function escape(binary) {
  return binary.replace(/[^A-Za-z0-9\-_.~:/@()!*]/g, (char) =>
    `%${char.charCodeAt(0).toString(16).toUpperCase().padStart(2, '0')}`,
  );
}

/** Reverses escape(). */
export const unescape = (text) => text.replace(/%([0-9a-f]{2})/gi, (_, digits) => String.fromCharCode(parseInt(digits, 16)));

/** Decodes the bytes of a page. Returns { text, raw }. If they are not UTF-8, `raw` is true and `text` is binary. */
export function decodePage(bytes) {
  try {
    return { text: new TextDecoder('utf-8', { fatal: true }).decode(bytes), raw: false };
  } catch {
    let text = '';
    for (let at = 0; at < bytes.length; at += 32768) text += String.fromCharCode(...bytes.subarray(at, at + 32768));
    return { text, raw: true };
  }
}
