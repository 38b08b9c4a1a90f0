// What assistive technology sees of the matrix: the cells around the selected one as elements of a grid. All cells would be
// 16,384 elements.
import { channelText } from './patch.mjs';
import { spokenDb } from './decibels.mjs';

const kRadius = 2;

export function cellName(patch, route, { input, output }) {
  const place = `Input ${channelText(patch.inputs, input)} to output ${channelText(patch.outputs, output)}: `;
  if (!route) return place + 'no route';
  return place + (route.active ? '' : 'muted, ') + spokenDb(route.db) + (route.label ? `, ${route.label}` : '');
}

export class AriaWindow {
  constructor(grid, desk, geometry) {
    Object.assign(this, { grid, desk, geometry });
    this.rows = new Map();  // row number (0 is the header) -> element
    this.cells = new Map(); // "input output", 0 for a header -> element
  }

  // Brings all elements up to date. `take` gets the element of the selected cell before others leave, so that it can take the
  // focus from them. Returns that element; null if there is none.
  update(take = () => {}) {
    const { selection } = this.desk;
    const { geometry: g } = this;
    this.grid.setAttribute('aria-rowcount', g.rows + 1);
    this.grid.setAttribute('aria-colcount', g.columns + 1);
    this.grid.setAttribute('aria-readonly', !this.desk.mayEdit);
    const inputs = this.#around(selection.input, g.rows);
    const outputs = this.#around(selection.output, g.columns);
    const wanted = new Set();
    for (const input of [0, ...inputs]) {
      for (const output of [0, ...outputs]) {
        if (input || output) wanted.add(this.#place(input, output));
      }
    }
    const cell = this.cells.get(`${selection.input} ${selection.output}`) ?? null;
    if (cell) take(cell);
    this.#removeOthers(wanted);
    return cell;
  }

  #around(channel, count) {
    const from = Math.max(1, channel - kRadius);
    const to = Math.min(count, channel + kRadius);
    return Array.from({ length: Math.max(0, to - from + 1) }, (_, i) => from + i);
  }

  #place(input, output) {
    const key = `${input} ${output}`;
    const { geometry: g } = this;
    const element = this.cells.get(key) ?? this.#make(key, input, output);
    Object.assign(element.style, {
      left: `${output ? g.left + (output - 1) * g.cell : 0}px`,
      top: `${input ? g.top + (input - 1) * g.cell : 0}px`,
      width: `${output ? g.cell : g.left}px`,
      height: `${input ? g.cell : g.top}px`,
    });
    this.#describe(element, input, output);
    return key;
  }

  #make(key, input, output) {
    const element = document.createElement('div');
    element.setAttribute('role', input && output ? 'gridcell' : input ? 'rowheader' : 'columnheader');
    element.setAttribute('aria-colindex', output + 1);
    this.cells.set(key, element);
    const row = this.#row(input);
    const next = [...row.children].find((other) => Number(other.getAttribute('aria-colindex')) > output + 1);
    row.insertBefore(element, next ?? null);
    return element;
  }

  #row(input) {
    if (!this.rows.has(input)) {
      const row = document.createElement('div');
      row.setAttribute('role', 'row');
      row.setAttribute('aria-rowindex', input + 1);
      const next = [...this.grid.children].find((other) => Number(other.getAttribute('aria-rowindex')) > input + 1);
      this.grid.insertBefore(row, next ?? null);
      this.rows.set(input, row);
    }
    return this.rows.get(input);
  }

  #describe(element, input, output) {
    const { patch, selection } = this.desk;
    const set = (name, value) => { if (element.getAttribute(name) !== value) element.setAttribute(name, value); };
    if (!input) return this.#name(element, `Output ${channelText(patch.outputs, output)}`);
    if (!output) return this.#name(element, `Input ${channelText(patch.inputs, input)}`);
    const isSelected = input === selection.input && output === selection.output;
    set('aria-label', cellName(patch, this.desk.route(input, output), { input, output }));
    set('aria-selected', `${isSelected}`);
    set('tabindex', isSelected ? '0' : '-1');
    set('data-cell', `${input} ${output}`);
  }

  // Headers have a text, which nobody sees: the canvas shows it.
  #name(header, text) {
    if (header.textContent === text) return;
    header.replaceChildren(Object.assign(document.createElement('span'), { className: 'hidden-text', textContent: text }));
  }

  #removeOthers(wanted) {
    for (const [key, element] of this.cells) {
      if (wanted.has(key)) continue;
      element.remove();
      this.cells.delete(key);
    }
    for (const [input, row] of this.rows) {
      if (row.children.length > 0) continue;
      row.remove();
      this.rows.delete(input);
    }
  }
}
