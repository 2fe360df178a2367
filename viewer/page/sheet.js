// SPDX-License-Identifier: MIT
// @ts-check
//
// One worksheet in a frame, as `qps html` writes it. Of a large sheet only the rows near the window
// are in the frame.
import {Instance} from '../js/instance.js';

const kRowsTogether = 50;
const kPointsPerTwentieth = 1 / 20;

const kFrameStyle = `
:root{--tabs:0px}
html{background:#fff}
h2{display:none}
#cursor{position:absolute;z-index:1;pointer-events:none;outline:2px solid #0a5cad;outline-offset:-1px;
box-shadow:0 0 0 2px #fff}
.found{background:#ffe680!important}
body:focus-visible{outline:none}
`;

/** @typedef {{row: number, column: number}} Place from 1 */

export class SheetView {
  /**
   * @param {Instance} instance
   * @param {number} index
   * @param {string} name
   * @param {(place: Place) => void} onSelect
   * @param {(error: unknown) => void} onError
   */
  constructor(instance, index, name, onSelect, onError) {
    this.instance = instance;
    this.index = index;
    this.onSelect = onSelect;
    this.onError = onError;
    this.layout = JSON.parse(instance.call('layout', index));
    /** @type {Map<number, number>} */
    this.heights = new Map();
    for (let i = 0; i < this.layout.rowHeights.length; i += 2)
      this.heights.set(this.layout.rowHeights[i], this.layout.rowHeights[i + 1]);
    /** @type {Place} */
    this.place = {row: 1, column: 1};
    this.frame = document.createElement('iframe');
    this.frame.title = `Worksheet ${name}`;
    this.frame.srcdoc = `<!DOCTYPE html><html lang="en"><head><meta charset="utf-8"><title>${
        'Worksheet'}</title><style>${instance.call('styles', index)}${
        kFrameStyle}</style></head><body tabindex="0"><main>${
        instance.call('sheet', index)}</main><div id="cursor" hidden></div></body></html>`;
    /** Resolves when the sheet can be seen. @type {Promise<void>} */
    this.ready = new Promise((resolve) => {
      this.frame.addEventListener('load', () => {
        this.begin();
        resolve();
      }, {once: true});
    });
  }

  /** The frame's document. */
  get page() {
    return /** @type {Document} */ (this.frame.contentDocument);
  }

  begin() {
    const page = this.page;
    this.table = /** @type {HTMLTableElement} */ (page.querySelector('table'));
    this.letters = /** @type {HTMLElement[]} */ ([...page.querySelectorAll('thead th')]);
    if (this.layout.isLarge) this.makeGroups();
    page.addEventListener('click', (event) => this.click(event));
    page.addEventListener('keydown', (event) => this.key(event));
    page.addEventListener('change', () => this.drawCursor());
    for (const type of ['dragover', 'dragleave', 'drop'])
      page.addEventListener(type, (event) => this.passOn(/** @type {DragEvent} */ (event)));
  }

  // What is dropped on the frame is dropped on the page.
  /** @param {DragEvent} event */
  passOn(event) {
    event.preventDefault();
    const {dataTransfer, relatedTarget} = event;
    window.dispatchEvent(new DragEvent(event.type, {dataTransfer, relatedTarget}));
  }

  /** @param {number} row */
  height(row) {
    return this.heights.get(row) ?? this.layout.defaultRowHeight;
  }

  // A <tbody> for every 50 rows, as high as they are; its rows come when it is near the window.
  makeGroups() {
    const body = /** @type {HTMLElement} */ (this.table?.tBodies[0]);
    /** @type {HTMLElement[]} */
    this.groups = [];
    for (let first = 1; first <= this.layout.lastRow; first += kRowsTogether) {
      const last = Math.min(first + kRowsTogether - 1, this.layout.lastRow);
      let height = 0;
      for (let row = first; row <= last; ++row) height += this.height(row);
      const group = this.page.createElement('tbody');
      group.style.minHeight = `${height * kPointsPerTwentieth}pt`;
      group.style.containIntrinsicHeight = group.style.minHeight;
      group.dataset.first = String(first);
      this.groups.push(group);
    }
    body.replaceWith(...this.groups);
    const observer = new IntersectionObserver((entries) => {
      for (const entry of entries) {
        const group = /** @type {HTMLElement} */ (entry.target);
        if (entry.isIntersecting)
          this.fill(group);
        else
          group.replaceChildren();
      }
    }, {root: this.page, rootMargin: '600px 0px'});
    for (const group of this.groups) observer.observe(group);
  }

