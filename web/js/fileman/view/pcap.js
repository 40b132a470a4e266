/*
 * Summarizes a packet capture: numbers, times and protocols of its packets. Reads pcap (draft-ietf-opsawg-pcap) and
 * pcapng (draft-ietf-opsawg-pcapng) files of either byte order. A file that is cut off or broken is read up to that
 * place.
 */
import { ETHER_NAMES, IP_NAMES, LINK_NAMES, PORT_NAMES } from './protocolnames.js';

const NANO = 1e9;
const ETHERNET = 1;
const LOOPBACKS = [0, 108];
const RAW_IP = [12, 14, 101, 228, 229];
const COOKED = 113;
const COOKED_2 = 276;

const VLAN_TAGS = [0x8100, 0x88a8, 0x9100, 0x9200];
const IP4 = 0x0800;
const IP6 = 0x86dd;
const IP6_EXTENSIONS = [0, 43, 44, 60];
const MOST_TAGS = 8;

/** Reads integers from a file. Outside of the file the result is -1. */
class Numbers {
  constructor(bytes, little) {
    this.data = new DataView(bytes.buffer, bytes.byteOffset, bytes.byteLength);
    this.size = bytes.length;
    this.little = little;
  }

  u8(at) {
    return at + 1 <= this.size ? this.data.getUint8(at) : -1;
  }

  u16(at, little = this.little) {
    return at + 2 <= this.size ? this.data.getUint16(at, little) : -1;
  }

  u32(at, little = this.little) {
    return at + 4 <= this.size ? this.data.getUint32(at, little) : -1;
  }
}

function ofIp(protocol, numbers, at, end, isFirst) {
  const name = IP_NAMES[protocol];
  if (!isFirst || (name !== 'UDP' && name !== 'TCP') || at + 4 > end) return name ?? `IP ${protocol}`;
  return PORT_NAMES[numbers.u16(at, false)] ?? PORT_NAMES[numbers.u16(at + 2, false)] ?? name;
}

function ofIp4(numbers, at, end) {
  if (at + 20 > end) return 'IPv4';
  const isFirst = (numbers.u16(at + 6, false) & 0x1fff) === 0;
  return ofIp(numbers.u8(at + 9), numbers, at + 4 * (numbers.u8(at) & 15), end, isFirst);
}

function ofIp6(numbers, start, end) {
  if (start + 40 > end) return 'IPv6';
  let next = numbers.u8(start + 6);
  let at = start + 40;
  for (let i = 0; i < MOST_TAGS && IP6_EXTENSIONS.includes(next) && at + 8 <= end; i++) {
    const isFragment = next === 44;
    if (isFragment && numbers.u16(at + 2, false) >> 3) return ofIp(numbers.u8(at), numbers, at, end, false);
    const length = isFragment ? 8 : 8 * (numbers.u8(at + 1) + 1);
    next = numbers.u8(at);
    at += length;
  }
  return ofIp(next, numbers, at, end, true);
}

function ofEtherType(first, numbers, from, end) {
  let type = first;
  let at = from;
  for (let i = 0; i < MOST_TAGS && VLAN_TAGS.includes(type) && at + 4 <= end; i++) {
    type = numbers.u16(at + 2, false);
    at += 4;
  }
  if (type === IP4) return ofIp4(numbers, at, end);
  if (type === IP6) return ofIp6(numbers, at, end);
  if (type < 1536) return numbers.u16(at, false) === 0x4242 ? 'STP' : 'LLC';
  return ETHER_NAMES[type] ?? `0x${type.toString(16).padStart(4, '0')}`;
}

/** Returns the name of the innermost protocol that the first bytes of a packet show, or '' if it is unknown. */
function protocolOf(link, numbers, at, end) {
  const ofVersion = (place) => (numbers.u8(place) >> 4 === 6 ? ofIp6(numbers, place, end) : ofIp4(numbers, place, end));
  if (link === ETHERNET && at + 14 <= end) return ofEtherType(numbers.u16(at + 12, false), numbers, at + 14, end);
  if (RAW_IP.includes(link) && at < end) return ofVersion(at);
  if (LOOPBACKS.includes(link) && at + 4 < end) return ofVersion(at + 4);
  if (link === COOKED && at + 16 <= end) return ofEtherType(numbers.u16(at + 14, false), numbers, at + 16, end);
  if (link === COOKED_2 && at + 20 <= end) return ofEtherType(numbers.u16(at, false), numbers, at + 20, end);
  return '';
}

/** Collects the summary of all packets. Times are seconds since 1970. */
class Summary {
  constructor(format) {
    this.result = { format, links: [], packets: 0, bytes: 0, first: null, last: null, protocols: [], cut: false };
    this.counts = new Map();
  }

  link(link) {
    const name = LINK_NAMES[link] ?? `${link}`;
    if (!this.result.links.includes(name)) this.result.links.push(name);
  }

