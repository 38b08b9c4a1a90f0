// Draws the matrix: the cells, and the two frozen headers with their meters.
import { positionOf, shortDb } from './decibels.mjs';

export const kColors = {
  stage: '#1c1c1c', grid: '#2b2b2b', cell: '#303030', diagonal: '#424242', outline: '#4a4a4a', border: '#4d4d4d',
  line: '#383838', eighth: '#5a5a5a', text: '#a6a6a6', strong: '#ebebeb', name: '#d0d0d0', crosshair: '#22364a',
  green: '#2ed961', onGreen: '#06220f', track: '#14853a', muted: '#23402d', onMuted: '#a9d9b8', focus: '#66b3ff',
  meterBack: '#101010', meterLow: '#2ed961', meterHigh: '#f0c420', clip: '#ff5546', peak: '#f2f2f2',
};
const kSans = 'system-ui, "DejaVu Sans", sans-serif';
const kMono = 'ui-monospace, "DejaVu Sans Mono", monospace';
const kHighFrom = 0.7; // a meter turns yellow at -18 dB
const kSmallestWithText = 30;

export class Painter {
  constructor(canvas, geometry) {
    this.canvas = canvas;
    this.geometry = geometry;
    this.context = canvas.getContext('2d', { alpha: false });
    this.pattern = null;
  }

  // Sets the size in CSS pixels.
  resize(width, height, ratio) {
    Object.assign(this.canvas, { width: Math.round(width * ratio), height: Math.round(height * ratio) });
    Object.assign(this.canvas.style, { width: `${width}px`, height: `${height}px` });
    this.ratio = ratio;
    this.pattern = null;
  }

  // `view`: route(input, output), rows (of all routes), selection (or null), inputs, outputs (names), levels.
  paint(view) {
    this.context.setTransform(this.ratio, 0, 0, this.ratio, 0, 0);
    this.#paintGrid(view);
    this.#paintHeaders(view);
  }

  paintHeaders(view) {
    this.context.setTransform(this.ratio, 0, 0, this.ratio, 0, 0);
    this.#paintHeaders(view);
  }

