// Reading rows of pages as the program prints them, with hostile names in them. Whatever the names are, a row is read as
// it was stored or counted as lost, and the work does not grow faster than the page.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { FIELDS, parsePage, parseScript, toEntries } from '../../../web/js/fileman/answers/readrows.js';
import { decodePage } from '../../../web/js/fileman/answers/encoding.js';
import { deliveryQuery, sentId } from '../../../web/js/fileman/answers/queries.js';
import { bytesOf, dice, hostileStore, page, record, script, valuesOf } from '../hostile-names.mjs';

/** Asserts that the rows read are the stored ones in their order, less as many as are lost. */
function assertSound(parsed, rows, raw, seed) {
  const text = (value) => (raw ? value : Buffer.from(value, 'latin1').toString());
  let at = 0;
  for (const read of parsed.rows) {
    const key = JSON.stringify(Object.values(read));
    while (at < rows.length && JSON.stringify(rows[at].map(text)) !== key) at += 1;
    assert.ok(at < rows.length, `seed ${seed}: a row that is not stored: ${key}`);
    at += 1;
  }
  assert.equal(parsed.rows.length + parsed.lost, rows.length, `seed ${seed}: a row is missing without a sign`);
}

test('hostile names: no wrong row, and none missing without a sign', () => {
  let all = 0;
  let lost = 0;
  for (let seed = 1; seed <= Number(process.env.FILEMAN_SEEDS ?? 2500); seed++) {
    const rows = hostileStore(dice(seed));
    const bytes = bytesOf(page(rows));
    const { text, raw } = decodePage(bytes);
    const parsed = parsePage(text);
    assert.ok(parsed.whole, `seed ${seed}`);
    assertSound(parsed, valuesOf(rows), raw, seed);
    assert.ok(parsed.steps <= text.length, `seed ${seed}: ${parsed.steps} steps for ${text.length} characters`);
    all += rows.length;
    lost += parsed.lost;

    // What a browser makes of the same page: it has changed line ends and bytes that are no text.
    const seen = new TextDecoder().decode(bytesOf(script(rows))).replace(/\r\n?/g, '\n');
    const own = parseScript(seen);
    if (own.sure && !own.lost) assertSound(own, valuesOf(rows), false, seed);

    // The same page cut off where a row ends, or seems to.
    const ends = [...text.matchAll(/' \},\n/g)].map(({ index }) => index + 5);
    const cut = parsePage(text.slice(0, ends[seed % ends.length]));
    assert.ok(!cut.whole && cut.lost > 0, `seed ${seed}`);
    if (!parsed.lost) assert.deepEqual(cut.rows, parsed.rows.slice(0, cut.rows.length), `seed ${seed}`);
  }
  assert.ok(lost <= all / 100, `${lost} of ${all} rows were lost`);
});

test('a page full of names that imitate rows takes no more work for each of them', () => {
  for (const name of [
    "x' },\n\t\t];\n",
    "Z' },\n\t\t{ id: 'q",
    "' },\n\t\t{ id: '".repeat(17),
    "', mode: '', test: '', port: '".repeat(8),
  ]) {
    const folder = `/home/10g/kte-rslt/10gport/${name}-result`;
    const cost = (count) => {
      const rows = Array.from({ length: count }, (_, i) => record({ folder, file: `${name} ${i}.html`.slice(-255) }));
      const parsed = parsePage(page(rows));
      assertSound(parsed, valuesOf(rows), false, name);
      assert.equal(parsed.lost, 0, JSON.stringify(name));
      return parsed.steps / count;
    };
    assert.ok(cost(100) < 500 && cost(1000) < 1.1 * cost(100), `${cost(100)} steps a row: ${JSON.stringify(name)}`);
  }
});

test('what cannot be told apart, or only by too much work, is counted, and the rest is read', () => {
  const [before, after] = [1, 2].map((i) => record({ folder: '/home/a/b', file: `n${i}.html` }));
  const between = (more) => record({ folder: '/home/a/b', file: 'f.html', ...more });
  // The first can also be read as the test "x" at the port "_x', port: '". The second has ten thousand readings.
  for (const row of [
    between({ test: "x', port: '_x", port: '' }),
    between({ module: "', mode: '".repeat(100), test: "', test: '".repeat(100) }),
    { ...between({}), name: "another's" },
  ]) {
    const text = page([before, row, after]);
    const parsed = parsePage(text);
    assert.deepEqual([valuesOf(parsed.rows), parsed.lost, parsed.whole], [valuesOf([before, after]), 1, true]);
    assert.ok(parsed.steps <= text.length);
  }
  assert.equal(parsePage('<html>no list</html>'), null);
});

test('bytes that are no UTF-8 return to the instrument unchanged', () => {
  const bytes = bytesOf(page([record({ folder: '/home/a/b', file: 'caf\xe9 \xff.html' })]));
  const { text, raw } = decodePage(bytes);
  const [entry] = toEntries(parsePage(text), raw);
  assert.equal(entry.name, 'caf\ufffd \ufffd');
  assert.equal(deliveryQuery('view', [sentId(entry)]), '?opertype=view&rsltid=SDH/PDH_P1_bert_Result_caf%E9%20%FF');
});

test('strict rows are lines of JSON, whatever the names hold', () => {
  const names = ['"\\', "' },\n\t\t{ id: '", '\udcff\udcfe', '\u2028</script><!--', '\t\t];\n</script>\n</head>\n', ''];
  const rows = names.map((name) => Object.fromEntries(FIELDS.map((field) => [field, `${name} ${field}`])));
  const line = (row) => `\t\t${JSON.stringify(row)}`;
  const list = (end) => `<script>\n\tvar griddata = [\n${rows.map(line).join(',\n')}${end}`.replace(/<(?=[/!])/g, '\\u003c');
  const whole = parsePage(`${list('\n\t\t];\n')}</script>\n</head>\n`);
  assert.deepEqual([whole.rows, whole.whole, whole.lost], [rows, true, 0]);
  const cut = parsePage(list(',\n\t\t{"id":"cut o'));
  assert.deepEqual([cut.rows, cut.whole], [rows, false]);
  const entry = toEntries(whole, false)[2];
  assert.deepEqual([entry.id, sentId(entry)], ['\ufffd\ufffd id', '\xff\xfe id']);
});
