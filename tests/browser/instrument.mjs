// A served instrument and a browser in front of it, for the tests in this folder.
import assert from 'node:assert/strict';
import { execFileSync, spawn } from 'node:child_process';
import { once } from 'node:events';
import fs from 'node:fs';
import { createRequire } from 'node:module';
import net from 'node:net';
import { after, test as plainTest } from 'node:test';
import { setTimeout as pause } from 'node:timers/promises';

const require = createRequire(new URL('../../web/package.json', import.meta.url));
const { chromium } = require('playwright-core');
const AXE = fs.readFileSync(require.resolve('axe-core/axe.min.js'), 'utf8');
/** Where the tests put reports of their own. */
export const DIR = '/home/10g/kte-rslt/10gport/bert-result';
export const CGI_DIR = '/usr/local/ktb/cgi-bin';

// The tests write below /home: never outside the private storage.
assert.equal(process.env.FILEMAN_PRIVATE_STORAGE, '1', 'start the tests by tests/browser/run');
assert.ok(fs.existsSync('/tmp/.private-storage'));

async function freePort() {
  const server = net.createServer().listen(0, '127.0.0.1');
  await once(server, 'listening');
  const { port } = server.address();
  await once(server.close(), 'close');
  return port;
}

/** Settings for a server that adds no header line of its own; `more` is added to them. */
export function plainServer(more = '') {
  const conf = `/tmp/plain-lighttpd-${more.length}.conf`;
  fs.writeFileSync(conf, `include "/srv/tests/browser/plain-lighttpd.conf"\n${more}\n`);
  return conf;
}

const opened = []; // the pages of the running test
const unexpected = ({ problems, expected }) =>
  problems.filter((text) => !expected.some((words) => text.includes(words)));

/** A test that also fails if one of its pages reports a problem that contains no text of `page.expected`. */
export const test = (title, work) =>
  plainTest(title, async (context) => {
    try {
      await work(context);
      assert.deepEqual(opened.flatMap(unexpected), []);
    } finally {
      await Promise.all(opened.splice(0).map((page) => page.context().close()));
    }
  });

/**
 * Starts lighttpd with these settings (the packaged ones unless given) and a browser; `more` goes to its start. A file
 * of tests need not stop it.
 */
export async function startInstrument(conf = '/srv/packaging/lighttpd.conf', more = {}) {
  const port = await freePort();
  const env = { ...process.env, FILEMAN_PORT: port, FILEMAN_WWW: '/srv/build/www', FILEMAN_CGI_DIR: CGI_DIR };
  const server = spawn('/usr/sbin/lighttpd', ['-D', '-f', conf], { env, stdio: 'ignore' });
  const home = `http://127.0.0.1:${port}`;
  while (!(await fetch(home, { redirect: 'manual' }).catch(() => null))) {
    assert.equal(server.exitCode, null, 'the web server does not start');
    await pause(50);
  }
  const browser = await chromium.launch({
    executablePath: '/usr/bin/chromium',
    args: ['--no-sandbox', '--disable-gpu', '--disable-quic', '--disable-background-networking', '--disable-sync'],
    ...more,
  });
  const stop = async () => {
    await browser.close();
    server.kill();
  };
  if (process.env.NODE_TEST_CONTEXT) after(stop);
  const list = (query) => `${home}/cgi-bin/fileman.cgi?${query}`;
  /** A fresh page that shows the list of a query. */
  const open = async (query, options = {}) => {
    const page = await newPage(browser, options);
    await openList(page, list(query));
    return page;
  };
  /** A test that begins at the list of a query. */
  const onList = (title, query, work, options) => test(title, async () => work(await open(query, options)));
  return { home, list, open, onList, stop, newPage: (options = {}) => newPage(browser, options) };
}

/** Puts files, { name: content } or [[name, content]], below DIR for as long as some work takes. Names may be bytes. */
export async function withFiles(files, work) {
  const made = [];
  try {
    for (const [name, content] of files[Symbol.iterator] ? files : Object.entries(files)) {
      const file = Buffer.concat([Buffer.from(`${DIR}/`), Buffer.from(name)]);
      made.push(fs.mkdirSync(file.subarray(0, file.lastIndexOf('/')), { recursive: true }) ?? file);
      fs.writeFileSync(file, content);
    }
    await work();
  } finally {
    for (const one of made) fs.rmSync(one, { recursive: true, force: true });
  }
}

/** Has requests to `addresses` answered by `answer` (see route.fulfill; a function gets the route) while some work runs. */
export async function withAnswer(page, addresses, answer, work) {
  const give = typeof answer === 'function' ? answer : (route) => route.fulfill(answer);
  if (answer.status >= 400) page.expected.push(`status of ${answer.status}`);
  await page.route(addresses, give);
  await work();
  await page.unroute(addresses, give);
}

