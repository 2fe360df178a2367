// SPDX-License-Identifier: MIT
// The page in Chromium, opened from a disk: what it shows and saves is what the tool prints.
import assert from 'node:assert/strict';
import {readFileSync} from 'node:fs';
import {createRequire} from 'node:module';
import {basename, join} from 'node:path';
import {after, before, test} from 'node:test';
import {fileURLToPath, pathToFileURL} from 'node:url';

import {chromium} from 'playwright-core';

import {complaint, items, qps, workbook, write} from './native.mjs';
import {label, notebook, number, randomNotebook, record, sheet} from './notebooks.mjs';

const source = fileURLToPath(new URL('../..', import.meta.url));
const pageFile = process.env.QPS_PAGE ?? join(source, 'build/viewer/qpsreader.html');
const example = (name) => join(source, 'examples', name);
const axe = readFileSync(createRequire(import.meta.url).resolve('axe-core/axe.min.js'), 'utf8');

let browser, page;
const requests = [];

before(async () => {
  browser = await chromium.launch({
    executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium', args: ['--no-sandbox']});
});
after(() => browser?.close());

async function openPage(options = {}) {
  await page?.close();
  page = await browser.newPage(options);
  page.on('request', (request) => {
    if (/^(https?|wss?):/.test(request.url())) requests.push(request.url());
  });
  page.on('pageerror', (error) => assert.fail(error));
  await page.goto(pathToFileURL(pageFile).href);
  await page.waitForSelector('html[data-ready]');
}

/** Drops files on the page, as a person does. */
async function drop(...paths) {
  const files = paths.map((path) => ({name: basename(path),
                                      base64: readFileSync(path).toString('base64')}));
  await page.evaluate((dropped) => {
    const transfer = new DataTransfer();
    for (const {name, base64} of dropped)
      transfer.items.add(new File([Uint8Array.from(atob(base64), (c) => c.charCodeAt(0))], name));
    // On the sheet, where one is open.
    const target = document.querySelector('iframe')?.contentDocument?.body ?? document.body;
    target.dispatchEvent(
        new DragEvent('drop', {dataTransfer: transfer, bubbles: true, cancelable: true}));
  }, files);
  await page.waitForSelector(`#files button[title="${files[0].name}"][aria-selected=true]`);
}

/** The sheet's texts by place, as they stand in the frame. */
async function textsInFrame() {
  await page.waitForFunction(() =>
      document.querySelector('iframe')?.contentDocument?.querySelector('#cursor') != null);
  return page.evaluate(() => {
    const frame = document.querySelector('iframe').contentDocument;
    const texts = {};
    for (const row of frame.querySelectorAll('tbody tr:not(.gap)')) {
      let column = 1;
      for (const cell of row.querySelectorAll('td')) {
        if (cell.textContent !== '')
          texts[`${row.querySelector('th').dataset.n},${column}`] = cell.textContent;
        column += cell.colSpan;
      }
    }
    return texts;
  });
}

function textsOfTool(file, sheetNumber) {
  return Object.fromEntries(items(file).items
      .filter((item) => item.kind === 'cell' && item.sheetNumber === sheetNumber && item.text)
      .map((item) => [`${item.row},${item.column}`, item.text]));
}

async function saved(button) {
  const [download] = await Promise.all([page.waitForEvent('download'), page.click(button)]);
  return {name: download.suggestedFilename(), bytes: readFileSync(await download.path())};
}

test('shows every text and saves what the tool prints', async () => {
  await openPage();
  for (const name of ['budget.wb2', 'budget.wb3']) {
    await drop(example(name));
    const tabs = await page.locator('#sheets [role=tab]').all();
    assert.equal(tabs.length, 2);
    for (const [at, tab] of tabs.entries()) {
      await tab.click();
      assert.deepEqual(await textsInFrame(), textsOfTool(example(name), at + 1));
      const csv = await saved('#saveCsv');
      assert.equal(csv.name, `budget-${await tab.textContent()}.csv`);
      assert.deepEqual(csv.bytes, qps('csv', '--sheet', String(at + 1), example(name)).stdout);
    }
    const html = await saved('#saveHtml');
    assert.equal(html.bytes.toString(), qps('html', example(name)).stdout.toString());
    const xlsx = await saved('#saveXlsx');
    assert.equal(xlsx.name, 'budget.xlsx');
    assert.deepEqual(xlsx.bytes, workbook(example(name)).bytes);
  }
});

test('says of a file what the tool says, and salvages', async () => {
  await openPage();
  const whole = readFileSync(example('budget.wb2'));
  const foreign = write('paper.wb2', Buffer.from('%PDF-1.4\n'));
  const damaged = write('cut.wb2', whole.subarray(0, whole.length - 200));
  const empty = write('empty.wb2', Buffer.alloc(0));
  const locked = write('locked.wb2',
      notebook([record(76, Buffer.from([1, 0]))], sheet(0, 'A', number(0, 0, 0, 1))));
  assert.equal(complaint(locked), 'protected by a password');
  for (const file of [foreign, damaged, empty, locked]) {
    await drop(file);
    assert.equal(await page.textContent('#failureText'), complaint(file));
    assert.equal(await page.isVisible('#salvage'), file === damaged);
  }
  await drop(write('stray.wb2', notebook([], record(9999, Buffer.alloc(1)), sheet(0, 'A'))));
  assert.match(await page.textContent('#damage'), /^This notebook may be damaged: the record at /);
  await drop(damaged);
  await page.click('#salvage');
  assert.match(await page.textContent('#damage'), /^This notebook is damaged: /);
  const texts = Object.fromEntries(items(damaged, '--salvage').items
      .filter((item) => item.kind === 'cell' && item.sheetNumber === 1 && item.text)
      .map((item) => [`${item.row},${item.column}`, item.text]));
  assert.deepEqual(await textsInFrame(), texts);
});

test('says what a worksheet and a workbook do not have', async () => {
  await openPage();
  await drop(write('empty-sheet.wb2', notebook([], sheet(0, 'A'))));
  assert.equal(await page.textContent('#note'), 'This worksheet is empty.');
  const random = write('random.wb2', randomNotebook(1));
  await drop(random);
  assert.equal(await page.textContent('#note'), '');
  await saved('#saveXlsx');
  const {warning} = workbook(random);
  assert.notEqual(warning, '');
  assert.equal(await page.textContent('#note'), `The workbook that was saved has ${warning}.`);
});

test('goes through cells by keyboard, tells what they hold, and finds', async () => {
  await openPage();
  await drop(example('budget.wb2'));
  const frame = page.frameLocator('iframe');
  await frame.locator('td', {hasText: 'Groceries'}).click();
  assert.match(await page.textContent('#cell'), /A5\s*Groceries\s*— text/);
  for (const key of ['ArrowRight', 'ArrowRight', 'ArrowRight']) await page.keyboard.press(key);
  assert.match(await page.textContent('#cell'), /D5\s*467.35\s*— number · shows \$467.35/);
  await page.fill('#wanted', 'RENT');
  await page.keyboard.press('Enter');
  await page.waitForFunction(() => document.getElementById('matches').textContent !== '');
  assert.match(await page.textContent('#cell'), /A4\s*Rent/);
});

test('reads texts in the encoding that is chosen', async () => {
  await openPage();
  const cyrillic = write('cyrillic.wb2', notebook([], sheet(0, 'A',
      label(0, 0, 0, Buffer.from([0xCF, 0xF0, 0xE8])))));
  await drop(cyrillic);
  assert.deepEqual(await textsInFrame(), {'1,1': 'Ïðè'});
  await page.selectOption('#encoding', 'windows-1251');
  assert.deepEqual(await textsInFrame(), {'1,1': 'При'});
});

test('a large sheet has only the rows near the window', async () => {
  await openPage();
  const cells = [];
  for (let row = 0; row < 20000; ++row)
    for (let column = 0; column < 10; ++column) cells.push(number(column, row, 0, row + column));
  const large = write('large.wb2', notebook([], sheet(0, 'Large', Buffer.concat(cells))));
  const begun = Date.now();
  await drop(large);
  await page.frameLocator('iframe').locator('tbody td').first().waitFor();
  console.log(`200,000 cells: ${Date.now() - begun} ms`);
  const rows = () => page.evaluate(() =>
      document.querySelector('iframe').contentDocument.querySelectorAll('tbody tr').length);
  await page.frameLocator('iframe').locator('tbody td').first().click();
  await page.keyboard.press('Control+End');
  await page.waitForFunction(() => document.getElementById('cellPlace').textContent === 'J20000');
  assert.match(await page.textContent('#cell'), /20008/);
  await page.waitForTimeout(300);
  assert.ok(await rows() <= 500, `${await rows()} rows`);
});

test('can be used with a screen reader, wide, narrow and dark', async () => {
  const looks = [{viewport: {width: 1100, height: 700}},
                 {viewport: {width: 380, height: 720}},
                 {viewport: {width: 1100, height: 700}, colorScheme: 'dark'}];
  for (const look of looks) {
    await openPage(look);
    for (const file of [null, example('budget.wb2'), write('no.wb2', Buffer.from('no'))]) {
      if (file !== null) await drop(file);
      if (file === example('budget.wb2')) await textsInFrame();
      for (const frame of page.frames()) {
        await frame.evaluate(axe);
        // The colours of cells are the author's.
        const rules = {'color-contrast': {enabled: frame === page.mainFrame()}};
        const {violations} =
            await frame.evaluate((options) => globalThis.axe.run(options), {iframes: false, rules});
        const serious = violations.filter(({impact}) => ['serious', 'critical'].includes(impact));
        assert.deepEqual(serious.map(({id, nodes}) => [id, nodes[0].html]), []);
      }
    }
  }
});

test('does not use the network, and could not', async () => {
  const refused = await page.evaluate(() =>
      fetch('https://example.org/').then(() => false, () => true));
  assert.ok(refused);
  assert.deepEqual(requests, []);
});
