/*
 * Shows one stored file beside the list. If a view stays open for a moment, the archive of the entry is fetched too. It
 * holds the pictures of a report, the packets of a capture and the advanced information.
 */
import { announce } from '../common/announce.js';
import { shownName } from '../common/controlchars.js';
import { button, el } from '../common/dom.js';
import { Facts } from '../view/facts.js';
import { icon } from '../common/icons.js';
import { extension, kindOf, sniff } from '../answers/kinds.js';
import { later } from './later.js';
import { menuButton } from '../common/menu.js';
import { obstacle } from '../answers/candeliver.js';
import { showReport } from '../view/report.js';
import { AnswerError } from '../answers/refusals.js';
import { fetchFile } from '../answers/fetchfile.js';
import { t } from '../common/texts.js';
import { wording } from '../answers/wording.js';

const NOWHERE = { at: -1, count: 0 }; // the place of an entry that is not among the shown rows

export class Viewer {
  /**
   * `events` has close(), step(by), deliver(operation, entries), and copies(entries), which returns the items of the
   * menu Copy.
   */
  constructor(host, events) {
    this.host = host;
    this.events = events;
    this.title = el('h2', { id: 'fm-viewer-title', role: 'heading', tabindex: '-1' });
    this.place = el('span', { class: 'fm-viewer-place' });
    this.facts = new Facts();
    this.body = el('div', { class: 'fm-viewer-body', 'aria-live': 'off' });
    host.setAttribute('aria-labelledby', this.title.id);
    host.tabIndex = -1; // takes the focus, and so the keys, after a click beside its parts
    host.append(this.#head(), this.facts.node, this.body);
    host.addEventListener('keydown', (event) => this.#key(event));
    new ResizeObserver(() => this.#cover()).observe(host);
  }

  #head() {
    const tool = (text, image, press, rest = {}) => button(text, { image, class: 'fm-quiet', press, ...rest });
    const bare = { bare: true };
    this.previous = tool(t('previous'), 'back', () => this.events.step(-1), bare);
    this.next = tool(t('next'), 'next', () => this.events.step(1), bare);
    this.pdf = tool(t('pdfThis'), 'pdf', () => this.events.deliver('pdf', this.entries), { short: t('pdf') });
    this.download = tool(t('downloadThis'), 'download', () => this.events.deliver('download', this.entries), {
      short: t('download'),
    });
    this.printer = tool(t('print'), 'print', () => this.print(), { short: t('print') });
    const copy = menuButton(t('copy'), () => this.events.copies(this.entries), {
      image: 'copy',
      class: 'fm-quiet',
      short: t('copy'),
    });
    this.wide = tool(t('wide'), 'wide', () => this.#widen(), { ...bare, 'aria-pressed': 'false' });
    const close = tool(t('close'), 'close', () => this.events.close(), bare);
    const group = (name, ...tools) => el('div', { class: `fm-viewer-tools ${name}` }, tools);
    return el(
      'div',
      { class: 'fm-viewer-head' },
      group('fm-viewer-steps', this.previous, this.place, this.next),
      this.title,
      group('fm-viewer-actions', this.pdf, this.download, this.printer, copy),
      group('fm-viewer-ends', this.wide, close),
    );
  }

  #key(event) {
    const by = { ArrowLeft: -1, ArrowRight: 1 }[event.key];
    if (event.ctrlKey || event.metaKey || event.altKey) {
      if (event.key.toLowerCase() !== 'p' || event.altKey) return;
      this.print();
    } else if (event.key === 'Escape') this.events.close();
    else if (by && !scrollsSideways(event.target)) this.events.step(by);
    else return;
    event.preventDefault();
  }

  #widen() {
    const on = this.host.classList.toggle('is-wide');
    this.wide.setAttribute('aria-pressed', on);
    this.#cover();
  }

  /** While the view fills the window, the list is hidden (css/fileman.css). Then the focus must not stay in it. */
  #cover() {
    const list = this.host.parentNode.querySelector('.fm-list');
    const isOver = this.isOpen && getComputedStyle(list).visibility === 'hidden';
    this.title.setAttribute('aria-level', isOver ? 1 : 2);
    if (isOver && !document.activeElement?.closest('.fm-viewer, .fm-tasks, .fm-menu')) this.title.focus();
  }

