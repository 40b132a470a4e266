// The list from a person's side: order, search, choice, filters, history, what is remembered.
import assert from 'node:assert/strict';
import { arrive, column, find, footer, names, openList, pressed, row, rowsOf, settled, startInstrument, test, tick, viewer } from './instrument.mjs';

const instrument = await startInstrument();

const chosen = (page) =>
  page.$$eval('.fm-row.is-chosen', (rows) => rows.map((row) => Number(row.dataset.row)).sort((a, b) => a - b));
const entryCount = async (page) => Number(/^([\d,]+)/.exec(await footer(page))[1].replace(',', ''));

test('each tab shows what the program lists', async () => {
  const page = await instrument.newPage();
  await openList(page, instrument.home);
  for (const [tab, kind] of Object.entries({ Results: 'rslt', Profiles: 'prof', Screenshots: 'screen', All: 'all' })) {
    await page.getByRole('link', { name: tab }).click();
    await arrive(page, (url) => url.searchParams.get('fmtype') === kind);
    assert.equal(await entryCount(page), rowsOf(`fmtype=${kind}`).length, tab);
    assert.equal(await page.getAttribute('a[aria-current]', 'href'), `fileman.cgi?fmtype=${kind}`);
  }
  await page.goBack();
  await settled(page);
  assert.match(page.url(), /fmtype=screen/);
  assert.equal(await pressed(page, 'Filter').isDisabled(), true, 'screenshots obey no filter');
});

instrument.onList('newest first, then by any column in natural order, remembered with the widths', 'fmtype=all', async (page) => {
  const head = (id) => `[data-id=${id}]`;
  // The heads are drawn anew when a column comes in, as that of the verdicts does.
  const boxOf = (selector) => page.$eval(selector, (node) => node.getBoundingClientRect().toJSON());
  const portOrder = () => page.getAttribute(head('port'), 'aria-sort');
  const dates = await page.$$eval('.fm-row time', (times) => times.map((time) => time.title));
  assert.deepEqual(dates, [...dates].sort().reverse());
  await pressed(page, 'Port').click();
  const ports = (await column(page, 'port')).filter(Boolean);
  assert.deepEqual(ports, [...ports].sort(new Intl.Collator('en', { numeric: true }).compare));
  assert.equal(await portOrder(), 'ascending');
  const { width } = await boxOf(head('module'));
  await page.getByRole('button', { name: 'Module' }).focus();
  for (let i = 0; i < 3; i++) await page.keyboard.press('Alt+ArrowRight');
  const handle = await boxOf(`${head('mode')} .fm-handle`);
  await page.mouse.move(handle.x + 4, handle.y + 8);
  await page.mouse.down();
  await page.mouse.move(handle.x + 304, handle.y + 8, { steps: 4 });
  await page.mouse.up();
  const mode = await boxOf(head('mode'));
  // What is wider than the list scrolls, the heads along with it, and the rows in the document stay in their order.
  const scrollTo = (top) => page.locator('.fm-viewport').evaluate((node, y) => node.scrollTo(90, y), top);
  await scrollTo(3600);
  await page.waitForFunction(() => document.querySelector('.fm-heads-frame').scrollLeft === 90);
  for (const order of ['descending', 'ascending']) {
    await pressed(page, 'Port').dispatchEvent('click'); // a click with the mouse would scroll to the head
    assert.equal(await portOrder(), order);
  }
  assert.equal(await page.$eval('.fm-viewport', (node) => node.scrollLeft), 90);
  await scrollTo(3300);
  await row(page, 84).waitFor({ state: 'attached' });
  const rows = await page.$$eval('.fm-row', (nodes) => nodes.map((node) => Number(node.dataset.row)));
  assert.deepEqual(rows, Array.from(rows, (_, i) => rows[0] + i));
  assert.ok(rows[0] > 50 && rows[0] < 100 && rows.length < 60, `rows ${rows}`);
  await openList(page, instrument.list('fmtype=rslt'));
  assert.deepEqual([(await boxOf(head('module'))).width, (await boxOf(head('mode'))).width], [width + 48, mode.width]);
  assert.equal(await portOrder(), 'ascending');
});