  packet(link, numbers, at, captured, original, seconds) {
    const { result } = this;
    result.packets += 1;
    result.bytes += original;
    if (seconds !== null) {
      result.first = result.first === null ? seconds : Math.min(result.first, seconds);
      result.last = result.last === null ? seconds : Math.max(result.last, seconds);
    }
    const name = protocolOf(link, numbers, at, at + captured);
    this.counts.set(name, (this.counts.get(name) ?? 0) + 1);
  }

  end(cut) {
    this.result.cut = cut;
    this.result.protocols = [...this.counts].sort(([, a], [, b]) => b - a);
    return this.result;
  }
}

function readPcap(bytes, little, fraction) {
  const numbers = new Numbers(bytes, little);
  const summary = new Summary('pcap');
  const link = numbers.u32(20) & 0xffff;
  if (bytes.length < 24) return summary.end(true);
  summary.link(link);
  let at = 24;
  while (at + 16 <= bytes.length) {
    const captured = numbers.u32(at + 8);
    if (captured > bytes.length - at - 16) break;
    const seconds = numbers.u32(at) + numbers.u32(at + 4) / fraction;
    summary.packet(link, numbers, at + 16, captured, numbers.u32(at + 12), seconds);
    at += 16 + captured;
  }
  return summary.end(at !== bytes.length);
}

const SECTION = 0x0a0d0d0a;
const INTERFACE = 1;
const OLD_PACKET = 2;
const SIMPLE_PACKET = 3;
const PACKET = 6;
const TIME_RESOLUTION = 9;

/**
 * Reads an interface block. Returns { link, most, fraction }; `most` is its longest packet, `fraction` is in units/s.
 */
function readInterface(numbers, at, end) {
  const one = { link: numbers.u16(at + 8), most: numbers.u32(at + 12), fraction: 1e6 };
  for (let option = at + 16; option + 4 <= end; option += 4 + 4 * Math.ceil(numbers.u16(option + 2) / 4)) {
    if (numbers.u16(option) === 0) break;
    const value = numbers.u8(option + 4);
    if (numbers.u16(option) === TIME_RESOLUTION && numbers.u16(option + 2) === 1)
      one.fraction = value & 128 ? 2 ** (value & 127) : 10 ** value;
  }
  return one;
}

function readPacketBlock(type, summary, interfaces, numbers, at, end) {
  if (type === SIMPLE_PACKET) {
    const [one] = interfaces;
    const original = numbers.u32(at + 8);
    const captured = Math.min(original, one?.most || original, end - at - 12);
    if (one) summary.packet(one.link, numbers, at + 12, captured, original, null);
    return Boolean(one);
  }
  const one = interfaces[type === PACKET ? numbers.u32(at + 8) : numbers.u16(at + 8)];
  const captured = numbers.u32(at + 20);
  if (!one || captured > end - at - 28) return false;
  const seconds = (numbers.u32(at + 12) * 2 ** 32 + numbers.u32(at + 16)) / one.fraction;
  summary.packet(one.link, numbers, at + 28, captured, numbers.u32(at + 24), seconds);
  return true;
}

const LEAST_BLOCK = { [INTERFACE]: 20, [SIMPLE_PACKET]: 16, [PACKET]: 32, [OLD_PACKET]: 32, [SECTION]: 28 };

function readPcapng(bytes) {
  const summary = new Summary('pcapng');
  let numbers = new Numbers(bytes, true);
  let interfaces = [];
  let at = 0;
  while (at + 12 <= bytes.length) {
    if (numbers.u32(at) === SECTION) {
      const order = numbers.u32(at + 8, true);
      if (order !== 0x1a2b3c4d && order !== 0x4d3c2b1a) break;
      numbers = new Numbers(bytes, order === 0x1a2b3c4d);
      interfaces = [];
    }
    const type = numbers.u32(at);
    const length = numbers.u32(at + 4);
    if (length < (LEAST_BLOCK[type] ?? 12) || length % 4 || length > bytes.length - at) break;
    const end = at + length - 4;
    if (numbers.u32(end) !== length) break;
    if (type === INTERFACE) {
      interfaces.push(readInterface(numbers, at, end));
      summary.link(interfaces.at(-1).link);
    } else if ([PACKET, OLD_PACKET, SIMPLE_PACKET].includes(type)) {
      if (!readPacketBlock(type, summary, interfaces, numbers, at, end)) break;
    }
    at += length;
  }
  return summary.end(at !== bytes.length);
}

/**
 * Returns { format, links, packets, bytes, first, last, protocols, cut }, or null if the bytes are not a capture.
 * `bytes` counts the bytes on the line. `first` and `last` are seconds since 1970, or null. `protocols` has pairs of
 * name and count, the most frequent protocol first. `cut` is true if the file is cut off or broken.
 */
export function summarize(bytes) {
  const magic = new Numbers(bytes, false).u32(0);
  if (magic === SECTION) return readPcapng(bytes);
  if (magic === 0xa1b2c3d4) return readPcap(bytes, false, 1e6);
  if (magic === 0xd4c3b2a1) return readPcap(bytes, true, 1e6);
  if (magic === 0xa1b23c4d) return readPcap(bytes, false, NANO);
  if (magic === 0x4d3cb2a1) return readPcap(bytes, true, NANO);
  return null;
}
