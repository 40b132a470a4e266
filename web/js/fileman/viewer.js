/*
 * Shows one stored file beside the list. The instrument sends every file as text/html with four bytes in
 * front, and most servers cut its last four; so the bytes decide what it is, pictures go through a blob,
 * and a report is built in a frame whose document (js/report.html) lets nothing run or load.
 */
import { announce, button, el, icon, visible } from './dom.js';
import { wording } from './deliver.js';
import { extension, kindOf, obstacle } from './kinds.js';
import { t } from './texts.js';
import { AnswerError, deliveryQuery, fetchPieces } from './wire.js';

const MOST_BYTES = 64 << 20;
const MAGIC = [
  ['image/png', '\x89PNG'],
  ['image/jpeg', '\xff\xd8\xff'],
  ['image/gif', 'GIF8'],
  ['image/bmp', 'BM'],
];

/** What the program says while it reads the storage; all there is when it sends no file. */
const DIAGNOSTICS = /^(?:(?:Find at|Common port result|Common profile):[^\n]*\n)+$/;

/** The type that a file's first bytes show: that of a picture, 'text/html', or '' for anything else. */
export function sniff(bytes) {
  const head = String.fromCharCode(...bytes.subarray(0, 512));
  const picture = MAGIC.find(([, magic]) => head.startsWith(magic));
  if (picture) return picture[0];
  return /^(?:\xef\xbb\xbf)?\s*<[!?a-z]/i.test(head) ? 'text/html' : '';
}

/** Removes the line ends that the view header leaves before the file's first byte. */
export function stripLead(bytes) {
  const lead = [13, 10, 13, 10];
  return lead.every((byte, i) => bytes[i] === byte) ? bytes.subarray(lead.length) : bytes;
}

async function fetchFile(entry, signal) {
  const pieces = [];
  const { received } = await fetchPieces(`fileman.cgi${deliveryQuery('view', [entry.sent])}`, {
    signal,
    onPiece(piece, soFar, total) {
      if (Math.max(soFar, total) > MOST_BYTES) throw new AnswerError('tooLarge');
      pieces.push(piece);
    },
  });
  const bytes = stripLead(new Uint8Array(await new Blob(pieces).arrayBuffer()));
  if (!received || !bytes.length || (bytes.length < 65536 && DIAGNOSTICS.test(new TextDecoder().decode(bytes))))
    throw new AnswerError('errorGone');
  return bytes;
}

