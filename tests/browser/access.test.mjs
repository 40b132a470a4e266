// Keyboard alone, assistive software, small windows, strong zoom, dark, another language.
import assert from 'node:assert/strict';
import fs from 'node:fs';
import { arrive, faults, footer, openList, pressed, report, row, saved, settled, startInstrument, task, test, told, viewer, withAnswer } from './instrument.mjs';

const instrument = await startInstrument();
const PHONE = { width: 360, height: 700 };
const OWN = { width: 800, height: 480 };
const COMPUTER = { width: 1280, height: 800 };

const focused = (page) =>
  page.evaluate(() => {
    const node = document.activeElement;
    return node.getAttribute('aria-label') || node.innerText || node.id;
  });

test('axe finds no fault in any view', async () => {
  for (const colorScheme of ['light', 'dark']) {
    const page = await instrument.open('fmtype=rslt&test=throughput', { colorScheme });
    const check = async (view, isOwn = () => true) =>
      assert.deepEqual((await faults(page)).filter(isOwn), [], `${view}, ${colorScheme}`);
    await check('list');
    await row(page, 0).click();
    await page.keyboard.press('Enter');
    await report(page).locator('body *').first().waitFor();
    await pressed(page, 'Download').first().click();
    await told(page, /Saved as/);
    await check('viewer', (fault) => !fault.includes('<html lang="en"><head>'));
    await page.closeViewer();
    for (const name of ['Filter', 'Advanced']) {
      await pressed(page, name).click();
      await page.getByRole('dialog', { name: new RegExp(name) }).waitFor();
      await check(name);
      await page.keyboard.press('Escape');
    }
    await openList(page, instrument.list('fmtype=rslt&fname=nothing'));
    await check('empty list');
    await page.goto(instrument.list('filter=fpri&fmtype=rslt'));
    await page.waitForSelector('.fm-filter');
    await check('filter page');
  }
});

instrument.onList('a filter, a choice and a download by keyboard alone', 'fmtype=rslt', async (page) => {
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
});

for (const viewport of [OWN, COMPUTER])
  instrument.onList(`the focus is never lost: views, ends of the list, buttons that vanish, ${viewport.width}`, 'fmtype=rslt&test=throughput', async (page) => {
    const press = async (...keys) => {
      for (const key of keys) await page.keyboard.press(key);
    };
    const isKept = async (when) => {
      await page.evaluate(() => new Promise(requestAnimationFrame));
      assert.equal(await page.evaluate(() => document.activeElement === document.body), false, when);
    };
    await page.locator('#rsltgrid').press('End');
    await press('ArrowUp', 'Enter');
    await isKept('view');
    await page.getByRole('button', { name: 'Next entry' }).press('Enter');
    await isKept('last entry');
    await page.locator('.fm-facts').evaluate((details) => (details.open = true));
    await page.locator('.fm-facts dl').click();
    await press('Escape');
    assert.equal(await viewer(page).isVisible(), false, 'closed after a click beside everything');
    await withAnswer(page, '**/*opertype=download**', { status: 500, body: '' }, async () => {
      await press('Enter');
      await page.locator('.fm-facts').getByRole('button', { name: 'Try again' }).press('Enter');
      await isKept('details again');
      await viewer(page).getByRole('button', { name: 'Download this entry' }).press('Enter');
      for (const button of ['Try again', 'Close']) await task(page).getByRole('button', { name: button }).press('Enter');
      assert.match(await focused(page), /Download/, 'back from the box');
    });
    await press('Escape');
    assert.equal(await viewer(page).isVisible(), false);
    await isKept('view closed');
    if (viewport === COMPUTER) {
      await pressed(page, 'Name').press('Enter');
      await page.setViewportSize({ width: 1240, height: 800 });
      await page.waitForTimeout(100);
      assert.match(await focused(page), /^Name/, 'heads made anew');
    }
    await openList(page, instrument.list('fmtype=rslt&fname=nothing'));
    await page.locator('.fm-empty').getByRole('button', { name: 'Clear the filter' }).press('Enter');
    await settled(page);
    await isKept('filter cleared');
  }, { viewport });

instrument.onList('the ring around a row is for the keyboard, its bar for everybody', 'fmtype=rslt', async (page) => {
  const look = (i) =>
    page.locator(`#fm-row-${i}`).evaluate((row) => {
      const { outlineStyle, boxShadow } = getComputedStyle(row);
      return { ring: outlineStyle !== 'none', bar: boxShadow !== 'none' };
    });
  await row(page, 2).click();
  assert.deepEqual(await look(2), { ring: false, bar: true });
  await page.keyboard.press('ArrowDown');
  assert.deepEqual([await look(2), await look(3)], [{ ring: false, bar: false }, { ring: true, bar: true }]);
  await row(page, 5).click();
  for (const key of ['Shift+Tab', 'Tab']) await page.keyboard.press(key);
  assert.deepEqual(await look(5), { ring: true, bar: true });
});

/** Runs in the page: what scrolls sideways, what cuts off a part of a date, what is too low for a finger. */
function misfits() {
  const seen = [...document.querySelectorAll('*')].filter((node) => node.checkVisibility());
  const isHidden = (node) => getComputedStyle(node).overflowX === 'hidden';
  const isClip = (node) => node === document.scrollingElement || getComputedStyle(node).overflowX !== 'visible';
  const full = seen.filter((node) => isClip(node) && node.scrollWidth > node.clientWidth);
  const holdsDate = (node) => node.matches('.fm-tile-date') || node.querySelector('.fm-date') !== null;
  const isLow = (node) => node.matches('button, a, select, label') && node.getBoundingClientRect().height < 43.5;
  const named = ({ className, localName, textContent }) => className || textContent || localName;
  return {
    scrolls: full.filter((node) => !isHidden(node)).map(named),
    cut: full.filter((node) => isHidden(node) && holdsDate(node)).map(named),
    low: seen.filter(isLow).map(named),
  };
}

