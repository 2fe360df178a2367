// SPDX-License-Identifier: MIT
// @ts-check
//
// The page: files in tabs, their worksheets, search, the selected cell, and what is saved.
import {Instance, QpsError} from '../js/instance.js';
import {SheetView} from './sheet.js';

/**
 * @typedef {object} OpenFile
 * @property {string} name
 * @property {Uint8Array} bytes
 * @property {string} encoding
 * @property {boolean} salvage
 * @property {Instance | null} instance
 * @property {QpsError | null} error
 * @property {number} sheet
 * @property {SheetView | null} view
 * @property {{sheet: number, row: number, column: number}[] | null} matches
 * @property {number} match
 */

/** @param {string} id */
const byId = (id) => /** @type {HTMLElement} */ (document.getElementById(id));
const encodingChoice = /** @type {HTMLSelectElement} */ (byId('encoding'));
const wantedText = /** @type {HTMLInputElement} */ (byId('wanted'));
const fileChoice = /** @type {HTMLInputElement} */ (byId('choose'));

/** @type {OpenFile[]} */
const files = [];
/** @type {OpenFile | null} */
let current = null;
/** @type {WebAssembly.Module} */
let module;

const kHints = {
  'not-a-notebook': 'This page reads .wb1, .wb2 and .wb3 notebooks of Quattro Pro for Windows.',
  'protected': 'A notebook that is protected by a password cannot be shown.',
  'damaged': 'What stands before the damage can be shown; the rest is missing.',
  'memory-limit': 'The notebook asks for more memory than the page gives to one.',
};

async function loadModule() {
  const packed = Uint8Array.from(atob(byId('module').textContent ?? ''),
                                 (c) => c.charCodeAt(0));
  const stream = new Blob([packed]).stream().pipeThrough(new DecompressionStream('gzip'));
  module = await WebAssembly.compile(await new Response(stream).arrayBuffer());
}

/** @param {Iterable<File>} chosen */
async function addFiles(chosen) {
  /** @type {OpenFile | null} */
  let first = null;
  for (const file of [...chosen]) {
    /** @type {OpenFile} */
    const opened = {name: file.name, bytes: new Uint8Array(), salvage: false, sheet: 0,
                    encoding: encodingChoice.value, instance: null,
                    error: null, view: null, matches: null, match: -1};
    try {
      opened.bytes = new Uint8Array(await file.arrayBuffer());
      open(opened);
    } catch (error) {
      opened.error = new QpsError('unreadable', /** @type {Error} */ (error).message);
    }
    files.push(opened);
    first ??= opened;
  }
  if (first !== null) show(first);
}

/** Opens it, again or for the first time. @param {OpenFile} file */
function open(file) {
  file.instance?.close();
  Object.assign(file, {instance: null, error: null, view: null, matches: null, match: -1});
  try {
    file.instance = new Instance(module, file.bytes,
                                 {encoding: file.encoding, salvage: file.salvage});
  } catch (error) {
    meet(file, error);
  }
}

/** @param {OpenFile} file @param {unknown} error */
function meet(file, error) {
  if (!(error instanceof QpsError)) throw error;
  file.error = error;
  file.instance = null;
}

/** @param {OpenFile} file */
function close(file) {
  file.instance?.close();
  const at = files.indexOf(file);
  files.splice(at, 1);
  show(current === file ? files[Math.min(at, files.length - 1)] ?? null : current);
  if (files.length === 0) fileChoice.focus();
}

/**
 * A row of tabs by the ARIA pattern: arrows move among them.
 *
 * @template T
 * @param {HTMLElement} list
 * @param {{item: T, label: string, selected: boolean}[]} tabs
 * @param {(item: T) => void} onChoose
 * @param {((item: T) => void) | null} onClose
 */