  /** @param {HTMLElement} group */
  fill(group) {
    if (group.firstElementChild !== null) return;
    const first = Number(group.dataset.first);
    const last = Math.min(first + kRowsTogether - 1, this.layout.lastRow);
    try {
      group.innerHTML = this.instance.call('rows', this.index, first, last);
    } catch (error) {
      this.onError(error);
    }
  }

  /** The row's element, which is there or is made. @param {number} row */
  rowElement(row) {
    if (this.groups !== undefined) {
      const group = this.groups[Math.floor((row - 1) / kRowsTogether)];
      if (group === undefined) return null;
      this.fill(group);
      return /** @type {HTMLElement} */ (group.children[(row - 1) % kRowsTogether]);
    }
    const head = this.page.querySelector(`tbody th[data-n="${row}"]`);
    return /** @type {HTMLElement | null} */ (head === null ? null : head.parentElement);
  }

  /** @param {MouseEvent} event */
  click(event) {
    const target = /** @type {HTMLElement} */ (event.target);
    const row = target.closest('tbody tr');
    const head = row?.querySelector('th');
    if (row == null || head == null || row.classList.contains('gap')) return;
    const column = this.letters?.findIndex((letter) => {
      const {left, right} = letter.getBoundingClientRect();
      return event.clientX >= left && event.clientX < right;
    });
    if (column === undefined || column < 0) return;
    this.select({row: Number(head.dataset.n), column: column + 1});
  }

  /** @param {KeyboardEvent} event */
  key(event) {
    if (event.altKey || event.metaKey) return;
    /** @type {Record<string, [number, number]>} */
    const steps = {ArrowUp: [-1, 0], ArrowDown: [1, 0], ArrowLeft: [0, -1], ArrowRight: [0, 1],
                   PageUp: [-20, 0], PageDown: [20, 0]};
    const {row, column} = this.place;
    if (event.key in steps && !event.ctrlKey) {
      this.select(this.moved(...steps[event.key]));
    } else if (event.key === 'Home') {
      this.select({row: event.ctrlKey ? 1 : row, column: 1});
    } else if (event.key === 'End') {
      this.select({row: event.ctrlKey ? Math.max(this.layout.lastRow, 1) : row,
                   column: Math.max(this.letters?.length ?? 1, 1)});
    } else {
      return;
    }
    event.preventDefault();
  }

  // What is hidden is passed over.
  /** @param {number} rows @param {number} columns @returns {Place} */
  moved(rows, columns) {
    const showsHidden = this.page.querySelector('input:checked') !== null;
    const mostRows = Math.max(this.layout.lastRow, 1);
    const mostColumns = Math.max(this.letters?.length ?? 1, 1);
    let {row, column} = this.place;
    do {
      row += Math.sign(rows);
    } while (!showsHidden && row >= 1 && row <= mostRows && this.height(row) === 0);
    row += rows - Math.sign(rows);
    do {
      column += Math.sign(columns);
    } while (!showsHidden && this.letters?.[column - 1]?.classList.contains('x') && columns !== 0);
    if (columns !== 0 && (column < 1 || column > mostColumns)) column = this.place.column;
    return {row: Math.min(Math.max(row, 1), mostRows), column};
  }

  /** @param {Place} place */
  select(place) {
    this.place = place;
    const element = this.rowElement(place.row);
    element?.scrollIntoView({block: 'nearest', inline: 'nearest'});
    this.drawCursor();
    const cursor = /** @type {HTMLElement} */ (this.page.getElementById('cursor'));
    if (!cursor.hidden) {
      cursor.style.scrollMargin = '3rem 2rem 2rem 4rem';
      cursor.scrollIntoView({block: 'nearest', inline: 'nearest'});
    }
    this.onSelect(place);
  }

  drawCursor() {
    const cursor = /** @type {HTMLElement} */ (this.page.getElementById('cursor'));
    const row = this.rowElement(this.place.row)?.getBoundingClientRect();
    const letter = this.letters?.[this.place.column - 1]?.getBoundingClientRect();
    const view = /** @type {Window} */ (this.frame.contentWindow);
    cursor.hidden = row === undefined || letter === undefined || letter.width === 0;
    if (row === undefined || letter === undefined) return;
    cursor.style.left = `${letter.left + view.scrollX}px`;
    cursor.style.top = `${row.top + view.scrollY}px`;
    cursor.style.width = `${letter.width}px`;
    cursor.style.height = `${row.height}px`;
  }

  focus() {
    this.page.body.focus({preventScroll: true});
  }
}
