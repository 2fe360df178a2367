// SPDX-License-Identifier: MIT
// What the tests compare with: the native tool.
import {spawnSync} from 'node:child_process';
import {mkdtempSync, readFileSync, writeFileSync} from 'node:fs';
import {tmpdir} from 'node:os';
import {join} from 'node:path';

const [program, ...before] = (process.env.QPS ?? 'qps').split(';');

/** Runs the tool. @param {...string} args */
export function qps(...args) {
  const {status, stdout, stderr} =
      spawnSync(program, [...before, ...args], {maxBuffer: 2 ** 30});
  return {status, stdout, stderr: stderr.toString()};
}

/** The items of a notebook, as objects. @param {string} file @param {...string} options */
export function items(file, ...options) {
  const {status, stdout, stderr} = qps('json', ...options, file);
  const lines = stdout.toString().split('\n').filter((line) => line !== '');
  return {status, stderr, items: lines.map((line) => JSON.parse(line))};
}

/** The workbook that the tool writes, and what it warns of, or "". @param {string} file */
export function workbook(file) {
  const written = join(folder, 'native.xlsx');
  const {status, stderr} = qps('xlsx', '-o', written, file);
  return {status, bytes: status === 0 ? readFileSync(written) : null,
          warning: /: warning: (\d+ (?:number|cell)s? without .*)/.exec(stderr)?.[1] ?? ''};
}

/** What the tool says of a file it cannot read, without the names before it. */
export function complaint(file, ...options) {
  return qps('json', ...options, file).stderr.replace(`qps: ${file}: `, '').trimEnd();
}

export const folder = mkdtempSync(join(tmpdir(), 'qps-viewer-'));

/** @param {string} name @param {Uint8Array} bytes */
export function write(name, bytes) {
  writeFileSync(join(folder, name), bytes);
  return join(folder, name);
}
