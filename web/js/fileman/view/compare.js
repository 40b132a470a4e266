/*
 * Shows two reports side by side in one frame. Their tables are aligned, and differences are marked. A table above the
 * reports lists the differences. Each report is in its own shadow tree, so it keeps its own styles.
 */
import PAGE from '../../../css/comparison.css';
import MARK from '../../../css/differences.css';
import { shownName } from '../common/controlchars.js';
import { align, alignRows, differingCells, likeness } from './differences.js';
import { differenceTable } from './differencetable.js';
import { el } from '../common/dom.js';
import { calmReport, decodeReport, reportShell } from './report.js';
import { t } from '../common/texts.js';

const NARROW = 620; // css/comparison.css uses the same width
const LEAST_ZOOM = 0.5;
const LEAVES = 'h1, h2, h3, h4, h5, h6, p, li, dt, dd, figcaption, caption, span, pre';

const textOf = (node) => node.textContent.replace(/\s+/g, ' ').trim();
const rowsOf = (table) => [...table.rows].filter((row) => row.closest('table') === table);
const textsOf = (row) => [...row.cells].map(textOf);
const headOf = (rows) =>
  rows.length && [...rows[0].cells].every(({ localName }) => localName === 'th') ? textsOf(rows[0]) : null;

/** Returns the elements with text that are not in a table and contain no other such element. */
const leavesOf = (body) =>
  [...body.querySelectorAll(LEAVES)].filter(
    (node) => !node.closest('table') && !node.querySelector(LEAVES) && textOf(node),
  );

/** Inserts an empty row into a table, before `row` or (if it is null) at the end. Returns the new row. */
function gapBefore(row, table) {
  const gap = table.ownerDocument.createElement('tr');
  const cell = table.ownerDocument.createElement('td');
  gap.className = 'fm-absent';
  cell.colSpan = Math.max(1, ...[...table.rows].map(({ cells }) => cells.length));
  cell.textContent = '\u00a0';
  gap.append(cell);
  if (row) row.before(gap);
  else ([...table.tBodies].at(-1) ?? table).append(gap);
  return gap;
}

class Comparison {
  constructor() {
    this.found = []; // { where, texts: [a, b] }
    this.level = []; // pairs of elements that must have the same vertical position
  }

  mark(where, nodes) {
    nodes.forEach((node) => node?.classList.add('fm-differs'));
    this.found.push({ where, texts: nodes.map((node) => (node ? textOf(node) : t('absent'))) });
  }

  compareTexts(bodies) {
    const [a, b] = bodies.map(leavesOf);
    const isAlike = (i, j) => (a[i].localName !== b[j].localName ? 0 : textOf(a[i]) === textOf(b[j]) ? 2 : 1);
    for (const [i, j] of align(a.length, b.length, isAlike))
      if (!a[i] || !b[j] || textOf(a[i]) !== textOf(b[j])) this.mark('', [a[i] ?? null, b[j] ?? null]);
  }

  compareTables(bodies) {
    const [a, b] = bodies.map((body) =>
      [...body.querySelectorAll('table')].filter((table) => !table.querySelector('table')),
    );
    const texts = [a, b].map((tables) => tables.map((table) => rowsOf(table).map(textsOf)));
    const pairs = align(a.length, b.length, (i, j) => likeness(texts[0][i], texts[1][j]));
    for (const [i, j] of pairs) {
      if (i >= 0 && j >= 0) this.compareRows(a[i], b[j]);
      else this.mark(t('wholeTable'), [a[i] ?? null, b[j] ?? null]);
    }
  }

  compareRows(...tables) {
    this.level.push(tables);
    const [a, b] = tables.map(rowsOf);
    const [headA, headB] = [a, b].map(headOf);
    const [textsA, textsB] = [a, b].map((rows) => rows.map(textsOf));
    const pairs = alignRows(textsA, textsB);
    for (const [i, j] of pairs) {
      if (i >= 0 && j >= 0) this.compareCells(a[i], b[j], headA, headB);
      else this.lone([a[i] ?? null, b[j] ?? null]);
    }
    // If a row has no partner, insert an empty row into the other table, before the row that follows there.
    let next = [null, null];
    for (const [i, j] of pairs.reverse()) {
      next = [a[i] ?? gapBefore(next[0], tables[0]), b[j] ?? gapBefore(next[1], tables[1])];
      this.level.push(next);
    }
  }

  lone(rows) {
    const row = rows.find(Boolean);
    [...row.cells].forEach((cell) => cell.classList.add('fm-differs'));
    const rest = (one) => textsOf(one).slice(1).join(' · ') || textOf(one);
    const texts = rows.map((one) => (one ? rest(one) : t('absent')));
    this.found.push({ where: textOf(row.cells[0] ?? row), texts });
  }

