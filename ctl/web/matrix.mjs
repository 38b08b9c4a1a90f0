// The matrix: scrolled by the browser, drawn on a canvas that stays in place, played by pointers, wheel and keys.
import { find } from './dom.mjs';
import { AriaWindow } from './aria_window.mjs';
import { GainHand } from './gain_hand.mjs';
import { Geometry } from './geometry.mjs';
import { Painter } from './painter.mjs';
import { clamp } from './decibels.mjs';

const kCellPx = 44;
const kLargeCellPx = 64;
const kSmallestCellPx = 3;
const kTravelPx = 260;       // of a drag from silence to the top
const kScrollRestMs = 400; // the wheel scrolls on, even over the selected cell

export class Matrix {
  constructor(desk, levels) {
    Object.assign(this, { desk, levels, scroller: find('scroller'), extent: find('extent'), grid: find('grid') });
    this.geometry = new Geometry();
    this.painter = new Painter(find('canvas'), this.geometry);
    this.aria = new AriaWindow(this.grid, desk, this.geometry);
    this.zoom = 'normal'; // or 'large', 'overview'
    this.dirty = null;    // null, 'headers' or 'all'
    this.scrolledAt = -Infinity;
    this.hand = new GainHand(this.grid, desk, {
      target: () => desk.selection, isUpright: () => true, travel: () => kTravelPx, mayTurn: () => this.mayTurn,
    });
    this.#listen();
  }

