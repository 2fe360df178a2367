// SPDX-License-Identifier: MIT
// @ts-check
//
// Notebooks, worksheets and cells over instances of the module; index.d.ts says what each does.
import {Instance, QpsError} from './instance.js';

const kItemsTogether = 1000;

/** @param {number} row @param {number} column both from 1 */
function address(row, column) {
  const letter = (/** @type {number} */ n) => String.fromCharCode(64 + n);
  const high = Math.floor((column - 1) / 26);
  return (high === 0 ? '' : letter(high)) + letter((column - 1) % 26 + 1) + row;
}

/**
 * A cell as the module writes it becomes one with its format and style in it.
 *
 * @param {any} cell
 * @param {any[]} formats those that were seen, by number
 * @param {any[]} styles
 */
function complete(cell, formats, styles) {
  if (cell.newFormat !== undefined) formats[cell.format] = Object.freeze(cell.newFormat);
  if (cell.newStyle !== undefined) styles[cell.style] = Object.freeze(cell.newStyle);
  const isNumber = !['text', 'blank', 'error'].includes(cell.kind);
  return {
    row: cell.row,
    column: cell.column,
    address: address(cell.row, cell.column),
    text: cell.text,
    kind: cell.kind,
    value: isNumber ? Number(cell.value) : cell.value,  // "NaN" and "Infinity" too
    ...(cell.date === undefined ? {} : {date: cell.date}),
    isFormula: cell.isFormula,
    format: formats[cell.format],
    style: styles[cell.style],
  };
}

class Sheet {
  /** @type {Notebook} */
  #notebook;

  /** @param {Notebook} notebook @param {number} index @param {string} name */
  constructor(notebook, index, name) {
    this.#notebook = notebook;
    this.index = index;
    this.name = name;
  }

  * cells() {
    const instance = this.#notebook.instance();
    const fetch = instance.callForNumber('beginCells', this.index);
    /** @type {any[]} */
    const formats = [];
    /** @type {any[]} */
    const styles = [];
    try {
      for (;;) {
        const cells = JSON.parse(instance.call('cells', fetch, kItemsTogether));
        if (cells.length === 0) return;
        for (const cell of cells) yield complete(cell, formats, styles);
      }
    } finally {
      if (instance.isAlive()) instance.callForNumber('endCells', fetch);
    }
  }

  [Symbol.iterator]() {
    return this.cells();
  }

  /** @param {number} row @param {number} column */
  cell(row, column) {
    const cell = JSON.parse(this.#notebook.instance().call('cell', this.index, row, column));
    return cell === null ? null : complete(cell, [], []);
  }

  toCsv() {
    return this.#notebook.instance().call('csv', this.index);
  }
}

class Notebook {
  /** @type {() => Instance} */
  #make;
  /** @type {Instance | null} null once it was closed */
  #instance;

  /** @param {() => Instance} make */
  constructor(make) {
    this.#make = make;
    this.#instance = make();
    const {sheets, fileKind, formatVersion, damage = null} = this.#instance.description;
    this.sheets = Object.freeze(sheets.map((name, index) => new Sheet(this, index, name)));
    this.fileKind = fileKind;
    this.formatVersion = formatVersion;
    this.damage = damage;
  }

  /** One that works, in the place of one that has failed. */
  instance() {
    if (this.#instance !== null && this.#instance.failure !== null) this.#instance = this.#make();
    if (this.#instance === null) throw new QpsError('closed', 'the notebook is closed');
    return this.#instance;
  }

  /** @param {string} name */
  sheet(name) {
    return this.sheets.find((sheet) => sheet.name === name) ?? null;
  }

  /** @param {string} title */
  toHtml(title = 'Notebook') {
    const instance = this.instance();
    return instance.withText(title, (at) => instance.call('html', at));
  }

  toXlsx() {
    const {chunks, warning} = this.instance().workbook();
    const bytes = new Uint8Array(chunks.reduce((size, chunk) => size + chunk.length, 0));
    let at = 0;
    for (const chunk of chunks) {
      bytes.set(chunk, at);
      at += chunk.length;
    }
    return {bytes, warning: warning || null};
  }

  close() {
    this.#instance?.close();
    this.#instance = null;
  }
}
if (Symbol.dispose !== undefined)
  Object.defineProperty(Notebook.prototype, Symbol.dispose, {value: Notebook.prototype.close});

/** @param {Uint8Array | ArrayBuffer | Blob} source */
async function bytesOf(source) {
  if (source instanceof Blob) return new Uint8Array(await source.arrayBuffer());
  if (source instanceof ArrayBuffer) return new Uint8Array(source.slice(0));
  if (source instanceof Uint8Array) return source.slice();
  throw new TypeError('open() takes the bytes of a notebook: a Uint8Array, ArrayBuffer or Blob');
}

/** @param {() => Promise<WebAssembly.Module>} load */
export function makeOpen(load) {
  /** @type {Promise<WebAssembly.Module> | null} */
  let module = null;
  /**
   * @param {Uint8Array | ArrayBuffer | Blob} source
   * @param {import('./instance.js').OpenOptions} [options]
   */
  return async function open(source, options = {}) {
    const bytes = await bytesOf(source);
    const given = {...options};
    module ??= load().catch((error) => {
      module = null;
      throw error;
    });
    const compiled = await module;
    return new Notebook(() => new Instance(compiled, bytes, given));
  };
}
