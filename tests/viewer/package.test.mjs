// SPDX-License-Identifier: MIT
// The npm package as users get it: packed, installed into a folder of its own, and used in Node.
import assert from 'node:assert/strict';
import {execFileSync} from 'node:child_process';
import {createServer} from 'node:http';
import {mkdirSync, readFileSync, readdirSync, writeFileSync} from 'node:fs';
import {join} from 'node:path';
import {before, test} from 'node:test';
import {fileURLToPath, pathToFileURL} from 'node:url';

import {chromium} from 'playwright-core';

import {complaint, folder, items, qps, workbook, write} from './native.mjs';
import {notebook, number, randomNotebook, sheet} from './notebooks.mjs';

const source = fileURLToPath(new URL('../..', import.meta.url));
const packageFolder = process.env.QPS_NPM ?? join(source, 'build/viewer/npm');
const example = join(source, 'examples/budget.wb3');
const project = join(folder, 'project');
const kNotebooks = 1000;

let open, QpsError;

before(async () => {
  const npm = (...args) => execFileSync('npm', args, {cwd: project, encoding: 'utf8'});
  mkdirSync(project);
  writeFileSync(join(project, 'package.json'), '{"private": true, "type": "module"}');
  npm('pack', '--silent', packageFolder);
  const packed = readdirSync(project).find((name) => name.endsWith('.tgz'));
  npm('install', '--offline', '--no-audit', '--no-fund', `./${packed}`);
  writeFileSync(join(project, 'use.js'), 'export * from "qpsreader";');
  ({open, QpsError} = await import(pathToFileURL(join(project, 'use.js')).href));
});

test('reads what the README shows', async () => {
  const book = await open(readFileSync(example));
  assert.deepEqual(book.sheets.map((one) => one.name), ['Budget', 'Car']);
  assert.equal(book.fileKind, 'compound-notebook');
  const spent = book.sheet('Budget').cell(5, 4);
  assert.equal(spent.address, 'D5');
  assert.equal(spent.value, 467.35);
  assert.equal(spent.format.code, 48);
  assert.equal(book.sheet('Budget').cell(4, 2).date, '2024-01-01');
  assert.equal(book.sheets[1].toCsv(), qps('csv', '--sheet', '2', example).stdout.toString());
  assert.equal(book.toHtml('budget.wb3'), qps('html', example).stdout.toString());
  // Two at a time do not disturb each other.
  const [one, other] = [[...book.sheets[0].cells()], []];
  const second = book.sheets[0].cells();
  for (const _ of book.sheets[1]) other.push(second.next().value);
  assert.deepEqual(other, one.slice(0, other.length));
  book.close();
  assert.throws(() => book.sheets[0].toCsv(), {reason: 'closed'});
});

test('agrees with the native tool about random notebooks, whole and damaged', async () => {
  const outcomes = {};
  for (let seed = 1; seed <= kNotebooks; ++seed) {
    const bytes = randomNotebook(seed);
    const file = write('random.wb2', bytes);
    const native = items(file);
    let cells = [];
    try {
      const book = await open(bytes);
      for (const one of book.sheets) for (const cell of one) cells.push({sheet: one.name, cell});
      book.close();
      assert.equal(native.status, 0, `${seed}: ${native.stderr}`);
    } catch (error) {
      if (!(error instanceof QpsError)) throw error;
      outcomes[error.reason] = (outcomes[error.reason] ?? 0) + 1;
      assert.notEqual(native.status, 0, `${seed}: ${error.message}`);
      assert.equal(error.message, complaint(file), `${seed}`);
      continue;
    }
    outcomes.read = (outcomes.read ?? 0) + 1;
    assert.deepEqual(
        cells.map(({sheet: name, cell}) =>
            ({sheet: name, address: cell.address, text: cell.text, ...cell.style})),
        native.items.filter((item) => item.kind === 'cell')
            .map(({sheet: name, address, text, alignment, fillColour, textColour, borders, font}) =>
                ({sheet: name, address, text, alignment, fillColour, textColour, borders, font})),
        `${seed}`);
  }
  console.log(outcomes);
  assert.ok(outcomes.read >= kNotebooks / 2 && outcomes.damaged >= 100, JSON.stringify(outcomes));
});

test('writes the workbooks that the native tool writes', async () => {
  let same = 0;
  let warned = 0;
  for (let seed = 1; seed <= 60; ++seed) {
    const file = write('random.wb2', randomNotebook(seed));
    const native = workbook(file);
    if (native.status !== 0) continue;
    const book = await open(readFileSync(file));
    const {bytes, warning} = book.toXlsx();
    book.close();
    assert.deepEqual(Buffer.from(bytes), native.bytes, `${seed}`);
    assert.equal(warning ?? '', native.warning, `${seed}`);
    ++same;
    if (warning !== null) ++warned;
  }
  assert.ok(same >= 30 && warned >= 10, `${same} workbooks, ${warned} warnings`);
});

test('keeps the limit of memory, and goes on with a new instance after a failure', async () => {
  const cells = Buffer.concat(Array.from({length: 60000}, (_, i) => number(i % 10, i / 10, 0, i)));
  const bytes = notebook([], sheet(0, 'A', cells));
  await assert.rejects(open(bytes, {memoryLimit: 1000}), {reason: 'memory-limit'});
  const book = await open(bytes, {memoryLimit: bytes.length + 300000});
  for (let i = 0; i < 2; ++i) assert.throws(() => book.toHtml(), {reason: 'memory-limit'});
  assert.throws(() => book.toXlsx(), {reason: 'memory-limit'});
  assert.equal(book.sheets[0].cell(2, 1).value, 10);
  // A trap.
  assert.throws(() => book.instance().call('cell', 99, 1, 1), {reason: 'internal'});
  assert.equal(book.sheets[0].cell(2, 1).value, 10);
  await assert.rejects(open(bytes, {encoding: 'EBCDIC'}), {reason: 'encoding'});
  await assert.rejects(open(bytes, {encoding: 'UTF-16LE'}), {reason: 'encoding'});
});

test('reads in a browser, from a web server', async () => {
  const types = {js: 'text/javascript', wasm: 'application/wasm', html: 'text/html'};
  const server = createServer((request, response) => {
    const name = request.url.slice(1) || 'index.html';
    const type = types[name.split('.').pop()];
    if (type === undefined) return response.writeHead(404).end();
    response.setHeader('Content-Type', type);
    response.end(name === 'index.html' ? '<!DOCTYPE html>' :
        readFileSync(join(project, 'node_modules/qpsreader', name)));
  });
  await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
  const browser = await chromium.launch({
    executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium', args: ['--no-sandbox']});
  try {
    const page = await browser.newPage();
    await page.goto(`http://127.0.0.1:${server.address().port}/`);
    const texts = await page.evaluate(async (base64) => {
      const {open} = await import('/browser.js');
      const bytes = Uint8Array.from(atob(base64), (c) => c.charCodeAt(0));
      const book = await open(new File([bytes], 'budget.wb3'));
      return book.sheets.flatMap((sheet) => Array.from(sheet, (cell) => cell.text));
    }, readFileSync(example).toString('base64'));
    assert.deepEqual(texts, items(example).items.filter((item) => item.kind === 'cell')
        .map((item) => item.text));
  } finally {
    await browser.close();
    server.close();
  }
});
