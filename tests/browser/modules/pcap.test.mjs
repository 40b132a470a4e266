// What a packet capture holds is read from files of each form, and whatever a file holds, reading ends.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { summarize } from '../../../web/js/fileman/view/pcap.js';
import { dice } from '../hostile-names.mjs';

/** Bytes in hex; a number stands for so many zeros. */
const hex = (...parts) => Buffer.from(parts.map((part) => (part.at ? part : '00'.repeat(part))).join(''), 'hex');
const ip4 = (protocol, fragment, ports) => hex(12, '0800', '45', 5, fragment, '40', protocol, 10, ports);
const PACKETS = [
  ['ARP', hex(12, '0806', 28)],
  ['ICMP', hex(12, '8100', '00070800', '45', 7, '4001', 18)],
  ['DNS', ip4('11', '0000', '9c400035')],
  ['UDP', ip4('11', '0064', '9c400035')], // not the first fragment: that is no port
  ['TCP', hex(12, '86dd', '60', 5, '0040', 32, '06', 7, '00010002')],
  ['PTP', hex(12, '88f7')],
  ['0x1234', hex(12, '1234')],
  ['IPv4', hex(12, '0800', 3)],
  ['', hex(5)],
];
const NAMES = PACKETS.map(([name]) => name).sort();

/** Returns a function that writes numbers of so many bytes in one byte order. */
const numbers = (size) => (little, ...values) => {
  const bytes = Buffer.alloc(size * values.length);
  values.forEach((value, i) => bytes[little ? 'writeUIntLE' : 'writeUIntBE'](value, size * i, size));
  return bytes;
};
const [u16, u32] = [numbers(2), numbers(4)];

function pcap(little, isNano) {
  const record = ([, bytes], i) =>
    Buffer.concat([u32(little, 1000 + i, isNano ? 5e8 : 5e5, bytes.length, bytes.length + 100), bytes]);
  return Buffer.concat([u32(little, isNano ? 0xa1b23c4d : 0xa1b2c3d4, 0, 0, 0, 65535, 1), ...PACKETS.map(record)]);
}

function pcapng(little) {
  const block = (type, ...content) => {
    const body = Buffer.concat([...content, Buffer.alloc(-Buffer.concat(content).length & 3)]);
    return Buffer.concat([u32(little, type, body.length + 12), body, u32(little, body.length + 12)]);
  };
  const milliseconds = Buffer.concat([u16(little, 9, 1), hex('03', 3), u16(little, 0, 0)]);
  const packet = ([, bytes], i) => {
    const time = 1000500 + 1000 * i;
    return block(6, u32(little, 0, Math.floor(time / 2 ** 32), time % 2 ** 32, bytes.length, bytes.length + 100), bytes);
  };
  return Buffer.concat([
    block(0x0a0d0d0a, u32(little, 0x1a2b3c4d), u16(little, 1, 0), Buffer.alloc(8, 255)),
    block(1, u16(little, 1, 0), u32(little, 65535), milliseconds),
    block(0xbad, Buffer.from('a block of another kind')),
    ...PACKETS.map(packet),
  ]);
}

test('count, times and protocols, in each form and byte order', () => {
  const bytes = PACKETS.reduce((sum, [, packet]) => sum + packet.length + 100, 0);
  const wanted = { links: ['Ethernet'], packets: 9, bytes, first: 1000.5, last: 1008.5, cut: false };
  const files = [['pcap', pcap(true, false)], ['pcap', pcap(false, true)], ['pcapng', pcapng(true)], ['pcapng', pcapng(false)]];
  for (const [format, file] of files) {
    const { protocols, ...read } = summarize(file);
    assert.deepEqual([read, protocols.map(([name]) => name).sort()], [{ ...wanted, format }, NAMES]);
  }
  for (const other of ['', '\xa1\xb2', '<html>', '%PDF-1.4'])
    assert.equal(summarize(Buffer.from(other, 'latin1')), null);
});

test('a file that is cut off or broken is read up to that place', () => {
  const random = dice(11).below;
  for (const [whole, ends] of [[pcap(true, false), 10], [pcapng(false), 12]]) {
    const reads = Array.from({ length: whole.length - 3 }, (_, i) => summarize(whole.subarray(0, 4 + i)));
    assert.ok(reads.every(({ packets }, i) => packets >= (reads[i - 1]?.packets ?? 0)));
    assert.deepEqual([reads.at(-1).packets, reads.filter(({ cut }) => !cut).length], [9, ends]);
    for (let round = 0; round < 2000; round++) {
      const broken = Buffer.from(whole);
      for (let i = 0; i < 3; i++) broken[4 + random(whole.length - 4)] = random(256);
      const read = summarize(broken);
      assert.ok(read.packets <= whole.length / 16 && read.protocols.every(([, count]) => count > 0));
    }
  }
});
