// What a packet capture holds is read from files of each form, and whatever a file holds, reading ends.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { summarize } from '../../../web/js/fileman/view/pcap.js';
import { dice } from '../hostile-names.mjs';

const number = (bits) => (value) => ({ bits, value });
const [u8, u16, u32] = [8, 16, 32].map(number);

/** Numbers of 8, 16 and 32 bits in one byte order, and bytes as they are. */
function pack(little, ...parts) {
  const bytes = ({ bits, value }) => {
    const digits = Array.from({ length: bits / 8 }, (_, i) => Math.floor(value / 256 ** i) % 256);
    return little ? digits : digits.reverse();
  };
  return Buffer.concat(parts.map((part) => Buffer.from(part.bits ? bytes(part) : part)));
}

const ethernet = (type, ...rest) => pack(false, Buffer.alloc(12), u16(type), ...rest);
const ip4 = (protocol, fragment, ...rest) =>
  pack(false, u8(0x45), Buffer.alloc(5), u16(fragment), u8(64), u8(protocol), Buffer.alloc(10), ...rest);
const ip6 = (next, ...rest) => pack(false, u8(0x60), Buffer.alloc(5), u8(next), u8(64), Buffer.alloc(32), ...rest);
const ports = (from, to) => pack(false, u16(from), u16(to), Buffer.alloc(4));

const PACKETS = [
  ['ARP', ethernet(0x0806, Buffer.alloc(28))],
  ['ICMP', ethernet(0x8100, pack(false, u16(7), u16(0x0800)), ip4(1, 0, Buffer.alloc(8)))],
  ['DNS', ethernet(0x0800, ip4(17, 0, ports(40000, 53)))],
  ['UDP', ethernet(0x0800, ip4(17, 100, ports(40000, 53)))], // not the first fragment: that is no port
  ['TCP', ethernet(0x86dd, ip6(0, pack(false, u8(6), u8(0), Buffer.alloc(6)), ports(1, 2)))],
  ['PTP', ethernet(0x88f7)],
  ['0x1234', ethernet(0x1234)],
  ['IPv4', ethernet(0x0800, Buffer.alloc(3))],
  ['', Buffer.alloc(5)],
];
const NAMES = PACKETS.map(([name]) => name).sort();

function pcap(little, isNano) {
  const head = pack(little, u32(isNano ? 0xa1b23c4d : 0xa1b2c3d4), Buffer.alloc(12), u32(65535), u32(1));
  const records = PACKETS.map(([, bytes], i) =>
    pack(little, u32(1000 + i), u32(isNano ? 5e8 : 5e5), u32(bytes.length), u32(bytes.length + 100), bytes),
  );
  return pack(little, head, ...records);
}

function block(little, type, ...content) {
  const body = pack(little, ...content);
  const padded = Buffer.concat([body, Buffer.alloc((4 - (body.length % 4)) % 4)]);
  return pack(little, u32(type), u32(padded.length + 12), padded, u32(padded.length + 12));
}

function pcapng(little) {
  const time = (seconds) => [u32(Math.floor((seconds * 1000) / 2 ** 32)), u32((seconds * 1000) % 2 ** 32)];
  const milliseconds = pack(little, u16(9), u16(1), u8(3), Buffer.alloc(3), u16(0), u16(0));
  const packets = PACKETS.map(([, bytes], i) =>
    block(little, 6, u32(0), ...time(1000.5 + i), u32(bytes.length), u32(bytes.length + 100), bytes),
  );
  return Buffer.concat([
    block(little, 0x0a0d0d0a, u32(0x1a2b3c4d), u16(1), u16(0), Buffer.alloc(8, 255)),
    block(little, 1, u16(1), u16(0), u32(65535), milliseconds),
    block(little, 0xbad, Buffer.from('a block of another kind')),
    ...packets,
  ]);
}

test('count, times and protocols, in each form and byte order', () => {
  const bytes = PACKETS.reduce((sum, [, packet]) => sum + packet.length + 100, 0);
  for (const [format, file] of [
    ['pcap', pcap(true, false)],
    ['pcap', pcap(false, true)],
    ['pcapng', pcapng(true)],
    ['pcapng', pcapng(false)],
  ]) {
    const { protocols, ...read } = summarize(file);
    const wanted = { format, links: ['Ethernet'], packets: 9, bytes, first: 1000.5, last: 1008.5, cut: false };
    assert.deepEqual([read, protocols.map(([name]) => name).sort()], [wanted, NAMES]);
  }
  for (const other of ['', '\xa1\xb2', '<html>', '%PDF-1.4'])
    assert.equal(summarize(Buffer.from(other, 'latin1')), null);
});

test('a file that is cut off or broken is read up to that place', () => {
  const random = dice(11).below;
  for (const [whole, ends] of [
    [pcap(true, false), 10],
    [pcapng(false), 12],
  ]) {
    let before = 0;
    let found = 0; // lengths at which nothing is cut off
    for (let length = 4; length <= whole.length; length++) {
      const read = summarize(whole.subarray(0, length));
      assert.ok(read.packets >= before && read.packets <= 9);
      found += !read.cut;
      before = read.packets;
    }
    assert.deepEqual([before, found], [9, ends]);
    for (let round = 0; round < 2000; round++) {
      const broken = Buffer.from(whole);
      for (let i = 0; i < 3; i++) broken[4 + random(whole.length - 4)] = random(256);
      const read = summarize(broken);
      assert.ok(read.packets <= whole.length / 16 && read.protocols.every(([, count]) => count > 0));
    }
  }
});
