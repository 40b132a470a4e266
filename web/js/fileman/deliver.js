/*
 * Download and PDF export: asks the instrument, shows how far it is, checks the answer and only then saves
 * it. A choice that is too long for one request goes in parts.
 */
import { isWholePdf, lacksOfDownload, lacksOfPdfs, membersOf } from './archive.js';
import { announce, button, el, visible } from './dom.js';
import { obstacle } from './kinds.js';
import { language, size, t } from './texts.js';
import { AnswerError, deliveryQuery, escape, fetchPieces } from './wire.js';

/** Bytes of ids that one request may carry; the demo's server takes 64 KiB of header lines, small ones 8 or 4. */
const REQUEST_LIMITS = [56000, 7000, 3000];
const PIECES_IN_MEMORY = 8 << 20;
const NAMES_TOLD = 3;
const LOST_NAMES_TOLD = 20; // of what did not arrive
const SAVED_STAYS = 12000;

let limit = 0;
let corner;

function task(title) {
  const bar = el('progress', { 'aria-label': title });
  const detail = el('span', { class: 'fm-task-detail' });
  const head = el('strong', { text: title });
  const stop = button(t('cancel'), { class: 'fm-button' });
  const done = button(t('close'), { image: 'close', bare: true, class: 'fm-quiet', press: () => node.remove() });
  const node = el(
    'section',
    { class: 'fm-task', 'aria-label': title },
    head,
    bar,
    detail,
    el('div', { class: 'fm-task-foot' }, stop, done),
  );
  done.hidden = true;
  if (!corner) {
    corner = el('aside', { class: 'fm-tasks', 'aria-label': t('actions') });
    document.body.append(corner);
  }
  corner.append(node);
  const controller = new AbortController();
  stop.addEventListener('click', () => controller.abort());
  let told = 0;
  let noted = false;
  return {
    signal: controller.signal,
    start(text) {
      head.textContent = text;
      bar.removeAttribute('value');
      detail.textContent = '';
      told = 0;
      announce(text);
    },
    progress(received, total) {
      if (total) {
        bar.max = total;
        bar.value = received;
      }
      detail.textContent = total ? t('ofTotal', { size: size(received), total: size(total) }) : size(received);
      const quarter = total ? Math.floor((4 * received) / total) : 0;
      if (quarter > told) {
        told = quarter;
        announce(detail.textContent);
      }
    },
    /** Adds what the person must know; the task then stays in sight until it is closed. */
    note(text) {
      noted = true;
      node.insertBefore(el('span', { class: 'fm-task-note', text }), detail);
    },
    /** `retry` is what a button offers to do again after a failure. */
    end(text, { failed = false, retry = null } = {}) {
      bar.remove();
      stop.remove();
      done.hidden = false;
      head.textContent = title;
      detail.textContent = text;
      node.classList.add(failed ? 'is-failed' : 'is-done');
      announce(text);
      if (retry) {
        const again = () => {
          node.remove();
          retry();
        };
        done.before(button(t('retry'), { class: 'fm-button', press: again }));
      }
      if (!failed && !noted) setTimeout(() => node.remove(), SAVED_STAYS);
    },
  };
}

/** Cuts ids into requests that fit the present limit. */
function parts(ids) {
  const groups = [[]];
  let length = 0;
  for (const id of ids) {
    const more = escape(id).length + 1;
    if (length + more > REQUEST_LIMITS[limit] && groups[groups.length - 1].length) {
      groups.push([]);
      length = 0;
    }
    groups[groups.length - 1].push(id);
    length += more;
  }
  return groups;
}

/**
 * Checks that an answer is what it claims to be and holds something of what was asked for. Returns its type, and the
 * entries that it lacks or may lack.
 */
async function inspect(blob, operation, entries) {
  // Also the answer when another request holds the place where archives are packed.
  if (!blob.size) throw new AnswerError('errorEmpty');
  const isPdf = operation === 'pdf';
  if (isPdf && (await isWholePdf(blob))) return { type: 'pdf', missing: [], shared: [] };
  const members = await membersOf(blob);
  if (!members) throw new AnswerError(isPdf ? 'errorNoPdf' : 'errorNoArchive');
  const lacks = isPdf ? await lacksOfPdfs(blob, members, entries) : lacksOfDownload(members, entries);
  if (lacks.missing.length === entries.length) throw new AnswerError('errorNone');
  return { type: 'zip', ...lacks };
}

async function transfer(operation, ids, job) {
  const blobs = [];
  let pieces = [];
  let held = 0;
  const { received, total } = await fetchPieces(`fileman.cgi${deliveryQuery(operation, ids)}`, {
    signal: job.signal,
    onPiece(piece, soFar, whole) {
      pieces.push(piece);
      held += piece.length;
      // Blobs of some size go to the browser's disk, so that a large archive does not fill its memory.
      if (held > PIECES_IN_MEMORY) {
        blobs.push(new Blob(pieces));
        pieces = [];
        held = 0;
      }
      job.progress(soFar, whole);
    },
  });
  if (total && received !== total) throw new AnswerError('errorBroken', { received });
  return new Blob([...blobs, ...pieces]);
}

