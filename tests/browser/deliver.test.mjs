// Download and PDF from a person's side, with the real program, zip and converter; failing answers of each kind.
import assert from 'node:assert/strict';
import { execFileSync, spawnSync } from 'node:child_process';
import fs from 'node:fs';
import path from 'node:path';
import { obstacle } from '../../web/js/fileman/answers/candeliver.js';
import { parsePage, toEntries } from '../../web/js/fileman/answers/readrows.js';
import { deliveryQuery, isSendable, sentId } from '../../web/js/fileman/answers/queries.js';
import { archiveOf } from './archives.mjs';
import { CGI_DIR, DIR, answerOf, asks, footer, pressed, report, row, saved, startInstrument, task, test, tick, told, viewer, withAnswer, withFiles } from './instrument.mjs';

const instrument = await startInstrument();

const chooseAll = (page) => page.getByRole('checkbox', { name: 'Choose all shown' });
async function choose(page, ...rows) {
  await tick(page, ...rows);
  return page.locator('.fm-row.is-chosen .fm-name').allTextContents();
}
const unzip = (option, file, ...more) => execFileSync('unzip', [option, file, ...more], { encoding: 'utf8', maxBuffer: 1 << 26 });

const REPORT =
  '<html><head><base href="http://x/"><style>p{color:rgb(1,2,3)}</style><script>parent.canary=1;canary=1</script></head>' +
  '<body onload="parent.canary=1"><p>Passed</p><iframe src="viewed_files/more.html"></iframe><img src="viewed_files/chart.png"><img src="data:image/gif;base64,R0lGODlhAQABAAAAACw="><a href="/x">away</a></body></html>';

test('a report shows as a report, runs nothing and asks for nothing', () =>
  withFiles({ 'viewed.html': REPORT }, async () => {
    const page = await instrument.open('fmtype=rslt&test=bert&fname=viewed');
    await page.locator('.fm-row').dblclick();
    await report(page).getByText('Passed').waitFor();
    assert.equal(await report(page).locator('p').evaluate((node) => getComputedStyle(node).color), 'rgb(1, 2, 3)');
    for (const note of ['Picture chart.png: part of the download', 'Page viewed_files/more.html: part of the download'])
      await report(page).getByText(note).waitFor();
    assert.equal(await report(page).locator('img').count(), 1);
    assert.equal(await page.evaluate(() => window.canary), undefined);
    await report(page).locator('body').press('Escape');
    assert.equal(await page.evaluate(() => document.activeElement.id), 'rsltgrid');
    const download = await saved(page, () => pressed(page, 'Download').click());
    assert.equal(unzip('-p', await download.path(), '*/viewed.html'), REPORT);
    assert.deepEqual(page.problems, []);

    // The same report by its own address: the program's policy keeps it from running.
    page.expected.push('Content Security Policy', 'Blocked script execution');
    const response = await page.goto(instrument.list('opertype=view&rsltid=Ethernet_10G%20P1_bert_Result_viewed'));
    assert.equal(await response.text(), REPORT);
    assert.match(await page.innerText('body'), /Passed/);
    assert.equal(await page.evaluate('typeof canary'), 'undefined');
  }));

test('a report of frames, an empty file and a file without a name are not just blank', () =>
  withFiles({ 'viewed.html': '<frameset><frame src="a/b.html"></frameset>', 'void.html': '', '.html': REPORT }, async () => {
    const page = await instrument.open('fmtype=rslt&module=10G&test=bert#find=port:"10G P1"', { viewport: { width: 1280, height: 1200 } });
    const open = (name) => page.locator('.fm-row').filter({ has: page.getByText(name, { exact: true }) }).dblclick();
    await open('viewed');
    await report(page).getByText('Page a/b.html: part of the download').waitFor();
    await open('void');
    await viewer(page).getByText('This file is empty.').waitFor();
    await open('.html');
    await page.getByRole('heading', { name: '.html', exact: true }).waitFor();
  }));

instrument.onList('chosen entries arrive as an archive that holds them, and as PDFs', 'fmtype=rslt&test=throughput', async (page) => {
  const wanted = await choose(page, 0, 1, 2);
  const old = await footer(page);
  const download = await saved(page, () => pressed(page, 'Download').click());
  assert.match(download.suggestedFilename(), /^result-files-\d{4}-\d\d-\d\d-3\.zip$/);
  const entries = unzip('-Z1', await download.path());
  for (const name of wanted) assert.ok(entries.includes(`/${name}.html`), name);
  await told(page, /Saved as “result-files/);
  assert.equal(await footer(page), old);
  await tick(page, 1, 2);
  const pdf = await saved(page, () => pressed(page, 'PDF').click());
  assert.equal(pdf.suggestedFilename(), `${wanted[0]}.pdf`);
  assert.match(fs.readFileSync(await pdf.path(), 'latin1'), /^%PDF-/);
});

