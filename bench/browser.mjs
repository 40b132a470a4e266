// Opens the list of the results below /home, first with an empty cache and then again, and prints the waiting times.
import { setTimeout as pause } from 'node:timers/promises';
import { plainServer, startInstrument } from '../tests/browser/instrument.mjs';

const SLOWED = Number(process.env.SLOWED ?? 6);
const ROUNDS = Number(process.env.ROUNDS ?? 3);
const ADDRESS = 'fmtype=all';
/**
 * Requests that follow after the list is shown: reports are read for their verdicts. These requests are not counted.
 */
const IN_THE_BACKGROUND = /verdict\.json$|[?&]opertype=view&/;

/**
 * The packaged server sends strict answers. This server sends default answers, with the same compression and caching.
 */
const PACKED = `
server.modules += ( "mod_deflate" )
deflate.mimetypes = ( "text/javascript", "text/css", "text/html", "image/svg+xml" )
deflate.allowed-encodings = ( "gzip" )
$HTTP["url"] =~ "^/(?:css|js|LigerUI)/" { setenv.add-response-header = ( "Cache-Control" => "max-age=3600" ) }
`;
const SERVERS = { strict: undefined, default: plainServer(PACKED) };

/**
 * Runs in the page. Stores the times when the first row is painted and when the footer shows that the list is complete.
 */
function watch() {
  window.times = {};
  const painted = (name) =>
    requestAnimationFrame(() => {
      const { port1, port2 } = new MessageChannel();
      port1.onmessage = () => {
        window.times[name] ??= performance.now();
      };
      port2.postMessage(null);
    });
  const look = () => {
    if (!window.times.first && document.querySelector('.fm-row')) painted('first');
    const isWhole = document.querySelector('.fm-foot span:not(:empty)') && document.querySelector('.fm-wait')?.hidden;
    if (isWhole) painted('whole');
    else setTimeout(look, 10);
  };
  look();
}

/**
 * Runs in the page. Stores a promise for the milliseconds from a typed character to the painted rows. The page changes
 * its address after the rows, so the new address is the end of the measurement.
 */
function typing() {
  const input = document.querySelector('input[type=search]');
  window.typed = new Promise((resolve) => {
    let start;
    const done = () => {
      if (decodeURIComponent(location.hash) !== `#find=${input.value}`) return requestAnimationFrame(done);
      const { port1, port2 } = new MessageChannel();
      port1.onmessage = () => resolve(performance.now() - start);
      port2.postMessage(null);
      return null;
    };
    const began = () => {
      start = performance.now();
      requestAnimationFrame(done);
    };
    input.addEventListener('input', began, { capture: true, once: true });
  });
  input.focus();
}

/** Starts to count the requests and their bytes, without those that the cache answers. */
async function traffic(cdp) {
  const seen = { requests: 0, bytes: 0, names: [] };
  await cdp.send('Network.enable');
  const fromCache = new Set();
  cdp.on('Network.requestServedFromCache', ({ requestId }) => fromCache.add(requestId));
  const urls = new Map();
  cdp.on('Network.responseReceived', ({ requestId, response }) => {
    urls.set(requestId, response.url);
    if (response.fromDiskCache) fromCache.add(requestId);
  });
  cdp.on('Network.loadingFinished', ({ requestId, encodedDataLength }) => {
    const url = urls.get(requestId) ?? '';
    if (fromCache.has(requestId) || !url.startsWith('http') || IN_THE_BACKGROUND.test(url)) return;
    seen.requests += 1;
    seen.bytes += encodedDataLength;
    seen.names.push(`${url.replace(/.*\//, '')} ${Math.round(encodedDataLength / 100) / 10}`);
  });
  return seen;
}

/** Opens the list and waits until it is complete. Returns { first, whole, used, requests, bytes, names }. */
async function visit(page, address) {
  const cdp = await page.context().newCDPSession(page);
  await cdp.send('Emulation.setCPUThrottlingRate', { rate: SLOWED });
  await cdp.send('Page.enable');
  await cdp.send('Page.addScriptToEvaluateOnNewDocument', { source: `(${watch})()` });
  const seen = await traffic(cdp);
  await cdp.send('Performance.enable', { timeDomain: 'threadTicks' });
  await cdp.send('Page.navigate', { url: address });
  // page.waitForFunction() would run large scripts of Playwright in the page and so slow it down.
  const isWhole = { expression: 'Boolean(window.times?.whole)', returnByValue: true };
  while (!(await cdp.send('Runtime.evaluate', isWhole)).result.value) await pause(100);
  await pause(300);
  const { metrics } = await cdp.send('Performance.getMetrics');
  const used = metrics.find(({ name }) => name === 'TaskDuration').value;
  return { ...(await page.evaluate(() => window.times)), ...seen, used };
}

async function typed(page, sign) {
  await page.evaluate(typing);
  await page.keyboard.press(sign);
  return page.evaluate(() => window.typed);
}

const seconds = (ms) => `${(ms / 1000).toFixed(2)} s`;
const COLUMNS = {
  'first rows': ({ first }) => seconds(first.first),
  'whole list': ({ first }) => seconds(first.whole),
  'page thread': ({ first }) => `${first.used.toFixed(2)} s`,
  'typed character': ({ signs }) => signs.map((ms) => `${Math.round(ms)} ms`).join(', '),
  'first visit': ({ first }) => `${first.requests} requests, ${Math.round(first.bytes / 1000)} KB`,
  'second visit': ({ second }) => `${second.requests} requests, ${Math.round(second.bytes / 1000)} KB`,
  'first rows again': ({ second }) => seconds(second.first),
};

/** Returns the smallest value of each figure in all rounds. */
function best(rounds) {
  const least = (of) => Math.min(...rounds.map(of));
  const part = (name) =>
    Object.fromEntries(
      ['first', 'whole', 'used', 'requests', 'bytes'].map((figure) => [figure, least((round) => round[name][figure])]),
    );
  return { first: part('first'), second: part('second'), signs: [0, 1].map((i) => least(({ signs }) => signs[i])) };
}

const rows = process.argv[2];
for (const [answers, server] of Object.entries(SERVERS)) {
  const instrument = await startInstrument(server);
  const rounds = [];
  for (let round = 0; round < ROUNDS; round++) {
    const page = await instrument.newPage({ serviceWorkers: 'block' });
    const first = await visit(page, instrument.list(ADDRESS));
    const signs = [];
    for (const sign of ['1', '2']) {
      signs.push(await typed(page, sign));
      await pause(500);
    }
    await page.goto('about:blank');
    const second = await visit(await page.context().newPage(), instrument.list(ADDRESS));
    rounds.push({ first, second, signs });
    await page.context().close();
  }
  await instrument.stop();
  const cells = Object.values(COLUMNS).map((cell) => cell(best(rounds)));
  if (process.env.NAMES) console.error(rounds[0].first.names, rounds[0].second.names);
  if (!process.argv[3] && answers === 'strict') {
    console.log(`| Rows | answers | ${Object.keys(COLUMNS).join(' | ')} |`);
    console.log(`|${'---|'.repeat(cells.length + 2)}`);
  }
  console.log(`| ${Number(rows).toLocaleString('en')} | ${answers} | ${cells.join(' | ')} |`);
}
