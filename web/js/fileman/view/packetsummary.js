/* The view of a packet capture. It shows numbers, times and protocols, but not the contents of packets. */
import { el } from '../common/dom.js';
import { summarize } from './pcap.js';
import { number, size, t } from '../common/texts.js';

const MOST_PROTOCOLS = 20;
// The Swedish format is the one in which the list writes dates.
const times = new Intl.DateTimeFormat('sv', {
  year: 'numeric',
  month: '2-digit',
  day: '2-digit',
  hour: '2-digit',
  minute: '2-digit',
  second: '2-digit',
  fractionalSecondDigits: 3,
});

function time(seconds) {
  const date = new Date(seconds * 1000);
  return Number.isNaN(date.getTime()) ? '?' : times.format(date);
}

function line(title, text) {
  return el('tr', {}, el('th', { scope: 'row', text: title }), el('td', { text }));
}

function protocolRows({ protocols, packets }) {
  return protocols
    .slice(0, MOST_PROTOCOLS)
    .map(([name, count]) =>
      el(
        'tr',
        {},
        el('th', { scope: 'row', text: name || t('protocolOther') }),
        el('td', { text: number(count) }),
        el('td', {}, el('meter', { max: packets, value: count, 'aria-hidden': 'true' })),
      ),
    );
}

function protocolTable(summary) {
  const heads = [t('protocol'), t('packets'), t('share')].map((text) => el('th', { scope: 'col', text }));
  return el('table', {}, el('thead', {}, el('tr', {}, heads)), el('tbody', {}, protocolRows(summary)));
}

/** Returns an element with the summary of a capture, or null if the bytes are not a capture. */
export function showCapture(bytes) {
  const summary = summarize(bytes);
  if (!summary) return null;
  const { packets, first, last } = summary;
  const facts = [line(t('packets'), `${number(packets)} (${size(summary.bytes)})`)];
  if (first !== null) {
    facts.push(line(t('packetFirst'), time(first)), line(t('packetLast'), time(last)));
    facts.push(line(t('packetSpan'), t('seconds', { n: Math.round((last - first) * 1000) / 1000 })));
  }
  facts.push(line(t('format'), [summary.format, ...summary.links].join(', ')));
  return el(
    'div',
    { class: 'fm-capture' },
    summary.cut && el('p', { class: 'fm-notice', role: 'note', text: t('captureCut') }),
    el('table', {}, el('tbody', {}, facts)),
    packets > 0 && protocolTable(summary),
  );
}