  compareCells(rowA, rowB, headA, headB) {
    const name = textOf(rowA.cells[0] ?? rowA);
    for (const [i, j] of differingCells(textsOf(rowA), textsOf(rowB), headA, headB)) {
      const column = headA?.[i] ?? headB?.[j];
      this.mark(column ? `${name}, ${column}` : name, [rowA.cells[i] ?? null, rowB.cells[j] ?? null]);
    }
  }

  /** Zooms the reports so that they fit, and gives matching tables and rows the same vertical position. */
  align(bodies) {
    for (const node of this.level.flat()) node.style.marginTop = node.style.height = '';
    for (const body of bodies) body.style.zoom = '';
    const sides = bodies.map((body) => body.getRootNode().host.parentNode);
    const fits = sides.map((side, i) => side.clientWidth / Math.max(bodies[i].scrollWidth, ...widthsIn(bodies[i])));
    const zoom = Math.max(LEAST_ZOOM, Math.min(1, ...fits));
    for (const body of bodies) body.style.zoom = zoom;
    if (topOf(sides[0]) !== topOf(sides[1])) return; // one report is below the other
    for (const pair of this.level) {
      if (pair[0].localName === 'table') {
        const [a, b] = pair.map(topOf);
        const upper = a < b ? pair[0] : pair[1];
        const margin = parseFloat(getComputedStyle(upper).marginTop) || 0;
        upper.style.marginTop = `${margin + Math.abs(a - b) / zoom}px`;
      } else {
        const height = Math.max(...pair.map((row) => row.getBoundingClientRect().height));
        for (const row of pair) row.style.height = `${height / zoom}px`;
      }
    }
  }
}

const topOf = (node) => node.getBoundingClientRect().top;

/** Returns the width that each table of a report needs. */
function widthsIn(body) {
  const { left } = body.getRootNode().host.getBoundingClientRect();
  return [...body.querySelectorAll('table')].map((table) => table.getBoundingClientRect().right - left);
}

/** Moves a report into a shadow tree of `host`. Returns the body of the report. */
function place(host, { report }) {
  const { ownerDocument } = host;
  const root = host.attachShadow({ mode: 'open' });
  const mark = ownerDocument.createElement('style');
  mark.textContent = MARK;
  root.append(
    ...ownerDocument.adoptNode(report.head).querySelectorAll('style'),
    mark,
    ownerDocument.adoptNode(report.body),
  );
  return root.querySelector('body');
}

/**
 * Shows two reports, given as bytes. Returns { frame, ready, sides }: `ready` resolves with the number of differences.
 * `sides` has { paths, fill } for each report, as in the result of showReport().
 */
export function showComparison(entries, contents, onKey) {
  const names = entries.map(shownName);
  const { frame, ready } = reportShell(t('compareTitle', { a: names[0], b: names[1] }), onKey);
  const comparison = new Comparison();
  let calm = [];
  const fill = (target) => {
    const style = target.createElement('style');
    style.textContent = PAGE;
    target.head.append(style);
    const hosts = names.map(() => el('div'));
    const sides = hosts.map((host, i) =>
      el('section', { class: 'side', 'aria-label': names[i] }, el('h2', { text: names[i] }), host),
    );
    // In a narrow frame one report is below the other. Then the list is the only comparison, so it is open.
    const isNarrow = frame.clientWidth <= NARROW;
    const list = el('details', { class: 'list', 'aria-label': t('differences'), open: isNarrow });
    target.body.replaceChildren(list, el('div', { class: 'sides' }, sides));
    calm = contents.map((bytes) => calmReport(decodeReport(bytes), frame.contentWindow.DOMParser));
    const bodies = hosts.map((host, i) => place(host, calm[i]));
    comparison.compareTexts(bodies);
    comparison.compareTables(bodies);
    const { found } = comparison;
    const text = found.length ? t('differ', { n: found.length }) : t('alike');
    list.append(el('summary', { text }), ...(found.length ? [differenceTable(found, names)] : []));
    const fit = () => comparison.align(bodies);
    fit();
    frame.contentWindow.addEventListener('resize', fit);
    for (const host of hosts) host.shadowRoot.addEventListener('load', fit, true); // late pictures change the height
    return found.length;
  };
  const sideOf = (i) => ({
    paths: () => new Set(calm[i].slots.flatMap((slot) => slot.paths)),
    fill: (...known) => calm[i].slots.forEach((slot) => slot.fill(...known)),
  });
  return { frame, ready: ready.then(fill), sides: [sideOf(0), sideOf(1)] };
}
