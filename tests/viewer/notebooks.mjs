// SPDX-License-Identifier: MIT
// Notebooks made record by record, and at random.

/** @param {number} kind @param {Buffer} body */
export function record(kind, body = Buffer.alloc(0)) {
  const head = Buffer.alloc(4);
  head.writeUInt16LE(kind, 0);
  head.writeUInt16LE(body.length, 2);
  return Buffer.concat([head, body]);
}

/** The beginning of a cell's record. */
function place(column, row, style) {
  const bytes = Buffer.alloc(6);
  bytes[0] = column;
  bytes.writeUInt16LE(row, 2);
  bytes.writeUInt16LE(style << 3, 4);
  return bytes;
}

export function label(column, row, style, text) {
  return record(15, Buffer.concat([place(column, row, style), Buffer.from("'"), text,
                                   Buffer.from([0])]));
}

export function number(column, row, style, value) {
  const bytes = Buffer.alloc(8);
  bytes.writeDoubleLE(value);
  return record(14, Buffer.concat([place(column, row, style), bytes]));
}

export function integer(column, row, style, value) {
  const bytes = Buffer.alloc(2);
  bytes.writeInt16LE(value);
  return record(13, Buffer.concat([place(column, row, style), bytes]));
}

/** The result of a formula, without the formula. */
export function formula(column, row, style, value) {
  const bytes = Buffer.alloc(12);
  bytes.writeDoubleLE(value);
  return record(16, Buffer.concat([place(column, row, style), bytes]));
}

export function style(form, align, colours, lines) {
  return record(206, Buffer.from([form, align, colours, 0x30, 1, lines, 0, 0, 0x33, 0x33, 0]));
}

export function sheet(at, name, ...cells) {
  return Buffer.concat([record(202, Buffer.from([at, 0])), record(204, Buffer.from(name + '\0')),
                        record(150, Buffer.from([9, 0, 0, 0, 99, 0])), ...cells, record(203)]);
}

export function notebook(definitions, ...sheets) {
  const font = record(207, Buffer.concat([Buffer.from([10, 0, 0, 0]), Buffer.from('Arial\0')]));
  return Buffer.concat([record(0, Buffer.from([2, 0x10])), font, ...definitions, ...sheets,
                        record(1)]);
}

/** Numbers below `limit` that are the same in every run. @param {number} seed */
export function randomNumbers(seed) {
  let state = seed >>> 0;
  return (/** @type {number} */ limit) => {
    state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
    return Math.floor(state / 2 ** 32 * limit);
  };
}

const kForms = [0, 1, 2, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 18, 32, 35, 48, 50, 64, 66, 80,
                82, 96, 112, 113, 200];

function randomCell(random) {
  const at = [random(10), random(60), random(7)];
  const values = [random(100000) / 100, -random(1000), random(60000) + 0.375, 1e300 * random(9),
                  NaN, Infinity, 1 / (1 + random(1000))];
  switch (random(4)) {
    case 0:
      return label(...at, Buffer.from(Array.from({length: random(20)}, () => 1 + random(255))));
    case 1:
      return integer(...at, random(65536) - 32768);
    case 2:
      return formula(...at, values[random(values.length)]);
    default:
      return number(...at, values[random(values.length)]);
  }
}

/** Every third one is damaged. @param {number} seed */
export function randomNotebook(seed) {
  const random = randomNumbers(seed);
  const styles = Array.from({length: 6}, () =>
      style(kForms[random(kForms.length)], random(256), random(256), random(256)));
  const sheets = Array.from({length: 1 + random(3)}, (_, at) =>
      sheet(at, `Sheet ${at}`, ...Array.from({length: random(40)}, () => randomCell(random))));
  const bytes = notebook(styles, ...sheets);
  if (seed % 3 !== 0) return bytes;
  if (random(2) === 0) return bytes.subarray(0, random(bytes.length));
  for (let i = 0; i < 1 + random(4); ++i) bytes[random(bytes.length)] = random(256);
  return bytes;
}