  #paintGrid(view) {
    const { context: c, geometry: g } = this;
    c.save();
    this.#fill(kColors.stage, 0, 0, g.width, g.height);
    this.#clip(g.left, g.top, g.width - g.left, g.height - g.top);
    this.#paintEmptyCells();
    if (view.selection) this.#paintCrosshair(view.selection);
    this.#paintDiagonal();
    this.#paintEighths();
    this.#paintRoutes(view);
    if (view.selection) this.#paintSelection(view.selection);
    c.restore();
  }

  // A pattern of one cell, so that empty cells cost one fill for all.
  #paintEmptyCells() {
    const { context: c, geometry: g } = this;
    const width = Math.min(g.width - g.left, g.columns * g.cell - g.x);
    const height = Math.min(g.height - g.top, g.rows * g.cell - g.y);
    this.pattern ??= this.#makePattern();
    const scale = g.cell / this.pattern.size; // a whole number of device pixels may be a bit off
    this.pattern.fill.setTransform(new DOMMatrix().translate(g.left - g.x, g.top - g.y).scale(scale));
    c.fillStyle = this.pattern.fill;
    c.fillRect(g.left, g.top, width, height);
  }

  #makePattern() {
    const size = Math.max(1, Math.round(this.geometry.cell * this.ratio));
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
    return { size, fill: this.context.createPattern(tile, 'repeat') };
  }

  #cellPath(c, x, y) {
    const { cell } = this.geometry;
    const gap = cell < 12 ? 0.5 : 1.5;
    c.beginPath();
    c.roundRect(x + gap, y + gap, cell - 2 * gap, cell - 2 * gap, Math.min(4, cell / 6));
  }

  #paintCrosshair({ input, output }) {
    const { context: c, geometry: g } = this;
    c.globalCompositeOperation = 'lighten';
    this.#fill(kColors.crosshair, g.left, g.rowY(input), g.columns * g.cell - g.x, g.cell);
    this.#fill(kColors.crosshair, g.columnX(output), g.top, g.cell, g.rows * g.cell - g.y);
    c.globalCompositeOperation = 'source-over';
  }

  #paintDiagonal() {
    const { context: c, geometry: g } = this;
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
    const next = (first) => first - first % 8 + 8;
    for (let n = next(firstRow); n <= lastRow; n += 8) this.#fill(kColors.eighth, g.left, g.rowY(n + 1) - 0.5, width, 1);
    for (let n = next(firstColumn); n <= lastColumn; n += 8) this.#fill(kColors.eighth, g.columnX(n + 1) - 0.5, g.top, 1, height);
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
    const { context: c, geometry: g } = this;
    const x = g.columnX(route.output);
    const y = g.rowY(route.input);
    this.#cellPath(c, x, y);
    c.fillStyle = route.active ? kColors.green : kColors.muted;
    c.fill();
    if (!route.active) {
      c.strokeStyle = kColors.onMuted;
      c.setLineDash([3, 3]);
      c.stroke();
      c.setLineDash([]);
    }
    if (g.cell >= kSmallestWithText) this.#paintGain(route, x, y);
  }

  #paintGain({ db, gain, active, count }, x, y) {
    const { cell } = this.geometry;
    const color = active ? kColors.onGreen : kColors.onMuted;
    const middle = x + cell / 2;
    const text = shortDb(db);
    const size = Math.round(cell * (text.length > 4 ? 0.25 : 0.3));
    this.#text(text, middle, y + cell * (active ? 0.46 : 0.36), `600 ${size}px ${kSans}`, color, 'center');
    if (!active) this.#text('MUTE', middle, y + cell * 0.66, `600 ${Math.round(cell * 0.2)}px ${kSans}`, color, 'center');
    if (gain < 0) this.#text('\u00d8', x + 5, y + cell * 0.2, `600 ${Math.round(cell * 0.22)}px ${kSans}`, color, 'left');
    if (count > 1) this.#text(`\u00d7${count}`, x + cell - 4, y + cell * 0.2, `600 ${Math.round(cell * 0.22)}px ${kSans}`, color, 'right');
    const length = cell - 12;
    this.#fill(active ? kColors.track : kColors.cell, x + 6, y + cell - 10, length, 4);
    this.#fill(color, x + 6, y + cell - 10, length * positionOf(db), 4);
  }

  #paintSelection({ input, output }) {
    const { context: c, geometry: g } = this;
    c.strokeStyle = kColors.focus;
    c.lineWidth = 3;
    c.beginPath();
    c.roundRect(g.columnX(output) + 0.5, g.rowY(input) + 0.5, g.cell - 1, g.cell - 1, 5);
    c.stroke();
    c.lineWidth = 1;
  }

  #paintHeaders(view) {
    const { context: c, geometry: g } = this;
    c.save();
    this.#clip(0, g.top, g.left, g.height - g.top);
    this.#fill(kColors.stage, 0, g.top, g.left, g.height);
    this.#paintRowHeader(view);
    c.restore();
    c.save();
    this.#clip(g.left, 0, g.width - g.left, g.top);
    this.#fill(kColors.stage, g.left, 0, g.width, g.top);
    this.#paintColumnHeader(view);
    c.restore();
    this.#paintCorner();
  }

  #paintCorner() {
    const { geometry: g } = this;
    this.#fill(kColors.stage, 0, 0, g.left, g.top);
    if (g.left > 60) this.#text('OUT \u2192', g.left - 8, 16, `600 12px ${kSans}`, kColors.text, 'right');
    if (g.left > 60) this.#text('IN \u2193', g.left - 8, g.top - 12, `600 12px ${kSans}`, kColors.text, 'right');
    this.#fill(kColors.border, 0, g.top - 1, g.width, 1);
    this.#fill(kColors.border, g.left - 1, 0, 1, g.height);
  }

  #paintRowHeader({ inputs, selection, levels }) {
    const { geometry: g } = this;
    const [first, last] = g.visibleRows();
    for (let n = first; n <= last; ++n) {
      const y = g.rowY(n);
      if (n === selection?.input) this.#fill(kColors.crosshair, 0, y, g.left - 1, g.cell);
      if (g.cell < kSmallestWithText) {
        if (n % 8 === 0) this.#number(n, g.left - 8, y + g.cell / 2, 'right');
        continue;
      }
      this.#number(n, 34, y + g.cell * 0.4, 'right');
      this.#fitted(inputs[n - 1], 42, y + g.cell * 0.4, g.left - 50);
      this.#meter(levels.inputs, n - 1, { x: 10, y: y + g.cell - 11, length: g.left - 22, isUpright: false });
    }
  }

  #paintColumnHeader({ outputs, selection, levels }) {
    const { context: c, geometry: g } = this;
    const [first, last] = g.visibleColumns();
    for (let n = first; n <= last; ++n) {
      const x = g.columnX(n);
      if (n === selection?.output) this.#fill(kColors.crosshair, x, 0, g.cell, g.top - 1);
      if (g.cell < kSmallestWithText) {
        if (n % 8 === 0) this.#number(n, x + g.cell, g.top - 12, 'right');
        continue;
      }
      this.#number(n, x + g.cell * 0.42, g.top - 12, 'center');
      c.save();
      c.translate(x + g.cell * 0.42, g.top - 26);
      c.rotate(-Math.PI / 2);
      this.#fitted(outputs[n - 1], 0, 0, g.top - 34);
      c.restore();
      this.#meter(levels.outputs, n - 1, { x: x + g.cell - 10, y: g.top - 8, length: g.top - 16, isUpright: true });
    }
  }

  #number(n, x, y, align) {
    const isEighth = n % 8 === 0;
    this.#text(`${n}`, x, y, `${isEighth ? 700 : 400} 13px ${kMono}`, isEighth ? kColors.strong : kColors.text, align);
  }

  // The name, cut where it would not fit.
  #fitted(name, x, y, room) {
    if (!name) return;
    const { context: c } = this;
    c.font = `13px ${kSans}`;
    let shown = name;
    while (shown && c.measureText(shown).width > room) shown = shown.slice(0, -1);
    this.#text(shown === name ? name : shown.slice(0, -1) + '\u2026', x, y, c.font, kColors.name, 'left');
  }

  // A meter from its lower left end: `length` long, to the right or up.
  #meter(side, channel, { x, y, length, isUpright }) {
    const bar = (from, to, color) => (isUpright
      ? this.#fill(color, x, y - to * length, 5, (to - from) * length)
      : this.#fill(color, x + from * length, y, (to - from) * length, 5));
    const rms = side.rms[channel] ?? 0;
    const peak = side.peak[channel] ?? 0;
    bar(0, 1, kColors.meterBack);
    bar(0, Math.min(rms, kHighFrom), kColors.meterLow);
    if (rms > kHighFrom) bar(kHighFrom, rms, kColors.meterHigh);
    if (peak > 0) bar(Math.max(0, peak - 2 / length), peak, peak > kHighFrom ? kColors.meterHigh : kColors.peak);
    if (side.clip[channel]) bar(1 - 7 / length, 1, kColors.clip);
  }

  #text(text, x, y, font, color, align) {
    Object.assign(this.context, { font, fillStyle: color, textAlign: align, textBaseline: 'middle' });
    this.context.fillText(text, x, y);
  }

  #fill(color, x, y, width, height) {
    this.context.fillStyle = color;
    this.context.fillRect(x, y, width, height);
  }

  #clip(x, y, width, height) {
    this.context.beginPath();
    this.context.rect(x, y, width, height);
    this.context.clip();
  }
}
