// SPDX-License-Identifier: MIT
// @ts-check
//
// One notebook in one instance of the WebAssembly module (viewer/module/exports.cpp). Whatever goes
// wrong in an instance, a notebook that is refused or a trap, ends it: it is never called again, and
// its memory goes with it. A new one costs about a millisecond.

/** Why a notebook could not be read; `reason` is for programs, `message` for people. */
export class QpsError extends Error {
  /**
   * @param {string} reason "not-a-notebook", "empty", "protected", "damaged", "memory-limit",
   *   "encoding", "closed" or "internal"
   * @param {string} message one line, without the file's name
   */
  constructor(reason, message) {
    super(message);
    this.name = 'QpsError';
    this.reason = reason;
  }
}

/**
 * @typedef {object} OpenOptions
 * @property {string} [encoding] the character set of the notebook's texts: "windows-1252" unless
 *   given, "ISO-8859-1", "ASCII", or what TextDecoder knows
 * @property {number} [memoryLimit] in bytes; 1 GiB unless given, 0 for none
 * @property {boolean} [salvage] whether a damaged notebook is opened as far as it can be read
 */

const kSystemCallUnknown = 52;  // ENOSYS of WASI
const kDefaultMemoryLimit = 2 ** 30;
const utf8 = new TextDecoder();
const utf8Encoder = new TextEncoder();

/**
 * The longest well-formed beginning of `bytes`. "unfinished": the rest is the beginning of a
 * character; "undefined": it begins with bytes that mean nothing.
 *
 * @param {string} encoding
 * @param {Uint8Array} bytes
 * @returns {{text: string, consumed: number, result: 'done' | 'undefined' | 'unfinished'}}
 */
function decodeBeginning(encoding, bytes) {
  try {
    return {text: new TextDecoder(encoding, {fatal: true, ignoreBOM: true}).decode(bytes),
            consumed: bytes.length, result: 'done'};
  } catch {
    // Byte by byte, up to the fault.
  }
  const decoder = new TextDecoder(encoding, {fatal: true, ignoreBOM: true});
  let text = '';
  let consumed = 0;
  for (let at = 0; at < bytes.length; ++at) {
    let part;
    try {
      part = decoder.decode(bytes.subarray(at, at + 1), {stream: true});
    } catch {
      return {text, consumed, result: 'undefined'};
    }
    if (part === '') continue;
    text += part;
    consumed = at + 1;
  }
  return {text, consumed, result: 'unfinished'};
}

/** @param {string} encoding */
function isEncodingKnown(encoding) {
  try {
    new TextDecoder(encoding);
    return true;
  } catch {
    return false;
  }
}

export class Instance {
  /**
   * Opens a notebook. Throws QpsError.
   *
   * @param {WebAssembly.Module} module
   * @param {Uint8Array} bytes
   * @param {OpenOptions} [options]
   */
  constructor(module, bytes, options = {}) {
    const {encoding = 'windows-1252', memoryLimit = kDefaultMemoryLimit, salvage = false} = options;
    /** @type {Uint8Array[]} */
    this.chunks = [];
    this.outputLeft = 0;
    this.mostOutput = 2 ** 26 + 256 * bytes.length;
    /** @type {any} null once the instance has failed or was closed */
    this.exports = null;
    /** @type {QpsError | null} why, if it was not closed */
    this.failure = null;
    /** @type {any} */
    let exports = null;
    this.view = () => new Uint8Array(exports.memory.buffer);
    exports = new WebAssembly.Instance(module, this.imports(module)).exports;
    this.exports = exports;
    this.guarded(() => exports._initialize());
    const place = this.guarded(() => exports.allocate(bytes.length));
    if (place === 0) this.fail(new QpsError('memory-limit', 'the memory limit was reached'));
    this.view().set(bytes, place);
    /** @type {{sheets: string[], fileKind: string, formatVersion: number, damage?: string,
     *         suspicion?: string}} */
    this.description = this.withText(encoding, (name) => JSON.parse(
        this.call('open', place, bytes.length, name, memoryLimit, salvage ? 1 : 0)));
  }

