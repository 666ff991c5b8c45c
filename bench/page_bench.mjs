// page_bench.mjs FOLDER: medians by the browser's clock. FOLDER has run.raw (the sample), points.raw (100,000 scans) and
// million.raw. scripts/bench-page.sh runs it.
import { execFileSync, spawn } from 'node:child_process';
import { readFileSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { join } from 'node:path';
import { pathToFileURL } from 'node:url';

const { chromium } = createRequire(join(process.env.ZRML_NODE_FOLDER, 'package.json'))('playwright-core');
const folder = process.argv[2];
const runs = 15;

const zrml = (...args) => execFileSync(process.env.ZRML_PROGRAM, args, { encoding: 'utf8', maxBuffer: 1 << 28 });
const median = (numbers) => [...numbers].sort((a, b) => a - b)[numbers.length >> 1];
const browser = await chromium.launch({ executablePath: '/usr/bin/chromium', args: ['--no-sandbox'] });
const row = (what, time, limit) => console.log(`${what.padEnd(64)} ${time.toFixed(1).padStart(7)} ms  ${limit}`);

// The floor: both curves, inlined and drawn by uPlot, and nothing else.
function plainPage() {
  const curve = (...kind) => JSON.parse(zrml('chromatogram', join(folder, 'points.raw'), '--function', '1', ...kind, '--json'));
  const [total, base] = [curve('--tic'), curve('--bpc')];
  const pack = (numbers) => Buffer.from(Float32Array.from(numbers).buffer).toString('base64');
  const path = join(folder, 'plain.html');
  writeFileSync(path, `<!DOCTYPE html><meta charset="utf-8"><style>${readFileSync(join(process.env.ZRML_PLOTS, 'uPlot.min.css'))}</style>
<body><script>${readFileSync(join(process.env.ZRML_PLOTS, 'uPlot.iife.min.js'))}</script><script>
const unpack = (text) => { const c = atob(text); const b = new Uint8Array(c.length); for (let i = 0; i < c.length; ++i) b[i] = c.charCodeAt(i); return new Float32Array(b.buffer); };
const data = [${[total.times, total.intensities, base.intensities].map((numbers) => `unpack("${pack(numbers)}")`)}];
window.chart = new uPlot({ width: 1000, height: 150, scales: { x: { time: false } }, legend: { show: false },
  series: [{}, { stroke: 'blue', points: { show: false } }, { stroke: 'red', points: { show: false } }] }, data, document.body);
</script>`);
  return pathToFileURL(path).href;
}

// When the curves are drawn and the browser has time for the user again.
async function interactive(address, isReady) {
  const page = await browser.newPage({ viewport: { width: 1400, height: 900 } });
  await page.goto(address, { waitUntil: 'commit' });
  const time = await page.evaluate((condition) => new Promise((resolve) => {
    const isThere = new Function(`return ${condition}`);
    const look = () => (isThere() ? requestAnimationFrame(() => setTimeout(() => resolve(performance.now()))) : setTimeout(look));
    look();
  }), isReady);
  return { page, time };
}

async function timeInteractive(address, isReady) {
  const { page, time } = await interactive(address, isReady);
  await page.close();
  return time;
}

// From an action until what it changes is drawn.
async function medianAction(page, action, isReady = 'true') {
  const times = [];
  for (let i = 0; i < runs; ++i) {
    times.push(await page.evaluate(([act, condition, n]) => new Promise((resolve) => {
      const isThere = new Function('before', `return ${condition}`);
      const before = document.querySelector('.spectrum .facts')?.textContent;
      const begin = performance.now();
      new Function('n', act)(n);
      const look = () => (isThere(before) ? requestAnimationFrame(() => setTimeout(() => resolve(performance.now() - begin))) : setTimeout(look));
      look();
    }), [action, isReady, i]));
  }
  return median(times);
}

const hasCurve = "document.querySelector('.uplot canvas')";
const plain = plainPage();
const kept = pathToFileURL(join(folder, 'points.html')).href;
zrml('page', join(folder, 'points.raw'), '-o', folder, '--force');
const starts = { floor: [], own: [] };
for (let i = 0; i < runs; ++i) {
  starts.floor.push(await timeInteractive(plain, hasCurve));
  starts.own.push(await timeInteractive(kept, "document.querySelectorAll('.chip').length > 1"));
}
const [floor, own] = [median(starts.floor), median(starts.own)];
row('a page that only draws 200,000 points', floor, '');
row('a kept page with them, and all else that it shows', own, `${(own / floor).toFixed(2)} times`);

const zooms = ['chart.setScale("x", n % 2 ? { min: 2, max: 8 } : { min: 0, max: 10 })',
  'document.querySelector(".row-of-plot .plot").dispatchEvent(new KeyboardEvent("keydown", { key: n % 2 ? "-" : "+" }))'];
const { page: plainTab } = await interactive(plain, hasCurve);
const { page: keptTab } = await interactive(kept, "document.querySelectorAll('.chip').length > 1");
await keptTab.waitForTimeout(1000);
const plainZooms = [];
const ownZooms = [];
for (let i = 0; i < 7; ++i) {  // by turns: the machine may have other work
  await plainTab.bringToFront();
  plainZooms.push(await medianAction(plainTab, zooms[0]));
  await keptTab.bringToFront();
  ownZooms.push(await medianAction(keptTab, zooms[1]));
}
const [plainZoom, ownZoom] = [median(plainZooms), median(ownZooms)];
row('zoom in the page that only draws', plainZoom, '');
row('zoom in the kept page', ownZoom, `${(ownZoom / plainZoom).toFixed(2)} times`);

async function view(run) {
  const server = spawn(process.env.ZRML_PROGRAM, ['view', join(folder, run), '--no-open']);
  return { server, address: await new Promise((resolve) => server.stdout.once('data', (data) => resolve(String(data).trim()))) };
}

const sample = await view('run.raw');
const { page: live } = await interactive(sample.address, "document.querySelectorAll('.chip').length > 1");
await live.waitForTimeout(2000);
const click = await medianAction(live, `
  const over = document.querySelector('.row-of-plot .u-over');
  const box = over.getBoundingClientRect();
  const at = { bubbles: true, button: 0, pointerId: 1, clientX: box.left + box.width * (0.2 + 0.03 * n), clientY: box.top + 20 };
  over.setPointerCapture = () => {};
  over.dispatchEvent(new PointerEvent('pointerdown', at));
  over.dispatchEvent(new PointerEvent('pointerup', at));`, "document.querySelector('.spectrum .facts').textContent !== before");
row('from a click to the drawn spectrum, of the sample', click, '');
sample.server.kill();

const times = [];
for (let i = 0; i < 5; ++i) {  // each time a new server, which has not opened the run
  const million = await view('million.raw');
  const { page, time } = await interactive(million.address, hasCurve);
  times.push(time);
  await page.close();
  million.server.kill();
}
row('from the start to the first curve of a million scans', median(times), '');
await browser.close();
