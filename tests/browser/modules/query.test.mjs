// The search language.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { Query } from '../../../web/js/fileman/search/query.js';

test('a query asks by word, phrase, column, exclusion and date', () => {
  const entries = [
    ['a', 'bert_north 1', 'bert', '10G P1', '/h/a.html', '2020-02-03'],
    ['b', 'bert_south', 'bert', '10G P10', '/h/b.html', '2020-02-04'],
    ['c', 'ping "x" north', 'ping', 'RJ45', '/h/c.pcap', '2020-02-05'],
    ['d', 'north 1 d', 'latency', '', '/h/d-[1]{2}.png', '2020-02-06'],
  ].map(([letter, name, test, port, path, day]) => ({ letter, name, test, port, path, datetime: `${day} 10:00:00` }));
  const found = (text) => {
    const query = new Query(text);
    return entries.filter((entry) => query.matches(entry)).map(({ letter }) => letter).join('');
  };
  const cases = [
    ['', 'abcd'], ['NORTH bert', 'a'], ['"north 1"', 'ad'], ['north -bert', 'cd'], ['-"north 1" -ping', 'b'],
    ['port:P1', 'a'], ['port:10g', 'ab'], ['port:"10G P1"', 'a'], ['port:"P1"', ''], ['port:""', 'd'],
    ['test:ber,ping', 'abc'], ['-test:bert,ping', 'd'], ['kind:report', 'ab'], ['kind:Picture,capture', 'cd'],
    ['name:"ping ""x"" north"', 'c'], ['name:north path:d', 'd'], ['path:"/h/d-[1]{2}.png"', 'd'], ['path:d-[', 'd'],
    ['NORTH 2020-02-06', 'd'], ['D-[1]{2}', 'd'], ['3.2.20-4.2.20 bert', 'ab'], ['bert -3.2.20', 'b'],
    ['port:', 'abcd'], ['-', 'abcd'], ['x:y', ''], ['"no end', ''],
  ];
  for (const [text, letters] of cases) assert.equal(found(text), letters, text);
  entries[0].verdict = 'fail';
  entries[1].verdict = 'pass';
  Object.assign(entries[3], { name: 'FAIL over', verdict: 'none' });
  const verdicts = [['Fail', 'ad'], ['verdict:fail', 'a'], ['-fail', 'bc'], ['pass', 'b'], ['failed', '']];
  for (const [text, letters] of verdicts) assert.equal(found(text), letters, text);
  assert.deepEqual(new Query('bert -north name:so "a b"').words, ['bert', 'so', 'a b']);
});

test('a value is tapped into a query and out of it again', () => {
  const toggle = (text, key, value) => new Query(text).toggled(key, value);
  assert.equal(toggle('', 'port', '10G P1'), 'port:"10G P1"');
  assert.equal(toggle('north port:P1 -x', 'port', 'a"b'), 'north -x port:P1,"a""b"');
  assert.equal(toggle('north port:P1,"a""b" "c  d"', 'port', 'a"b'), 'north "c  d" port:P1');
  assert.equal(toggle('port:"10g p1" north', 'port', '10G P1'), 'north');
  const within = (text, other) => new Query(text).isWithin(new Query(other));
  assert.ok(within('bert nor', 'bert no') && within('bert', '') && within('port:P1 ab', 'a port:P1'));
  assert.ok(!within('be', 'bert') && !within('-bert', '-ber') && !within('port:P1', 'port:P'));
});
