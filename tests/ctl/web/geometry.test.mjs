// Cells and pixels.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { Geometry } from '../../../ctl/web/geometry.mjs';

function geometry(more = {}) {
  return Object.assign(new Geometry(), { cell: 44, left: 100, top: 50, rows: 128, columns: 128, width: 540, height: 490, ...more });
}

test('A point is a cell, a header or nothing', () => {
  const g = geometry({ x: 44, y: 88 });
  assert.deepEqual(g.at(100, 50), { input: 3, output: 2 });
  assert.deepEqual(g.at(143.9, 93.9), { input: 3, output: 2 });
  assert.deepEqual(g.at(99, 60), { input: 3, output: null });
  assert.deepEqual(g.at(120, 10), { input: null, output: 2 });
  assert.equal(geometry({ rows: 2 }).at(100, 50 + 88), null);
});

test('A cell lies where its point is', () => {
  const g = geometry({ x: 30, y: 70 });
  assert.deepEqual(g.at(g.columnX(9), g.rowY(7)), { input: 7, output: 9 });
});

test('Only what is seen is drawn', () => {
  const g = geometry({ x: 44 * 10 + 1, y: 0 });
  assert.deepEqual(g.visibleColumns(), [11, 21]);
  assert.deepEqual(g.visibleRows(), [1, 10]);
  assert.deepEqual(geometry({ columns: 3 }).visibleColumns(), [1, 3]);
});

test('A cell that is out of sight is scrolled to, one in sight is not', () => {
  const g = geometry();
  assert.deepEqual(g.scrollTo(2, 2), { left: 0, top: 0 });
  assert.deepEqual(g.scrollTo(128, 1), { left: 0, top: 128 * 44 + 22 - 440 });
  Object.assign(g, { x: 2000, y: 2000 });
  assert.deepEqual(g.scrollTo(1, 60), { left: 59 * 44 + 44 + 22 - 440, top: 0 });
});
