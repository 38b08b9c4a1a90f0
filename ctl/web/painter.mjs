// Draws the matrix: the cells, and the two frozen headers with their meters.
import { Canvas, kMono, kSans } from './canvas.mjs';
import { positionOf, shortDb } from './decibels.mjs';

export const kColors = {
  stage: '#1c1c1c', grid: '#2b2b2b', cell: '#303030', diagonal: '#424242', outline: '#4a4a4a', border: '#4d4d4d',
  line: '#383838', eighth: '#5a5a5a', text: '#a6a6a6', strong: '#ebebeb', name: '#d0d0d0', crosshair: '#22364a',
  green: '#2ed961', onGreen: '#06220f', track: '#14853a', muted: '#23402d', onMuted: '#a9d9b8', focus: '#66b3ff',
  meterBack: '#101010', meterLow: '#2ed961', meterHigh: '#f0c420', clip: '#ff5546', peak: '#f2f2f2',
};
const kHighFrom = 0.7; // a meter turns yellow at -18 dB
const kNameFont = `13px ${kSans}`;
const kSmallestWithText = 30;

export class Painter {
  constructor(element, geometry) {
    this.canvas = new Canvas(element);
    this.geometry = geometry;
    this.pattern = null;
  }

  // Sets the size in CSS pixels.
  resize(width, height, ratio) {
    this.canvas.resize(width, height, ratio);
    this.pattern = null;
  }

  // `view`: route(input, output), rows (of all routes), selection (or null), inputs, outputs (names), levels.
  paint(view) {
    this.canvas.begin();
    this.#paintGrid(view);
    this.#paintHeaders(view);
  }

  paintHeaders(view) {
    this.canvas.begin();
    this.#paintHeaders(view);
  }

