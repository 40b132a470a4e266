// Writes docs/screenshots; looked at by a person, not compared.
import fs from 'node:fs';
import { setTimeout as pause } from 'node:timers/promises';
import { pressed, row, startInstrument, told } from './instrument.mjs';

const OUT = '/srv/docs/screenshots';
const instrument = await startInstrument();

// The list shows when a file's status changed, so some files are touched, a second apart: an instrument in use.
async function age() {
  const home = ['10g/kte-rslt/10gport', '10g/kte-rslt/10gport2', '1ge/kte-rslt/sfpport', '1ge/kte-rslt/rj45port'];
  const files = home.flatMap((port) =>
    fs.readdirSync(`/home/${port}`).flatMap((type) =>
      fs
        .readdirSync(`/home/${port}/${type}`)
        .slice(0, 1)
        .map((name) => `/home/${port}/${type}/${name}`),
    ),
  );
  for (const file of files.sort((a, b) => ((a.length * 7) % 5) - ((b.length * 7) % 5)).slice(0, 18)) {
    fs.utimesSync(file, new Date(), new Date());
    await pause(1100);
  }
}

async function shoot(name, options, query, work = () => {}) {
  const page = await instrument.open(query, options);
  await work(page);
  await page.waitForTimeout(500);
  await page.screenshot({ path: `${OUT}/${name}.png` });
  await page.context().close();
  if (page.problems.length) console.log(name, page.problems);
}

const wide = { viewport: { width: 1280, height: 760 } };
fs.mkdirSync(OUT, { recursive: true });
await age();
await shoot('list', wide, 'fmtype=rslt&module=10G,1GE', async (page) => {
  for (const i of [1, 2, 4]) await row(page, i).locator('.fm-check').click();
});
await shoot('view', wide, 'fmtype=rslt&test=throughput', async (page) => {
  await page.locator('.slick-row').nth(2).dblclick();
  await page.frameLocator('.fm-report').locator('h1, table').first().waitFor();
});
await shoot('filter', wide, 'fmtype=rslt&module=10G', async (page) => {
  await pressed(page, 'Filter').click();
  await page.getByRole('dialog').getByLabel('Ethernet', { exact: true }).check();
});
await shoot('advanced', wide, 'fmtype=rslt&jobid=JOB-2024', (page) => pressed(page, 'Advanced').click());
await shoot('empty', wide, 'fmtype=rslt&module=40GE&fname=acceptance');
await shoot('download', wide, 'fmtype=all', async (page) => {
  await page.getByRole('searchbox').fill('bert 10G');
  await page.waitForURL(/find/);
  await page.getByRole('checkbox', { name: 'Choose all shown' }).check();
  await pressed(page, 'Download').click();
  await told(page, /Saved as/);
});
await shoot('compare', wide, 'fmtype=rslt&test=throughput', async (page) => {
  for (const i of [2, 3]) await row(page, i).locator('.fm-check').click();
  await pressed(page, 'Compare').click();
  await page.frameLocator('.fm-report').getByText(/differences?$/).waitFor();
});
await shoot('gallery', wide, 'fmtype=screen', (page) => page.locator('.fm-tile img').first().waitFor());
await shoot('own-screen', { viewport: { width: 800, height: 480 } }, 'fmtype=rslt&module=10G', (page) =>
  row(page, 1).locator('.fm-check').click(),
);
await shoot(
  'phone',
  { viewport: { width: 390, height: 780 }, deviceScaleFactor: 2, hasTouch: true },
  'fmtype=rslt&module=10G',
  (page) => page.locator('.slick-row').nth(1).tap(),
);
await shoot(
  'dark',
  { ...wide, colorScheme: 'dark', locale: 'de-DE' },
  'fmtype=rslt&module=10G,1GE&test=throughput',
  async (page) => {
    await page.locator('.slick-row').nth(1).dblclick();
    await page.frameLocator('.fm-report').locator('h1, table').first().waitFor();
  },
);
await instrument.stop();
