// A view from a person's side: what its buttons act on, its place in the history, and what it shows beside the file.
import assert from 'node:assert/strict';
import fs from 'node:fs';
import { DIR, asks, find, names, openList, plainServer, pressed, report, reportsOf, row, saved, settled, startInstrument, test, tick, viewer, withFiles } from './instrument.mjs';

// Default answers here: the other files ask the packaged server, whose answers are strict.
const instrument = await startInstrument(plainServer());
const strict = await startInstrument();

const titled = (page, name) => page.getByRole('heading', { name, exact: true }).waitFor();
/** Asserts that each action leads to the view of a name: [action, name]. */
async function leads(page, ...steps) {
  for (const [action, name] of steps) {
    await action();
    await titled(page, name);
  }
}
const inViewer = (page, name) => viewer(page).getByRole('button', { name, exact: true });
const placeIn = (page) => viewer(page).locator('.fm-viewer-place');
const refresh = (page) => pressed(page, 'Read the list again').click();

instrument.onList('the buttons of a view act on the viewed entry, those above the list on the chosen rows', 'fmtype=rslt&test=throughput', async (page) => {
  const [first, second, third] = await names(page);
  const next = () => inViewer(page, 'Next entry').click();
  await leads(page, [() => row(page, 0).dblclick(), first], [next, second]);
  // The choice was the viewed row alone, so it goes along.
  assert.deepEqual(await page.locator('.is-chosen .fm-name').allTextContents(), [second]);
  assert.equal((await saved(page, () => pressed(page, 'PDF').click())).suggestedFilename(), `${second}.pdf`);

  await tick(page, 0, 3);
  await leads(page, [next, third]);
  assert.equal(await page.locator('.is-chosen').count(), 3);
  assert.equal(await pressed(page, 'Download').innerText(), 'Download\n3');
  for (const [button, file] of [['PDF of this entry', `${third}.pdf`], ['Download this entry', `${third}.zip`]])
    assert.equal((await saved(page, () => inViewer(page, button).click())).suggestedFilename(), file);

  await inViewer(page, 'Copy').click();
  await page.getByRole('menuitem', { name: 'Copy the link' }).click();
  await page.goto(await page.evaluate(() => navigator.clipboard.readText()));
  await titled(page, third);
}, { permissions: ['clipboard-read', 'clipboard-write'] });

instrument.onList('Back closes a view and Forward opens it; what was typed meanwhile stays', 'fmtype=rslt&test=throughput', async (page) => {
  const list = page.url();
  const [first, second] = await names(page);
  const right = () => page.keyboard.press('ArrowRight');
  const leftInReport = () => report(page).locator('body').press('ArrowLeft');
  await leads(page, [() => row(page, 0).dblclick(), first], [right, second], [leftInReport, first], [right, second]);
  await find(page, 'throughput');
  await page.goBack();
  await viewer(page).waitFor({ state: 'hidden' });
  assert.equal(await page.getByRole('searchbox').inputValue(), 'throughput');
  assert.equal(page.url(), `${list}#find=throughput`);
  await leads(page, [() => page.goForward(), second]);
  await refresh(page);
  await settled(page);
  await leads(page, [() => inViewer(page, 'Previous entry').click(), first]);
  await page.closeViewer();
  await page.waitForURL(`${list}#find=throughput`);

  for (const filter of ['', '&fname=nothing']) {
    await page.goto(`${list}${filter}#view=/home/gone.html`);
    await page.getByRole('alert').getByText('This list does not hold /home/gone.html.').waitFor();
  }
});

test('a view shows the new content of a file that was replaced, when the list is read again', () =>
  withFiles({ 'viewed.html': '<p>old</p>' }, async () => {
    const page = await instrument.open('fmtype=rslt&test=bert&fname=viewed');
    await row(page, 0).dblclick();
    await report(page).getByText('old').waitFor();
    await page.waitForTimeout(1100); // dates of the list have whole seconds
    fs.writeFileSync(`${DIR}/viewed.html`, '<p>new</p>');
    await refresh(page);
    await report(page).getByText('new').waitFor();
  }));

