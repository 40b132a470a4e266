/*
 * Shows a report in a frame. The document of the frame (js/report.html) lets nothing run or load. A note replaces each
 * picture from the report's directory until the file has been fetched.
 */
import { shownName, visible } from '../common/controlchars.js';
import { el } from '../common/dom.js';
import { t } from '../common/texts.js';

const UNSAFE = 'script, base, meta[http-equiv], link, iframe, frame, object, embed, audio, video, source';
const LEADING = ['background', 'action', 'formaction', 'ping', 'poster', 'target', 'srcset'];

/** Decodes the bytes of a report by the charset that it declares, else as UTF-8. */
export function decodeReport(bytes) {
  const head = new TextDecoder('latin1').decode(bytes.subarray(0, 2048));
  const label = /<meta[^>]+charset\s*=\s*["']?([\w-]+)/i.exec(head)?.[1] ?? 'utf-8';
  try {
    return new TextDecoder(label).decode(bytes);
  } catch {
    return new TextDecoder().decode(bytes);
  }
}

/** Returns the path of a file relative to the report's directory, or null if the file is not below this directory. */
export function ownPath(source) {
  if (/^(?:[a-z][a-z0-9+.-]*:|[/\\]|#|$)/i.test(source)) return null;
  const places = [];
  let path;
  try {
    path = decodeURIComponent(source.replace(/[?#].*$/s, ''));
  } catch {
    return null;
  }
  for (const part of path.split('/')) {
    if (part === '..' && !places.length) return null;
    if (part === '..') places.pop();
    else if (part !== '.' && part !== '') places.push(part);
  }
  return places.length ? places.join('/') : null;
}

const CSS_URL = /url\(\s*(?:"([^"]*)"|'([^']*)'|([^)]*?))\s*\)/gi;

/** Returns the style sheet without imports, and with only those pictures whose address `addressOf(path)` returns. */
function withOwnUrls(css, addressOf = () => null) {
  return css.replace(/@import[^;]*;?/gi, '').replace(CSS_URL, (whole, double, single, bare) => {
    const source = double ?? single ?? bare;
    if (/^data:/i.test(source)) return whole;
    const address = ownPath(source) && addressOf(ownPath(source));
    return address ? `url("${address}")` : 'none';
  });
}

/** Replaces an element by a note of the same size. Returns the note. */
function placeNote(node, text) {
  const note = node.ownerDocument.createElement('span');
  const [width, height] = ['width', 'height'].map((side) => parseInt(node.getAttribute(side), 10));
  note.setAttribute(
    'style',
    'display:inline-block;box-sizing:border-box;max-width:100%;padding:.5em .8em;border:1px dashed #888;' +
      'border-radius:4px;color:#555;font:13px sans-serif;' +
      (width > 0 && height > 0 ? `width:${width}px;height:${height}px` : ''),
  );
  note.textContent = text;
  node.replaceWith(note);
  return note;
}

/** Replaces a picture by a note, and returns the slot that shows the picture when its file is there. */
function pictureSlot(picture, source) {
  const path = ownPath(source);
  const name = picture.getAttribute('alt') || source.slice(source.lastIndexOf('/') + 1);
  const note = placeNote(picture, t('pictureMissing', { name: visible(name) }));
  picture.removeAttribute('src');
  const fill = (addressOf) => {
    const address = addressOf(path);
    if (!address) return;
    picture.setAttribute('src', address);
    note.replaceWith(picture);
  };
  return { paths: path ? [path] : [], fill };
}

function styleSlot(node, css) {
  const paths = [...css.matchAll(CSS_URL)].map(([, ...parts]) =>
    ownPath(parts.find((part) => part !== undefined) ?? ''),
  );
  const fill = (addressOf) => {
    node.textContent = withOwnUrls(css, addressOf);
  };
  return { paths: paths.filter(Boolean), fill };
}

/** Replaces a linked style sheet by a style element, and returns the slot that fills the element. */
function sheetSlot(link) {
  const path = ownPath(link.getAttribute('href') ?? '');
  const style = link.ownerDocument.createElement('style');
  link.replaceWith(style);
  const fill = (addressOf, textOf) => {
    style.textContent = withOwnUrls(textOf(path) ?? '', addressOf);
  };
  return { paths: path ? [path] : [], fill };
}

const PICTURE_NAME = /\.(?:svg|png|jpe?g|gif|bmp)(?:[?#].*)?$/i;
const sourceOf = (node) => node.getAttribute('data') ?? node.getAttribute('src') ?? '';

/** Replaces an embedded chart by a picture, and returns the slot of the picture. */
function chartSlot(node) {
  const source = sourceOf(node);
  const picture = node.ownerDocument.createElement('img');
  for (const name of ['width', 'height', 'class', 'title'])
    if (node.hasAttribute(name)) picture.setAttribute(name, node.getAttribute(name));
  picture.setAttribute('alt', node.getAttribute('aria-label') ?? node.title ?? '');
  node.replaceWith(picture);
  return pictureSlot(picture, source);
}

/** Replaces the frames of a report by notes, because no other page is shown. */
function noteFrames(report) {
  if (report.body.localName === 'frameset') {
    const body = report.createElement('body');
    body.append(...report.querySelectorAll('frame'));
    report.body.replaceWith(body);
  }
  for (const frame of report.querySelectorAll('frame, iframe')) {
    const path = ownPath(sourceOf(frame));
    if (path) placeNote(frame, t('frameMissing', { name: visible(path) }));
  }
}

/** Removes the attributes that could run a script, load something or open another page. */
function calmAttributes(node) {
  for (const { name, value } of [...node.attributes]) {
    const isAway = (name === 'href' || name.endsWith(':href')) && !value.startsWith('#');
    if (name.startsWith('on') || isAway || LEADING.includes(name)) node.removeAttribute(name);
    else if (name === 'style') node.setAttribute(name, withOwnUrls(value));
  }
}

/**
 * Parses a report and removes everything that could run, load or open another page. Returns { report, slots }. A slot
 * is a place that is filled later, when the files in its `paths` are there. `Parser` is the DOMParser of the frame:
 * with the one of the page, the policy of the page would report the styles as violations.
 */
export function calmReport(text, Parser) {
  // The frame runs no event handlers and takes no base anyway. Rename them, so that the browser does not report each one
  // as a violation.
  const quiet = text.replace(/<[a-z][^>]*>/gi, (tag) =>
    tag.replace(/^<base\b/i, '<meta').replace(/(\s)on(?=\w+\s*=)/gi, '$1data-on'),
  );
  const report = new Parser().parseFromString(quiet, 'text/html');
  const slots = [];
  for (const chart of report.querySelectorAll('object, embed'))
    if (PICTURE_NAME.test(sourceOf(chart))) slots.push(chartSlot(chart));
  for (const sheet of report.querySelectorAll('link[rel~=stylesheet]')) slots.push(sheetSlot(sheet));
  noteFrames(report);
  report.querySelectorAll(UNSAFE).forEach((node) => node.remove());
  report.querySelectorAll('*').forEach(calmAttributes);
  for (const picture of report.querySelectorAll('img, input[type=image]')) {
    const source = picture.getAttribute('src') ?? '';
    if (!/^data:image\//i.test(source)) slots.push(pictureSlot(picture, source));
  }
  for (const style of report.querySelectorAll('style')) {
    slots.push(styleSlot(style, style.textContent));
    style.textContent = withOwnUrls(style.textContent);
  }
  return { report, slots: slots.filter(({ paths }) => paths.length) };
}

/** Creates a frame for reports. Returns { frame, ready }; `ready` resolves with the empty document of the frame. */
export function reportShell(title, onKey) {
  // Without allow-scripts no script runs. This page needs allow-same-origin to fill the frame, allow-modals to print it.
  const frame = el('iframe', {
    class: 'fm-report',
    title,
    sandbox: 'allow-same-origin allow-modals',
    src: `${window.fileman.base}report.html`,
  });
  const ready = new Promise((resolve) => {
    const take = () => {
      frame.contentDocument.addEventListener('keydown', onKey);
      resolve(frame.contentDocument);
    };
    frame.addEventListener('load', take, { once: true });
  });
  return { frame, ready };
}

const LEAST_ZOOM = 0.5;

/** Zooms a report that is wider than its frame, so that it fits. The printed report keeps its size. */
function fitWidth({ body, documentElement: root }) {
  body.style.zoom = '';
  const zoom = Math.max(LEAST_ZOOM, root.clientWidth / root.scrollWidth);
  body.style.zoom = zoom < 1 ? zoom : '';
}

/**
 * Shows a report. Returns { frame, ready, paths, fill }: `ready` resolves when the report is shown. `paths()` returns
 * the paths of the files that it needs. `fill(addressOf, textOf)` inserts these files; both functions take a path (see
 * EntryArchive.references).
 */
export function showReport(entry, bytes, onKey) {
  const { frame, ready } = reportShell(t('reportTitle', { name: shownName(entry) }), onKey);
  let slots = [];
  const shown = ready.then((target) => {
    const calm = calmReport(decodeReport(bytes), frame.contentWindow.DOMParser);
    ({ slots } = calm);
    target.head.append(...target.adoptNode(calm.report.head).childNodes);
    target.body.replaceWith(target.adoptNode(calm.report.body));
    target.documentElement.lang = calm.report.documentElement.lang || 'en';
    target.title = shownName(entry);
    fitWidth(target);
    frame.contentWindow.addEventListener('resize', () => fitWidth(target));
  });
  return {
    frame,
    ready: shown,
    paths: () => new Set(slots.flatMap((slot) => slot.paths)),
    fill: (addressOf, textOf) => slots.forEach((slot) => slot.fill(addressOf, textOf)),
  };
}