  /** @param {WebAssembly.Module} module */
  imports(module) {
    /** @type {Record<string, Function>} */
    const system = {};
    for (const {module: from, name} of WebAssembly.Module.imports(module))
      if (from !== 'qps') system[name] = () => kSystemCallUnknown;
    system.proc_exit = () => {
      throw new QpsError('internal', 'the module gave up');
    };
    /** @param {number} at @param {number} size */
    const text = (at, size) => utf8.decode(this.view().subarray(at, at + size));
    return /** @type {any} */ ({
      wasi_snapshot_preview1: system,
      qps: {
        /** @param {number} at @param {number} size */
        write: (at, size) => {
          if ((this.outputLeft -= size) < 0)
            throw new QpsError('memory-limit', 'the limit of output was reached');
          this.chunks.push(this.view().slice(at, at + size));
        },
        /** @param {number} reason @param {number} at @param {number} size */
        fail: (reason, at, size) => {
          const end = this.view().indexOf(0, reason);
          throw new QpsError(text(reason, end - reason), text(at, size));
        },
        /** @param {number} at @param {number} size */
        knowsEncoding: (at, size) => isEncodingKnown(text(at, size)) ? 1 : 0,
        // Puts UTF-8 at `to`, where there is room, and returns how many bytes of the text that is,
        // how many of the UTF-8, and the result in two bits.
        /** @param {number} name @param {number} nameSize @param {number} at @param {number} size
         *  @param {number} to @param {number} counts */
        decode: (name, nameSize, at, size, to, counts) => {
          const decoded =
              decodeBeginning(text(name, nameSize), this.view().slice(at, at + size));
          const encoded = utf8Encoder.encode(decoded.text);
          this.view().set(encoded, to);
          new Uint32Array(this.view().buffer, counts, 2).set([decoded.consumed, encoded.length]);
          return ['done', 'undefined', 'unfinished'].indexOf(decoded.result);
        },
      },
    });
  }

  /**
   * What a call returns.
   *
   * @param {string} name
   * @param {...number} args
   * @returns {number}
   */
  callForNumber(name, ...args) {
    this.check();
    return this.guarded(() => this.exports[name](...args));
  }

  check() {
    if (this.exports === null)
      throw this.failure ?? new QpsError('closed', 'the notebook is closed');
  }

  /**
   * The output of a call, in chunks.
   *
   * @param {string} name
   * @param {...(number | string)} args
   */
  callForChunks(name, ...args) {
    this.check();
    this.chunks = [];
    this.outputLeft = this.mostOutput;
    this.guarded(() => this.exports[name](...args));
    const chunks = this.chunks;
    this.chunks = [];
    return chunks;
  }

  /**
   * The output of a call as a text.
   *
   * @param {string} name
   * @param {...(number | string)} args
   */
  call(name, ...args) {
    const decoder = new TextDecoder();
    let text = '';
    for (const chunk of this.callForChunks(name, ...args))
      text += decoder.decode(chunk, {stream: true});
    return text + decoder.decode();
  }

  /** The workbook that `qps xlsx` writes, and what it would warn of, or "". */
  workbook() {
    const chunks = this.callForChunks('xlsx');
    return {chunks, warning: this.call('xlsxWarning')};
  }

  /**
   * Calls `use` with the place of a text in the module's memory.
   *
   * @template T
   * @param {string} text
   * @param {(at: number) => T} use
   * @returns {T}
   */
  withText(text, use) {
    this.check();
    const bytes = utf8Encoder.encode(text + '\0');
    const at = this.guarded(() => this.exports.allocate(bytes.length));
    if (at === 0) this.fail(new QpsError('memory-limit', 'the memory limit was reached'));
    this.view().set(bytes, at);
    const result = use(at);
    this.guarded(() => this.exports.release(at));
    return result;
  }

  /** @template T @param {() => T} work @returns {T} */
  guarded(work) {
    try {
      return work();
    } catch (error) {
      return this.fail(error instanceof QpsError ? error :
          new QpsError('internal', `the reader failed: ${/** @type {Error} */ (error).message}`));
    }
  }

  /** @param {QpsError} error @returns {never} */
  fail(error) {
    this.failure = error;
    this.close();
    throw error;
  }

  isAlive() {
    return this.exports !== null;
  }

  close() {
    this.exports = null;
    this.chunks = [];
    this.view = () => new Uint8Array();
  }
}
