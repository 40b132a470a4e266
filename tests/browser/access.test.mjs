// Keyboard alone, assistive software, small windows, strong zoom, dark, another language.
import assert from 'node:assert/strict';
import fs from 'node:fs';
import { after, test } from 'node:test';
import {
  SCROLL_BARS,
  arrive,
  faults,
  footer,
  openList,
  pressed,
  saved,
  settled,
  startInstrument,
  told,
} from './instrument.mjs';

const instrument = await startInstrument();
after(() => instrument.stop());

const focused = (page) =>
  page.evaluate(() => {
    const node = document.activeElement;
    return node.getAttribute('aria-label') || node.innerText || node.id;
  });

test('axe finds no fault in any view', async () => {
  for (const colorScheme of ['light', 'dark']) {
    const page = await instrument.open('fmtype=rslt&test=throughput', { colorScheme });
    assert.deepEqual(await faults(page), [], `list, ${colorScheme}`);
    await page.locator('.slick-row').first().click();
    await page.keyboard.press('Enter');
    await page.frameLocator('.fm-report').locator('body *').first().waitFor();
    await pressed(page, 'Download').first().click();
    await told(page, /Saved as/);
    assert.deepEqual(
      (await faults(page)).filter((fault) => !fault.includes('<html lang="en"><head>')),
      [],
      `viewer, ${colorScheme}`,
    );
    await page.closeViewer();
    for (const dialog of ['Filter', 'Advanced']) {
      await pressed(page, dialog).click();
      await page.getByRole('dialog', { name: new RegExp(dialog) }).waitFor();
      assert.deepEqual(await faults(page), [], `${dialog}, ${colorScheme}`);
      await page.keyboard.press('Escape');
    }
    await openList(page, instrument.list('fmtype=rslt&fname=nothing'));
    assert.deepEqual(await faults(page), [], `empty, ${colorScheme}`);
    await page.goto(instrument.list('filter=fpri&fmtype=rslt'));
    await page.waitForSelector('.fm-filter');
    assert.deepEqual(await faults(page), [], `filter page, ${colorScheme}`);
  }
});

test('a filter, a choice and a download by keyboard alone', async () => {
  const page = await instrument.open('fmtype=rslt');
  const order = [];
  for (let i = 0; i < 25 && order.at(-1) !== 'body'; i++) {
    await page.keyboard.press('Tab');
    order.push(await focused(page));
  }
  const wanted = ['All', 'Results', 'Profiles', 'Screenshots', 'Narrow the list', 'Filter', 'Advanced', 'Stored files'];
  const places = wanted.map((name) => order.findIndex((one) => one.startsWith(name)));
  assert.ok(places[0] >= 0 && places.every((place, i) => i === 0 || place > places[i - 1]), order.join(' | '));

  await pressed(page, 'Filter').focus();
  await page.keyboard.press('Enter');
  const dialog = page.getByRole('dialog', { name: 'Filter' });
  await dialog.waitFor();
  while (!/^Tests: None/.test(await focused(page))) await page.keyboard.press('Tab');
  await page.keyboard.press('Tab');
  await page.keyboard.press(' ');
  await page.keyboard.press('Enter');
  await arrive(page, /test=/);
  assert.equal(await focused(page), 'Filter');
  while (!(await focused(page)).startsWith('Stored files')) await page.keyboard.press('Tab');
  for (const key of ['ArrowDown', ' ']) await page.keyboard.press(key);
  assert.match(await footer(page), /1 chosen/);
  while (!(await focused(page)).startsWith('Download')) await page.keyboard.press('Shift+Tab');
  const download = await saved(page, () => page.keyboard.press('Enter'));
  assert.match(download.suggestedFilename(), /\.zip$/);
  await page.waitForFunction(() => /Saved as/.test(document.querySelector('[role=status]').textContent));
  assert.deepEqual(page.problems, []);
});

