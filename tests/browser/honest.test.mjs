// What did not come is told, and can be asked for again.
import assert from 'node:assert/strict';
import { parsePage } from '../../web/js/fileman/answers/readrows.js';
import { answerOf, footer, openList, pressed, rowsOf, startInstrument, test, withAnswer } from './instrument.mjs';

const instrument = await startInstrument();
const LISTS = '**/fileman.cgi?fmtype=**';
const asHtml = { contentType: 'text/html;charset=utf-8' };
const pageOf = (query) => answerOf(query).replace(/^[^]*?(?=<html>)/, '');
const refresh = (page) => pressed(page, 'Read the list again').click();

test('a list that ended early or lacks places is told as such, and a better one from before stays', async () => {
  const whole = pageOf('fmtype=rslt');
  const count = rowsOf('fmtype=rslt').length;
  const body = whole.slice(0, whole.lastIndexOf("', path: '") + 12);
  const arrived = parsePage(body).rows.length;
  const page = await instrument.newPage();
  const notice = page.getByRole('alert');
  const told = (words) => notice.getByText(words).waitFor();
  await withAnswer(page, LISTS, { ...asHtml, body }, async () => {
    await openList(page, instrument.list('fmtype=rslt'));
    await told(`The list ended early: ${arrived} entries have arrived, the rest is missing.`);
    assert.equal(await footer(page), `${arrived} entries`);
  });
  await notice.getByRole('button', { name: 'Try again' }).click();
  await page.getByText(`${count} entries`).waitFor();
  assert.equal(await notice.count(), 0);
  await withAnswer(page, LISTS, { ...asHtml, body }, async () => {
    await refresh(page);
    await told('The list ended early. You see the list from before.');
  });
  assert.equal(await footer(page), `${count} entries`);

  const lacking = whole.replace('<head>', '<head><meta name="fileman-incomplete" content="3">');
  await withAnswer(page, LISTS, { ...asHtml, headers: { 'X-Fileman-Incomplete': '2' }, body: lacking }, async () => {
    await openList(page, instrument.list('fmtype=rslt'));
    await told('could not read 3 places of its storage'); // the page says so
    await refresh(page);
    await told('could not read 2 places of its storage'); // the head of a fetched list does
  });
  await refresh(page);
  await notice.waitFor({ state: 'hidden' });
});

instrument.onList('a failed list is told in its own words, the old one stays, and it can be asked for again', 'fmtype=rslt&module=10G', async (page) => {
  const old = await footer(page);
  for (const [answer, words] of [
    [{ status: 500, body: '' }, /could not answer \(error 500\)/],
    [{ status: 200, body: '<html>?' }, /something else than the list/],
  ])
    await withAnswer(page, LISTS, answer, async () => {
      await page.getByRole('link', { name: 'Profiles' }).click();
      await page.getByRole('alert').getByText(words).waitFor();
      assert.equal(await footer(page), old);
    });
  await pressed(page, 'Try again').click();
  await page.waitForURL(/fmtype=prof/);
  assert.equal(await page.getByRole('alert').count(), 0);
});

instrument.onList('a filter form that arrives late opens once, and not in another list', 'fmtype=rslt', async (page) => {
  await page.route('**/fileman.cgi?filter=**', async (route) => {
    await page.waitForTimeout(1500);
    await route.continue().catch(() => {}); // the page no longer waits for it
  });
  await pressed(page, 'Advanced').click();
  await pressed(page, 'Filter').dblclick();
  assert.deepEqual(await page.locator('[aria-busy=true]').allInnerTexts(), ['Filter']);
  await page.getByRole('dialog').waitFor();
  await page.waitForTimeout(700);
  assert.equal(await page.getByRole('dialog').count(), 1);
  await page.keyboard.press('Escape');
  await pressed(page, 'Filter').click();
  await page.getByRole('link', { name: 'Screenshots' }).click();
  await page.waitForTimeout(1900);
  assert.equal(await page.locator('dialog[open], [aria-busy=true]').count(), 0);
});

test('scripts that do not arrive are told, some of them or all', async () => {
  const first = /\/js\/(fileman|homepage)\.js$/;
  const page = await instrument.newPage({ locale: 'de-DE' });
  page.expected.push('net::ERR_FAILED', 'Failed to fetch dynamically imported module');
  await page.route(/\.js$/, (route) => (first.test(route.request().url()) ? route.continue() : route.abort()));
  await page.goto(instrument.list('fmtype=rslt'));
  await page.getByRole('alert').getByText('Ein Teil dieser Seite konnte nicht geladen werden').waitFor();
  await page.getByRole('button', { name: 'Seite neu laden' }).waitFor();

  await page.route(/\.js$/, (route) => route.abort());
  await page.reload();
  await page.waitForFunction(() => {
    const shown = getComputedStyle(document.querySelector('#rsltgrid'), '::before');
    return shown.visibility === 'visible' && shown.content.includes('have not arrived');
  });
});