/** Reports of the sample without a port, which the program lists but does not find by their identities. */
const NEVER_FOUND = ['rsltid=CPRI__', 'rsltid=SDH/PDH__'];

/** A page in a fresh profile; `page.problems` gathers console errors, script errors and failed requests. */
async function newPage(browser, options) {
  const context = await browser.newContext({ viewport: { width: 1280, height: 800 }, locale: 'en-GB', ...options });
  const page = await context.newPage();
  page.setDefaultTimeout(20000);
  page.problems = [];
  page.expected = [...NEVER_FOUND];
  opened.push(page);
  page.closeViewer = () => viewer(page).getByRole('button', { name: 'Close' }).click();
  page.on('console', (message) => {
    if (message.type() === 'error') page.problems.push(`${message.text()} ${message.location().url.slice(0, 200)}`);
  });
  page.on('pageerror', (error) => page.problems.push(String(error)));
  page.on('response', (response) => {
    if (response.status() >= 400) page.problems.push(`status of ${response.status()}: ${response.url().slice(0, 200)}`);
  });
  return page;
}

/** Opens a list and waits until it is shown. */
export async function openList(page, url) {
  await page.goto(url);
  await page.waitForSelector('.fm-foot span:not(:empty)');
  await settled(page);
}

/** Waits until nothing is being read. */
export async function settled(page) {
  await page.waitForSelector('.fm-wait', { state: 'hidden' });
  await page.waitForTimeout(60);
}

const cells = (page, selector) =>
  page.$$eval(
    '.fm-row',
    (rows, wanted) =>
      rows.sort((a, b) => a.dataset.row - b.dataset.row).map((row) => row.querySelector(wanted).textContent),
    selector,
  );
export const names = (page) => cells(page, '.fm-name');
export const column = (page, id) => cells(page, `.fm-col-${id}`);
/** Waits for an address, and for the list that is shown at it. */
export async function arrive(page, address) {
  await page.waitForURL(address);
  await settled(page);
}

/** Types into the search, and waits for what it finds. */
export async function find(page, text) {
  await page.getByRole('searchbox').fill(text);
  await page.waitForURL((url) => decodeURIComponent(url.hash).includes(`find=${text}`));
}

/** Collects the addresses with some words that the page requests from now on. */
export function asks(page, words) {
  const asked = [];
  page.on('request', (request) => request.url().includes(words) && asked.push(request.url()));
  return asked;
}

/** What an action in the page saves. */
export async function saved(page, action) {
  const [download] = await Promise.all([page.waitForEvent('download', { timeout: 60000 }), action()]);
  return download;
}

export const footer = (page) => page.innerText('.fm-foot');
export const viewer = (page) => page.locator('.fm-viewer');
export const report = (page) => page.frameLocator('.fm-report');
/** Ticks the boxes of rows. */
export async function tick(page, ...rows) {
  for (const i of rows) await row(page, i).locator('.fm-check').click();
}
export const row = (page, i) => page.locator(`.fm-row[data-row="${i}"]`);
export const task = (page) => page.locator('.fm-task').last();
export const told = (page, words) => task(page).getByText(words).waitFor();
export const pressed = (page, name) => page.getByRole('button', { name, exact: true });

/** What the program itself writes for a query in default answers (or those that `more` asks for), and the rows in it. */
export const answerOf = (query, more = {}) =>
  execFileSync(`${CGI_DIR}/fileman.cgi`, { env: { QUERY_STRING: query, ...more }, encoding: 'utf8', maxBuffer: 1 << 26 });
export const rowsOf = (query) =>
  answerOf(query)
    .split('\n')
    .filter((line) => line.startsWith("\t\t{ id: '"));

/** The number of reports in the list of a query, and of those that say FAIL. */
export function reportsOf(query) {
  const paths = rowsOf(query).map((row) => /path: '([^']*)'/.exec(row)[1]);
  const reports = paths.filter((path) => path.endsWith('.html'));
  return { all: reports.length, failed: reports.filter((path) => fs.readFileSync(path, 'utf8').includes('>FAIL<')).length };
}

/** Names of serious faults that axe finds. */
export async function faults(page) {
  await page.evaluate(AXE);
  const found = await page.evaluate(() =>
    window.axe.run(document, {
      runOnly: ['wcag2a', 'wcag2aa', 'wcag21a', 'wcag21aa', 'wcag22aa', 'best-practice'],
    }),
  );
  return found.violations.flatMap(({ id, nodes }) => nodes.map((node) => `${id}: ${node.html.slice(0, 160)}`));
}
