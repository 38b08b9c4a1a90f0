// The page's knowledge follows the server's words, and notices when it has missed some.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { Patch, channelText } from '../../../ctl/web/patch.mjs';

const route = (input, output, db = 0, more = {}) => ({ input, output, gain: 10 ** (db / 20), db, active: true, label: '', ...more });
const change = (serial, routes, removed = []) => ({ serial, routes, removed });

function patchWith(...routes) {
  const patch = new Patch();
  patch.takeDump({ serial: 5, routes, inputs: ['Vox', ''], outputs: ['', 'Wedge', ''] });
  return patch;
}

test('A dump is the whole truth', () => {
  const patch = patchWith(route(2, 3), route(1, 1));
  assert.deepEqual(patch.routes().map(({ input, output }) => [input, output]), [[1, 1], [2, 3]]);
  patch.takeDump({ serial: 9, routes: [route(1, 2)], inputs: [], outputs: [] });
  assert.equal(patch.route(2, 3), null);
  assert.equal(patch.serial, 9);
});

test('A change adds, changes and removes', () => {
  const patch = patchWith(route(1, 1), route(2, 2));
  assert.ok(patch.takeChange(change(6, [route(1, 1, -6), route(1, 3)], [{ input: 2, output: 2 }])));
  assert.deepEqual(patch.routes().map(({ input, output, db }) => [input, output, db]), [[1, 1, -6], [1, 3, 0]]);
});

test('A gap in the serials is noticed and changes nothing', () => {
  const patch = patchWith(route(1, 1));
  assert.equal(patch.takeChange(change(7, [route(1, 1, -6)])), false);
  assert.equal(patch.route(1, 1).db, 0);
});

test('A change that the dump had already is passed over', () => {
  const patch = patchWith(route(1, 1));
  assert.ok(patch.takeChange(change(5, [], [{ input: 1, output: 1 }])));
  assert.equal(patch.route(1, 1).db, 0);
});

test('Several routes of a pair are one cell, which shows one that sounds', () => {
  const patch = patchWith(route(1, 1, -3, { active: false }), route(1, 1, -9));
  const { count, db, active } = patch.route(1, 1);
  assert.deepEqual({ count, db, active }, { count: 2, db: -9, active: true });
});

test('Routes of channels that the device lacks are kept', () => {
  const patch = patchWith(route(9007199254740991, 40000));
  assert.equal(patch.routes().length, 1);
});

test('A channel is called by its number and its name', () => {
  assert.equal(channelText(['Vox', ''], 1), '1 Vox');
  assert.equal(channelText(['Vox', ''], 2), '2');
  assert.equal(channelText([], 7), '7');
});
