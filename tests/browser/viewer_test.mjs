// zrml view as a person uses it; what it shows is compared with what the command line prints.
import assert from 'node:assert/strict';
import { readFileSync, rmSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import { areaOf, copied, dragOver, makeHostile, makeSample, openTab, panel, startViewer, stateOf, until, untilEqual, zrml } from './support.mjs';

const run = makeSample('run.raw');
const address = await startViewer(run);
const origin = address.slice(0, address.indexOf('/#'));

const isShown = () => document.querySelector('.spectrum .facts')?.textContent?.includes('scan');
const hasFact = (fact) => document.querySelector('.spectrum .facts')?.textContent?.includes(fact);
const hasMean = () => document.querySelector('.spectrum .facts')?.textContent?.includes('mean of');

async function openViewer(options) {
  const tab = await openTab(address, options);
  await until(tab.page, isShown);
  return tab;
}

async function assertSpectrum(page, functionId, scan) {
  await until(page, hasFact, `scan ${scan} of`);
  const { columns } = await copied(page, panel(page, 'Spectrum'));
  const printed = JSON.parse(zrml('spectrum', run, '--function', functionId, '--scan', String(scan), '--json'));
  assert.deepEqual(columns[0] ?? [], printed.masses);
  assert.deepEqual(columns[1] ?? [], printed.intensities);
}

async function assertIon(page, functionId, [low, high]) {
  await until(page, () => document.querySelectorAll('.ion-tools').length === 1 &&
    document.querySelectorAll('.row-of-plot:last-child .uplot').length === 1);
  const { columns } = await copied(page, page.locator('.ion-tools'));
  const printed = JSON.parse(zrml('chromatogram', run, '--function', functionId, '--range', `${low}-${high}`, '--json'));
  assert.deepEqual(columns[0], printed.times);
  assert.deepEqual(columns[1], printed.intensities);
}

test('asks its own server only, and shows no token', async () => {
  const { page, faults, requests } = await openViewer();
  await until(page, () => document.querySelectorAll('.map').length === 2);
  assert.ok(requests.length > 10);
  for (const request of requests) assert.ok(request.startsWith(origin + '/'), request);
  assert.doesNotMatch(page.url(), /token/);
  assert.deepEqual(faults, []);
});

test('a click shows the scan at that time', async () => {
  const { page, faults } = await openViewer();
  const row = page.locator('.row-of-plot').nth(1);
  const box = await areaOf(row);
  await page.mouse.click(box.x + box.width * 0.3, box.y + box.height / 2);
  await until(page, () => decodeURIComponent(location.hash).includes('"function":1'));
  const { scan, function: position } = stateOf(page);
  assert.equal(position, 1);
  const printed = JSON.parse(zrml('info', run, '--json')).samples[0].functions;
  const [first] = printed.map((f) => f.minutes[0]).sort((a, b) => a - b);
  const last = Math.max(...printed.map((f) => f.minutes[1]));
  const times = JSON.parse(zrml('chromatogram', run, '--function', '2', '--json')).times;
  const clicked = first + 0.3 * (last - first);
  const pixel = (last - first) / box.width;
  assert.ok(Math.abs(times[scan] - clicked) <= pixel + (times[1] - times[0]) / 2);
  await assertSpectrum(page, '2', scan + 1);
  assert.deepEqual(faults, []);
});

test('arrows step through the scans, by keyboard and by button', async () => {
  const { page, faults } = await openViewer();
  const { scan } = stateOf(page);
  await page.locator('.row-of-plot .plot').first().focus();
  await page.keyboard.press('ArrowRight');
  await assertSpectrum(page, '1', scan + 2);
  await page.keyboard.press('ArrowLeft');
  await page.keyboard.press('ArrowLeft');
  await assertSpectrum(page, '1', scan);
  await page.getByRole('button', { name: '▶' }).click();
  await assertSpectrum(page, '1', scan + 1);
  assert.deepEqual(faults, []);
});

test('a typed ion is extracted', async () => {
  const { page, faults } = await openViewer();
  await page.getByLabel('Ion to extract').fill('391.2 - 391.4');
  await page.keyboard.press('Enter');
  await assertIon(page, '1', [391.2, 391.4]);
  assert.deepEqual(faults, []);
});

test('what is no ion is marked', async () => {
  const { page } = await openViewer();
  const input = page.getByLabel('Ion to extract');
  await input.fill('500-400');
  await page.keyboard.press('Enter');
  assert.equal(await input.getAttribute('aria-invalid'), 'true');
  assert.deepEqual(stateOf(page).ions, []);
});

test('dragging in a spectrum extracts the ions between', async () => {
  const { page, faults } = await openViewer();
  await panel(page, 'Spectrum').getByRole('button', { name: 'extract' }).click();
  await dragOver(page, panel(page, 'Spectrum').locator('.spectrum').first(), 0.7, 0.76);
  await until(page, () => decodeURIComponent(location.hash).includes('"ions":[['));
  const [[position, low, high]] = stateOf(page).ions;
  assert.equal(position, 0);
  assert.ok(low > 700 && high < 800);
  await assertIon(page, '1', [low, high]);
  assert.deepEqual(faults, []);
});

test('dragging over times averages their scans, less a background', async () => {
  const { page, faults } = await openViewer();
  const row = page.locator('.row-of-plot').first();
  await dragOver(page, row, 0.4, 0.45);
  await until(page, hasMean);
  const { average } = stateOf(page);
  const times = JSON.parse(zrml('chromatogram', run, '--function', '1', '--json')).times;
  const countWithin = ([from, to]) => times.filter((time) => time >= from && time <= to).length;
  await until(page, hasFact, `mean of ${countWithin(average)} scans`);
  await page.getByRole('button', { name: 'background' }).click();
  await dragOver(page, row, 0.5, 0.52);
  await until(page, hasFact, 'less ');
  const state = stateOf(page);
  assert.deepEqual(state.average, average);
  await until(page, hasFact, `less ${countWithin(state.background)}`);
  const { columns } = await copied(page, panel(page, 'Mean spectrum'));
  const printed = JSON.parse(zrml('spectrum', run, '--function', '1', '--rt', average.join('-'), '--mean',
    '--minus', state.background.join('-'), '--json'));
  assert.deepEqual(columns, [printed.masses, printed.intensities]);
  assert.ok(Math.min(...columns[1]) < 0);
  assert.deepEqual(faults, []);
});

test('back and forward restore what was shown', async () => {
  const { page, faults } = await openViewer();
  await page.locator('.chip').first().click();
  await until(page, () => document.querySelector('.chip')?.getAttribute('aria-pressed') === 'true');
  const first = stateOf(page).scan;
  await page.locator('.chip').nth(1).click();
  await until(page, () => document.querySelectorAll('.chip')[1]?.getAttribute('aria-pressed') === 'true');
  const second = stateOf(page).scan;
  await page.goBack();
  await assertSpectrum(page, '1', first + 1);
  await page.goForward();
  await assertSpectrum(page, '1', second + 1);
  await page.reload();
  await assertSpectrum(page, '1', second + 1);
  assert.deepEqual(faults, []);
});

test('centroids take the place of a profile', async () => {
  const { page, faults } = await openViewer();
  await page.getByRole('button', { name: 'centroids' }).click();
  await until(page, hasFact, 'centroids');
  const { columns } = await copied(page, panel(page, 'Spectrum'));
  const profile = JSON.parse(zrml('spectrum', run, '--function', '1', '--scan', String(stateOf(page).scan + 1), '--json'));
  assert.ok(columns[0].length > 0 && columns[0].length < profile.points);
  assert.deepEqual(faults, []);
});

test('zoom by keys, and all again', async () => {
  const { page, faults } = await openViewer();
  await page.locator('.row-of-plot .plot').first().focus();
  await page.keyboard.press('+');
  const zoomed = stateOf(page).minutes;
  assert.ok(zoomed[1] - zoomed[0] > 4.9 && zoomed[1] - zoomed[0] < 5.1);
  await page.keyboard.press('Shift+ArrowRight');
  assert.ok(stateOf(page).minutes[0] > zoomed[0] + 1);
  await page.keyboard.press('0');
  assert.equal(stateOf(page).minutes, null);
  assert.deepEqual(faults, []);
});

test('a part of the map is asked for in more detail', async () => {
  const { page, faults, requests } = await openViewer();
  const map = panel(page, 'm/z over time').locator('.map');
  await until(page, () => !!document.querySelector('.scale')?.textContent);
  await map.scrollIntoViewIfNeeded();
  const box = await map.boundingBox();
  await page.mouse.move(box.x + box.width * 0.7, box.y + box.height * 0.3);
  await page.mouse.down();
  await page.mouse.move(box.x + box.width * 0.9, box.y + box.height * 0.5, { steps: 4 });
  const [request] = await Promise.all([page.waitForRequest(/\/data\/0\/map\?.*from=/), page.mouse.up()]);
  await (await request.response()).finished();
  assert.ok(requests.length > 0);
  assert.deepEqual(faults, []);
});

test('absorbance is cut at a time and at a wavelength', async () => {
  const { page, faults } = await openViewer();
  const absorbance = panel(page, 'Absorbance');
  await until(page, () => document.querySelectorAll('.map').length === 2 && document.querySelectorAll('.scale canvas').length === 2);
  await absorbance.locator('.map').scrollIntoViewIfNeeded();
  const box = await absorbance.locator('.map').boundingBox();
  await page.mouse.click(box.x + box.width * 0.5, box.y + box.height * 0.5);
  await until(page, () => [...document.querySelectorAll('.facts')].some((facts) => /^at \d+\.\d nm/.test(facts.textContent || '')));
  const { absorbance: scan } = stateOf(page);
  const printed = JSON.parse(zrml('spectrum', run, '--absorbance', '--scan', String(scan + 1), '--json'));
  assert.ok(Math.abs(printed.startMinutes - 5) < 0.2);
  assert.deepEqual(faults, []);
});

test('pictures are saved as PNG and SVG', async () => {
  const { page, faults } = await openViewer();
  const saved = async (place, name) => {
    const [download] = await Promise.all([page.waitForEvent('download'), place.getByRole('button', { name }).first().click()]);
    return { name: download.suggestedFilename(), bytes: readFileSync(await download.path()) };
  };
  const png = await saved(panel(page, 'Spectrum'), 'PNG');
  assert.equal(png.name, 'spectrum.png');
  assert.equal(png.bytes.subarray(1, 4).toString(), 'PNG');
  const map = await saved(panel(page, 'm/z over time'), 'PNG');
  assert.equal(map.bytes.subarray(1, 4).toString(), 'PNG');
  const svg = await saved(panel(page, 'Chromatograms'), 'SVG');
  assert.equal(svg.name, 'chromatogram.svg');
  const paths = await page.evaluate((text) => {
    const picture = new DOMParser().parseFromString(text, 'image/svg+xml');
    return [...picture.documentElement.querySelectorAll('path[d]')].filter((path) => path.getAttribute('d')?.includes('L')).length;
  }, svg.bytes.toString());
  assert.equal(paths, 2);  // total ions and base peaks
  assert.deepEqual(faults, []);
});

test('maps are saved as SVG with their axes', async () => {
  const { page, faults } = await openViewer();
  await until(page, () => document.querySelectorAll('.scale canvas').length === 2);
  for (const [place, name, ordinate] of [['m/z over time', 'map.svg', 'm/z'], ['Absorbance', 'absorbance-map.svg', 'nm']]) {
    const [download] = await Promise.all([page.waitForEvent('download'), panel(page, place).getByRole('button', { name: 'SVG' }).last().click()]);
    assert.equal(download.suggestedFilename(), name);
    const found = await page.evaluate((text) => {
      const picture = new DOMParser().parseFromString(text, 'image/svg+xml');
      return { images: picture.querySelectorAll('image[href^="data:image/png"]').length, texts: [...picture.querySelectorAll('text')].map((each) => each.textContent) };
    }, readFileSync(await download.path(), 'utf8'));
    assert.equal(found.images, 1);
    assert.ok(found.texts.includes('minutes') && found.texts.includes(ordinate) && found.texts.includes('9'), String(found.texts));
  }
  assert.deepEqual(faults, []);
});

test('samples of a report are drawn over one another', async () => {
  const report = makeSample('samples.rpt');
  const { page, faults, requests } = await openTab(await startViewer(report));
  await until(page, isShown);
  await page.getByRole('button', { name: 'Overlay MIX10_02' }).click();
  await until(page, () => document.querySelector('.legend')?.textContent === 'BLANK_01MIX10_02');
  assert.ok(requests.some((request) => /\/data\/0\/chromatogram\?function=0&kind=tic&sample=2/.test(request)));
  const curves = () => page.evaluate(() => document.querySelectorAll('.row-of-plot .uplot').length);
  assert.equal(await curves(), 3);
  const savedCurves = async () => {
    const [download] = await Promise.all([page.waitForEvent('download'), panel(page, 'Chromatograms').getByRole('button', { name: 'SVG' }).first().click()]);
    return readFileSync(await download.path(), 'utf8').split('\n').filter((line) => /^<path d="M[^"]*L/.test(line)).length;
  };
  await untilEqual(savedCurves, 4);  // two kinds of two samples, each drawn as it arrives
  await page.reload();
  await until(page, () => document.querySelector('.legend')?.textContent === 'BLANK_01MIX10_02');
  await page.getByRole('button', { name: 'Overlay MIX10_02' }).click();
  await until(page, () => document.querySelector('.legend')?.textContent === '');
  assert.deepEqual(stateOf(page).samples, []);
  assert.deepEqual(faults, []);
});