  get isOpen() {
    return !this.host.hidden;
  }

  /** Hides the view and aborts its requests. */
  hide() {
    this.#drop();
    this.host.hidden = true;
    this.#cover();
  }

  #drop() {
    this.pending?.abort();
    if (this.address) URL.revokeObjectURL(this.address);
    this.address = null;
    this.report = null;
  }

  /** The shown entries: one, or two in a comparison. */
  get entries() {
    return this.other ? [this.entry, this.other] : [this.entry];
  }

  /** Replaces the entries by the same entries of a list that was loaded again. */
  renew([entry, other = null], place) {
    this.entry = entry;
    this.other = other;
    this.showPlace(place);
  }

  /** Shows `place`, as in open(). Two compared reports have no place. */
  showPlace(place) {
    const { at, count } = this.other ? NOWHERE : place;
    this.at = place;
    this.place.textContent = at < 0 ? '' : t('place', { at: at + 1, count });
    this.previous.disabled = at <= 0;
    this.next.disabled = at < 0 || at >= count - 1;
    if (this.host.contains(document.activeElement) && document.activeElement.disabled) this.title.focus();
  }

  /**
   * Shows an entry. `place` is { at, count }: its index in the shown rows, or -1 if it is not there, and their number.
   */
  async open(entry, place) {
    const { signal } = this.#begin([entry], place);
    this.facts.show(entry);
    await this.#load(entry, signal);
    if (!signal.aborted) await this.#lookInside(entry, signal);
  }

  /** Shows two reports side by side. */
  async compare(entries) {
    const { signal } = this.#begin(entries, NOWHERE);
    try {
      const contents = [];
      for (const entry of entries) contents.push(await fetchFile(entry, signal));
      if (contents.some((bytes) => sniff(bytes) !== 'text/html')) throw new AnswerError('notComparable');
      const { showComparison } = await later();
      this.report = showComparison(entries, contents, (event) => this.#key(event));
      this.#fill(this.report.frame);
      announce(t('differ', { n: await this.report.ready }));
      await this.#fillPictures(entries, signal);
    } catch (error) {
      if (error.name === 'AbortError') return;
      this.#fill(this.#message(wording(error), () => this.compare(entries)));
    }
  }

  #begin(entries, place) {
    if (this.body.contains(document.activeElement)) this.title.focus();
    this.#drop();
    [this.entry, this.other = null] = entries;
    this.host.hidden = false;
    this.host.classList.toggle('is-pair', entries.length > 1);
    this.facts.node.hidden = entries.length > 1;
    this.title.textContent = entries.map(shownName).join(' ↔ ');
    this.title.title = this.title.textContent;
    this.showPlace(place);
    for (const operation of ['pdf', 'download'])
      this[operation].disabled = entries.every((entry) => obstacle(entry, operation));
    this.#fill(el('p', { class: 'fm-wait', text: t('opening') }));
    this.#cover();
    announce(`${t('opening')} ${this.title.textContent}`);
    this.pending = new AbortController();
    return this.pending;
  }

  async #load(entry, signal) {
    const why = obstacle(entry, 'view');
    if (why) {
      this.#fill(this.#message(t('cannotDeliver', { why: t(why) })));
      return;
    }
    if (kindOf(entry) === 'capture') {
      this.#fill(this.#offer(entry));
      return;
    }
    try {
      const content = this.#content(entry, await fetchFile(entry, signal));
      if (entry.twin) this.#fill(el('p', { class: 'fm-notice', text: t('firstOfSame') }), content);
      else this.#fill(content);
      await this.report?.ready;
    } catch (error) {
      if (error.name === 'AbortError') return;
      if (error.key === 'tooLarge') this.#fill(this.#offer(entry, t('tooLarge')));
      else this.#fill(this.#message(wording(error), () => this.open(entry, this.at)));
    }
  }

  /** Fetches the archive of the entry and shows its pictures, packets and advanced information. */
  async #lookInside(entry, signal) {
    const why = obstacle(entry, 'download');
    if (why) {
      this.facts.say(t('archiveNever', { why: t(why) }));
      return;
    }
    try {
      const { fetchEntryArchive, rested } = await later();
      await rested(signal);
      this.facts.say(t('archiveWait'));
      const archive = await fetchEntryArchive(entry, signal);
      await this.report?.fill(...(await archive.references(this.report.paths())));
      const packets = kindOf(entry) === 'capture' && (await packetsOf(archive.own()));
      const advanced = archive.advanced();
      if (signal.aborted) return;
      if (packets) this.#fill(packets);
      this.facts.showAdvanced(advanced);
      this.facts.say('');
    } catch (error) {
      if (signal.aborted) return;
      if (!(error instanceof AnswerError)) throw error;
      this.facts.say(t('archiveFailed', { why: wording(error) }), () => {
        this.facts.say(t('archiveWait'));
        this.#lookInside(entry, signal);
      });
    }
  }

  /** Fills in the pictures of two compared reports. If an archive cannot be fetched, the notes stay in its report. */
  async #fillPictures(entries, signal) {
    const { sides } = this.report;
    const { fetchEntryArchive, rested } = await later();
    await rested(signal);
    for (const [i, entry] of entries.entries()) {
      const paths = sides[i].paths();
      if (!paths.size || obstacle(entry, 'download')) continue;
      const archive = await fetchEntryArchive(entry, signal).catch(() => null);
      if (signal.aborted) return;
      if (archive) sides[i].fill(...(await archive.references(paths)));
    }
  }

  /** Prints the report or the view without the page around it. */
  print() {
    if (this.report) {
      this.report.frame.contentWindow.print();
      return;
    }
    const { classList } = document.documentElement;
    classList.add('prints-view');
    addEventListener('afterprint', () => classList.remove('prints-view'), { once: true });
    print();
  }

  #fill(...nodes) {
    this.body.replaceChildren(...nodes);
  }

  #content(entry, bytes) {
    if (!bytes.length) return this.#message(t('emptyFile'));
    const type = sniff(bytes);
    if (type === 'text/html') {
      this.report = showReport(entry, bytes, (event) => this.#key(event));
      return this.report.frame;
    }
    if (!type) return this.#offer(entry);
    this.address = URL.createObjectURL(new Blob([bytes], { type }));
    const picture = el('img', { src: this.address, alt: t('pictureAlt', { name: shownName(entry) }) });
    picture.addEventListener('error', () => this.#fill(this.#offer(entry)));
    return el('div', { class: 'fm-picture', tabindex: '0', role: 'group', 'aria-label': t('viewer') }, picture);
  }

  #message(text, retry = null) {
    return el(
      'div',
      { class: 'fm-empty', role: 'alert' },
      icon('warn'),
      el('p', { text }),
      retry && button(t('retry'), { class: 'fm-button', press: retry }),
    );
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
        press: () => this.events.deliver('download', [entry]),
      }),
    );
  }
}

async function packetsOf(bytes) {
  const { showCapture } = await later();
  return bytes && showCapture(bytes);
}

/** Returns true if the left and right arrow keys can scroll something at `target`. */
function scrollsSideways(target) {
  for (let node = target; node?.nodeType === Node.ELEMENT_NODE; node = node.parentNode)
    if (node.scrollWidth > node.clientWidth + 1 && /auto|scroll/.test(getComputedStyle(node).overflowX)) return true;
  const { scrollingElement } = target.ownerDocument;
  return target.ownerDocument !== document && scrollingElement.scrollWidth > scrollingElement.clientWidth + 1;
}
