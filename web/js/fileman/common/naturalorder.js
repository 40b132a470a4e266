/* Natural order: P2 comes before P10. */

/**
 * Returns a sort key for natural order: a plain comparison of two keys compares numbers by value, and letters without
 * case and accents.
 */
export function naturalKey(text) {
  let key = text.toLowerCase();
  if (/[^\0-\x7f]/.test(key)) key = key.normalize('NFKD').replace(/[\u0300-\u036f]/g, '');
  // Write the length of a number before its digits. Then "2" < "10", because 1 digit < 2 digits.
  return key.replace(/0*(\d+)/g, (run, digits) => String.fromCharCode(0x30 + Math.min(digits.length, 60)) + digits);
}
