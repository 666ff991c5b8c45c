// A browser, sources, and a server for tests; all end with the test file.
import assert from 'node:assert/strict';
import { execFileSync, spawn } from 'node:child_process';
import { mkdtempSync, rmSync } from 'node:fs';
import { createRequire } from 'node:module';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, afterEach } from 'node:test';

const { chromium } = createRequire(join(process.env.ZRML_NODE_FOLDER, 'package.json'))('playwright-core');

export const work = mkdtempSync(join(tmpdir(), 'zrml-browser-'));
/** @type {(() => unknown)[]} */
const ends = [() => rmSync(work, { recursive: true, force: true })];
after(async () => {
  for (const end of ends.reverse()) await end();
});

/** Runs zrml; its output as text. */
export function zrml(...args) {
  return execFileSync(process.env.ZRML_PROGRAM, args, { encoding: 'utf8', cwd: work });
}

/** A sample acquisition, or with ".rpt" a report. */
export function makeSample(name) {
  const path = join(work, name);
  execFileSync(process.env.ZRML_MAKE_SAMPLE, [path]);
  return path;
}

export function makeHostile() {
  execFileSync(process.env.ZRML_MAKE_HOSTILE, [work]);
  return { run: join(work, "a<b>&'run.raw"), report: join(work, 'hostile.rpt') };
}

/** Starts zrml view; its address. */
export async function startViewer(...args) {
  const server = spawn(process.env.ZRML_PROGRAM, ['view', ...args, '--no-open'], { cwd: work });
  ends.push(() => server.kill('SIGKILL'));
  return await new Promise((resolve, reject) => {
    let text = '';
    server.stdout.on('data', (data) => {
      text += data;
      if (text.endsWith('\n')) resolve(text.trim());
    });
    server.on('exit', (status) => reject(new Error(`zrml view has ended with ${status}`)));
  });
}

let browser;
/** @type {any[]} */
const contexts = [];
afterEach(async () => {
  for (const context of contexts.splice(0)) await context.close();
});

/**
 * A tab. What must never happen in any test is noted: errors of scripts, anything on the console, requests to
 * others than `address`.
 */
export async function openTab(address, options = {}) {
  if (!browser) {
    browser = await chromium.launch({ executablePath: '/usr/bin/chromium', args: ['--no-sandbox'] });
    ends.push(() => browser.close());
  }
  const context = await browser.newContext({ viewport: { width: 1400, height: 900 }, ...options });
  contexts.push(context);
  const page = await context.newPage();
  const faults = [];
  const requests = [];
  page.on('pageerror', (error) => faults.push(String(error.stack)));
  page.on('console', (message) => faults.push(message.text()));
  page.on('dialog', (dialog) => faults.push(dialog.message()));
  page.on('request', (request) => requests.push(request.url()));
  await page.goto(address);
  return { page, faults, requests, context };
}

/** Waits until an expression is true in the page. */
export async function until(page, expression, argument) {
  await page.waitForFunction(expression, argument, { timeout: 60000 });
}

/** Waits until a question that is not for the page alone has this answer. */
export async function untilEqual(question, expected) {
  const end = Date.now() + 60000;
  let answer = await question();
  while (answer !== expected && Date.now() < end) {
    await new Promise((resolve) => setTimeout(resolve, 100));
    answer = await question();
  }
  assert.equal(answer, expected);
}

/** The panel with a title that begins so. */
export function panel(page, title) {
  return page.locator('section.panel').filter({ has: page.locator('h2', { hasText: new RegExp(`^${title}`) }) });
}

/** What the TSV button of a place copies, as columns of numbers. */
export async function copied(page, place) {
  await page.context().grantPermissions(['clipboard-read', 'clipboard-write']);
  await page.evaluate(() => navigator.clipboard.writeText(''));
  await place.getByRole('button', { name: 'TSV' }).first().click();
  await until(page, async () => (await navigator.clipboard.readText()) !== '');
  const text = await page.evaluate(() => navigator.clipboard.readText());
  const [names, ...rows] = text.trim().split('\n').map((line) => line.split('\t'));
  return { names, columns: names.map((_name, i) => rows.map((row) => Number(row[i]))) };
}

/** The area of a plot where its curves are. */
export async function areaOf(place) {
  await place.locator('.u-over').first().scrollIntoViewIfNeeded();
  return await place.locator('.u-over').first().boundingBox();
}

/** Draws the mouse from one share of a plot's width to another. */
export async function dragOver(page, place, from, to) {
  const box = await areaOf(place);
  const y = box.y + box.height / 2;
  await page.mouse.move(box.x + box.width * from, y);
  await page.mouse.down();
  await page.mouse.move(box.x + box.width * (from + to) / 2, y, { steps: 3 });
  await page.mouse.move(box.x + box.width * to, y, { steps: 3 });
  await page.mouse.up();
}

/** The state that the address holds. */
export function stateOf(page) {
  return JSON.parse(decodeURIComponent(new URL(page.url()).hash.slice(1)));
}
