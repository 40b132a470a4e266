// Finding from a person's side: counts to tap, kept filters, pictures, verdicts, new results.
import assert from 'node:assert/strict';
import fs from 'node:fs';
import { after, test } from 'node:test';
import { setTimeout as pause } from 'node:timers/promises';
import { DIR, arrive, column, footer, openList, pressed, rowsOf, settled, startInstrument } from './instrument.mjs';

const instrument = await startInstrument();
after(() => instrument.stop());

const value = (page, name) => page.getByRole('region', { name: 'Refine' }).getByRole('button', { name, exact: true });

test('counts narrow with one tap each, may be combined, and are true', async () => {
  const page = await instrument.open('fmtype=all');
  const bert = rowsOf('fmtype=all').filter((row) => row.includes("test: 'bert'"));
  await value(page, `bert ${bert.length}`).click();
  assert.match(await footer(page), new RegExp(`^${bert.length} of`));
  const ports = bert.filter((row) => row.includes("port: '10G P1'")).length;
  await value(page, `10G P1 ${ports}`).click();
  assert.match(await footer(page), new RegExp(`^${ports} of`));
  assert.equal(await page.getByRole('searchbox').inputValue(), 'test:"bert" port:"10G P1"');
  await value(page, /^SFP \d+$/).click();
  assert.deepEqual([...new Set(await column(page, 'port'))].sort(), ['10G P1', 'SFP']);
  await value(page, /^bert \d+$/).click();
  assert.ok(new Set(await column(page, 'test')).size > 1);
  assert.deepEqual(page.problems, []);
});

test('filters are kept by name, on a small screen in a panel that folds away', async () => {
  const page = await instrument.open('fmtype=rslt&module=10G#find=throughput', { viewport: { width: 800, height: 480 } });
  const was = await footer(page);
  await pressed(page, 'Refine').click();
  await page.getByLabel('Name for what is shown').fill('Fast <b>ones</b>');
  await page.keyboard.press('Enter');
  await page.keyboard.press('Escape');
  assert.equal(await page.getByRole('dialog').count(), 0);
  await page.goto(instrument.list('fmtype=prof#find='));
  await settled(page);
  await pressed(page, 'Refine').click();
  await page.getByRole('button', { name: 'Fast <b>ones</b>', exact: true }).click();
  await arrive(page, /fmtype=rslt&module=10G#find=throughput/);
  assert.equal(await footer(page), was);
  await pressed(page, 'Remove the filter Fast <b>ones</b>').click();
  assert.equal(await page.getByRole('button', { name: 'Fast <b>ones</b>' }).count(), 0);
  assert.deepEqual(page.problems, []);
});

test('screenshots are pictures, fetched in sight and four at a time, and arrows step through them', async () => {
  const page = await instrument.newPage();
  let running = 0;
  let most = 0;
  await page.route('**/fileman.cgi?opertype=view**', async (route) => {
    most = Math.max(most, ++running);
    await page.waitForTimeout(100);
    running -= 1;
    await route.continue();
  });
  await page.goto(instrument.list('fmtype=screen'));
  const pictures = page.locator('.fm-tile img');
  await pictures.nth(rowsOf('fmtype=screen').length - 1).waitFor();
  assert.equal(most, 4);
  const size = await pictures.first().evaluate((picture) => picture.decode().then(() => picture.naturalWidth));
  assert.ok(size > 100);
  await page.unroute('**/fileman.cgi?opertype=view**');
  const names = await page.locator('.fm-tile-name').allInnerTexts();
  await page.locator('.fm-tile').first().click();
  for (const name of names.slice(0, 3)) {
    await page.getByRole('img', { name: `Picture ${name}` }).waitFor();
    await page.keyboard.press('ArrowRight');
  }
  await page.closeViewer();
  await page.keyboard.press('Home');
  await page.keyboard.press(' ');
  await pressed(page, 'Pictures').click();
  assert.match(await footer(page), /1 chosen/);
  assert.equal(await page.locator('.slick-row').first().getAttribute('aria-selected'), 'true');
  await page.reload();
  await page.waitForSelector('.slick-row');
  assert.deepEqual(page.problems, []);
});

test('reports in sight get their verdict, which is remembered and can be asked for', async () => {
  const page = await instrument.open('fmtype=rslt&module=10G', { viewport: { width: 1280, height: 1600 } });
  const paths = rowsOf('fmtype=rslt&module=10G').map((row) => /path: '([^']*)'/.exec(row)[1]);
  const reports = paths.filter((path) => path.endsWith('.html'));
  const failed = reports.filter((path) => fs.readFileSync(path, 'utf8').includes('>FAIL<')).length;
  const passed = reports.length - failed;
  await page.waitForFunction((all) => document.querySelectorAll('.fm-verdict').length === all, reports.length);
  assert.ok(passed && failed);
  assert.equal((await column(page, 'verdict')).filter((text) => text === 'FAIL').length, failed);
  await value(page, `PASS ${passed}`).click();
  assert.match(await footer(page), new RegExp(`^${passed} of`));
  await pressed(page, 'Verdict').click();
  let views = 0;
  await page.route('**/fileman.cgi?opertype=view**', (route) => route.abort(++views));
  await openList(page, instrument.list('fmtype=rslt&module=10G#find='));
  await page.waitForTimeout(800);
  assert.equal(views, 0);
  const verdicts = (await column(page, 'verdict')).filter(Boolean);
  assert.deepEqual(verdicts, [...verdicts].sort());
  assert.deepEqual(page.problems, []);
});

test('new results are offered while the page is visible, with a pause by how long the last look took', async () => {
  const page = await instrument.newPage();
  await page.clock.install();
  await openList(page, instrument.list('fmtype=rslt&test=bert'));
  let looks = 0;
  await page.route('**/fileman.cgi?fmtype=rslt**', async (route) => {
    looks += 1;
    await pause(4000); // what the look takes
    await route.continue();
  });
  const made = `${DIR}/just-made.html`;
  fs.writeFileSync(made, '<p>new</p>');
  try {
    await page.clock.fastForward(61000);
    const offer = pressed(page, '1 new');
    await offer.waitFor();
    assert.equal(looks, 1);
    await page.clock.fastForward(65000);
    assert.equal(looks, 1, 'twenty times the four seconds are not over');
    await offer.click();
    assert.ok((await page.locator('.fm-name').allTextContents()).includes('just-made'));
    assert.equal(await offer.count(), 0);
    await page.getByLabel('Look for new results now and then').uncheck();
    await page.clock.fastForward(300000);
    assert.equal(looks, 1);
  } finally {
    fs.unlinkSync(made);
  }
});