test('the map shows the time of the scan also after loading the page again', async () => {
  const { page, faults } = await openViewer();
  const marked = () => {
    const canvas = /** @type {HTMLCanvasElement} */ (document.querySelector('.map'));
    const mark = getComputedStyle(document.documentElement).getPropertyValue('--mark').trim();
    const context = new OffscreenCanvas(canvas?.width || 1, 1).getContext('2d', { willReadFrequently: true });
    if (!context || !canvas) return false;
    context.drawImage(canvas, 0, -Math.round(canvas.height / 2));
    const row = context.getImageData(0, 0, canvas.width, 1).data;
    const hex = (/** @type {number} */ i) => '#' + [0, 1, 2].map((k) => row[4 * i + k].toString(16).padStart(2, '0')).join('');
    return Array.from({ length: canvas.width }, (_each, i) => hex(i)).includes(mark);
  };
  await until(page, marked);
  await page.reload();
  await until(page, marked);
  assert.deepEqual(faults, []);
});

test('a function of one scan has a point', async () => {
  const { page, faults } = await openTab(await startViewer(makeHostile().report));
  await until(page, isShown);
  const [download] = await Promise.all([page.waitForEvent('download'), panel(page, 'Chromatograms').getByRole('button', { name: 'SVG' }).first().click()]);
  assert.match(readFileSync(await download.path(), 'utf8'), /<path d="M[\d. ]+h0" fill="none" stroke="[^"]+" stroke-width="5"/);
  assert.deepEqual(faults, []);
});

