// Opens the list of the storage below /home in fresh and in used profiles and prints what the person waits for.
import { setTimeout as pause } from 'node:timers/promises';
import { startInstrument } from '../tests/browser/instrument.mjs';

const SLOWED = Number(process.env.SLOWED ?? 6);
const ROUNDS = Number(process.env.ROUNDS ?? 3);
const ADDRESS = 'fmtype=all';

/** Runs in the page: notes when the first row is painted, and when what the footer says has been painted. */
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
    if (!window.times.first && document.querySelector('.slick-row')) painted('first');
    const isWhole = document.querySelector('.fm-foot span:not(:empty)') && document.querySelector('.fm-wait')?.hidden;
    if (isWhole) painted('whole');
    else setTimeout(look, 10);
  };
  look();
}

/** Runs in the page: milliseconds from a typed sign to the painted rows; the address follows the rows. */
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
    if (fromCache.has(requestId) || !urls.get(requestId)?.startsWith('http')) return;
    seen.requests += 1;
    seen.bytes += encodedDataLength;
    seen.names.push(urls.get(requestId).replace(/.*\//, ''));
  });
  return seen;
}

async function visit(page, cdp) {
  const seen = await traffic(cdp);
  await cdp.send('Performance.enable', { timeDomain: 'threadTicks' });
  await page.goto(instrument.list(ADDRESS), { waitUntil: 'commit' });
  await page.waitForFunction(() => window.times.whole, null, { timeout: 120000, polling: 50 });
  await pause(300);
  const { metrics } = await cdp.send('Performance.getMetrics');
  const used = Object.fromEntries(metrics.filter(({ name }) => /Duration$/.test(name)).map(({ name, value }) => [name, Math.round(1000 * value)]));
  return { ...(await page.evaluate(() => window.times)), ...seen, used };
}

const instrument = await startInstrument();
const best = {};
const note = (name, value) => {
  best[name] = Math.min(best[name] ?? Infinity, value);
};
for (let round = 0; round < ROUNDS; round++) {
  const page = await instrument.newPage({ serviceWorkers: 'block' });
  const cdp = await page.context().newCDPSession(page);
  await cdp.send('Emulation.setCPUThrottlingRate', { rate: SLOWED });
  await page.addInitScript(watch);
  const first = await visit(page, cdp);
  note('first rows', first.first);
  note('whole list', first.whole);
  note('requests', first.requests);
  note('KB', first.bytes / 1000);
  best.names = first.names;
  best.used = first.used;
  for (const sign of ['1', '2']) {
    await page.evaluate(typing);
    await page.keyboard.press(sign);
    note(`typed ${sign}`, await page.evaluate(() => window.typed));
    await pause(500);
  }
  await page.goto('about:blank');
  const again = await page.context().newPage();
  await again.addInitScript(watch);
  const cdp2 = await again.context().newCDPSession(again);
  await cdp2.send('Emulation.setCPUThrottlingRate', { rate: SLOWED });
  const second = await visit(again, cdp2);
  note('first rows again', second.first);
  note('whole list again', second.whole);
  note('requests again', second.requests);
  best.usedAgain = second.used;
  best.namesAgain = second.names;
  await page.context().close();
}
console.log(best);
await instrument.stop();
