// make_pictures.mjs RUN FOLDER: pictures of zrml view for the documentation. scripts/pictures.sh runs it.
import { spawn } from 'node:child_process';
import { createRequire } from 'node:module';
import { join } from 'node:path';

const { chromium } = createRequire(join(process.env.ZRML_NODE_FOLDER, 'package.json'))('playwright-core');
const [run, folder] = process.argv.slice(2);

const server = spawn(process.env.ZRML_PROGRAM, ['view', run, '--no-open']);
const address = await new Promise((resolve) => server.stdout.once('data', (data) => resolve(String(data).trim())));
const browser = await chromium.launch({ executablePath: '/usr/bin/chromium', args: ['--no-sandbox'] });

async function open(width, height, colorScheme) {
  const page = await browser.newPage({ viewport: { width, height }, colorScheme });
  await page.goto(address);
  await page.waitForFunction(() => document.querySelectorAll('.chip').length > 1 && document.querySelectorAll('.scale canvas').length === 2);
  await page.waitForLoadState('networkidle');
  return page;
}

async function dragOver(page, row, from, to) {
  const box = await page.locator('.row-of-plot .u-over').nth(row).boundingBox();
  const y = box.y + box.height / 2;
  await page.mouse.move(box.x + box.width * from, y);
  await page.mouse.down();
  await page.mouse.move(box.x + box.width * to, y, { steps: 5 });
  await page.mouse.up();
  await page.waitForLoadState('networkidle');
}

const light = await open(1800, 1120, 'light');
await light.locator('.chip').nth(3).click();
await light.waitForLoadState('networkidle');
await light.screenshot({ path: join(folder, 'viewer-light.png'), clip: { x: 0, y: 0, width: 1800, height: 1120 } });

const dark = await open(2600, 1300, 'dark');
await dark.getByLabel('Ion to extract').fill('455.2-455.4');
await dark.keyboard.press('Enter');
await dark.waitForFunction(() => document.querySelectorAll('.row-of-plot .uplot').length === 5);
await dark.waitForLoadState('networkidle');
await dragOver(dark, 0, 0.43, 0.46);
await dark.getByRole('button', { name: 'background' }).click();
await dragOver(dark, 0, 0.66, 0.7);
await dark.waitForFunction(() => document.querySelector('.spectrum .facts')?.textContent?.includes('less'));
await dark.mouse.move(0, 0);
await dark.screenshot({ path: join(folder, 'viewer-dark.png') });

await browser.close();
server.kill();
