// View, download and PDF from a person's side, with the real program, zip and converter.
import assert from 'node:assert/strict';
import { execFileSync, spawnSync } from 'node:child_process';
import fs from 'node:fs';
import { basename } from 'node:path';
import { after, test } from 'node:test';
import { obstacle } from '../../web/js/fileman/kinds.js';
import { parsePage, toEntries } from '../../web/js/fileman/rows.js';
import { deliveryQuery, isSendable, sentId } from '../../web/js/fileman/wire.js';
import {
  answerOf,
  CGI_DIR,
  DIR,
  footer,
  openList,
  pressed,
  row,
  saved,
  startInstrument,
  task,
  told,
} from './instrument.mjs';

const instrument = await startInstrument();
after(() => instrument.stop());

/** An archive of empty files; a name that ends with "/" is a bare folder. */
function archiveOf(...names) {
  for (const name of names) {
    fs.mkdirSync(`/tmp/zip/${name.slice(0, name.lastIndexOf('/'))}`, { recursive: true });
    if (!name.endsWith('/')) fs.writeFileSync(`/tmp/zip/${name}`, '');
  }
  execFileSync('zip', ['-qr', '/tmp/zip.zip', '.'], { cwd: '/tmp/zip' });
  const bytes = fs.readFileSync('/tmp/zip.zip');
  fs.rmSync('/tmp/zip', { recursive: true });
  fs.rmSync('/tmp/zip.zip');
  return bytes;
}

async function choose(page, count) {
  for (let i = 0; i < count; i++) await row(page, i).locator('.fm-check').click();
  return page.$$eval('.slick-row.is-chosen', (rows) =>
    rows.sort((a, b) => a.dataset.row - b.dataset.row).map((found) => found.querySelector('.fm-name').textContent),
  );
}

test('a report shows as a report, runs nothing and asks for nothing', async () => {
  const content =
    '<html><head><style>p{color:rgb(1,2,3)}</style><script>parent.canary=1;canary=1</script></head>' +
    '<body onload="parent.canary=1"><p>Passed</p><img src="viewed_files/chart.png"><img src="data:image/gif;base64,R0lGODlhAQABAAAAACw="><a href="/x">away</a></body></html>';
  fs.writeFileSync(`${DIR}/viewed.html`, content);
  const page = await instrument.open('fmtype=rslt&test=bert&fname=viewed');
  await page.locator('.slick-row').dblclick();
  const report = page.frameLocator('.fm-report');
  await report.getByText('Passed').waitFor();
  assert.equal(await report.locator('p').evaluate((node) => getComputedStyle(node).color), 'rgb(1, 2, 3)');
  assert.match(await report.locator('body').innerText(), /Picture chart.png: part of the download/);
  assert.equal(await report.locator('img').count(), 1);
  assert.equal(await page.evaluate(() => window.canary), undefined);
  await report.locator('body').press('Escape');
  assert.equal(await page.evaluate(() => document.activeElement.id), 'rsltgrid');
  const download = await saved(page, () => pressed(page, 'Download').click());
  assert.equal(execFileSync('unzip', ['-p', await download.path(), '*/viewed.html'], { encoding: 'utf8' }), content);
  assert.deepEqual(page.problems, []);

  // The same report by its own address: the program's policy keeps it from running.
  const response = await page.goto(instrument.list('opertype=view&rsltid=Ethernet_10G%20P1_bert_Result_viewed'));
  assert.equal(await response.text(), content);
  assert.match(await page.innerText('body'), /Passed/);
  assert.equal(await page.evaluate('typeof canary'), 'undefined');
  fs.unlinkSync(`${DIR}/viewed.html`);
});

test('pictures show as pictures, captures offer the download', async () => {
  const page = await instrument.open('fmtype=screen');
  await page.locator('.fm-tile').first().click();
  const picture = page.locator('.fm-picture img');
  await picture.waitFor();
  assert.ok(await picture.evaluate((image) => image.decode().then(() => image.naturalWidth > 0)));
  const title = await page.innerText('#fm-viewer-title');
  await page.locator('.fm-viewer').getByRole('button', { name: 'Next entry' }).click();
  await page.waitForFunction((old) => document.querySelector('#fm-viewer-title').textContent !== old, title);

  await openList(page, instrument.list('fmtype=all'));
  await page.getByRole('searchbox').fill('.pcap');
  await page.waitForURL(/find=/);
  await page.locator('.slick-row').first().dblclick();
  await page.getByRole('heading', { name: /No view for this kind of file/ }).waitFor();
  const download = await saved(page, () => page.locator('.fm-viewer-body').getByRole('button').click());
  assert.match(execFileSync('unzip', ['-Z1', await download.path()], { encoding: 'utf8' }), /\.pcap$/m);
  assert.deepEqual(page.problems, []);
});