function showTabs(list, tabs, onChoose, onClose) {
  const hadFocus = list.contains(document.activeElement);
  list.replaceChildren(...tabs.map(({item, label, selected}) => {
    const tab = document.createElement('div');
    tab.className = 'tab';
    tab.setAttribute('role', 'presentation');
    const button = document.createElement('button');
    button.type = 'button';
    button.textContent = label;
    button.title = label;
    button.setAttribute('role', 'tab');
    button.setAttribute('aria-selected', String(selected));
    button.tabIndex = selected ? 0 : -1;
    button.addEventListener('click', () => onChoose(item));
    if (onClose !== null)
      button.addEventListener('keydown', (event) => {
        if (event.key === 'Delete') onClose(item);
      });
    tab.append(button);
    if (onClose !== null) {
      const cross = document.createElement('button');
      cross.type = 'button';
      cross.className = 'close';
      cross.textContent = '×';
      cross.title = `Close ${label}`;
      cross.tabIndex = -1;
      cross.setAttribute('aria-hidden', 'true');
      cross.addEventListener('click', () => onClose(item));
      tab.append(cross);
    }
    return tab;
  }));
  const selected = /** @type {HTMLElement | null} */ (list.querySelector('[aria-selected=true]'));
  selected?.scrollIntoView({block: 'nearest', inline: 'nearest'});
  if (hadFocus) selected?.focus();
  list.onkeydown = (event) => {
    const step = event.key === 'ArrowRight' ? 1 : event.key === 'ArrowLeft' ? -1 : 0;
    const at = tabs.findIndex((tab) => tab.selected) + step;
    if (step !== 0 && at >= 0 && at < tabs.length) onChoose(tabs[at].item);
  };
}

/** @param {OpenFile | null} file */
function show(file) {
  current = file;
  showTabs(byId('files'), files.map((one) => ({item: one, label: one.name,
                                               selected: one === file})), show, close);
  byId('files').hidden = files.length === 0;
  byId('welcome').hidden = file !== null;
  document.title = file === null ? 'qpsreader' : `${file.name} – qpsreader`;
  if (file !== null) encodingChoice.value = file.encoding;
  if (file !== null && file.instance !== null && file.error === null) showSheet(file, file.sheet);
  const failed = file !== null && file.error !== null;
  byId('failure').hidden = !failed;
  byId('notebook').hidden = file === null || failed;
  if (file !== null && failed) showFailure(file);
}

/** @param {OpenFile} file */
function showFailure(file) {
  const {reason, message} = /** @type {QpsError} */ (file.error);
  byId('failureTitle').textContent = file.name;
  byId('failureText').textContent = message;
  byId('failureHint').textContent = /** @type {Record<string, string>} */ (kHints)[reason] ?? '';
  byId('salvage').hidden = reason !== 'damaged' || file.salvage;
}

/** @param {string} text or "" */
function note(text) {
  byId('note').textContent = text;
}

/** @param {OpenFile} file @param {number} index */
function showSheet(file, index) {
  const instance = /** @type {Instance} */ (file.instance);
  const {sheets, damage, suspicion} = instance.description;
  file.sheet = index;
  showTabs(byId('sheets'), sheets.map((label, at) => ({item: at, label: label || `sheet ${at + 1}`,
                                                       selected: at === index})),
           (at) => showSheet(file, at), null);
  byId('damage').hidden = damage === undefined && suspicion === undefined;
  byId('damage').textContent = damage === undefined ?
      `This notebook may be damaged: ${suspicion}. Some of it may be missing or wrong.` :
      `This notebook is damaged: ${damage}. What could be read is shown; the rest is missing.`;
  showMatches(file);
  clearCell();
  try {
    if (file.view === null || file.view.index !== index) {
      file.view = new SheetView(instance, index, sheets[index],
                                ({row, column}) => showCell(file, row, column),
                                (error) => giveUp(file, error));
    } else if (!file.view.frame.isConnected) {
      file.view = new SheetView(instance, index, sheets[index], file.view.onSelect,
                                file.view.onError);
    }
    const {warning, cells} = file.view.layout;
    note(cells === 0 ? 'This worksheet is empty.' :
        warning && `This worksheet has ${warning}; the last of each is shown.`);
    if (byId('sheet').firstElementChild !== file.view.frame)
      byId('sheet').replaceChildren(file.view.frame);
  } catch (error) {
    giveUp(file, error);
  }
}