  #listen() {
    const { desk, grid, scroller } = this;
    desk.listen('names', () => this.layOut());
    desk.listen('routes', () => this.#refresh());
    desk.listen('selection', () => this.#refresh());
    desk.listen('lock link', () => this.#refresh());
    desk.listen('meters', () => this.invalidate('headers'));
    scroller.addEventListener('scroll', () => this.#scrolled());
    new ResizeObserver(() => this.layOut()).observe(scroller);
    // Before the hand: a mouse takes any cell, a finger only the selected one.
    grid.addEventListener('pointerdown', (event) => this.#press(event), { capture: true });
    grid.addEventListener('click', (event) => this.#click(event));
    grid.addEventListener('keydown', (event) => this.#key(event));
    grid.addEventListener('focusin', () => this.reveal());
    grid.addEventListener('pointermove', (event) => { this.pointer = this.#cellOf(event); });
  }

  // The wheel means the gain over the selected cell, unless it has just scrolled.
  get mayTurn() {
    const { selection } = this.desk;
    return this.pointer?.input === selection.input && this.pointer?.output === selection.output &&
      performance.now() - this.scrolledAt > kScrollRestMs;
  }

  get #isOverview() {
    return this.zoom === 'overview';
  }

  setZoom(zoom) {
    this.zoom = zoom;
    this.layOut();
    this.reveal();
  }

  layOut() {
    const { geometry: g, scroller, desk: { patch } } = this;
    const size = { width: scroller.clientWidth, height: scroller.clientHeight };
    if (size.width === 0) return; // not shown
    Object.assign(g, size, { rows: patch.inputs.length, columns: patch.outputs.length }, this.#headerSizes(size.width));
    g.cell = this.#cellSize();
    Object.assign(this.extent.style, {
      width: `${Math.max(g.totalWidth, g.width)}px`, height: `${Math.max(g.totalHeight, g.height)}px`,
    });
    this.painter.resize(g.width, g.height, devicePixelRatio);
    const { input, output } = this.desk.selection;
    if (!g.contains({ input, output })) this.desk.select(clamp(input, 1, Math.max(1, g.rows)), clamp(output, 1, Math.max(1, g.columns)));
    this.#scrolled();
    this.#refresh();
    this.paint(); // at once: a canvas that was resized is empty
  }

  #headerSizes(width) {
    const { patch } = this.desk;
    if (this.#isOverview) return { left: 44, top: 36 };
    const named = width < 600 ? 108 : 156;
    return { left: patch.inputs.some(Boolean) ? named : 72, top: patch.outputs.some(Boolean) ? 128 : 72 };
  }

  #cellSize() {
    const { geometry: g } = this;
    if (!this.#isOverview) return this.zoom === 'large' ? kLargeCellPx : kCellPx;
    const fit = Math.min((g.width - g.left) / g.columns, (g.height - g.top) / g.rows);
    return clamp(Math.floor(fit), kSmallestCellPx, kCellPx);
  }

  invalidate(what) {
    if (this.dirty === null) requestAnimationFrame(() => this.paint());
    if (this.dirty !== 'all') this.dirty = what;
  }

  paint() {
    const what = this.dirty ?? 'all';
    this.dirty = null;
    if (this.geometry.width === 0) return; // not shown yet
    const { patch, selection } = this.desk;
    const view = {
      route: (input, output) => this.desk.route(input, output), rows: patch.rows, inputs: patch.inputs,
      outputs: patch.outputs, levels: this.levels, selection: patch.inputs.length && patch.outputs.length ? selection : null,
    };
    if (what === 'all') this.painter.paint(view);
    else this.painter.paintHeaders(view);
  }

  #refresh() {
    const isFocused = this.grid.contains(document.activeElement);
    const cell = this.aria.update((element) => { if (isFocused) element.focus({ preventScroll: true }); });
    const { input, output } = this.desk.selection;
    const isHand = this.desk.mayEdit && this.desk.route(input, output) !== null;
    for (const each of this.aria.cells.values()) each.classList.toggle('hand', each === cell && isHand);
    this.invalidate('all');
  }

  #scrolled() {
    this.scrolledAt = performance.now();
    const { canvas } = this.painter;
    Object.assign(this.geometry, { x: canvas.snap(this.scroller.scrollLeft), y: canvas.snap(this.scroller.scrollTop) });
    this.invalidate('all');
  }

  // Scrolls so that the selected cell is seen.
  reveal() {
    const { input, output } = this.desk.selection;
    const { left, top } = this.geometry.scrollTo(input, output);
    if (left !== this.scroller.scrollLeft || top !== this.scroller.scrollTop) this.scroller.scrollTo({ left, top, behavior: 'instant' });
  }

  select(input, output) {
    this.desk.select(input, output);
    this.reveal();
  }

  focus() {
    this.aria.update((cell) => cell.focus({ preventScroll: true }));
  }

  #cellOf(event) {
    const box = this.scroller.getBoundingClientRect();
    const cell = this.geometry.at(event.clientX - box.left, event.clientY - box.top);
    return cell && this.geometry.contains(cell) ? cell : null;
  }

  #press(event) {
    const cell = this.#cellOf(event);
    const { selection } = this.desk;
    const isSelected = cell?.input === selection.input && cell?.output === selection.output;
    if (cell && !isSelected && event.pointerType === 'mouse' && !this.#isOverview) this.desk.select(cell.input, cell.output);
    else if (!isSelected || this.#isOverview) event.stopPropagation();
  }

  #click(event) {
    if (this.hand.wasDragged) return;
    const cell = this.#cellOf(event);
    if (!cell) return;
    this.select(cell.input, cell.output);
    this.focus();
    if (this.#isOverview) return void this.desk.tell('zoom', 'normal');
    if (this.hand.isSecondTap(event.timeStamp)) this.desk.toZero(cell.input, cell.output);
  }

  #key(event) {
    if (this.hand.key(event) || this.#move(event) || this.#enter(event)) event.preventDefault();
  }

  #move(event) {
    const { geometry: g, desk: { selection: { input, output } } } = this;
    if (event.altKey || event.metaKey || event.shiftKey) return false;
    const page = Math.max(1, Math.floor((g.height - g.top) / g.cell) - 1);
    const to = {
      ArrowUp: [input - 1, output], ArrowDown: [input + 1, output],
      ArrowLeft: [input, output - 1], ArrowRight: [input, output + 1],
      Home: [event.ctrlKey ? 1 : input, 1], End: [event.ctrlKey ? g.rows : input, g.columns],
      PageUp: [input - page, output], PageDown: [input + page, output],
    }[event.key];
    if (!to) return false;
    this.select(clamp(to[0], 1, g.rows), clamp(to[1], 1, g.columns));
    return true;
  }

  // Enter: makes the route that is not there, or takes its level in digits.
  #enter(event) {
    if (event.key !== 'Enter') return false;
    const { input, output } = this.desk.selection;
    if (this.desk.patch.route(input, output)) this.desk.tell('entry');
    else this.desk.addRoute(input, output, 1);
    return true;
  }
}
