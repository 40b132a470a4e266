/*
 * A report in a frame whose document (js/report.html) lets nothing run or load. What the report refers to in its own
 * directory leaves a note in its place until the files are there.
 */
import { el, visible } from './dom.js';
import { t } from './texts.js';

const UNSAFE = 'script, base, meta[http-equiv], link, iframe, frame, object, embed, audio, video, source';
const LEADING = ['background', 'action', 'formaction', 'ping', 'poster', 'target', 'srcset'];

export function decodeReport(bytes) {
  const head = new TextDecoder('latin1').decode(bytes.subarray(0, 2048));
  const label = /<meta[^>]+charset\s*=\s*["']?([\w-]+)/i.exec(head)?.[1] ?? 'utf-8';
  try {
    return new TextDecoder(label).decode(bytes);
  } catch {
    return new TextDecoder().decode(bytes);
  }
}

/** The place of a file that a report refers to, seen from the report's directory; null for one elsewhere. */
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

/** Styles in which only pictures that `addressOf(path)` knows are left. */
function withOwnUrls(css, addressOf = () => null) {
  return css.replace(/@import[^;]*;?/gi, '').replace(CSS_URL, (whole, double, single, bare) => {
    const source = double ?? single ?? bare;
    if (/^data:/i.test(source)) return whole;
    const address = ownPath(source) && addressOf(ownPath(source));
    return address ? `url("${address}")` : 'none';
  });
}

/** Puts a note in the place of what is not there yet, as large as it will be. */
function placeNote(node, name) {
  const note = node.ownerDocument.createElement('span');
  const [width, height] = ['width', 'height'].map((side) => parseInt(node.getAttribute(side), 10));
  note.setAttribute(
    'style',
    'display:inline-block;box-sizing:border-box;max-width:100%;padding:.5em .8em;border:1px dashed #888;' +
      'border-radius:4px;color:#555;font:13px sans-serif;' +
      (width > 0 && height > 0 ? `width:${width}px;height:${height}px` : ''),
  );
  note.textContent = t('pictureMissing', { name: visible(name) });
  node.replaceWith(note);
  return note;
}

/** A picture of the report's own directory, to be put in the place of its note. */
function pictureSlot(picture, source) {
  const path = ownPath(source);
  const name = picture.getAttribute('alt') || source.slice(source.lastIndexOf('/') + 1);
  const note = placeNote(picture, name);
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

/** A style sheet of the report's own directory, which becomes a style element. */
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

/** A chart that the report embeds: it is shown as the picture that it is. */
function chartSlot(node) {
  const source = sourceOf(node);
  const picture = node.ownerDocument.createElement('img');
  for (const name of ['width', 'height', 'class', 'title'])
    if (node.hasAttribute(name)) picture.setAttribute(name, node.getAttribute(name));
  picture.setAttribute('alt', node.getAttribute('aria-label') ?? node.title ?? '');
  node.replaceWith(picture);
  return pictureSlot(picture, source);
}

/** Takes away what would run, load or lead away. */
function calmAttributes(node) {
  for (const { name, value } of [...node.attributes]) {
    const isAway = (name === 'href' || name.endsWith(':href')) && !value.startsWith('#');
    if (name.startsWith('on') || isAway || LEADING.includes(name)) node.removeAttribute(name);
    else if (name === 'style') node.setAttribute(name, withOwnUrls(value));
  }
}

/**
 * A report's document without what would run, load or lead away: { report, slots }. A slot is a place to be filled when
 * the files that it needs (`paths`) are there. `Parser` is the frame's own: the list's policy would complain about the
 * report's styles while they are read.
 */
export function calmReport(text, Parser) {
  // The frame runs no handlers. Renamed ones do not make the browser report that, either.
  const quiet = text.replace(/<[a-z][^>]*>/gi, (tag) => tag.replace(/(\s)on(?=\w+\s*=)/gi, '$1data-on'));
  const report = new Parser().parseFromString(quiet, 'text/html');
  const slots = [];
  for (const chart of report.querySelectorAll('object, embed'))
    if (PICTURE_NAME.test(sourceOf(chart))) slots.push(chartSlot(chart));
  for (const sheet of report.querySelectorAll('link[rel~=stylesheet]')) slots.push(sheetSlot(sheet));
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

/** A frame for reports, { frame, ready }: `ready` resolves with its empty document. */
export function reportShell(title, onKey) {
  // Without allow-scripts nothing runs in the frame; same origin lets us fill it, and modals let us print it.
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

/** Makes a report that is wider than its frame fit; on paper it keeps its size. */
function fitWidth({ body, documentElement: root }) {
  body.style.zoom = '';
  const zoom = Math.max(LEAST_ZOOM, root.clientWidth / root.scrollWidth);
  body.style.zoom = zoom < 1 ? zoom : '';
}

/**
 * Shows a report: { frame, ready, paths, fill }. `ready` resolves when it is shown, `paths()` are those of the files that
 * it lacks, and `fill(addressOf, textOf)` puts in the files that these know by their paths.
 */
export function showReport(entry, bytes, onKey) {
  const { frame, ready } = reportShell(t('reportTitle', { name: visible(entry.name) }), onKey);
  let slots = [];
  const shown = ready.then((target) => {
    const calm = calmReport(decodeReport(bytes), frame.contentWindow.DOMParser);
    ({ slots } = calm);
    target.head.append(...target.adoptNode(calm.report.head).childNodes);
    target.body.replaceWith(target.adoptNode(calm.report.body));
    target.documentElement.lang = calm.report.documentElement.lang || 'en';
    target.title = visible(entry.name);
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
