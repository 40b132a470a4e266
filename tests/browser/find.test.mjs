// Finding from a person's side: counts to tap, kept filters, pictures, verdicts, new results.
import assert from 'node:assert/strict';
import { setTimeout as pause } from 'node:timers/promises';
import { arrive, asks, column, footer, openList, pressed, reportsOf, row, rowsOf, settled, startInstrument, test, withAnswer, withFiles } from './instrument.mjs';

const instrument = await startInstrument();

const VIEWS = '**/fileman.cgi?opertype=view**';
/** An answer that takes its time. */
const after = (milliseconds) => async (route) => {
  await pause(milliseconds);
  await route.continue();
};
const value = (page, name) => page.getByRole('region', { name: 'Refine' }).getByRole('button', { name, exact: true });

instrument.onList('counts narrow with one tap each, may be combined, and are true', 'fmtype=all', async (page) => {
  const bert = rowsOf('fmtype=all').filter((row) => row.includes("test: 'bert'"));
  await value(page, `bert ${bert.length}`).click();
  assert.match(await footer(page), new RegExp(`^${bert.length} of`));
  const ports = bert.filter((row) => row.includes("port: '10G P1'")).length;
  const port = value(page, `10G P1 ${ports}`);
  await port.scrollIntoViewIfNeeded();
  const { y } = await port.boundingBox();
  await port.click();
  assert.match(await footer(page), new RegExp(`^${ports} of`));
  await page.locator('.fm-facet-value[aria-pressed=true]').nth(1).waitFor();
  assert.ok(Math.abs((await port.boundingBox()).y - y) < 2, 'it stays below the pointer');
  assert.equal(await page.getByRole('searchbox').inputValue(), 'test:"bert" port:"10G P1"');
  await value(page, /^SFP \d+$/).click();
  assert.deepEqual([...new Set(await column(page, 'port'))].sort(), ['10G P1', 'SFP']);
  await value(page, /^bert \d+$/).click();
  assert.ok(new Set(await column(page, 'test')).size > 1);
});

instrument.onList('filters are kept by name, on a small screen in a panel that folds away', 'fmtype=rslt&module=10G#find=throughput', async (page) => {
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
}, { viewport: { width: 800, height: 480 } });

test('screenshots are pictures, fetched in sight and four at a time; arrows step through them', async () => {
  const page = await instrument.newPage();
  const pictures = page.locator('.fm-tile img');
  let running = 0;
  let most = 0;
  const slowly = async (route) => {
    most = Math.max(most, ++running);
    await after(100)(route);
    running -= 1;
  };
  await withAnswer(page, VIEWS, slowly, async () => {
    await page.goto(instrument.list('fmtype=screen'));
    await pictures.nth(rowsOf('fmtype=screen').length - 1).waitFor();
  });
  assert.equal(most, 4);
  const size = (picture) => picture.decode().then(() => picture.naturalWidth);
  assert.ok((await pictures.first().evaluate(size)) > 100);
  const names = await page.locator('.fm-tile-name').allInnerTexts();
  await page.locator('.fm-tile').first().click();
  for (const name of names.slice(0, 3)) {
    const picture = page.getByRole('img', { name: `Picture ${name}` });
    await picture.waitFor();
    assert.ok((await picture.evaluate(size)) > 100);
    await page.keyboard.press('ArrowRight');
  }
  await page.closeViewer();
  for (const key of ['Home', ' ']) await page.keyboard.press(key);
  await pressed(page, 'Pictures').click();
  assert.match(await footer(page), /1 chosen/);
  assert.equal(await row(page, 0).getAttribute('aria-selected'), 'true');
  await page.reload();
  await page.waitForSelector('.fm-row');
});

instrument.onList('the second click of a double click on a picture changes nothing in the view', 'fmtype=screen', async (page) => {
  await page.locator('.fm-tile').nth(2).dblclick(); // the summary of the details comes below the pointer
  await page.locator('.fm-picture img').waitFor();
  assert.equal(await page.locator('.fm-facts').getAttribute('open'), '');
  assert.equal(await page.evaluate(() => getSelection().toString()), '');
});

test('reports in sight get their verdict, which moves no other column, is remembered and can be asked for', async () => {
  const { all, failed } = reportsOf('fmtype=rslt&module=10G');
  const passed = all - failed;
  assert.ok(passed && failed);
  const page = await instrument.newPage({ viewport: { width: 1280, height: 1600 } });
  const others = page.locator('[role=columnheader]:is([data-id=mode], [data-id=test], [data-id=port], [data-id=datetime])');
  const places = () => others.evaluateAll((heads) => heads.map((head) => [head.dataset.id, head.getBoundingClientRect().left]));
  await page.route(VIEWS, after(600), { times: 1 });
  await openList(page, instrument.list('fmtype=rslt&module=10G'));
  assert.equal(await page.locator('[data-id=verdict]').count(), 0);
  const before = await places();
  assert.equal(before.length, 4);
  await page.waitForSelector('[data-id=verdict]');
  assert.deepEqual(await places(), before);
  await page.waitForFunction((count) => document.querySelectorAll('.fm-verdict').length === count, all);
  assert.equal((await column(page, 'verdict')).filter((text) => text === 'FAIL').length, failed);
  await value(page, `PASS ${passed}`).click();
  assert.match(await footer(page), new RegExp(`^${passed} of`));
  await pressed(page, 'Verdict').click();
  await page.route(VIEWS, () => assert.fail('a report is read again'));
  await page.goto(instrument.list('fmtype=rslt&module=10G#find='));
  await page.reload();
  await settled(page);
  await page.waitForTimeout(800);
  const verdicts = (await column(page, 'verdict')).filter(Boolean);
  assert.deepEqual(verdicts, [...verdicts].sort());
});

test('new results are offered while the page is visible, with a pause by how long the last look took', async () => {
  const page = await instrument.newPage();
  await page.clock.install();
  await openList(page, instrument.list('fmtype=rslt&test=bert'));
  const looks = asks(page, 'fileman.cgi?fmtype=rslt');
  await page.route('**/fileman.cgi?fmtype=rslt**', after(4000));
  const pass = (seconds) => page.clock.fastForward(1000 * seconds).then(() => pause(100)); // a look may begin
  await withFiles({ 'just-made.html': '<p>new</p>' }, async () => {
    await pass(61);
    const offer = pressed(page, '1 new');
    await offer.waitFor();
    await pass(65);
    assert.equal(looks.length, 1, 'twenty times the four seconds are not over');
    await offer.click();
    assert.ok((await page.locator('.fm-name').allTextContents()).includes('just-made'));
    assert.equal(await offer.count(), 0);
    await page.getByLabel('Look for new results now and then').uncheck();
    await pass(300);
    assert.equal(looks.length, 1);
  });
});
