// Where things lie in the matrix, in CSS pixels. Channels count from 1.
import { clamp } from './decibels.mjs';

export class Geometry {
  constructor() {
    Object.assign(this, { cell: 44, left: 0, top: 0, rows: 0, columns: 0, width: 0, height: 0, x: 0, y: 0 });
  }

  get totalWidth() {
    return this.left + this.columns * this.cell;
  }
  get totalHeight() {
    return this.top + this.rows * this.cell;
  }

  // The upper left corner of a channel's column or row in the viewport.
  columnX(output) {
    return this.left + (output - 1) * this.cell - this.x;
  }
  rowY(input) {
    return this.top + (input - 1) * this.cell - this.y;
  }

  // The first and the last channel that can be seen; the last is before the first if there is none.
  visibleColumns() {
    return [Math.floor(this.x / this.cell) + 1, Math.min(this.columns, Math.ceil((this.x + this.width - this.left) / this.cell))];
  }
  visibleRows() {
    return [Math.floor(this.y / this.cell) + 1, Math.min(this.rows, Math.ceil((this.y + this.height - this.top) / this.cell))];
  }

  // The cell at a point of the viewport: {input, output}, either of them null in a header. Null outside.
  at(px, py) {
    const output = px < this.left ? null : Math.floor((px - this.left + this.x) / this.cell) + 1;
    const input = py < this.top ? null : Math.floor((py - this.top + this.y) / this.cell) + 1;
    return output > this.columns || input > this.rows ? null : { input, output };
  }

  // Where to scroll so that a cell is seen whole, with a bit of its neighbours.
  scrollTo(input, output) {
    const margin = this.cell / 2;
    const show = (start, from, size) =>
      clamp(from, start + this.cell + margin - size, Math.max(0, start - margin));
    return {
      left: show((output - 1) * this.cell, this.x, this.width - this.left),
      top: show((input - 1) * this.cell, this.y, this.height - this.top),
    };
  }

  contains({ input, output }) {
    return input >= 1 && input <= this.rows && output >= 1 && output <= this.columns;
  }
}