test('chosen entries arrive as an archive that holds them, and as PDFs', async () => {
  const page = await instrument.open('fmtype=rslt&test=throughput');
  const wanted = await choose(page, 3);
  const old = await footer(page);
  const download = await saved(page, () => pressed(page, 'Download').click());
  assert.match(download.suggestedFilename(), /^result-files-\d{4}-\d\d-\d\d-3\.zip$/);
  const entries = execFileSync('unzip', ['-Z1', await download.path()], { encoding: 'utf8' });
  for (const name of wanted) assert.ok(entries.includes(`/${name}.html`), name);
  await told(page, /Saved as “result-files/);
  assert.equal(await footer(page), old);

  await page.getByRole('checkbox', { name: 'Choose all shown' }).check();
  await page.getByRole('checkbox', { name: 'Choose all shown' }).uncheck();
  await choose(page, 1);
  const pdf = await saved(page, () => pressed(page, 'PDF').click());
  assert.equal(pdf.suggestedFilename(), `${wanted[0]}.pdf`);
  assert.match(fs.readFileSync(await pdf.path(), 'latin1'), /^%PDF-/);
  assert.deepEqual(page.problems, []);
});

test('an empty, broken or refused answer is told and not saved', async () => {
  const page = await instrument.open('fmtype=rslt&test=throughput');
  await choose(page, 1);
  page.on('download', () => assert.fail('saved'));
  const cases = [
    [{ body: '' }, /sent nothing: it is busy/],
    [{ body: archiveOf('[other]-[]/other.html').subarray(0, 60) }, /no whole archive/],
    [{ body: archiveOf('[other]-[]/other.html') }, /none of the chosen/],
    [{ status: 500, body: '' }, /error 500/],
    [{ status: 502, body: '' }, /error 502/],
  ];
  for (const [answer, words] of cases) {
    await page.route('**/*opertype=download**', (route) => route.fulfill(answer));
    await pressed(page, 'Download').click();
    await told(page, words);
    await task(page).getByRole('button', { name: 'Close' }).click();
    await page.unroute('**/*opertype=download**');
  }
  for (const pdf of ['', '%PDF-1.4\n%%EOF\nhalf of an upd']) {
    await page.route('**/*opertype=pdf**', (route) => route.fulfill({ body: pdf }));
    await pressed(page, 'PDF').click();
    await told(page, pdf ? /no whole PDF/ : /sent nothing/);
    await page.unroute('**/*opertype=pdf**');
  }
  await page.route('**/*opertype=download**', () => {}); // never answers
  await pressed(page, 'Download').click();
  await told(page, 'Packing 1 entry …');
  await task(page).getByRole('button', { name: 'Cancel' }).click();
  await told(page, 'Cancelled.');
  await page.unroute('**/*opertype=download**');
  page.removeAllListeners('download');
  await saved(page, () => task(page).getByRole('button', { name: 'Try again' }).click());
});

test('what is missing is told and stays in sight; a busy instrument can be asked again', async () => {
  const page = await instrument.open('fmtype=rslt&test=throughput');
  const [first, second] = await choose(page, 2);
  let asked = 0;
  await page.route('**/*opertype=download**', (route) => {
    asked += 1;
    return route.fulfill({ body: asked === 1 ? '' : archiveOf(`[${first}]-[]/${first}.html`, `[${second}]-[]/`) });
  });
  await pressed(page, 'Download').click();
  await told(page, /sent nothing/);
  await page.clock.install();
  const [download] = await Promise.all([
    page.waitForEvent('download'),
    task(page).getByRole('button', { name: 'Try again' }).click(),
  ]);
  assert.equal(download.suggestedFilename(), `${first}.zip`);
  await told(page, 'Download: saved, but not everything');
  await page.clock.fastForward(60000);
  assert.match(
    await task(page).innerText(),
    new RegExp(`1 entry is missing from the answer: “/home/.*/${second}\\.html”`),
  );
  assert.equal(await page.locator('.fm-task').count(), 1);
  await page.unroute('**/*opertype=download**');
  const missing = await saved(page, () => task(page).getByRole('button', { name: 'Try again' }).click());
  assert.equal(missing.suggestedFilename(), `${second}.zip`);

  // One PDF in the place of two: its name says which one is missing.
  const answer = { headers: { 'Content-Disposition': `attachment;filename=${first}.pdf` }, body: '%PDF-1.4\n%%EOF\n' };
  await page.route('**/*opertype=pdf**', (route) => route.fulfill(answer));
  const pdf = await saved(page, () => pressed(page, 'PDF').click());
  assert.equal(pdf.suggestedFilename(), `${first}.pdf`);
  await told(page, new RegExp(`1 entry is missing from the answer: “/home/.*/${second}\\.html”`));
});

