// Levels as hands and eyes meet them.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { dbAt, formatDb, parseDb, positionOf, shortDb, spokenDb, stepped } from '../../../ctl/web/decibels.mjs';

test('A level is shown with a true minus and one decimal', () => {
  const shown = [[0, '0.0'], [-0.04, '0.0'], [3, '+3.0'], [-6.0206, '\u22126.0'], [-12.5, '\u221212.5'], [null, '\u2212\u221e'], [20, '+20.0']];
  for (const [db, text] of shown) assert.equal(formatDb(db), text);
  assert.equal(shortDb(-6.0206), '\u22126');
  assert.equal(shortDb(-12.5), '\u221212.5');
  assert.equal(spokenDb(null), 'silent');
});

test('What is typed is a level, or says why not', () => {
  const read = [['-6', -6], [' \u22126,5 dB', -6.5], ['+3', 3], ['0', 0], ['-0', 0], ['off', null], ['-inf', null], ['\u2212\u221e', null], ['-200', null]];
  for (const [text, db] of read) assert.deepEqual(parseDb(text), { db }, text);
  for (const text of ['', 'loud', '6 6', '1e3', '--6', '0x10', '12.1', '60']) assert.ok(parseDb(text).error, text);
});

test('The fader has silence below, 0 dB in the upper part, +12 dB at the top', () => {
  assert.equal(dbAt(0), null);
  assert.equal(dbAt(1), 12);
  assert.equal(dbAt(positionOf(0)), 0);
  assert.equal(positionOf(null), 0);
  assert.equal(positionOf(20), 1);
});

test('A level and its position agree all along the fader', () => {
  for (let db = -60; db <= 12; ++db) assert.equal(dbAt(positionOf(db), { detent: false }), db);
});

test('A fader that goes up never gets quieter', () => {
  let last = -Infinity;
  for (let at = 0; at <= 1; at += 0.001) {
    const db = dbAt(at) ?? -Infinity;
    assert.ok(db >= last, `${at}`);
    last = db;
  }
});

test('A drag rests at 0 dB, a fine one does not', () => {
  assert.equal(dbAt(positionOf(0.3)), 0);
  assert.equal(dbAt(positionOf(0.3), { detent: false }), 0.3);
});

test('Steps go to silence and back, and never above the top', () => {
  assert.equal(stepped(-6, 1), -5);
  assert.equal(stepped(-6, 0.1), -5.9);
  assert.equal(stepped(-60, -1), null);
  assert.equal(stepped(null, -1), null);
  assert.equal(stepped(null, 1), -60);
  assert.equal(stepped(11.5, 1), 12);
  assert.equal(stepped(20, 1), 20); // louder than the page would make it: it stays
  assert.equal(stepped(20, -1), 19);
});