test('nothing is out of reach on a phone and at 200 % zoom', async () => {
  for (const viewport of [
    { width: 360, height: 700 },
    { width: 640, height: 400 },
  ]) {
    const page = await instrument.open('fmtype=rslt&module=10G,1GE', {
      viewport,
      deviceScaleFactor: 2,
      hasTouch: true,
    });
    assert.equal(await page.evaluate(() => document.scrollingElement.scrollWidth <= innerWidth), true);
    await page.locator('.fm-check').first().tap();
    assert.match(await footer(page), /1 chosen/);
    await page.getByRole('combobox', { name: 'Sort by' }).selectOption('name');
    for (const name of ['View', 'PDF', 'Download', 'Filter', 'Advanced']) {
      const box = await pressed(page, name).boundingBox();
      assert.ok(box.x >= 0 && box.x + box.width <= viewport.width && box.height >= 44, name);
    }
    await pressed(page, 'View').tap();
    await page.locator('.fm-viewer').getByRole('button', { name: 'Close' }).tap();
    await pressed(page, 'Filter').tap();
    const ok = page.getByRole('dialog', { name: 'Filter' }).getByRole('button', { name: 'OK' });
    await ok.scrollIntoViewIfNeeded();
    assert.ok(await ok.isVisible());
    assert.deepEqual(await faults(page), []);
    assert.deepEqual(page.problems, []);
  }
});

test('a small screen shows eight rows with a filter on, all targets are large, and fingers open or choose', async () => {
  const small = { viewport: { width: 800, height: 480 }, hasTouch: true };
  const page = await instrument.open('fmtype=rslt&module=10G,1GE', small);
  const whole = await page.$$eval('.slick-row', (rows) => {
    const list = document.querySelector('.slick-viewport').getBoundingClientRect();
    return rows.filter((row) => row.getBoundingClientRect().bottom <= list.bottom).length;
  });
  assert.ok(whole >= 8, `${whole} rows`);
  for (const [viewport, locale] of [
    [small.viewport, 'de-DE'],
    [{ width: 390, height: 844 }, 'de-DE'],
    [{ width: 1000, height: 700 }, 'en-GB'],
  ]) {
    const narrow = await instrument.open('fmtype=rslt', { ...small, viewport, locale });
    await narrow.locator('.fm-check').first().tap();
    const found = await narrow.evaluate(() => ({
      tooWide: ['html', '.slick-viewport'].filter((name) => {
        const node = document.querySelector(name);
        return node.scrollWidth > node.clientWidth;
      }),
      tooSmall: [...document.querySelectorAll('button, a, select, label')]
        .filter((node) => node.checkVisibility() && node.getBoundingClientRect().height < 43.5)
        .map((node) => node.textContent),
    }));
    assert.deepEqual(found, { tooWide: [], tooSmall: [] }, `${viewport.width}, ${locale}`);
  }
  await page.locator('.slick-row').nth(2).tap();
  await page.locator('.fm-viewer').waitFor();
  assert.equal(await page.locator('.fm-bar').isVisible(), false, 'nothing to reach behind a view');
  await page.closeViewer();
  await page.locator('.slick-row').nth(1).dispatchEvent('pointerdown', { pointerType: 'touch', bubbles: true });
  await page.getByText('1 chosen').waitFor();
  assert.deepEqual(page.problems, []);
});

/** Runs in the page: what scrolls sideways, and the dates of which an element around them cuts off a part. */
function sideways() {
  const seen = [...document.querySelectorAll('*')].filter((node) => node.checkVisibility());
  const clips = seen.filter((node) => node === document.scrollingElement || getComputedStyle(node).overflowX !== 'visible');
  const scrolls = clips.filter((node) => getComputedStyle(node).overflowX !== 'hidden' && node.scrollWidth > node.clientWidth);
  const isCut = (date) => {
    const text = document.createRange();
    text.selectNodeContents(date);
    const { right } = text.getBoundingClientRect();
    const edge = (node) => node.getBoundingClientRect().left + node.clientLeft + node.clientWidth;
    return clips.some((node) => node.contains(date) && edge(node) < right - 0.5);
  };
  const dates = seen.filter((node) => node.matches('.fm-date, .fm-tile-date'));
  const named = ({ className, localName }) => className || localName;
  return { dates: dates.length, scrolls: scrolls.map(named), cut: dates.filter(isCut).map((date) => date.textContent) };
}