test('what a name or a folder may hold is what the program can pack', async () => {
  const home = '/home/10g/kte-rslt';
  const signs = Array.from({ length: 127 }, (_, i) => String.fromCharCode(i + 1)).filter((sign) => sign !== '/');
  signs.push('\u0085', '\u00a0', '\u2028', '\u3000', '\ufeff', 'ü');
  const made = [];
  const entries = [];
  for (const [i, sign] of signs.entries()) {
    const folder = `${home}/10gport${sign}port/bert-result`;
    fs.mkdirSync(folder, { recursive: true });
    made.push(`${home}/10gport${sign}port`);
    const paths = [`${folder}/packed${i}.html`, `${DIR}/packed${i}${sign}.html`, `${DIR}/${sign}packed${i}.html`];
    paths.forEach((path) => fs.writeFileSync(path, `<${path}>`));
    made.push(...paths.slice(1));
  }
  try {
    const listed = parsePage(answerOf('fmtype=rslt'));
    for (const entry of toEntries(listed, false)) {
      if (/packed\d/.test(entry.path) && isSendable(entry.id)) entries.push(entry);
    }
    assert.ok(entries.length > 3 * signs.length - 12);
    const program = spawnSync(`${CGI_DIR}/fileman.cgi`, {
      env: {
        PATH: process.env.PATH,
        QUERY_STRING: deliveryQuery('download', entries.map(sentId)).slice(1),
      },
      maxBuffer: 1 << 26,
    });
    fs.writeFileSync('/tmp/packed.zip', program.stdout.subarray(program.stdout.indexOf('PK')));
    const packed = execFileSync('unzip', ['-p', '/tmp/packed.zip'], { encoding: 'utf8', maxBuffer: 1 << 26 });
    const wrong = entries.filter(
      (entry) => packed.includes(`<${entry.path}>`) === Boolean(obstacle(entry, 'download')),
    );
    assert.deepEqual(
      wrong.map(({ path }) => path),
      [],
    );
  } finally {
    made.forEach((path) => fs.rmSync(path, { recursive: true, force: true }));
  }
});

test('a file that has gone is told', async () => {
  const path = `${DIR}/gone.html`;
  fs.writeFileSync(path, '<html>soon gone</html>');
  const page = await instrument.open('fmtype=rslt&test=bert&fname=gone');
  fs.unlinkSync(path);
  await page.locator('.slick-row').first().click();
  await pressed(page, 'Download').click();
  await told(page, /does not find this any more/);
  await pressed(page, 'View').click();
  await page.locator('.fm-viewer').getByRole('alert').waitFor();
});

test('a long choice goes in parts, smaller ones for a server with a shorter limit', async () => {
  const made = Array.from({ length: 1200 }, (_, i) => `${DIR}/a long name for a result that fills the query ${i}.html`);
  made.forEach((path) => fs.writeFileSync(path, '<html></html>'));
  try {
    const page = await instrument.open('fmtype=rslt&fname=a%20long%20name');
    await page.getByRole('checkbox', { name: 'Choose all shown' }).check();
    const asked = [];
    const archive = archiveOf(...made.map((path) => `[${basename(path, '.html')}]-[]/${basename(path)}`));
    await page.route('**/*opertype=download**', (route) => {
      asked.push(route.request().url().length);
      return asked.length === 1 ? route.fulfill({ status: 414, body: '' }) : route.fulfill({ body: archive });
    });
    await pressed(page, 'Download').click();
    await told(page, /Saved as/);
    assert.ok(asked[0] < 60000 && asked[0] > 40000);
    assert.ok(asked.slice(1).every((length) => length < 8000) && asked.length > 10, String(asked));
  } finally {
    made.forEach((path) => fs.unlinkSync(path));
  }
});