/** @param {OpenFile} file @param {unknown} error */
function giveUp(file, error) {
  meet(file, error);
  show(file);
}

/** After a failure to save: the notebook is read anew. @param {OpenFile} file @param {unknown} error */
function recover(file, error) {
  if (!(error instanceof QpsError)) throw error;
  open(file);
  show(file);
  note(`It could not be saved: ${error.message}.`);
}

/** @param {number} column */
function columnName(column) {
  const a = 'A'.charCodeAt(0);
  const last = String.fromCharCode(a + (column - 1) % 26);
  return column <= 26 ? last : String.fromCharCode(a + Math.floor((column - 1) / 26) - 1) + last;
}

/** @type {Record<number, string>} */
const kFormats = {1: 'bars', 16: 'fixed', 32: 'scientific', 48: 'currency', 64: 'percent',
                  80: 'comma'};

/** What the format is called. @param {any} format */
function formatName(format) {
  const decimals = `, ${format.decimals} decimal${format.decimals === 1 ? '' : 's'}`;
  if (format.text !== undefined) return `own format ${format.text}`;
  if (format.showsDate && format.showsTime) return 'date and time';
  if (format.showsDate) return 'date';
  if (format.showsTime) return 'time';
  const name = kFormats[format.code];
  if (name === undefined) return 'general';
  return name + (format.code >= 16 ? decimals : '');
}

function clearCell() {
  byId('cellPlace').textContent = '';
  byId('cellValue').textContent = '';
  byId('cellFacts').textContent = 'Choose a cell to see what it holds.';
}

/** @param {OpenFile} file @param {number} row @param {number} column */
function showCell(file, row, column) {
  /** @type {any} */
  let cell;
  try {
    cell = JSON.parse(/** @type {Instance} */ (file.instance).call('cell', file.sheet, row, column));
  } catch (error) {
    return giveUp(file, error);
  }
  byId('cellPlace').textContent = columnName(column) + row;
  if (cell === null || cell.kind === 'blank') {
    byId('cellValue').textContent = '';
    byId('cellFacts').textContent = 'empty';
    return;
  }
  byId('cellValue').textContent = String(cell.date ?? cell.value ?? cell.text);
  const facts = [cell.kind === 'datetime' ? 'date and time' : cell.kind];
  if (cell.date !== undefined) facts.push(`serial ${cell.value}`);
  if (cell.text === null) facts.push('shows nothing');
  else if (cell.text !== String(cell.value)) facts.push(`shows ${cell.text}`);
  if (cell.kind !== 'text') facts.push(`format ${formatName(cell.newFormat)}`);
  if (cell.newFormat.styleName !== '') facts.push(`style ${cell.newFormat.styleName}`);
  facts.push(cell.isFormula ? 'result of a formula' : 'no formula');
  byId('cellFacts').textContent = `— ${facts.join(' · ')}`;
}

/** @param {OpenFile} file */
function showMatches(file) {
  byId('matches').textContent = file.matches === null ? '' :
      file.matches.length === 0 ? 'not found' : `${file.match + 1} of ${file.matches.length}`;
}

/** @param {OpenFile} file @param {string} wanted */
function find(file, wanted) {
  const instance = /** @type {Instance} */ (file.instance);
  file.matches = [];
  for (let sheet = 0; sheet < instance.description.sheets.length; ++sheet) {
    const places = instance.withText(wanted, (at) => JSON.parse(instance.call('find', sheet, at)));
    for (let i = 0; i < places.length; i += 2)
      file.matches.push({sheet, row: places[i], column: places[i + 1]});
  }
  file.match = -1;
}

