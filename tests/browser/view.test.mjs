// A view from a person's side: what its buttons act on, its place in the history, and what it shows beside the file.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import fs from 'node:fs';
import { after, test } from 'node:test';
import { DIR, names, openList, plainServer, pressed, row, saved, settled, startInstrument, strictServer } from './instrument.mjs';

// Default answers here: the other files ask the packaged server, whose answers are strict.
const instrument = await startInstrument(plainServer());
const strict = await startInstrument(strictServer);
after(() => Promise.all([instrument.stop(), strict.stop()]));

const viewer = (page) => page.locator('.fm-viewer');
const titled = (page, name) => page.getByRole('heading', { name, exact: true }).waitFor();
const inViewer = (page, name) => viewer(page).getByRole('button', { name, exact: true });

test('the buttons of a view act on the viewed entry, those above the list on the chosen rows', async () => {
  const page = await instrument.open('fmtype=rslt&test=throughput', {
    permissions: ['clipboard-read', 'clipboard-write'],
  });
  const [first, second, third] = await names(page);
  await row(page, 0).dblclick();
  await titled(page, first);
  await inViewer(page, 'Next entry').click();
  await titled(page, second);
  // The choice was the viewed row alone, so it goes along.
  assert.deepEqual(await page.locator('.is-chosen .fm-name').allTextContents(), [second]);
  assert.equal((await saved(page, () => pressed(page, 'PDF').click())).suggestedFilename(), `${second}.pdf`);

  for (const i of [0, 3]) await row(page, i).locator('.fm-check').click();
  await inViewer(page, 'Next entry').click();
  await titled(page, third);
  assert.equal(await page.locator('.is-chosen').count(), 3);
  assert.equal(await pressed(page, 'Download').innerText(), 'Download\n3');
  assert.equal(
    (await saved(page, () => inViewer(page, 'PDF of this entry').click())).suggestedFilename(),
    `${third}.pdf`,
  );
  const archive = await saved(page, () => inViewer(page, 'Download this entry').click());
  assert.equal(archive.suggestedFilename(), `${third}.zip`);

  const copied = async (what) => {
    await inViewer(page, 'Copy').click();
    await page.getByRole('menuitem', { name: what }).click();
    return page.evaluate(() => navigator.clipboard.readText());
  };
  assert.equal(await copied('Copy the name'), third);
  assert.match(await copied('Copy the path'), new RegExp(`^/home/.*/${third}\\.html$`));
  await page.goto(await copied('Copy the link'));
  await titled(page, third);
  assert.deepEqual(page.problems, []);
});

test('Back closes a view and Forward opens it; what was typed meanwhile stays', async () => {
  const page = await instrument.open('fmtype=rslt&test=throughput');
  const list = page.url();
  const [first, second] = await names(page);
  await row(page, 0).dblclick();
  await titled(page, first);
  await page.keyboard.press('ArrowRight');
  await titled(page, second);
  await page.frameLocator('.fm-report').locator('body').press('ArrowLeft');
  await titled(page, first);
  await page.keyboard.press('ArrowRight');
  await titled(page, second);
  await page.getByRole('searchbox').fill('throughput');
  await page.waitForURL(/find=throughput&view=/);
  await page.goBack();
  await viewer(page).waitFor({ state: 'hidden' });
  assert.equal(await page.getByRole('searchbox').inputValue(), 'throughput');
  assert.equal(page.url(), `${list}#find=throughput`);
  await page.goForward();
  await titled(page, second);
  await pressed(page, 'Read the list again').click();
  await settled(page);
  await inViewer(page, 'Previous entry').click();
  await titled(page, first);
  await page.closeViewer();
  await page.waitForURL(`${list}#find=throughput`);

  await page.goto(`${list}#view=/home/gone.html`);
  await page.getByRole('alert').getByText('This list does not hold /home/gone.html.').waitFor();
  assert.deepEqual(page.problems, []);
});

