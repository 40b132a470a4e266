// What did not come is told, and can be asked for again.
import assert from 'node:assert/strict';
import { after, test } from 'node:test';
import { parsePage } from '../../web/js/fileman/rows.js';
import {
  answerOf,
  footer,
  openList,
  pressed,
  row,
  rowsOf,
  settled,
  startInstrument,
  strictServer,
  task,
  told,
} from './instrument.mjs';

const instrument = await startInstrument();
const strict = await startInstrument(strictServer);
after(() => Promise.all([instrument.stop(), strict.stop()]));

const LISTS = '**/fileman.cgi?fmtype=**';
const asHtml = { contentType: 'text/html;charset=utf-8' };

test('a list that ended early is told as such, and a better one from before stays', async () => {
  const whole = answerOf('fmtype=rslt').replace(/^[^]*?(?=<html>)/, '');
  const count = rowsOf('fmtype=rslt').length;
  const cut = whole.slice(0, whole.lastIndexOf("', path: '") + 12);
  const arrived = parsePage(cut).rows.length;
  const page = await instrument.newPage();
  await page.route(LISTS, (route) => route.fulfill({ ...asHtml, body: cut }));
  await openList(page, instrument.list('fmtype=rslt'));
  const notice = page.getByRole('alert');
  await notice.getByText(`The list ended early: ${arrived} entries have arrived, the rest is missing.`).waitFor();
  assert.equal(await footer(page), `${arrived} entries`);
  await page.unroute(LISTS);
  await notice.getByRole('button', { name: 'Try again' }).click();
  await page.getByText(`${count} entries`).waitFor();
  assert.equal(await notice.count(), 0);

  await page.route(LISTS, (route) => route.fulfill({ ...asHtml, body: cut }));
  await pressed(page, 'Read the list again').click();
  await notice.getByText('The list ended early. You see the list from before.').waitFor();
  assert.equal(await footer(page), `${count} entries`);
  assert.deepEqual(page.problems, []);
});

test('places that the instrument could not read are told, by the page and by a fetched list', async () => {
  const page = await instrument.newPage();
  const body = answerOf('fmtype=rslt')
    .replace(/^[^]*?(?=<html>)/, '')
    .replace('<head>', '<head><meta name="fileman-incomplete" content="3">');
  await page.route(LISTS, (route) => route.fulfill({ ...asHtml, headers: { 'X-Fileman-Incomplete': '2' }, body }));
  await openList(page, instrument.list('fmtype=rslt'));
  await page
    .getByRole('alert')
    .getByText(/could not read 3 places of its storage/)
    .waitFor();
  await pressed(page, 'Read the list again').click();
  await page
    .getByRole('alert')
    .getByText(/could not read 2 places of its storage/)
    .waitFor();
  await page.getByRole('alert').getByRole('button', { name: 'Close' }).click();
  await page.unroute(LISTS);
  await pressed(page, 'Read the list again').click();
  await settled(page);
  assert.equal(await page.getByRole('alert').count(), 0);
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

test('a strict answer tells what failed, each failure in its own words', async () => {
  const page = await strict.open('fmtype=rslt&test=throughput');
  await row(page, 0).click();
  const sentence = '<!DOCTYPE html><html><body><p>The converter failed &amp; ended.</p></body></html>';
  for (const [status, words] of [
    [500, 'The instrument could not answer (error 500): “The converter failed & ended.”'],
    [503, 'The instrument is busy with another request.'],
    [404, 'The instrument does not find this any more.'],
  ]) {
    await page.route('**/*opertype=pdf**', (route) => route.fulfill({ ...asHtml, status, body: sentence }));
    await pressed(page, 'PDF').click();
    await told(page, 'PDF: failed');
    await told(page, words);
    await task(page).getByRole('button', { name: 'Close' }).click();
    await page.unroute('**/*opertype=pdf**');
  }
});