test('with scroll bars that take room nothing scrolls sideways and no date is cut', async () => {
  const computer = await startInstrument(undefined, SCROLL_BARS);
  after(() => computer.stop());
  const open = (page) => page.locator('.slick-row').nth(1).dblclick();
  const refine = async (page) => {
    if (await page.locator('.fm-facets:visible').count()) return;
    await pressed(page, 'Refine').click();
    await page.locator('.fm-facets:visible .fm-facet').first().waitFor();
  };
  for (const [width, height] of [
    [360, 700],
    [800, 480],
    [1280, 800],
  ]) {
    for (const [name, query, act] of [
      ['list', 'fmtype=rslt'],
      ['gallery', 'fmtype=screen'],
      ['viewer', 'fmtype=rslt', open],
      ['facets', 'fmtype=all', refine],
      ['filter page', 'filter=fadv&fmtype=rslt'],
    ]) {
      const page = await computer.newPage({ viewport: { width, height } });
      await page.goto(computer.list(query));
      await page.locator(':is(.slick-row, .fm-tile, .fm-filter):visible').first().waitFor();
      await act?.(page);
      await page.waitForTimeout(300); // verdicts may bring a column
      const { dates, ...found } = await page.evaluate(sideways);
      assert.deepEqual(found, { scrolls: [], cut: [] }, `${name}, ${width}`);
      assert.equal(dates > 0, name !== 'filter page', `${name}, ${width}`);
      await page.context().close();
    }
  }
});

test('a second visit asks for the page alone', async () => {
  const page = await instrument.open('fmtype=rslt');
  const asked = [];
  page.on('requestfinished', async (request) => {
    const sizes = await request.sizes();
    if (sizes.responseHeadersSize + sizes.responseBodySize) asked.push(request.url().replace(/.*\//, ''));
  });
  await openList(page, instrument.list('fmtype=prof'));
  // Reports in sight are read for their verdicts while the list rests, as verdict.json says.
  const toShowTheList = asked.filter((address) => !/opertype=view|verdict\.json/.test(address));
  assert.deepEqual(toShowTheList, ['fileman.cgi?fmtype=prof']);
});

test('German for whoever prefers it, and a switch that is remembered', async () => {
  const page = await instrument.open('fmtype=rslt', { locale: 'de-DE' });
  assert.equal(await page.getAttribute('html', 'lang'), 'de');
  assert.match(await footer(page), /Einträge/);
  await pressed(page, 'Über').click();
  const about = page.getByRole('dialog', { name: 'Ergebnisdateien' });
  const [, version] = /fileman VERSION ([\d.]+)/.exec(fs.readFileSync('CMakeLists.txt', 'utf8'));
  await about.getByText(`Version ${version}`, { exact: true }).waitFor();
  assert.deepEqual(await faults(page), []);
  const notices = await page.request.get(await about.getByRole('link').evaluate(({ href }) => href));
  assert.match(`${notices.headers()['content-type']} ${await notices.text()}`, /^text\/html[^]*<h2>fflate<\/h2>[^]*MIT/);
  await about.getByRole('button', { name: 'Schließen' }).click();
  await page.getByRole('combobox', { name: 'Sprache' }).selectOption('en');
  await page.getByRole('heading', { name: 'Result files' }).waitFor();
  await page.reload();
  await settled(page);
  assert.equal(await page.title(), 'Results – Result files');
});