instrument.onList('an empty, broken or refused answer is told in its own words and not saved', 'fmtype=rslt&test=throughput', async (page) => {
  await tick(page, 0);
  page.on('download', () => assert.fail('saved'));
  const sentence = (status) => ({
    status,
    contentType: 'text/html;charset=utf-8',
    body: '<!DOCTYPE html><html><body><p>The converter failed &amp; ended.</p></body></html>',
  });
  for (const [action, answer, words] of [
    ['Download', { body: '' }, /sent nothing: it is busy/],
    ['Download', { body: archiveOf({ '[other]-[]/other.html': '' }).subarray(0, 60) }, /no whole archive/],
    ['Download', { body: archiveOf({ '[other]-[]/other.html': '' }) }, /none of the chosen/],
    ['Download', { status: 500, body: '' }, /error 500/],
    ['Download', { status: 502, body: '' }, /error 502/],
    ['PDF', { body: '' }, /sent nothing/],
    ['PDF', { body: '%PDF-1.4\n%%EOF\nhalf of an upd' }, /no whole PDF/],
    ['PDF', sentence(500), 'The instrument could not answer (error 500): “The converter failed & ended.”'],
    ['PDF', sentence(503), 'The instrument is busy with another request.'],
    ['PDF', sentence(404), 'The instrument does not find this any more.'],
  ])
    await withAnswer(page, /opertype=(download|pdf)/, answer, async () => {
      await pressed(page, action).click();
      await told(page, words);
      await task(page).getByRole('button', { name: 'Close' }).click();
    });
  await withAnswer(page, '**/*opertype=download**', () => {}, async () => {
    await pressed(page, 'Download').click();
    await told(page, 'Packing 1 entry …');
    await task(page).getByRole('button', { name: 'Cancel' }).click();
    await told(page, 'Cancelled.');
  });
  page.removeAllListeners('download');
  await saved(page, () => task(page).getByRole('button', { name: 'Try again' }).click());
});

instrument.onList('what is missing is told and stays in sight; a busy instrument can be asked again', 'fmtype=rslt&test=throughput', async (page) => {
  const [first, second] = await choose(page, 0, 1);
  const again = () => saved(page, () => task(page).getByRole('button', { name: 'Try again' }).click());
  const missing = new RegExp(`1 entry is missing from the answer: “/home/.*/${second}\\.html”`);
  await withAnswer(page, '**/*opertype=download**', { body: '' }, async () => {
    await pressed(page, 'Download').click();
    await told(page, /sent nothing/);
  });
  await withAnswer(page, '**/*opertype=download**', { body: archiveOf({ [`[${first}]-[]/${first}.html`]: '', [`[${second}]-[]/`]: '' }) }, async () => {
    await page.clock.install();
    assert.equal((await again()).suggestedFilename(), `${first}.zip`);
    await told(page, 'Download: saved, but not everything');
    await page.clock.fastForward(60000);
    assert.match(await task(page).innerText(), missing);
    assert.equal(await page.locator('.fm-task').count(), 1);
  });
  assert.equal((await again()).suggestedFilename(), `${second}.zip`);

  // One PDF in the place of two: its name says which one is missing.
  const answer = { headers: { 'Content-Disposition': `attachment;filename=${first}.pdf` }, body: '%PDF-1.4\n%%EOF\n' };
  await withAnswer(page, '**/*opertype=pdf**', answer, async () => {
    const pdf = await saved(page, () => pressed(page, 'PDF').click());
    assert.equal(pdf.suggestedFilename(), `${first}.pdf`);
    await told(page, missing);
  });
});

test('what a name or a folder may hold is what the program can pack', () => {
  const signs = Array.from({ length: 127 }, (_, i) => String.fromCharCode(i + 1)).filter((sign) => sign !== '/');
  signs.push('\u0085', '\u00a0', '\u2028', '\u3000', '\ufeff', 'ü');
  const namesWith = (sign, i) => [`../../10gport${sign}port/bert-result/packed${i}.html`, `packed${i}${sign}.html`, `${sign}packed${i}.html`];
  return withFiles(signs.flatMap(namesWith).map((name) => [name, `<${path.join(DIR, name)}>`]), () => {
    const listed = toEntries(parsePage(answerOf('fmtype=rslt')), false);
    const entries = listed.filter((entry) => /packed\d/.test(entry.path) && isSendable(entry.id));
    assert.ok(entries.length > 3 * signs.length - 12);
    const QUERY_STRING = deliveryQuery('download', entries.map(sentId)).slice(1);
    const { stdout } = spawnSync(`${CGI_DIR}/fileman.cgi`, { env: { PATH: process.env.PATH, QUERY_STRING }, maxBuffer: 1 << 26 });
    fs.writeFileSync('/tmp/packed.zip', stdout.subarray(stdout.indexOf('PK')));
    const packed = unzip('-p', '/tmp/packed.zip');
    const isWrong = (entry) => packed.includes(`<${entry.path}>`) === Boolean(obstacle(entry, 'download'));
    assert.deepEqual(entries.filter(isWrong), []);
  });
});

test('a file that has gone is told', () =>
  withFiles({ 'gone.html': '<html>soon gone</html>' }, async () => {
    const page = await instrument.open('fmtype=rslt&test=bert&fname=gone');
    fs.unlinkSync(`${DIR}/gone.html`);
    page.expected.push('status of 404');
    await row(page, 0).click();
    await pressed(page, 'Download').click();
    await told(page, /does not find this any more/);
    await pressed(page, 'View').click();
    await viewer(page).getByRole('alert').waitFor();
  }));

test('a long choice goes in parts, smaller ones for a server with a shorter limit', () => {
  const names = Array.from({ length: 1200 }, (_, i) => `a long name for a result that fills the query ${i}`);
  return withFiles(Object.fromEntries(names.map((name) => [`${name}.html`, ''])), async () => {
    const page = await instrument.open('fmtype=rslt&fname=a%20long%20name');
    page.expected.push('status of 414');
    await chooseAll(page).check();
    const asked = asks(page, 'opertype=download');
    const body = archiveOf(Object.fromEntries(names.map((name) => [`[${name}]-[]/${name}.html`, ''])));
    await withAnswer(page, '**/*opertype=download**', { body }, async () => {
      await page.route('**/*opertype=download**', (route) => route.fulfill({ status: 414, body: '' }), { times: 1 });
      await pressed(page, 'Download').click();
      await told(page, /Saved as/);
    });
    const [first, ...others] = asked.map(({ length }) => length);
    assert.ok(first < 60000 && first > 40000);
    assert.ok(others.every((length) => length < 8000) && others.length > 9, String(others));
  });
});
