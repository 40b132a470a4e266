/*
 * Download and PDF export: sends the request, shows the progress, checks the response and then saves it. If there are
 * too many ids for one request, it sends several requests.
 */
import { membersOf } from '../answers/archive.js';
import { visible } from '../common/controlchars.js';
import { el } from '../common/dom.js';
import { MOST_NAMED, isWholePdf, lacksOfDownload, lacksOfOnePdf, lacksOfPdfs } from './missing.js';
import { obstacle } from '../answers/candeliver.js';
import { task } from './progress.js';
import { deliveryQuery, sentId } from '../answers/queries.js';
import { AnswerError } from '../answers/refusals.js';
import { fetchPieces } from '../answers/requests.js';
import { lowerLimit, partsOf } from './requestparts.js';
import { attachmentName, savedName } from './savednames.js';
import { language, size, t } from '../common/texts.js';
import { wording } from '../answers/wording.js';

const PIECES_IN_MEMORY = 8 << 20;
const NAMES_TOLD = 3;

/**
 * Checks that a response is a complete PDF or archive with at least one of the entries. Returns { type, missing, shared
 * } (see lacksOfDownload). Throws AnswerError if it is not.
 */
async function inspect({ blob, sentName }, operation, entries) {
  const isPdf = operation === 'pdf';
  // An empty body is the only sign of a failure in default answers. Strict answers give the reason.
  if (!blob.size) throw new AnswerError(isPdf ? 'errorEmptyPdf' : 'errorEmpty');
  if (isPdf && (await isWholePdf(blob))) return { type: 'pdf', ...lacksOfOnePdf(sentName, entries) };
  const members = await membersOf(blob);
  if (!members) throw new AnswerError(isPdf ? 'errorNoPdf' : 'errorNoArchive');
  const lacks = isPdf ? await lacksOfPdfs(blob, members, entries) : lacksOfDownload(members, entries);
  if (lacks.missing.length === entries.length) throw new AnswerError('errorNone');
  return { type: 'zip', ...lacks };
}

/** Sends one request. Returns { blob, sentName }. */
async function transfer(operation, ids, job) {
  const blobs = [];
  let sentName = null;
  let pieces = [];
  let held = 0;
  const { received, total } = await fetchPieces(`fileman.cgi${deliveryQuery(operation, ids)}`, {
    signal: job.signal,
    onStart: ({ headers }) => {
      sentName = attachmentName(headers.get('content-disposition') ?? '');
    },
    onPiece(piece, soFar, whole) {
      pieces.push(piece);
      held += piece.length;
      // Browsers keep large blobs on disk, so that a large archive does not fill the memory.
      if (held > PIECES_IN_MEMORY) {
        blobs.push(new Blob(pieces));
        pieces = [];
        held = 0;
      }
      job.progress(soFar, whole);
    },
  });
  if (total && received !== total) throw new AnswerError('errorBroken', { received });
  return { blob: new Blob([...blobs, ...pieces]), sentName };
}

function save(blob, name) {
  const address = URL.createObjectURL(blob);
  const link = el('a', { href: address, download: name });
  document.body.append(link);
  link.click();
  link.remove();
  setTimeout(() => URL.revokeObjectURL(address), 60000);
}

/** Returns a text with the first names (or paths) of the entries and the number of the others. */
function someNames(entries, field = 'name', most = NAMES_TOLD) {
  const names = entries.slice(0, most).map((entry) => `“${visible(entry[field])}”`);
  if (entries.length > most) names.push(t('andMore', { n: entries.length - most }));
  return new Intl.ListFormat(language).format(names);
}

/** Returns one text for each reason why entries are left out. */
function leftOutTexts(entries, operation) {
  const byReason = new Map();
  for (const entry of entries) {
    const why = obstacle(entry, operation);
    if (!byReason.has(why)) byReason.set(why, []);
    byReason.get(why).push(entry);
  }
  return [...byReason].map(([why, some]) => t('leftOut', { n: some.length, names: someNames(some), why: t(why) }));
}

function noteLacks(job, { missing, shared }) {
  for (const [key, entries] of [
    ['missing', missing],
    ['shared', shared],
  ]) {
    const names = someNames(entries, 'path', MOST_NAMED);
    if (entries.length) job.note(t(key, { n: entries.length, names }));
  }
}

/**
 * Fetches and saves part after part. It moves entries out of `todo.entries` when they are saved, and into
 * `todo.missing` when the response lacks them. Returns a text for the user.
 */
async function fetchAll(operation, todo, list, job) {
  const title = operation === 'pdf' ? 'converting' : 'packing';
  let groups = partsOf([...new Set(todo.entries.map(sentId))]);
  let at = 0;
  let sum = 0;
  const names = [];
  while (at < groups.length) {
    const text = t(title, { n: groups[at].length });
    job.start(groups.length > 1 ? `${text} (${t('part', { i: at + 1, n: groups.length })})` : text);
    let sent;
    try {
      sent = await transfer(operation, groups[at], job);
    } catch (error) {
      if (!lowerLimit(error, groups[at])) throw error;
      groups = [...groups.slice(0, at), ...partsOf(groups.slice(at).flat())];
      continue;
    }
    const ids = new Set(groups[at]);
    const isAsked = (entry) => ids.has(sentId(entry));
    // The response also holds entries that were not chosen but have the same id.
    const meant = list.filter((entry) => isAsked(entry) && !obstacle(entry, operation));
    const answer = await inspect(sent, operation, meant);
    noteLacks(job, answer);
    const missing = new Set(answer.missing);
    const held = todo.entries.filter((entry) => isAsked(entry) && !missing.has(entry));
    const name = savedName(operation, held, answer.type, groups.length > 1 ? `-${at + 1}` : '');
    save(sent.blob, name);
    todo.missing.push(...todo.entries.filter((entry) => missing.has(entry)));
    todo.entries = todo.entries.filter((entry) => !isAsked(entry));
    names.push(name);
    sum += sent.blob.size;
    at += 1;
  }
  return t('saved', { name: names.join(', '), size: size(sum) });
}

/**
 * Fetches and saves the archive (operation 'download') or the PDFs ('pdf') of `entries`. `list` holds all entries of
 * the list. Shows progress and errors to the user, and never throws.
 */
export async function deliver(operation, entries, list) {
  const good = entries.filter((entry) => !obstacle(entry, operation));
  const bad = entries.filter((entry) => obstacle(entry, operation));
  const job = task(t(operation === 'pdf' ? 'pdf' : 'download'));
  leftOutTexts(bad, operation).forEach(job.note);
  if (!good.length) {
    job.end(t('nothingLeft'), { state: 'failed' });
    return;
  }
  const todo = { entries: good, missing: [] };
  const again = () => deliver(operation, [...todo.missing, ...todo.entries], list);
  try {
    const text = await fetchAll(operation, todo, list, job);
    job.end(text, { retry: todo.missing.length ? again : null });
  } catch (error) {
    const isCancelled = error.name === 'AbortError';
    const n = good.length - todo.entries.length - todo.missing.length;
    if (n) job.note(t('savedBefore', { n }));
    job.end(isCancelled ? t('cancelled') : wording(error), {
      state: isCancelled ? 'cancelled' : 'failed',
      retry: again,
    });
  }
}