async function seeInsides(server) {
  const files = `${DIR}/whole_files`;
  fs.mkdirSync(files, { recursive: true });
  const drawing = '<svg xmlns="http://www.w3.org/2000/svg" width="40" height="30"><rect width="40" height="30"/></svg>';
  fs.writeFileSync(`${files}/chart Ü.svg`, drawing);
  fs.writeFileSync(`${files}/style.css`, 'p { color: rgb(1, 2, 3) }');
  fs.writeFileSync(
    `${DIR}/whole`,
    '<r><KTB_advinfo job_id="J&lt;1" account_id="me" locator="None" advtype="Check"/></r>',
  );
  fs.writeFileSync(
    `${DIR}/whole.html`,
    '<link rel="stylesheet" href="whole_files/style.css"><p>Text</p><img src="whole_files/chart%20%C3%9C.svg" alt="one">' +
      '<object data="./whole_files/chart%20%C3%9C.svg"></object><img src="../../../secret.png"><img src="http://x/y.png">',
  );
  try {
    const page = await server.open('fmtype=rslt&test=bert&fname=whole');
    let asked = 0;
    await page.route('**/*opertype=download**', (route) => {
      asked += 1;
      return asked === 1 ? route.fulfill({ body: '' }) : route.continue();
    });
    await row(page, 0).dblclick();
    const report = page.frameLocator('.fm-report');
    await report.getByText('Picture one').waitFor();
    await viewer(page).getByText('Pictures and details could not be read').waitFor();
    await inViewer(page, 'Try again').click();
    await viewer(page).getByText('J<1', { exact: true }).waitFor();
    const sizes = await report
      .locator('img')
      .evaluateAll((all) => Promise.all(all.map((one) => one.decode().then(() => one.naturalWidth))));
    assert.deepEqual(sizes, [40, 40]);
    assert.equal(await report.locator('p').evaluate((node) => getComputedStyle(node).color), 'rgb(1, 2, 3)');
    assert.match(await page.locator('.fm-facts dl').innerText(), /Job ID\s+J<1\s+Account\s+me\s+Type\s+Check\s+Date/);
    await page.closeViewer();
    await row(page, 0).dblclick();
    await viewer(page).getByText('J<1', { exact: true }).waitFor();
    assert.equal(asked, 2, 'what was read last is remembered');
    assert.deepEqual(page.problems, []);
  } finally {
    for (const name of ['whole', 'whole.html', 'whole_files']) fs.rmSync(`${DIR}/${name}`, { recursive: true });
  }
}

test('a view that has rested shows pictures, charts, styles and the advanced information', async () => {
  for (const server of [instrument, strict]) await seeInsides(server);
});

test('a view that is left at once asks for no archive; a capture that rests tells its packets', async () => {
  const page = await instrument.open('fmtype=all#find=.pcap');
  let asked = 0;
  page.on('request', (request) => {
    asked += request.url().includes('opertype=download');
  });
  await row(page, 0).dblclick();
  await inViewer(page, 'Next entry').click();
  await viewer(page).getByRole('rowheader', { name: 'Packets' }).waitFor();
  assert.equal(asked, 1);
  const path = await viewer(page).locator('dd').last().innerText();
  const shown = await page.locator('.fm-capture').innerText();
  // Each packet of the sample has a head of 16 bytes; an echo has 90 bytes, a question 60.
  const size = fs.statSync(path).size;
  const echoes = (size - 24 - 2 * 76) / 106;
  assert.match(shown, new RegExp(`Packets\\s+${echoes + 2} `));
  assert.match(shown, new RegExp(`ICMP\\s+${echoes}\\s+ARP\\s+2`));
  assert.match(shown, /First\s+2023-11-1\d \d\d:\d\d:\d\d/);
});