test('on each screen nothing scrolls sideways, no date is cut, and fingers find large targets', async () => {
  // With scroll bars that take room, as on most computers.
  const computer = await startInstrument(undefined, { ignoreDefaultArgs: ['--hide-scrollbars'] });
  const refine = async (page) => {
    if (!(await page.locator('.fm-facets:visible').count())) await pressed(page, 'Refine').click();
    await page.locator('.fm-facets:visible .fm-facet').first().waitFor();
  };
  const scenes = [
    ['list', 'fmtype=rslt', (page) => page.locator('.fm-check').first().click()],
    ['gallery', 'fmtype=screen', () => {}],
    ['viewer', 'fmtype=rslt', (page) => page.locator('.fm-row').nth(1).dblclick()],
    ['facets', 'fmtype=all', refine],
    ['filter page', 'filter=fadv&fmtype=rslt', () => {}],
  ];
  const check = async (server, viewport, hasTouch, [name, query, act]) => {
    const page = await server.newPage({ viewport, hasTouch, locale: name === 'list' ? 'de-DE' : 'en-GB' });
    await page.route(server.list(query), async (route) => {
      const response = await route.fetch();
      // As text this date is longer than others: "20. Sept. 2025 20:48".
      const body = (await response.text()).replace(/\b20\d\d-\d\d-\d\d(?= \d\d:)/g, '2025-09-20');
      await route.fulfill({ response, body });
    });
    await page.goto(server.list(query));
    await page.locator(':is(.fm-row, .fm-tile, .fm-filter):visible').first().waitFor();
    await act(page);
    await page.waitForTimeout(300); // verdicts may bring a column
    const { low, ...found } = await page.evaluate(misfits);
    const where = `${name}, ${viewport.width}, ${hasTouch ? 'fingers' : 'scroll bars'}`;
    assert.deepEqual({ low: hasTouch ? low : [], ...found }, { low: [], scrolls: [], cut: [] }, where);
    await page.context().close();
  };
  for (const viewport of [PHONE, OWN, COMPUTER]) for (const scene of scenes) await check(computer, viewport, false, scene);
  for (const viewport of [PHONE, { width: 640, height: 400 }, OWN, { width: 1000, height: 700 }])
    await check(instrument, viewport, true, scenes[0]);
});

for (const viewport of [PHONE, OWN])
  instrument.onList(`fingers open or choose, reach every action, and see eight rows with a filter on, ${viewport.width}`, 'fmtype=rslt&module=10G,1GE', async (page) => {
    const list = await page.locator('.fm-viewport').boundingBox();
    const bottoms = await page.$$eval('.fm-row', (rows) => rows.map((row) => row.getBoundingClientRect().bottom));
    const whole = bottoms.filter((bottom) => bottom <= list.y + list.height).length;
    assert.ok(whole >= 8, `${whole} rows`);
    await page.locator('.fm-check').first().tap();
    assert.match(await footer(page), /1 chosen/);
    await page.getByRole('combobox', { name: 'Sort by' }).selectOption('name');
    for (const name of ['View', 'PDF', 'Download', 'Filter', 'Advanced']) {
      const { x, width } = await pressed(page, name).boundingBox();
      assert.ok(x >= 0 && x + width <= viewport.width, name);
    }
    await pressed(page, 'Filter').tap();
    const ok = page.getByRole('dialog', { name: 'Filter' }).getByRole('button', { name: 'OK' });
    await ok.scrollIntoViewIfNeeded();
    assert.ok(await ok.isVisible());
    assert.deepEqual(await faults(page), []);
    await page.keyboard.press('Escape');
    await row(page, 2).tap();
    await viewer(page).waitFor();
    assert.equal(await page.locator('.fm-bar').isVisible(), false, 'nothing to reach behind a view');
    await page.closeViewer();
    await row(page, 1).dispatchEvent('pointerdown', { pointerType: 'touch', bubbles: true });
    await page.getByText('2 chosen').waitFor();
  }, { viewport, hasTouch: true, deviceScaleFactor: 2 });

instrument.onList('with a zoom of 400 % rows and fields stay usable', 'fmtype=rslt&module=10G,1GE', async (page) => {
  const height = (node) => page.locator(node).evaluate(({ clientHeight }) => clientHeight);
  await page.locator('.fm-check').first().click();
  assert.ok((await height('.fm-viewport')) > 2 * 44);
  await pressed(page, 'Advanced').click();
  const field = await page.getByLabel('Job ID').boundingBox();
  assert.ok(field.y >= 0 && field.y + field.height <= 256);
  await page.getByRole('button', { name: 'OK' }).scrollIntoViewIfNeeded();
  await page.getByLabel('Account').fill('x');
  assert.equal(await page.evaluate(() => document.documentElement.scrollWidth), 320);
}, { viewport: { width: 320, height: 256 } });

instrument.onList('a second visit asks for the page alone', 'fmtype=rslt', async (page) => {
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

instrument.onList('German for whoever prefers it, and a switch that is remembered', 'fmtype=rslt', async (page) => {
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
}, { locale: 'de-DE' });