test('drift bins of a scan are a map, and each has its spectrum', async () => {
  const drift = makeSample('drift.raw');
  writeFileSync(join(drift, '_FUNC001.CDT'), '');  // the stand-in for the maker's library has three scans of four bins
  const { page, faults } = await openTab(await startViewer(drift));
  await until(page, isShown);
  await page.locator('.row-of-plot .plot').first().focus();
  await page.goto(page.url().replace(/#.*/, '#' + encodeURIComponent(JSON.stringify({ ...stateOf(page), scan: 0 }))));
  await until(page, hasFact, 'scan 1 of');
  await until(page, () => [...document.querySelectorAll('h2')].some((title) => title.textContent === 'Drift bins: 1: TOF MS ES+, scan 1'));
  const map = panel(page, 'Drift bins').locator('.map');
  await map.scrollIntoViewIfNeeded();
  const box = await map.boundingBox();
  await page.mouse.click(box.x + box.width * 0.62, box.y + box.height / 2);
  await until(page, hasFact, 'drift bin 3 of 4');
  const { columns } = await copied(page, panel(page, 'Spectrum'));
  const printed = JSON.parse(zrml('spectrum', drift, '--function', '1', '--scan', '1', '--bin', '3', '--json'));
  assert.ok(printed.points > 0);
  assert.deepEqual(columns, [printed.masses, printed.intensities]);
  await page.keyboard.press('ArrowUp');
  await until(page, hasFact, 'drift bin 4 of 4');
  await page.getByRole('button', { name: 'all bins' }).click();
  await until(page, () => !document.querySelector('.spectrum .facts')?.textContent?.includes('drift bin'));
  assert.deepEqual(faults, []);
});

test('without the token there is a message and no data', async () => {
  const { page } = await openTab(origin + '/');
  await until(page, () => document.querySelector('.fatal') !== null);
  assert.match(await page.locator('.fatal').textContent(), /Open the address that zrml view has printed/);
  assert.doesNotMatch(await page.locator('body').textContent(), /run\.raw/);
});

test('an address made up by somebody changes nothing but numbers', async () => {
  const { page } = await openViewer();
  const state = { sample: 'x', function: '<img>', scan: 1e99, minutes: [1], ions: [['<b>', 1, 2]], runs: [], centroids: 'yes' };
  await page.goto(`${origin}/#${encodeURIComponent(JSON.stringify(state))}`);
  await page.reload();
  await until(page, isShown);
  assert.equal(await page.locator('img, b').count(), 0);
});

test('several runs are drawn over one another, and each can be alone', async () => {
  const report = makeSample('plate.rpt');
  const both = await startViewer(run, report);
  const { page, faults, requests } = await openTab(both);
  await until(page, isShown);
  await page.getByRole('button', { name: 'plate.rpt' }).click();
  await until(page, () => document.querySelectorAll('.run[aria-pressed="true"]').length === 2);
  await until(page, isShown);
  assert.ok(requests.some((request) => /\/data\/1\/chromatogram\?function=0&kind=tic/.test(request)));
  assert.deepEqual(stateOf(page).runs, [0, 1]);
  await page.getByRole('button', { name: 'run.raw' }).click();
  await until(page, () => document.title === 'plate.rpt' && document.querySelectorAll('.row-of-plot .uplot').length === 3);
  const { columns } = await copied(page, panel(page, 'Chromatograms'));
  assert.deepEqual(columns[1], JSON.parse(zrml('chromatogram', report, '--function', '1', '--json')).intensities);
  assert.deepEqual(faults, []);
});

test('a source that disappears says so', async () => {
  const gone = makeSample('gone.raw');
  const viewer = await startViewer(gone);
  rmSync(gone, { recursive: true });
  const { page } = await openTab(viewer);
  await until(page, () => document.querySelector('.fatal') !== null);
  assert.match(await page.locator('.fatal').textContent(), /there is no file or folder .*gone\.raw/);
});

test('whatever the texts of a run are, they are text', async () => {
  const viewer = await startViewer(makeHostile().run);
  const { page, faults } = await openTab(viewer);
  await until(page, isShown);
  assert.notEqual(await page.title(), 'run');
  assert.equal(await page.locator('img').count(), 0);
  assert.match(await page.locator('#page').textContent(), /<img src=x onerror=/);
  assert.deepEqual(faults, []);
});
