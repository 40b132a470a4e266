/* Which parts of two sequences belong together, and in what two tables differ. Works on texts alone. */

const MOST_STEPS = 4e6;

/** Pairs of places, [[i, j], ...] in order, -1 for what has no partner: as many as possible with `weight(i, j)` over 0. */
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

/** How much two tables, rows of texts, have in common: their rows of one name, and their heads. */
export function likeness(a, b) {
  const names = new Set(a.map(([name]) => name));
  const shared = b.filter(([name]) => names.has(name)).length;
  const isHeadEqual = a.length && b.length && a[0].join('\n') === b[0].join('\n');
  return (shared + (isHeadEqual ? 1 : 0)) / (Math.max(a.length, b.length) + 1);
}

/** Pairs of the rows of two tables: those of one name (first text) belong together. */
export const alignRows = (a, b) => align(a.length, b.length, (i, j) => (a[i][0] === b[j][0] ? 1 : 0));

/**
 * The pairs of cells of two rows that differ. Columns belong together by the texts of their heads, where both tables have
 * some, else by their places.
 */
export function differingCells(rowA, rowB, headA, headB) {
  const isNamed = headA && headB && headA.length === rowA.length && headB.length === rowB.length;
  const pairs = isNamed
    ? align(rowA.length, rowB.length, (i, j) => (headA[i] === headB[j] ? 1 : 0))
    : alignByPlace(rowA.length, rowB.length);
  return pairs.filter(([i, j]) => (rowA[i] ?? '') !== (rowB[j] ?? ''));
}

/** The number that a text begins with, and the rest: its unit. Null for another text. */
function measured(text) {
  const [, digits, unit] = /^([+-]?[\d,]*\.?\d+(?:e[+-]?\d+)?)(|\s.*|%.*)$/i.exec(text) ?? [];
  const value = Number(digits?.replace(/,/g, ''));
  return digits && Number.isFinite(value) ? { value, unit: unit.trim() } : null;
}

/** By how much the second of two measured values is larger, as a text; empty when they cannot be compared. */
export function change(a, b) {
  const [from, to] = [measured(a), measured(b)];
  if (!from || !to || from.unit !== to.unit) return '';
  const by = Number((to.value - from.value).toPrecision(6));
  return `${by > 0 ? '+' : ''}${by} ${to.unit}`.trim();
}
