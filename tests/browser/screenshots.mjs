// Writes docs/screenshots; looked at by a person, not compared.
import fs from 'node:fs';
import { setTimeout as pause } from 'node:timers/promises';
import { pressed, report, row, startInstrument, tick, told } from './instrument.mjs';

const OUT = '/srv/docs/screenshots';
const instrument = await startInstrument();

// The list shows when a file's status changed, so some files are touched, a second apart: an instrument in use.
const children = (folder) => fs.readdirSync(folder).map((name) => `${folder}/${name}`);
const ports = ['10g/kte-rslt/10gport', '10g/kte-rslt/10gport2', '1ge/kte-rslt/sfpport', '1ge/kte-rslt/rj45port'];
const files = ports.flatMap((port) => children(`/home/${port}`).flatMap((type) => children(type).slice(0, 1)));
for (const file of files.sort((a, b) => ((a.length * 7) % 5) - ((b.length * 7) % 5)).slice(0, 18)) {
  fs.utimesSync(file, new Date(), new Date());
  await pause(1100);
}

const wide = { viewport: { width: 1280, height: 760 } };
const viewRow = (i) => async (page) => {
  await row(page, i).dblclick();
  await report(page).locator('h1, table').first().waitFor();
};
const SHOTS = {
  list: [wide, 'fmtype=rslt&module=10G,1GE', (page) => tick(page, 1, 2, 4)],
  view: [wide, 'fmtype=rslt&test=throughput', viewRow(2)],
  filter: [wide, 'fmtype=rslt&module=10G', async (page) => {
    await pressed(page, 'Filter').click();
    await page.getByRole('dialog').getByLabel('Ethernet', { exact: true }).check();
  }],
  advanced: [wide, 'fmtype=rslt&jobid=JOB-2024', (page) => pressed(page, 'Advanced').click()],
  empty: [wide, 'fmtype=rslt&module=40GE&fname=acceptance', () => {}],
  download: [wide, 'fmtype=all#find=bert%2010G', async (page) => {
    await page.getByRole('checkbox', { name: 'Choose all shown' }).check();
    await pressed(page, 'Download').click();
    await told(page, /Saved as/);
  }],
  compare: [wide, 'fmtype=rslt&test=throughput', async (page) => {
    await tick(page, 2, 3);
    await pressed(page, 'Compare').click();
    await report(page).getByText(/differences?$/).waitFor();
  }],
  gallery: [wide, 'fmtype=screen', (page) => page.locator('.fm-tile img').first().waitFor()],
  'own-screen': [{ viewport: { width: 800, height: 480 } }, 'fmtype=rslt&module=10G', (page) => tick(page, 1)],
  phone: [{ viewport: { width: 390, height: 780 }, deviceScaleFactor: 2, hasTouch: true }, 'fmtype=rslt&module=10G', (page) =>
    row(page, 1).tap()],
  dark: [{ ...wide, colorScheme: 'dark', locale: 'de-DE' }, 'fmtype=rslt&module=10G,1GE&test=throughput', viewRow(1)],
};

fs.mkdirSync(OUT, { recursive: true });
for (const [name, [options, query, work]] of Object.entries(SHOTS)) {
  const page = await instrument.open(query, options);
  await work(page);
  await page.waitForTimeout(500);
  await page.screenshot({ path: `${OUT}/${name}.png` });
  await page.context().close();
  if (page.problems.length) console.log(name, page.problems);
}
await instrument.stop();
