// What a hand does goes to the server once, newest first, and never when it must not.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { kRoute, makeLiveDesk, settle } from './fake_server.mjs';

const changed = (serial, db) => ({ event: 'changed', serial, cause: 'edit', routes: [{ ...kRoute, db }], removed: [] });

test('Of the levels of a drag that wait for an answer only the newest is sent', async () => {
  const { desk, socket } = await makeLiveDesk();
  const gesture = desk.newGesture();
  for (const db of [-1, -2, -3, -4]) desk.setDb(1, 1, db, gesture);
  const [first, ...none] = socket.take();
  assert.deepEqual(none, []);
  assert.deepEqual({ db: first.db, gesture: first.gesture }, { db: -1, gesture });
  assert.equal(desk.route(1, 1).db, -4);
  socket.say({ answer: 'route/gain', id: first.id, ok: true, serial: 1 });
  await settle();
  assert.deepEqual(socket.sent.map(({ db }) => db), [-4]);
});

test('A level is shown as the hand has it until the server tells it', async () => {
  const { desk, socket } = await makeLiveDesk();
  desk.setDb(1, 1, -6);
  socket.say({ answer: 'route/gain', id: socket.take()[0].id, ok: true, serial: 1 });
  await settle();
  assert.equal(desk.route(1, 1).db, -6);
  assert.equal(desk.patch.route(1, 1).db, 0);
  socket.say(changed(1, -6.0206));
  assert.equal(desk.route(1, 1).db, -6.0206);
  desk.setDb(1, 1, -7); // a hand that goes on is heard
  assert.equal(socket.take()[0].db, -7);
});

test('A refused level falls back to the truth, and says why', async () => {
  const { desk, socket } = await makeLiveDesk();
  const notes = [];
  desk.listen('note', (text) => notes.push(text));
  desk.setDb(1, 1, -6);
  socket.say({ answer: 'route/gain', id: socket.take()[0].id, ok: false, error: 'no' });
  await settle();
  assert.equal(desk.route(1, 1).db, 0);
  assert.deepEqual(notes, ['no']);
});

test('Each drag is an undo step of its own', async () => {
  const { desk, socket } = await makeLiveDesk();
  desk.setDb(1, 1, -6);
  const [first] = socket.take();
  socket.say({ answer: 'route/gain', id: first.id, ok: true, serial: 1 });
  socket.say(changed(1, -6));
  await settle();
  desk.setDb(1, 1, -7);
  assert.notEqual(socket.take()[0].gesture, first.gesture);
});

test('A route that is there is not added again', async () => {
  const { desk, socket } = await makeLiveDesk();
  const notes = [];
  desk.listen('note', (text) => notes.push(text));
  await desk.addRoute(1, 1, 0);
  assert.deepEqual(socket.sent, []);
  assert.deepEqual(notes, ['There is such a route already']);
  desk.addRoute(2, 1, 0);
  assert.deepEqual(socket.take()[0].gain, 0);
});

test('Locked, nothing is sent; nor without a connection', async () => {
  const { desk, socket } = await makeLiveDesk();
  const notes = [];
  desk.listen('note', (text) => notes.push(text));
  const tryAll = async () => {
    desk.setDb(1, 1, -6);
    desk.toZero(1, 2);
    desk.toggleMute(1, 1);
    for (const edit of ['undo', 'redo', 'save']) await desk[edit]();
    await desk.recallScene('Verse');
    await desk.removeRoute(1, 1);
  };
  desk.setLocked(true);
  await tryAll();
  desk.setLocked(false);
  socket.lose();
  await tryAll();
  assert.deepEqual(socket.take(), []);
  assert.equal(desk.route(1, 1).db, 0);
  assert.equal(new Set(notes).size, 2);
  assert.equal(notes.length, 16);
});

test('A double tap makes a route at 0 dB, or sets the one that is there to 0 dB', async () => {
  const { desk, socket } = await makeLiveDesk();
  socket.say(changed(1, -20));
  desk.toZero(1, 2);
  desk.toZero(1, 1);
  const [made, set] = socket.take();
  assert.deepEqual([made.command, made.input, made.output, made.gain], ['route', 1, 2, 1]);
  assert.deepEqual([set.command, set.input, set.output, set.db], ['route/gain', 1, 1, 0]);
});

test('A gap in the serials makes the page ask for the whole truth', async () => {
  const { desk, socket } = await makeLiveDesk();
  socket.say(changed(3, -6));
  const [dump] = socket.take();
  assert.equal(dump.command, 'dump');
  socket.say({ answer: 'dump', id: dump.id, ok: true, serial: 3, routes: [{ ...kRoute, db: -9 }], inputs: [''], outputs: [''] });
  await settle();
  assert.equal(desk.route(1, 1).db, -9);
});

test('A hand on a route when the connection breaks leaves nothing behind', async () => {
  const { desk, socket } = await makeLiveDesk();
  desk.setDb(1, 1, -6);
  desk.setDb(1, 1, -9);
  socket.lose();
  await settle();
  assert.equal(desk.route(1, 1).db, 0);
});
