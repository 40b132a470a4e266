// Two reports side by side.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { plainServer, pressed, row, saved, startInstrument, withFiles } from './instrument.mjs';

const instrument = await startInstrument(plainServer());

/** A report of a verdict and a table; `rows` are "size|lost". */
const report = (verdict, ...rows) =>
  `<style>body { margin: 8px } td { padding: 4px }</style><h1>Loss</h1><span class="x">${verdict}</span>` +
  `<table><tr><td>File</td><td>${verdict}</td></tr></table>` +
  `<table><tr><th>Size</th><th>Lost</th></tr>${rows.map((one) => `<tr><td>${one.replace('|', '<td>')}`).join('')}</table>`;
const PAIR = {
  'pair1.html': report('PASS', '64 bytes|0 ms', '128 bytes|1,001.5 ms', '512 bytes|3'),
  'pair2.html': report('FAIL', '64 bytes|0 ms', '128 bytes|1,000 ms', '256 bytes|7', '512 bytes|3'),
};

test('two reports are shown side by side, aligned, with what differs marked and listed', () =>
  withFiles(PAIR, async () => {
    const page = await instrument.open('fmtype=rslt&test=bert&fname=pair');
    await page.getByRole('button', { name: 'Name', exact: true }).click();
    await row(page, 0).click();
    assert.equal(await pressed(page, 'Compare').count(), 0);
    await row(page, 1).click({ modifiers: ['Control'] });
    await pressed(page, 'Compare').click();
    const frame = page.frameLocator('.fm-report');
    await frame.getByText('4 differences').click();
    assert.deepEqual(await frame.locator('.list tbody tr').allInnerTexts(), [
      '\tPASS\tFAIL\t',
      'File\tPASS\tFAIL\t',
      '128 bytes, Lost\t1,001.5 ms\t1,000 ms\t-1.5 ms',
      '256 bytes\t(absent)\t7\t',
    ]);
    const topsOf = (side) => [...side.lastElementChild.shadowRoot.querySelectorAll('tr')].map((one) => one.getBoundingClientRect().top);
    const tops = await Promise.all([0, 1].map((i) => frame.locator('.side').nth(i).evaluate(topsOf)));
    assert.equal(tops[0].length, 6);
    assert.deepEqual(tops[0], tops[1]);
    assert.equal(await frame.locator('.fm-differs').count(), 8);
    const both = await saved(page, () => pressed(page, 'Download this entry').click());
    assert.match(both.suggestedFilename(), /-2\.zip$/);
    await page.reload();
    await frame.getByText('4 differences').waitFor();
    await page.goBack();
    await page.locator('.fm-viewer').waitFor({ state: 'hidden' });
    assert.deepEqual(page.problems, []);
  }));