instrument.onList('typing narrows, marks and counts; "/" and Down lead through; words stay with tabs, filters and a changed address', 'fmtype=all', async (page) => {
  const typed = () => page.getByRole('searchbox').inputValue();
  const tests = async () => [...new Set(await column(page, 'test'))];
  await find(page, 'bert 10G');
  const matching = rowsOf('fmtype=all').filter((row) => /bert/i.test(row) && /10G/i.test(row)).length;
  assert.match(await footer(page), new RegExp(`^${matching} of \\d+ entries`));
  assert.equal(await page.locator('mark').first().innerText(), 'bert');
  await find(page, 'no such thing');
  await page.getByRole('heading', { name: 'Nothing matches “no such thing”' }).waitFor();
  await pressed(page, 'Clear the search').click();

  await page.focus('#rsltgrid');
  await page.keyboard.press('/');
  await page.keyboard.type('today test:bert -port:SFP');
  await page.keyboard.press('ArrowDown');
  assert.equal(await page.getAttribute('#rsltgrid', 'aria-activedescendant'), 'fm-row-0');
  assert.deepEqual(await tests(), ['bert']);
  assert.ok(!(await column(page, 'port')).includes('SFP'));
  await page.getByRole('link', { name: 'Results' }).click();
  await arrive(page, /fmtype=rslt#find=today/);
  assert.equal(await typed(), 'today test:bert -port:SFP');
  await page.goto(instrument.list('fmtype=rslt&module=10G'));
  await settled(page);
  assert.deepEqual([await typed(), await tests()], ['today test:bert -port:SFP', ['bert']]);
  await page.evaluate("location.hash = '#find=yesterday'");
  await page.getByRole('heading', { name: 'Nothing matches “yesterday”' }).waitFor();
  await page.goBack();
  await page.waitForSelector('.fm-row');
  assert.equal(await typed(), 'today test:bert -port:SFP');
});

instrument.onList('rows are chosen by box, shift, ctrl, Ctrl-A and keys, and the actions follow', 'fmtype=rslt&test=bert', async (page) => {
  const enabled = () => Promise.all(['View', 'PDF', 'Download'].map((name) => pressed(page, name).isEnabled()));
  assert.deepEqual(await enabled(), [false, false, false]);
  await row(page, 1).click();
  assert.deepEqual([await chosen(page), await enabled()], [[1], [true, true, true]]);
  await row(page, 4).click({ modifiers: ['Shift'] });
  assert.deepEqual([await chosen(page), await enabled()], [[1, 2, 3, 4], [false, true, true]]);
  await row(page, 2).click({ modifiers: ['Control'] });
  await tick(page, 7);
  assert.deepEqual(await chosen(page), [1, 3, 4, 7]);
  assert.match(await footer(page), /4 chosen/);
  await page.keyboard.press('Control+a');
  assert.ok((await footer(page)).includes(`${await entryCount(page)} chosen`));
  await page.getByRole('checkbox', { name: 'Choose all shown' }).uncheck();
  assert.deepEqual(await chosen(page), []);
  await page.focus('#rsltgrid');
  for (const key of ['Home', ' ', 'ArrowDown', 'ArrowDown', ' ', 'Shift+ArrowDown']) await page.keyboard.press(key);
  assert.deepEqual(await chosen(page), [2, 3]);
  assert.equal(await page.getAttribute('#rsltgrid', 'aria-activedescendant'), 'fm-row-3');
  assert.equal(await page.getAttribute('#fm-row-3', 'aria-rowindex'), '5');
  assert.equal(await page.getAttribute('#fm-row-3', 'aria-selected'), 'true');
  assert.equal(await page.getAttribute('#rsltgrid', 'aria-rowcount'), String((await entryCount(page)) + 1));
  await page.keyboard.press('End');
  await page.waitForTimeout(100);
  assert.equal(await page.locator('.fm-row.is-active').isVisible(), true);
  await page.keyboard.press('Escape');
  assert.deepEqual(await chosen(page), []);
});

instrument.onList('rows are taken along as text, by their menu and on paper, and can be dense', 'fmtype=rslt&test=bert', async (page) => {
  await page.context().grantPermissions(['clipboard-read', 'clipboard-write']);
  const copied = () => page.evaluate(() => navigator.clipboard.readText());
  const all = await names(page);
  await row(page, 1).click();
  await row(page, 3).click({ modifiers: ['Control'] });
  await page.keyboard.press('Control+c');
  await page.getByText('2 rows copied').waitFor({ state: 'attached' });
  const lines = (await copied()).split('\n');
  assert.deepEqual(lines.map((line) => line.split('\t')[0]), [all[1], all[3]]);
  for (const line of lines) assert.match(line, /^[^\t]+\t\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\t\/home\/[^\t]+\.html$/);

  await row(page, 3).click({ button: 'right' });
  await page.getByRole('menuitem', { name: 'Copy the path' }).click();
  assert.equal(await copied(), lines[1].split('\t')[2]);
  await page.keyboard.press('ContextMenu');
  await page.getByRole('menuitem', { name: 'Copy the link' }).click();
  await openList(page, await copied());
  assert.equal(await viewer(page).locator('h2').innerText(), lines[1].split('\t')[0]);
  await page.closeViewer();

  const { height } = await row(page, 0).boundingBox();
  await page.getByLabel('Dense rows').check();
  assert.ok((await row(page, 0).boundingBox()).height < height);

  await page.evaluate(() => dispatchEvent(new Event('beforeprint')));
  await page.emulateMedia({ media: 'print', colorScheme: 'dark' });
  assert.equal(await page.locator('.fm-paper tbody tr').count(), await entryCount(page));
  const printed = await page.$$eval('body, body > *', (nodes) => nodes.filter((node) => node.checkVisibility()).map(({ className }) => className));
  assert.deepEqual(printed, ['', 'fm-paper']);
  assert.equal(await page.evaluate(() => getComputedStyle(document.body).color), 'rgb(0, 0, 0)');
});

instrument.onList("a ticked test shows that test's results, with chips, address and history", 'fmtype=rslt', async (page) => {
  await pressed(page, 'Filter').click();
  const dialog = page.getByRole('dialog', { name: 'Filter' });
  await dialog.waitFor();
  const offered = await dialog.locator('fieldset').filter({ hasText: 'Tests' }).locator('label').allInnerTexts();
  assert.ok(offered.length > 5 && !offered.includes(''));
  await dialog.getByLabel('throughput', { exact: true }).check();
  await dialog.getByRole('button', { name: 'OK' }).click();
  await arrive(page, /test=throughput/);
  assert.equal(await page.locator('[data-id=test]').count(), 0, 'a column of one value says nothing');
  assert.equal(await entryCount(page), rowsOf('fmtype=rslt&test=throughput').length);

  await pressed(page, 'Filter').click();
  assert.equal(await dialog.getByLabel('throughput', { exact: true }).isChecked(), true);
  await dialog.getByRole('button', { name: 'Modules: All' }).click();
  await dialog.getByLabel('10G', { exact: true }).uncheck();
  await page.keyboard.press('Enter');
  await arrive(page, /module=/);
  assert.ok(!(await column(page, 'module')).includes('10G'));

  await pressed(page, 'Remove Test: throughput').click();
  await page.waitForURL((url) => !url.searchParams.has('test'));
  await page.goBack();
  await settled(page);
  assert.equal(new URL(page.url()).searchParams.get('test'), 'throughput');
  await pressed(page, 'Clear the filter').click();
  await page.waitForURL((url) => url.search === '?fmtype=rslt');
});

instrument.onList('advanced fields, Cancel and Escape, and the way out of an empty list', 'fmtype=rslt', async (page) => {
  const old = await footer(page);
  const dialog = page.getByRole('dialog', { name: 'Advanced filter' });
  const fill = async (fields) => {
    await pressed(page, 'Advanced').click();
    for (const [label, text] of Object.entries(fields)) await dialog.getByLabel(label).fill(text);
  };
  await fill({ 'File name holds': 'a & b' });
  await page.keyboard.press('Escape');
  await dialog.waitFor({ state: 'detached' });
  assert.equal(await page.evaluate(() => document.activeElement.innerText), 'Advanced');
  await fill({ 'Name begins': 'bert_' });
  await dialog.getByRole('button', { name: 'Cancel' }).click();
  assert.equal(await footer(page), old);
  await fill({ 'Name begins': 'bert_', 'Name ends': 'no such end' });
  await page.keyboard.press('Enter');
  await page.getByRole('heading', { name: 'Nothing matches the filter' }).waitFor();
  await pressed(page, 'Remove Name ends: no such end').click();
  await page.waitForSelector('.fm-row');
  assert.ok((await page.locator('.fm-name').allTextContents()).every((name) => name.startsWith('bert_')));
});

test('the filter pages work by their own address', async () => {
  const page = await instrument.newPage();
  await page.goto(instrument.list('filter=fpri&fmtype=prof&module=1GE'));
  assert.equal(await page.getByLabel('1GE', { exact: true }).isChecked(), true);
  await page.getByLabel('10G', { exact: true }).check();
  await page.getByRole('button', { name: 'OK' }).click();
  await page.waitForURL(/fmtype=prof&module=1GE,10G/);
  await page.goto(instrument.list('filter=fadv&fmtype=rslt&fname=%22%3E%3Cb%3E'));
  assert.equal(await page.getByLabel('File name holds').inputValue(), '"><b>');
  await page.keyboard.press('Escape');
  await page.waitForURL(/fmtype=rslt/);
});

test('a store that is blocked or holds anything is no obstacle', async () => {
  const rubbish = [5, 'x', [], [[]], [null], { field: 'x', ascending: true }, { chosen: 5, top: 'x' }, { name: 'a', test: {} }, [{ name: 5 }]];
  for (const value of [...rubbish, undefined]) {
    const page = await instrument.newPage();
    await page.addInitScript((kept) => {
      const get = () => {
        throw new DOMException('', 'SecurityError');
      };
      const names = ['sort', 'widths', 'filters', 'verdicts', 'look', 'language', 'details', 'gallery', 'list?fmtype=screen', 'find'];
      for (const store of ['localStorage', 'sessionStorage'])
        if (kept === undefined) Object.defineProperty(window, store, { get });
        else for (const name of names) window[store].setItem(`fileman.${name}`, JSON.stringify(kept));
    }, value);
    await openList(page, `${instrument.list('fmtype=screen')}#find=screen`);
    assert.match(await footer(page), /^8 entries/, JSON.stringify(value));
    const before = await page.getAttribute('html', 'data-look');
    await pressed(page, 'Light or dark').click();
    assert.notEqual(await page.getAttribute('html', 'data-look'), before);
    await pressed(page, 'Pictures').click();
    assert.equal(await page.locator('.fm-row').count(), 8);
  }
});

instrument.onList('an action leaves list, place, choice and search as they are; so does a reload', 'fmtype=all', async (page) => {
  await find(page, 'result');
  await page.focus('#rsltgrid');
  for (const key of ['PageDown', 'PageDown', ' ', 'ArrowDown', 'Enter']) await page.keyboard.press(key);
  await page.closeViewer();
  const state = () =>
    page.evaluate(() => [
      document.querySelector('.fm-viewport').scrollTop,
      document.querySelector('[type=search]').value,
      document.querySelector('.fm-foot').innerText,
      document.querySelector('.is-active')?.innerText,
    ]);
  const was = await state();
  assert.match(was[2], /1 chosen/);
  await pressed(page, 'Read the list again').click();
  await settled(page);
  assert.deepEqual(await state(), was);
  await page.reload();
  await settled(page);
  assert.deepEqual(await state(), was);
}, { viewport: { width: 1280, height: 600 } });
