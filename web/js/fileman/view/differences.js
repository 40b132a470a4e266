/* Finds matching parts of two sequences and differences between two tables. It works on texts only. */

const MOST_STEPS = 4e6;

/**
 * Aligns two sequences. `weight(i, j)` says how well two items match; 0 means not at all. Returns pairs of indices,
 * [[i, j], ...], in order and with the largest sum of weights; -1 stands for a missing partner.
 */
export function align(countA, countB, weight) {
  if (countA * countB > MOST_STEPS) return alignByPlace(countA, countB);
  const width = countB + 1;
  const best = new Float64Array((countA + 1) * width);
  for (let i = countA - 1; i >= 0; i--) {
    for (let j = countB - 1; j >= 0; j--) {
      const together = weight(i, j);
      const paired = together > 0 ? best[(i + 1) * width + j + 1] + together : 0;
      best[i * width + j] = Math.max(paired, best[(i + 1) * width + j], best[i * width + j + 1]);
    }
  }
  const pairs = [];
  let i = 0;
  let j = 0;
  while (i < countA && j < countB) {
    const here = best[i * width + j];
    const together = weight(i, j);
    if (together > 0 && here === best[(i + 1) * width + j + 1] + together) pairs.push([i++, j++]);
    else if (here === best[(i + 1) * width + j]) pairs.push([i++, -1]);
    else pairs.push([-1, j++]);
  }
  while (i < countA) pairs.push([i++, -1]);
  while (j < countB) pairs.push([-1, j++]);
  return pairs;
}

function alignByPlace(countA, countB) {
  const count = Math.max(countA, countB);
  return Array.from({ length: count }, (_, i) => [i < countA ? i : -1, i < countB ? i : -1]);
}

/** Returns how similar two tables (arrays of rows of texts) are, from 0 to 1: rows with the same name, equal heads. */
export function likeness(a, b) {
  const names = new Set(a.map(([name]) => name));
  const shared = b.filter(([name]) => names.has(name)).length;
  const isHeadEqual = a.length && b.length && a[0].join('\n') === b[0].join('\n');
  return (shared + (isHeadEqual ? 1 : 0)) / (Math.max(a.length, b.length) + 1);
}

/** Aligns the rows of two tables. Two rows match if their first texts are equal. */
export const alignRows = (a, b) => align(a.length, b.length, (i, j) => (a[i][0] === b[j][0] ? 1 : 0));

/**
 * Returns the pairs of cells that differ between two rows. Columns match by their heads if both tables have heads, else
 * by their positions.
 */
export function differingCells(rowA, rowB, headA, headB) {
  const isNamed = headA && headB && headA.length === rowA.length && headB.length === rowB.length;
  const pairs = isNamed
    ? align(rowA.length, rowB.length, (i, j) => (headA[i] === headB[j] ? 1 : 0))
    : alignByPlace(rowA.length, rowB.length);
  return pairs.filter(([i, j]) => (rowA[i] ?? '') !== (rowB[j] ?? ''));
}

/** Splits a text like "12.5 dB" into { value, unit }. Returns null if it does not begin with a number. */
function measured(text) {
  const [, digits, unit] = /^([+-]?[\d,]*\.?\d+(?:e[+-]?\d+)?)(|\s.*|%.*)$/i.exec(text) ?? [];
  const value = Number(digits?.replace(/,/g, ''));
  return digits && Number.isFinite(value) ? { value, unit: unit.trim() } : null;
}

/** Returns the change from the first measured value to the second as a text, or '' if they cannot be compared. */
export function change(a, b) {
  const [from, to] = [measured(a), measured(b)];
  if (!from || !to || from.unit !== to.unit) return '';
  const by = Number((to.value - from.value).toPrecision(6));
  return `${by > 0 ? '+' : ''}${by} ${to.unit}`.trim();
}
