// What did not come is told, and can be asked for again.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { parsePage } from '../../web/js/fileman/answers/readrows.js';
import { answerOf, footer, openList, pressed, rowsOf, startInstrument, withAnswer } from './instrument.mjs';

const instrument = await startInstrument();
const LISTS = '**/fileman.cgi?fmtype=**';
const asHtml = { contentType: 'text/html;charset=utf-8' };
const pageOf = (query) => answerOf(query).replace(/^[^]*?(?=<html>)/, '');
const refresh = (page) => pressed(page, 'Read the list again').click();

test('a list that ended early is told as such, and a better one from before stays', async () => {
  const whole = pageOf('fmtype=rslt');
  const count = rowsOf('fmtype=rslt').length;
  const cut = whole.slice(0, whole.lastIndexOf("', path: '") + 12);
  const arrived = parsePage(cut).rows.length;
  const page = await instrument.newPage();
  const notice = page.getByRole('alert');
  await withAnswer(page, LISTS, { ...asHtml, body: cut }, async () => {
    await openList(page, instrument.list('fmtype=rslt'));
    await notice.getByText(`The list ended early: ${arrived} entries have arrived, the rest is missing.`).waitFor();
    assert.equal(await footer(page), `${arrived} entries`);
  });
  await notice.getByRole('button', { name: 'Try again' }).click();
  await page.getByText(`${count} entries`).waitFor();
  assert.equal(await notice.count(), 0);
  await withAnswer(page, LISTS, { ...asHtml, body: cut }, async () => {
    await refresh(page);
    await notice.getByText('The list ended early. You see the list from before.').waitFor();
  });
  assert.equal(await footer(page), `${count} entries`);
  assert.deepEqual(page.problems, []);
});

test('places that the instrument could not read are told, by the page and by a fetched list', async () => {
  const page = await instrument.newPage();
  const told = (n) => page.getByRole('alert').getByText(`could not read ${n} places of its storage`).waitFor();
  const body = pageOf('fmtype=rslt').replace('<head>', '<head><meta name="fileman-incomplete" content="3">');
  await withAnswer(page, LISTS, { ...asHtml, headers: { 'X-Fileman-Incomplete': '2' }, body }, async () => {
    await openList(page, instrument.list('fmtype=rslt'));
    await told(3);
    await refresh(page);
    await told(2);
  });
  await refresh(page);
  await page.getByRole('alert').waitFor({ state: 'hidden' });
});

test('a failed list is told in its own words, the old one stays, and it can be asked for again', async () => {
  const page = await instrument.open('fmtype=rslt&module=10G');
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

test('a filter form that arrives late opens once, and not in another list', async () => {
  const page = await instrument.open('fmtype=rslt');
  await page.route('**/fileman.cgi?filter=**', async (route) => {
    await page.waitForTimeout(500);
    await route.continue().catch(() => {}); // the page no longer waits for it
  });
  const opened = () => page.getByRole('dialog').count();
  await pressed(page, 'Advanced').click();
  for (let i = 0; i < 2; i++) await pressed(page, 'Filter').click();
  assert.deepEqual(await page.locator('[aria-busy=true]').allInnerTexts(), ['Filter']);
  await page.getByRole('dialog').waitFor();
  await page.waitForTimeout(700);
  assert.equal(await opened(), 1);
  await page.keyboard.press('Escape');
  await pressed(page, 'Filter').click();
  await page.getByRole('link', { name: 'Screenshots' }).click();
  await page.waitForTimeout(900);
  assert.equal(await opened(), 0);
  assert.equal(await page.locator('[aria-busy=true]').count(), 0);
});

test('scripts that do not arrive are told, some of them or all', async () => {
  const first = /\/js\/(fileman|homepage)\.js$/;
  const page = await instrument.newPage({ locale: 'de-DE' });
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
