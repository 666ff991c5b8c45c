// Pages that are kept, opened from disk.
import assert from 'node:assert/strict';
import { truncateSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import { pathToFileURL } from 'node:url';
import { copied, makeHostile, makeSample, openTab, panel, until, work, zrml } from './support.mjs';

const run = makeSample('run.raw');
const report = makeSample('plate.rpt');

function keep(source, ...args) {
  const name = zrml('page', source, ...args).trim();
  return pathToFileURL(join(work, name)).href;
}

const isDrawn = () => document.querySelectorAll('.uplot').length > 0;

test('a kept page makes one request and shows every kind of picture', async () => {
  const address = keep(run);
  const { page, faults, requests } = await openTab(address);
  await until(page, isDrawn);
  await until(page, () => document.querySelector('.chip[aria-pressed="true"]') !== null);
  assert.deepEqual(requests, [address]);
  assert.deepEqual(faults, []);
  assert.equal(await page.title(), 'run.raw');
  const titles = await page.locator('section.panel h2').allTextContents();
  assert.deepEqual(titles, ['Functions', 'Chromatograms', 'Spectrum', 'm/z over time: 1: TOF MS ES+', 'Absorbance', 'Traces']);
  assert.equal(await page.locator('.findings').count(), 0);
});

test('its chromatogram is that of the command line, in single precision', async () => {
  const { page } = await openTab(keep(run, '--force'));
  await until(page, isDrawn);
  const { columns } = await copied(page, panel(page, 'Chromatograms'));
  const printed = JSON.parse(zrml('chromatogram', run, '--function', '1', '--json'));
  assert.deepEqual(columns[0], printed.times.map(Math.fround));
  assert.deepEqual(columns[1], printed.intensities.map(Math.fround));
});

test('a chip shows the spectrum of its peak', async () => {
  const { page, faults } = await openTab(keep(run, '--force'));
  await until(page, () => document.querySelectorAll('.chip').length > 1);
  const chip = page.locator('.chip').first();
  const scan = Number((await chip.getAttribute('title')).replace('Scan ', ''));
  await chip.click();
  await until(page, (wanted) => document.querySelector('.spectrum .facts')?.textContent?.includes(`scan ${wanted} of`), scan);
  const { columns } = await copied(page, panel(page, 'Spectrum'));
  const printed = JSON.parse(zrml('spectrum', run, '--function', '1', '--scan', String(scan), '--json'));
  assert.deepEqual(columns[0], printed.masses);
  assert.deepEqual(columns[1], printed.intensities.map(Math.fround));
  assert.deepEqual(faults, []);
});

test('findings are on top', async () => {
  const damaged = makeSample('damaged.raw');
  truncateSync(join(damaged, '_FUNC001.DAT'), 1000);
  const { page, faults } = await openTab(keep(damaged));
  await until(page, () => document.querySelector('.findings li') !== null);
  const shown = await page.locator('.findings li').allTextContents();
  const found = zrmlCheck(damaged);
  assert.deepEqual(shown.map((text) => text.replace(/^\w+ /, '')).sort(), found.sort());
  assert.deepEqual(faults, []);
});

function zrmlCheck(path) {
  try {
    zrml('check', path, '--json');
  } catch (error) {
    return JSON.parse(error.stdout).findings.map((finding) => finding.message);
  }
  return [];
}

test('a report has its samples in pages, and shows the chosen one', async () => {
  const { page, faults } = await openTab(keep(report));
  await until(page, isDrawn);
  await page.locator('.list .row', { hasText: 'MIX10_02' }).click();
  await until(page, () => document.querySelector('.list [aria-current]')?.textContent?.includes('MIX10_02'));
  await until(page, isDrawn);
  const { columns } = await copied(page, panel(page, 'Chromatograms'));
  const printed = JSON.parse(zrml('chromatogram', report, '--sample', '3', '--function', '1', '--json'));
  assert.deepEqual(columns[1], printed.intensities.map(Math.fround));
  assert.deepEqual(faults, []);
});

test('thousands of samples are paged and searched', async () => {
  const samples = Array.from({ length: 2000 }, (_each, i) =>
    `[SAMPLE]\r\n{\r\nFileName\tVIAL_${i + 1}\r\n}\r\n`).join('');
  writeFileSync(join(work, 'many.rpt'), samples);
  const { page, faults } = await openTab(keep(join(work, 'many.rpt')));
  await until(page, () => document.querySelectorAll('.list li').length === 25);
  assert.match(await page.locator('.pager').textContent(), /1–25 of 2\u2009000/);
  await page.getByRole('button', { name: 'Later samples' }).click();
  assert.match(await page.locator('.list .row').first().textContent(), /VIAL_26$/);
  await page.getByLabel('Search samples').fill('VIAL_1999');
  assert.deepEqual(await page.locator('.list .row').allTextContents(), ['1999VIAL_1999']);
  assert.deepEqual(faults, []);
});

test('a sample without room in the page leaves the others within reach', async () => {
  const samples = Array.from({ length: 20000 }, (_each, i) => `[SAMPLE]\r\n{\r\nFileName\tVIAL_${i + 1}\r\n}\r\n`).join('');
  writeFileSync(join(work, 'full.rpt'), samples);
  const { page, faults } = await openTab(keep(join(work, 'full.rpt'), '--max-size', '1'));
  await until(page, () => document.querySelectorAll('.list li').length === 25);
  await page.getByLabel('Search samples').fill('VIAL_20000');
  await page.locator('.list .row').click();
  await until(page, () => document.querySelector('.fatal') !== null);
  assert.match(await page.locator('.fatal').textContent(), /was left out/);
  await page.getByLabel('Search samples').fill('VIAL_3');
  await page.locator('.list .row').first().click();
  await until(page, () => document.querySelector('.fatal') === null && document.querySelector('.functions') !== null);
  assert.deepEqual(faults, []);
});

for (const kind of ['run', 'report']) {
  test(`whatever the texts of a ${kind} are, they are text`, async () => {
    const { page, faults, requests } = await openTab(keep(makeHostile()[kind]));
    await until(page, isDrawn);
    await page.waitForTimeout(300);
    assert.notEqual(await page.title(), 'run');
    assert.equal(await page.locator('img').count(), 0);
    assert.equal(await page.locator('#page script').count(), 0);
    assert.match(await page.locator('#page').textContent(), /<img src=x onerror=/);
    assert.doesNotMatch(await page.locator('#page').textContent(), /\u202e/);
    assert.equal(requests.length, 1);
    assert.deepEqual(faults, []);
  });
}

for (const width of [1000, 3000]) {
  for (const colorScheme of ['light', 'dark']) {
    test(`nothing is wider than a window of ${width} pixels, ${colorScheme}`, async () => {
      for (const source of [run, report, makeHostile().run]) {
        const { page, faults } = await openTab(keep(source, '--force'), { viewport: { width, height: 900 }, colorScheme });
        await until(page, isDrawn);
        const over = await page.evaluate(() => document.documentElement.scrollWidth - innerWidth);
        assert.ok(over <= 0, `${source} by ${over}`);
        assert.deepEqual(faults, []);
      }
    });
  }
}