function decodeReport(bytes) {
  const head = new TextDecoder('latin1').decode(bytes.subarray(0, 2048));
  const label = /<meta[^>]+charset\s*=\s*["']?([\w-]+)/i.exec(head)?.[1] ?? 'utf-8';
  try {
    return new TextDecoder(label).decode(bytes);
  } catch {
    return new TextDecoder().decode(bytes);
  }
}

/**
 * A report's document without what would run, load or lead away. Its own pictures lie outside the interface.
 * `Parser` is the frame's own: the list's policy would complain about the report's styles while they are read.
 */
function calmReport(text, Parser) {
  // The frame runs no handlers. Renamed ones do not make the browser report that, either.
  const quiet = text.replace(/<[a-z][^>]*>/gi, (tag) => tag.replace(/(\s)on(?=\w+\s*=)/gi, '$1data-on'));
  const report = new Parser().parseFromString(quiet, 'text/html');
  report
    .querySelectorAll('script, base, meta[http-equiv], link, iframe, frame, object, embed, audio, video, form[action]')
    .forEach((node) => (node.localName === 'form' ? node.removeAttribute('action') : node.remove()));
  for (const picture of report.querySelectorAll('img, input[type=image]')) {
    const source = picture.getAttribute('src') ?? '';
    picture.removeAttribute('srcset');
    if (/^data:image\//i.test(source)) continue;
    const name = picture.getAttribute('alt') || source.slice(source.lastIndexOf('/') + 1);
    const note = report.createElement('span');
    note.setAttribute(
      'style',
      'display:inline-block;padding:.5em .8em;border:1px dashed #888;border-radius:4px;color:#555;font:13px sans-serif',
    );
    note.textContent = t('pictureMissing', { name: visible(name) });
    picture.replaceWith(note);
  }
  for (const node of report.querySelectorAll('*')) {
    for (const { name, value } of [...node.attributes]) {
      const leads = (name === 'href' || name.endsWith(':href')) && !value.startsWith('#');
      if (
        name.startsWith('on') ||
        leads ||
        ['background', 'action', 'formaction', 'ping', 'poster', 'target'].includes(name)
      )
        node.removeAttribute(name);
      else if (name === 'style') node.setAttribute(name, withoutUrls(value));
    }
  }
  report.querySelectorAll('style').forEach((style) => {
    style.textContent = withoutUrls(style.textContent);
  });
  return report;
}

function withoutUrls(css) {
  return css.replace(/@import[^;]*;?/gi, '').replace(/url\((?!\s*["']?data:)[^)]*\)/gi, 'none');
}

function reportFrame(entry, text, onEscape) {
  // Without allow-scripts nothing runs in the frame; same origin only lets us fill it.
  const frame = el('iframe', {
    class: 'fm-report',
    title: t('reportTitle', { name: visible(entry.name) }),
    sandbox: 'allow-same-origin',
    src: `${window.fileman.base}report.html`,
  });
  frame.addEventListener(
    'load',
    () => {
      const target = frame.contentDocument;
      const report = calmReport(text, frame.contentWindow.DOMParser);
      target.head.append(...target.adoptNode(report.head).childNodes);
      target.body.replaceWith(target.adoptNode(report.body));
      target.addEventListener('keydown', (event) => {
        if (event.key === 'Escape') onEscape();
      });
      target.documentElement.lang = report.documentElement.lang || 'en';
    },
    { once: true },
  );
  return frame;
}

export class Viewer {
  /** `events`: closed(), step(by), download(entry). */
  constructor(host, events) {
    this.host = host;
    this.events = events;
    this.title = el('h2', { id: 'fm-viewer-title' });
    this.body = el('div', { class: 'fm-viewer-body', 'aria-live': 'off' });
    host.setAttribute('aria-labelledby', this.title.id);
    this.wide = button(t('wide'), {
      image: 'wide',
      bare: true,
      class: 'fm-quiet',
      'aria-pressed': 'false',
      press: () => this.#widen(),
    });
    const tools = el(
      'div',
      { class: 'fm-viewer-tools' },
      button(t('previous'), { image: 'back', bare: true, class: 'fm-quiet', press: () => events.step(-1) }),
      button(t('next'), { image: 'next', bare: true, class: 'fm-quiet', press: () => events.step(1) }),
      button(t('download'), {
        image: 'download',
        bare: true,
        class: 'fm-quiet',
        press: () => events.download(this.entry),
      }),
      this.wide,
      button(t('close'), { image: 'close', bare: true, class: 'fm-quiet', press: () => this.close() }),
    );
    host.append(el('div', { class: 'fm-viewer-head' }, this.title, tools), this.body);
    host.addEventListener('keydown', (event) => {
      if (event.key === 'Escape') this.close();
    });
  }

  #widen() {
    const on = this.host.classList.toggle('is-wide');
    this.wide.setAttribute('aria-pressed', on);
  }

  get isOpen() {
    return !this.host.hidden;
  }

  close() {
    this.#drop();
    this.host.hidden = true;
    this.events.closed();
  }

  #drop() {
    this.pending?.abort();
    if (this.address) URL.revokeObjectURL(this.address);
    this.address = null;
  }

  /** Shows an entry; `twin` says that an earlier entry of the list bears the same identity. */
  async open(entry, twin) {
    this.#drop();
    this.entry = entry;
    this.host.hidden = false;
    this.title.textContent = visible(entry.name);
    this.title.title = visible(entry.path);
    this.#fill(el('p', { class: 'fm-wait', text: t('opening') }));
    announce(`${t('opening')} ${visible(entry.name)}`);
    const why = obstacle(entry, 'view');
    if (why) {
      this.#fill(this.#message(t('cannotDeliver', { why: t(why) })));
      return;
    }
    if (kindOf(entry) === 'capture') {
      this.#fill(this.#offer(entry));
      return;
    }
    const pending = new AbortController();
    this.pending = pending;
    try {
      const bytes = await fetchFile(entry, pending.signal);
      this.#fill(
        ...(twin ? [el('p', { class: 'fm-notice', text: t('firstOfSame') })] : []),
        this.#content(entry, bytes),
      );
    } catch (error) {
      if (error.name === 'AbortError') return;
      this.#fill(error.key === 'tooLarge' ? this.#offer(entry, t('tooLarge')) : this.#message(wording(error)));
    }
  }

  #fill(...nodes) {
    this.body.replaceChildren(...nodes);
  }

  #content(entry, bytes) {
    const type = sniff(bytes);
    if (type === 'text/html') return reportFrame(entry, decodeReport(bytes), () => this.close());
    if (!type) return this.#offer(entry);
    this.address = URL.createObjectURL(new Blob([bytes], { type }));
    const picture = el('img', { src: this.address, alt: t('pictureAlt', { name: visible(entry.name) }) });
    picture.addEventListener('error', () => this.#fill(this.#offer(entry)));
    return el('div', { class: 'fm-picture', tabindex: '0', role: 'group', 'aria-label': t('viewer') }, picture);
  }

  #message(text) {
    return el('div', { class: 'fm-empty', role: 'alert' }, icon('warn'), el('p', { text }));
  }

  #offer(entry, title = t('noPreview')) {
    return el(
      'div',
      { class: 'fm-empty' },
      icon(kindOf(entry) === 'capture' ? 'capture' : 'box'),
      el('h3', { text: `${title} (${extension(entry) || '?'})` }),
      el('p', { text: t('noPreviewHint') }),
      button(t('download'), {
        image: 'download',
        class: 'fm-button fm-primary',
        press: () => this.events.download(entry),
      }),
    );
  }
}
