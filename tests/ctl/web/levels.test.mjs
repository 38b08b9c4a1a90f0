// Meters rise at once and fall slowly.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { Levels, heightOf } from '../../../ctl/web/levels.mjs';

const event = (peak, clip = false) => ({ inputs: [{ peak, rms: peak / 2, clip }], outputs: [] });

test('The scale goes from -60 dBFS to 0 dBFS', () => {
  assert.equal(heightOf(0), 0);
  assert.equal(heightOf(0.001), 0);
  assert.equal(heightOf(1), 1);
  assert.equal(heightOf(7), 1);
  assert.ok(Math.abs(heightOf(10 ** (-30 / 20)) - 0.5) < 1e-9);
  assert.equal(heightOf(NaN), 0);
});

test('A peak falls by 24 dB a second, unless motion is reduced', () => {
  for (const [falls, expected] of [[true, 0.6], [false, 0]]) {
    const levels = new Levels(() => falls);
    levels.take(event(1), 1000);
    levels.take(event(0), 2000);
    assert.ok(Math.abs(levels.inputs.peak[0] - expected) < 1e-9);
    assert.equal(levels.inputs.rms[0], 0);
  }
});

test('A clip is held as long as the server holds it', () => {
  const levels = new Levels(() => true);
  levels.take(event(0.1, true), 0);
  assert.ok(levels.isClipped);
  levels.take(event(0.1, false), 50);
  assert.ok(!levels.isClipped);
});