  #paintGrid(view) {
    const { canvas, geometry: g } = this;
    canvas.fill(kColors.stage, 0, 0, g.width, g.height);
    canvas.within(g.left, g.top, g.width - g.left, g.height - g.top, () => {
      this.#paintEmptyCells();
      if (view.selection) this.#paintCrosshair(view.selection);
      this.#paintDiagonal();
      this.#paintEighths();
      this.#paintRoutes(view);
      if (view.selection) this.#paintSelection(view.selection);
    });
  }

  // A pattern of one cell, so that empty cells cost one fill for all.
  #paintEmptyCells() {
    const { canvas: { context: c }, geometry: g } = this;
    const width = Math.min(g.width - g.left, g.columns * g.cell - g.x);
    const height = Math.min(g.height - g.top, g.rows * g.cell - g.y);
    this.pattern ??= this.#makePattern();
    const scale = g.cell / this.pattern.size; // a whole number of device pixels may be a bit off
    this.pattern.fill.setTransform(new DOMMatrix().translate(g.left - g.x, g.top - g.y).scale(scale));
    c.fillStyle = this.pattern.fill;
    c.fillRect(g.left, g.top, width, height);
  }

  #makePattern() {
    const size = Math.max(1, Math.round(this.geometry.cell * this.canvas.ratio));
    const tile = new OffscreenCanvas(size, size);
    const c = tile.getContext('2d', { alpha: false });
    c.fillStyle = kColors.grid;
    c.fillRect(0, 0, size, size);
    c.scale(size / this.geometry.cell, size / this.geometry.cell);
    this.#cellPath(c, 0, 0);
    c.fillStyle = kColors.cell;
    c.fill();
    c.strokeStyle = kColors.line;
    c.stroke();
    return { size, fill: this.canvas.context.createPattern(tile, 'repeat') };
  }

  #cellPath(c, x, y) {
    const { cell } = this.geometry;
    const gap = cell < 12 ? 0.5 : 1.5;
    c.beginPath();
    c.roundRect(x + gap, y + gap, cell - 2 * gap, cell - 2 * gap, Math.min(4, cell / 6));
  }

  #paintCrosshair({ input, output }) {
    const { canvas: { context: c }, geometry: g } = this;
    c.globalCompositeOperation = 'lighten';
    this.canvas.fill(kColors.crosshair, g.left, g.rowY(input), g.columns * g.cell - g.x, g.cell);
    this.canvas.fill(kColors.crosshair, g.columnX(output), g.top, g.cell, g.rows * g.cell - g.y);
    c.globalCompositeOperation = 'source-over';
  }

  #paintDiagonal() {
    const { canvas: { context: c }, geometry: g } = this;
    const [firstRow, lastRow] = g.visibleRows();
    const [firstColumn, lastColumn] = g.visibleColumns();
    c.fillStyle = kColors.diagonal;
    for (let n = Math.max(firstRow, firstColumn); n <= Math.min(lastRow, lastColumn); ++n) {
      this.#cellPath(c, g.columnX(n), g.rowY(n));
      c.fill();
    }
  }

  #paintEighths() {
    const { geometry: g } = this;
    const [firstRow, lastRow] = g.visibleRows();
    const [firstColumn, lastColumn] = g.visibleColumns();
    const width = g.columns * g.cell - g.x;
    const height = g.rows * g.cell - g.y;
    const next = (first) => 8 * Math.ceil(first / 8);
    for (let n = next(firstRow); n <= lastRow; n += 8) this.canvas.fill(kColors.eighth, g.left, g.rowY(n + 1) - 0.5, width, 1);
    for (let n = next(firstColumn); n <= lastColumn; n += 8) this.canvas.fill(kColors.eighth, g.columnX(n + 1) - 0.5, g.top, 1, height);
  }

  #paintRoutes(view) {
    const [firstRow, lastRow] = this.geometry.visibleRows();
    const [firstColumn, lastColumn] = this.geometry.visibleColumns();
    for (let input = firstRow; input <= lastRow; ++input) {
      for (const output of view.rows.get(input)?.keys() ?? []) {
        if (output >= firstColumn && output <= lastColumn) this.#paintRoute(view.route(input, output));
      }
    }
  }

  #paintRoute(route) {
    const { canvas, geometry: { cell } } = this;
    const key = `route ${route.db} ${route.active} ${route.gain < 0} ${route.count}`;
    canvas.kept(key, this.geometry.columnX(route.output), this.geometry.rowY(route.input), cell, cell, () => {
      this.#paintRouteCell(route.active);
      if (cell >= kSmallestWithText) this.#paintGain(route);
    });
  }

  #paintRouteCell(isActive) {
    const { context: c } = this.canvas;
    this.#cellPath(c, 0, 0);
    c.fillStyle = isActive ? kColors.green : kColors.muted;
    c.fill();
    if (isActive) return;
    c.strokeStyle = kColors.onMuted;
    c.setLineDash([3, 3]);
    c.stroke();
  }

  #paintGain({ db, gain, active, count }) {
    const { canvas, geometry: { cell } } = this;
    const color = active ? kColors.onGreen : kColors.onMuted;
    const font = (share) => `600 ${Math.round(cell * share)}px ${kSans}`;
    const text = shortDb(db);
    canvas.text(text, cell / 2, cell * (active ? 0.46 : 0.36), font(text.length > 4 ? 0.25 : 0.3), color, 'center');
    if (!active) canvas.text('MUTE', cell / 2, cell * 0.66, font(0.2), color, 'center');
    if (gain < 0) canvas.text('\u00d8', 5, cell * 0.2, font(0.22), color, 'left');
    if (count > 1) canvas.text(`\u00d7${count}`, cell - 4, cell * 0.2, font(0.22), color, 'right');
    const length = cell - 12;
    canvas.fill(active ? kColors.track : kColors.cell, 6, cell - 10, length, 4);
    canvas.fill(color, 6, cell - 10, length * positionOf(db), 4);
  }

  #paintSelection({ input, output }) {
    const { canvas: { context: c }, geometry: g } = this;
    c.strokeStyle = kColors.focus;
    c.lineWidth = 3;
    c.beginPath();
    c.roundRect(g.columnX(output) + 0.5, g.rowY(input) + 0.5, g.cell - 1, g.cell - 1, 5);
    c.stroke();
    c.lineWidth = 1;
  }

  #paintHeaders(view) {
    const { canvas, geometry: g } = this;
    canvas.within(0, g.top, g.left, g.height - g.top, () => {
      canvas.fill(kColors.stage, 0, g.top, g.left, g.height);
      this.#paintRowHeader(view);
    });
    canvas.within(g.left, 0, g.width - g.left, g.top, () => {
      canvas.fill(kColors.stage, g.left, 0, g.width, g.top);
      this.#paintColumnHeader(view);
    });
    this.#paintCorner();
  }

  #paintCorner() {
    const { geometry: g } = this;
    this.canvas.fill(kColors.stage, 0, 0, g.left, g.top);
    if (g.left > 60) this.canvas.text('OUT \u2192', g.left - 8, 16, `600 12px ${kSans}`, kColors.text, 'right');
    if (g.left > 60) this.canvas.text('IN \u2193', g.left - 8, g.top - 12, `600 12px ${kSans}`, kColors.text, 'right');
    this.canvas.fill(kColors.border, 0, g.top - 1, g.width, 1);
    this.canvas.fill(kColors.border, g.left - 1, 0, 1, g.height);
  }

  #paintRowHeader({ inputs, selection, levels }) {
    const { canvas, geometry: g } = this;
    const [first, last] = g.visibleRows();
    for (let n = first; n <= last; ++n) {
      const y = g.rowY(n);
      if (n === selection?.input) canvas.fill(kColors.crosshair, 0, y, g.left - 1, g.cell);
      if (g.cell < kSmallestWithText) {
        if (n % 8 === 0) this.#number(n, g.left - 8, y + g.cell / 2, 'right');
        continue;
      }
      canvas.kept(`input ${n} ${inputs[n - 1]}`, 0, y, g.left, g.cell, () => {
        this.#number(n, 34, g.cell * 0.4, 'right');
        canvas.fittedText(inputs[n - 1], 42, g.cell * 0.4, g.left - 50, kNameFont, kColors.name);
      });
      this.#meter(levels.inputs, n - 1, { x: 10, y: y + g.cell - 11, length: g.left - 22, isUpright: false });
    }
  }

  #paintColumnHeader({ outputs, selection, levels }) {
    const { canvas, geometry: g } = this;
    const [first, last] = g.visibleColumns();
    for (let n = first; n <= last; ++n) {
      const x = g.columnX(n);
      if (n === selection?.output) canvas.fill(kColors.crosshair, x, 0, g.cell, g.top - 1);
      if (g.cell < kSmallestWithText) {
        if (n % 8 === 0) this.#number(n, x + g.cell, g.top - 12, 'right');
        continue;
      }
      canvas.kept(`output ${n} ${outputs[n - 1]}`, x, 0, g.cell, g.top, () => this.#paintColumnName(n, outputs[n - 1]));
      this.#meter(levels.outputs, n - 1, { x: x + g.cell - 10, y: g.top - 8, length: g.top - 16, isUpright: true });
    }
  }

  #paintColumnName(n, name) {
    const { canvas, geometry: g } = this;
    this.#number(n, g.cell * 0.42, g.top - 12, 'center');
    canvas.context.translate(g.cell * 0.42, g.top - 26);
    canvas.context.rotate(-Math.PI / 2);
    canvas.fittedText(name, 0, 0, g.top - 34, kNameFont, kColors.name);
  }

  #number(n, x, y, align) {
    const isEighth = n % 8 === 0;
    this.canvas.text(`${n}`, x, y, `${isEighth ? 700 : 400} 13px ${kMono}`, isEighth ? kColors.strong : kColors.text, align);
  }

  // A meter from its lower left end: `length` long, to the right or up.
  #meter(side, channel, { x, y, length, isUpright }) {
    const bar = (from, to, color) => (isUpright
      ? this.canvas.fill(color, x, y - to * length, 5, (to - from) * length)
      : this.canvas.fill(color, x + from * length, y, (to - from) * length, 5));
    const rms = side.rms[channel] ?? 0;
    const peak = side.peak[channel] ?? 0;
    bar(0, 1, kColors.meterBack);
    bar(0, Math.min(rms, kHighFrom), kColors.meterLow);
    if (rms > kHighFrom) bar(kHighFrom, rms, kColors.meterHigh);
    if (peak > 0) bar(Math.max(0, peak - 2 / length), peak, peak > kHighFrom ? kColors.meterHigh : kColors.peak);
    if (side.clip[channel]) bar(1 - 7 / length, 1, kColors.clip);
  }
}