instrument.onList('the place of a view follows the list: verdicts that arrive, a search', 'fmtype=rslt&module=10G#find=fail', async (page) => {
  const { failed } = reportsOf('fmtype=rslt&module=10G');
  await row(page, 0).dblclick();
  await placeIn(page).getByText(`of ${failed}`).waitFor();
  await find(page, 'test:bert .html');
  await placeIn(page).getByText(`of ${(await names(page)).length}`).waitFor();
  await find(page, 'no such entry');
  assert.equal(await placeIn(page).innerText(), '');
}, { viewport: { width: 1280, height: 1600 } });

for (const [where, viewport, steps] of [
  ['beside the view', { width: 1280, height: 700 }, 0],
  ['when a view closes that filled the window', { width: 800, height: 480 }, 12],
])
  instrument.onList(`the viewed row stays in sight ${where}`, 'fmtype=rslt', async (page) => {
    const observe = (node) =>
      new Promise((done) => new IntersectionObserver(([{ intersectionRatio }]) => done(intersectionRatio)).observe(node));
    const isSeen = async () => assert.ok((await page.locator('.is-active').evaluate(observe)) > 0.95);
    await page.locator('.fm-viewport').evaluate((list) => (list.scrollTop = 4000));
    await page.waitForTimeout(100);
    await page.locator('.fm-viewport').dblclick();
    await viewer(page).waitFor();
    for (let i = 0; i < steps; i++) await page.keyboard.press('ArrowRight');
    if (!steps) await isSeen();
    await page.keyboard.press('Escape');
    await viewer(page).waitFor({ state: 'hidden' });
    await page.waitForTimeout(50);
    await isSeen();
  }, { viewport });

/** A report of a verdict and a table; `rows` are "size|lost". */
const pageOf = (verdict, ...rows) =>
  `<style>body { margin: 8px } td { padding: ${2 * rows.length}px }</style><h1>Loss</h1><span class="x">${verdict}</span>` +
  `<table><tr><td>File</td><td>${verdict}</td></tr></table>` +
  `<table><tr><th>Size</th><th>Lost</th></tr>${rows.map((one) => `<tr><td>${one.replace('|', '<td>')}`).join('')}</table>`;
const PAIR = {
  'pair1.html': pageOf('PASS', '64 bytes|0 ms', '128 bytes|1,001.5 ms', '512 bytes|3'),
  'pair2.html': pageOf('FAIL', '64 bytes|0 ms', '128 bytes|1,000 ms', '256 bytes|7', '512 bytes|3'),
};

test('two reports are shown side by side, aligned, with what differs marked and listed', () =>
  withFiles(PAIR, async () => {
    const page = await instrument.open('fmtype=rslt&test=bert&fname=pair');
    await pressed(page, 'Name').click();
    await row(page, 0).click();
    assert.equal(await pressed(page, 'Compare').count(), 0);
    await row(page, 1).click({ modifiers: ['Control'] });
    await pressed(page, 'Compare').click();
    const differences = report(page).getByText('4 differences');
    await differences.click();
    assert.deepEqual(await report(page).locator('.list tbody tr').allInnerTexts(), [
      '\tPASS\tFAIL\t',
      'File\tPASS\tFAIL\t',
      '128 bytes, Lost\t1,001.5 ms\t1,000 ms\t-1.5 ms',
      '256 bytes\t(absent)\t7\t',
    ]);
    const topsOf = (side) => [...side.lastElementChild.shadowRoot.querySelectorAll('tr')].map((one) => one.getBoundingClientRect().top);
    const tops = await Promise.all([0, 1].map((i) => report(page).locator('.side').nth(i).evaluate(topsOf)));
    assert.equal(tops[0].length, 6);
    assert.deepEqual(tops[0], tops[1]);
    assert.equal(await report(page).locator('.fm-differs').count(), 8);
    const both = await saved(page, () => pressed(page, 'Download this entry').click());
    assert.match(both.suggestedFilename(), /-2\.zip$/);
    await refresh(page);
    await settled(page);
    assert.equal(await placeIn(page).innerText(), '', 'a pair has no place');
    await page.reload();
    await differences.waitFor();
    await page.goBack();
    await viewer(page).waitFor({ state: 'hidden' });
  }));