let searched = '';

/** @param {number} step */
async function goToMatch(step) {
  const file = current;
  const wanted = wantedText.value;
  if (file === null || file.instance === null || wanted === '') return;
  try {
    if (file.matches === null || searched !== wanted) find(file, wanted);
    searched = wanted;
  } catch (error) {
    return giveUp(file, error);
  }
  const matches = file.matches ?? [];
  if (matches.length > 0) {
    const before = file.match < 0 && step < 0 ? 0 : file.match;
    file.match = (before + step + matches.length) % matches.length;
    const {sheet, row, column} = matches[file.match];
    if (sheet !== file.sheet) showSheet(file, sheet);
    await file.view?.ready;
    file.view?.select({row, column});
  }
  showMatches(file);
}

/** @param {string} name @param {string} type @param {Uint8Array[]} chunks */
function save(name, type, chunks) {
  const link = document.createElement('a');
  link.href = URL.createObjectURL(new Blob(/** @type {any} */ (chunks), {type}));
  link.download = name;
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 60_000);
}

/** @param {string} name */
const withoutExtension = (name) => name.replace(/\.[^.]*$/, '');
/** @param {string} name */
const safeName = (name) => name.replace(/[\u0000-\u001f\u007f\\/:*?"<>|]/g, '_').trim() || 'sheet';

function saveCsv() {
  const file = current;
  if (file === null || file.instance === null) return;
  try {
    const {sheets} = file.instance.description;
    save(`${withoutExtension(file.name)}-${safeName(sheets[file.sheet])}.csv`, 'text/csv',
         file.instance.callForChunks('csv', file.sheet));
  } catch (error) {
    recover(file, error);
  }
}

function saveHtml() {
  const file = current;
  if (file === null || file.instance === null) return;
  const instance = file.instance;
  try {
    save(`${withoutExtension(file.name)}.html`, 'text/html',
         instance.withText(file.name, (at) => instance.callForChunks('html', at)));
  } catch (error) {
    recover(file, error);
  }
}

function saveXlsx() {
  const file = current;
  if (file === null || file.instance === null) return;
  try {
    const {chunks, warning} = file.instance.workbook();
    save(`${withoutExtension(file.name)}.xlsx`,
         'application/vnd.openxmlformats-officedocument.spreadsheetml.sheet', chunks);
    note(warning && `The workbook that was saved has ${warning}.`);
  } catch (error) {
    recover(file, error);
  }
}

function listen() {
  fileChoice.addEventListener('change', async () => {
    await addFiles(fileChoice.files ?? []);
    fileChoice.value = '';
  });
  encodingChoice.addEventListener('change', () => {
    if (current === null) return;
    current.encoding = encodingChoice.value;
    open(current);
    show(current);
  });
  byId('salvage').addEventListener('click', () => {
    if (current === null) return;
    current.salvage = true;
    open(current);
    show(current);
    // The button that had the focus is gone.
    const tab = /** @type {HTMLElement | null} */ (document.querySelector('#files [aria-selected=true]'));
    tab?.focus();
  });
  byId('search').addEventListener('submit', (event) => {
    event.preventDefault();
    goToMatch(1);
  });
  byId('previous').addEventListener('click', () => goToMatch(-1));
  byId('saveCsv').addEventListener('click', saveCsv);
  byId('saveHtml').addEventListener('click', saveHtml);
  byId('saveXlsx').addEventListener('click', saveXlsx);
  window.addEventListener('dragover', (event) => {
    event.preventDefault();
    byId('drop').hidden = false;
  });
  window.addEventListener('dragleave', (event) => {
    if (event.relatedTarget === null) byId('drop').hidden = true;
  });
  window.addEventListener('drop', (event) => {
    event.preventDefault();
    byId('drop').hidden = true;
    addFiles(event.dataTransfer?.files ?? []);
  });
}

await loadModule();
listen();
document.documentElement.dataset.ready = '';