test('printing a view prints what is looked at alone', async () => {
  const page = await instrument.open('fmtype=all#find=.png');
  await page.evaluate(() => {
    window.print = () => {
      window.printed = document.documentElement.className;
    };
  });
  await row(page, 0).dblclick();
  await page.locator('.fm-picture img').waitFor();
  await inViewer(page, 'Print').click();
  await page.emulateMedia({ media: 'print' });
  assert.match(await page.evaluate(() => window.printed), /prints-view/);
  const shown = await page.evaluate(() =>
    ['.fm-top', '.fm-list', '.fm-viewer-head', '.fm-picture img'].map((one) =>
      document.querySelector(one).checkVisibility(),
    ),
  );
  assert.deepEqual(shown, [false, false, false, true]);

  await page.emulateMedia({ media: 'screen' });
  await openList(page, instrument.list('fmtype=rslt&test=throughput#find=throughput'));
  await row(page, 0).dblclick();
  await page.frameLocator('.fm-report').locator('h1').waitFor();
  const calls = page.evaluate(
    () =>
      new Promise((resolve) => {
        document.querySelector('.fm-report').contentWindow.addEventListener('beforeprint', () => resolve('report'));
      }),
  );
  await inViewer(page, 'Print').click();
  assert.equal(await calls, 'report');
});

test('two reports are shown side by side, aligned, with what differs marked and listed', async () => {
  const report = (verdict, rows) =>
    `<style>body { margin: 8px } td { padding: 4px }</style><h1>Loss</h1><span class="x">${verdict}</span>` +
    `<table><tr><td>File</td><td>${verdict}</td></tr></table>` +
    `<table><tr><th>Size</th><th>Lost</th></tr>${rows.map((row) => `<tr><td>${row.join('<td>')}`).join('')}</table>`;
  fs.writeFileSync(
    `${DIR}/pair1.html`,
    report('PASS', [
      ['64 bytes', '0 ms'],
      ['128 bytes', '1,001.5 ms'],
      ['512 bytes', '3'],
    ]),
  );
  fs.writeFileSync(
    `${DIR}/pair2.html`,
    report('FAIL', [
      ['64 bytes', '0 ms'],
      ['128 bytes', '1,000 ms'],
      ['256 bytes', '7'],
      ['512 bytes', '3'],
    ]),
  );
  try {
    const page = await instrument.open('fmtype=rslt&test=bert&fname=pair');
    await page.getByRole('button', { name: 'Name', exact: true }).click();
    await row(page, 0).click();
    assert.equal(await pressed(page, 'Compare').count(), 0);
    await row(page, 1).click({ modifiers: ['Control'] });
    await pressed(page, 'Compare').click();
    const frame = page.frameLocator('.fm-report');
    await frame.getByText('4 differences').click();
    assert.deepEqual(await frame.locator('.list tbody tr').allInnerTexts(), [
      '\tPASS\tFAIL\t',
      'File\tPASS\tFAIL\t',
      '128 bytes, Lost\t1,001.5 ms\t1,000 ms\t-1.5 ms',
      '256 bytes\t(absent)\t7\t',
    ]);
    const tops = await frame
      .locator('.side')
      .evaluateAll((sides) =>
        sides.map((side) =>
          [...side.lastElementChild.shadowRoot.querySelectorAll('tr')].map((one) => one.getBoundingClientRect().top),
        ),
      );
    assert.equal(tops[0].length, 6);
    assert.deepEqual(tops[0], tops[1]);
    assert.equal(await frame.locator('.fm-differs').count(), 8);
    const both = await saved(page, () => inViewer(page, 'Download this entry').click());
    assert.match(both.suggestedFilename(), /-2\.zip$/);
    await page.reload();
    await frame.getByText('4 differences').waitFor();
    await page.goBack();
    await viewer(page).waitFor({ state: 'hidden' });
    assert.deepEqual(page.problems, []);
  } finally {
    for (const name of ['pair1', 'pair2']) fs.rmSync(`${DIR}/${name}.html`);
  }
});