function save(blob, name) {
  const address = URL.createObjectURL(blob);
  const link = el('a', { href: address, download: name });
  document.body.append(link);
  link.click();
  link.remove();
  setTimeout(() => URL.revokeObjectURL(address), 60000);
}

function fileName(operation, entries, type, part) {
  const day = new Intl.DateTimeFormat('sv').format(new Date());
  const many = `${t('resultFiles')}${operation === 'pdf' ? '-pdf' : ''}-${day}-${entries.length}`;
  const base = entries.length === 1 ? visible(entries[0].name) : many;
  return `${base.replace(/[/\\:*?"<>|]/g, '_')}${part}.${type}`;
}

/** The first few names, or paths, and how many more there are. */
function someNames(entries, field = 'name', most = NAMES_TOLD) {
  const names = entries.slice(0, most).map((entry) => `“${visible(entry[field])}”`);
  if (entries.length > most) names.push(t('andMore', { n: entries.length - most }));
  return new Intl.ListFormat(language).format(names);
}

/** What is left out, a text for each reason. */
function leftOutTexts(entries, operation) {
  const byReason = new Map();
  for (const entry of entries) {
    const why = obstacle(entry, operation);
    if (!byReason.has(why)) byReason.set(why, []);
    byReason.get(why).push(entry);
  }
  return [...byReason].map(([why, some]) => t('leftOut', { n: some.length, names: someNames(some), why: t(why) }));
}

/** The worded form of a failure. */
export function wording(error) {
  if (!(error instanceof AnswerError)) return error.message;
  const { received, ...values } = error.values;
  return t(error.key, { ...values, size: size(received ?? 0) });
}

function noteLacks(job, { missing, shared }) {
  for (const [key, entries] of [
    ['missing', missing],
    ['shared', shared],
  ]) {
    const names = someNames(entries, 'path', LOST_NAMES_TOLD);
    if (entries.length) job.note(t(key, { n: entries.length, names }));
  }
}

/** Fetches and saves part after part. `todo.entries` always holds what is still to come. */
async function fetchAll(operation, todo, list, job) {
  const title = operation === 'pdf' ? 'converting' : 'packing';
  let groups = parts([...new Set(todo.entries.map((entry) => entry.sent))]);
  let at = 0;
  let sum = 0;
  const names = [];
  while (at < groups.length) {
    const text = t(title, { n: groups[at].length });
    job.start(groups.length > 1 ? `${text} (${t('part', { i: at + 1, n: groups.length })})` : text);
    let blob;
    try {
      blob = await transfer(operation, groups[at], job);
    } catch (error) {
      // A server with a shorter limit says so or just hangs up: the rest goes in smaller parts.
      const next = REQUEST_LIMITS[limit + 1];
      const long = error.key === 'errorTooLong' || (error.key === 'errorNetwork' && groups[at].join().length > next);
      if (!long || !next) throw error;
      limit += 1;
      groups = [...groups.slice(0, at), ...parts(groups.slice(at).flat())];
      continue;
    }
    const ids = new Set(groups[at]);
    const isAsked = (entry) => ids.has(entry.sent);
    // An entry that was not chosen comes too when it bears the same identity.
    const sent = list.filter((entry) => isAsked(entry) && !obstacle(entry, operation));
    const answer = await inspect(blob, operation, sent);
    noteLacks(job, answer);
    const name = fileName(operation, todo.entries.filter(isAsked), answer.type, groups.length > 1 ? `-${at + 1}` : '');
    save(blob, name);
    todo.entries = todo.entries.filter((entry) => !isAsked(entry));
    names.push(name);
    sum += blob.size;
    at += 1;
  }
  return t('saved', { name: names.join(', '), size: size(sum) });
}

/**
 * Fetches and saves the archive ('download') or PDFs ('pdf') of some entries of the list; tells the person everything
 * itself.
 */
export async function deliver(operation, entries, list) {
  const good = entries.filter((entry) => !obstacle(entry, operation));
  const bad = entries.filter((entry) => obstacle(entry, operation));
  const job = task(t(operation === 'pdf' ? 'pdf' : 'download'));
  leftOutTexts(bad, operation).forEach(job.note);
  if (!good.length) {
    job.end(t('nothingLeft'), { failed: true });
    return;
  }
  const todo = { entries: good };
  try {
    job.end(await fetchAll(operation, todo, list, job));
  } catch (error) {
    const isCancelled = error.name === 'AbortError';
    const n = good.length - todo.entries.length;
    if (n) job.note(t('savedBefore', { n }));
    job.end(isCancelled ? t('cancelled') : wording(error), {
      failed: !isCancelled,
      retry: isCancelled ? null : () => deliver(operation, todo.entries, list),
    });
  }
}