const INSIDES = {
  'whole_files/chart Ü.svg': '<svg xmlns="http://www.w3.org/2000/svg" width="40" height="30"><rect width="40" height="30"/></svg>',
  'whole_files/style.css': 'p { color: rgb(1, 2, 3) }',
  whole: '<r><KTB_advinfo job_id="J&lt;1" account_id="me" locator="None" advtype="Check"/></r>',
  'whole.html':
    '<link rel="stylesheet" href="whole_files/style.css"><p>Text</p><img src="whole_files/chart%20%C3%9C.svg" alt="one">' +
    '<object data="./whole_files/chart%20%C3%9C.svg"></object><img src="../../../secret.png"><img src="http://x/y.png">',
};

for (const [answers, server] of Object.entries({ default: instrument, strict }))
  test(`a view that has rested shows pictures, charts, styles and the advanced information, ${answers} answers`, () =>
    withFiles(INSIDES, async () => {
      const page = await server.open('fmtype=rslt&test=bert&fname=whole');
      const asked = asks(page, 'opertype=download');
      await page.route('**/*opertype=download**', (route) => route.fulfill({ body: '' }), { times: 1 });
      await row(page, 0).dblclick();
      await report(page).getByText('Picture one').waitFor();
      await viewer(page).getByText('Pictures and details could not be read').waitFor();
      await inViewer(page, 'Try again').click();
      const job = viewer(page).getByText('J<1', { exact: true });
      await job.waitFor();
      const widths = (all) => Promise.all(all.map((one) => one.decode().then(() => one.naturalWidth)));
      assert.deepEqual(await report(page).locator('img').evaluateAll(widths), [40, 40]);
      assert.equal(await report(page).locator('p').evaluate((node) => getComputedStyle(node).color), 'rgb(1, 2, 3)');
      assert.match(await page.locator('.fm-facts dl').innerText(), /Job ID\s+J<1\s+Account\s+me\s+Type\s+Check\s+Date/);
      await page.closeViewer();
      await row(page, 0).dblclick();
      await job.waitFor();
      assert.equal(asked.length, 2, 'what was read last is remembered');
    }));

instrument.onList('a view that is left at once asks for no archive; a capture that rests tells its packets', 'fmtype=all#find=.pcap', async (page) => {
  const asked = asks(page, 'opertype=download');
  await row(page, 0).dblclick();
  await inViewer(page, 'Next entry').click();
  await viewer(page).getByRole('rowheader', { name: 'Packets' }).waitFor();
  assert.equal(asked.length, 1);
  // Each packet of the sample has a head of 16 bytes; an echo has 90 bytes, a question 60.
  const echoes = (fs.statSync(await viewer(page).locator('dd').last().innerText()).size - 24 - 2 * 76) / 106;
  const words = `Packets\\s+${echoes + 2} [^]*First\\s+2023-11-1\\d \\d\\d:\\d\\d:\\d\\d[^]*ICMP\\s+${echoes}\\s+ARP\\s+2`;
  assert.match(await page.locator('.fm-capture').innerText(), new RegExp(words));
});

instrument.onList('printing a view prints what is looked at alone', 'fmtype=all#find=.png', async (page) => {
  await page.evaluate(() => {
    window.print = () => (window.printed = document.documentElement.className);
  });
  await row(page, 0).dblclick();
  await page.locator('.fm-picture img').waitFor();
  await inViewer(page, 'Print').click();
  await page.emulateMedia({ media: 'print' });
  assert.match(await page.evaluate(() => window.printed), /prints-view/);
  const isSeen = (part) => page.locator(part).isVisible();
  assert.deepEqual(await Promise.all(['.fm-top', '.fm-list', '.fm-viewer-head', '.fm-picture img'].map(isSeen)), [false, false, false, true]);

  await page.emulateMedia({ media: 'screen' });
  await openList(page, instrument.list('fmtype=rslt&test=throughput#find=throughput'));
  await row(page, 0).dblclick();
  await report(page).locator('h1').waitFor();
  const printed = page.locator('.fm-report').evaluate((frame) => new Promise((resolve) => (frame.contentWindow.onbeforeprint = resolve)));
  await inViewer(page, 'Print').click();
  await printed;
});
