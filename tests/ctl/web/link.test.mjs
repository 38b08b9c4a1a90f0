// The connection comes back by itself, and then shows the truth.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { answerAll, kRoute, kStatus, makeDesk, makeLiveDesk, settle } from './fake_server.mjs';

const kWelcome = { event: 'welcome', program: 'test', token: false };
const kWantsToken = { ...kWelcome, token: true };

test('After the welcome the page asks for everything, and is live when it knows', async () => {
  const { desk, sockets } = makeDesk();
  const states = [];
  desk.listen('link', (state) => states.push(state));
  desk.link.connect();
  sockets[0].say(kWelcome);
  assert.deepEqual(sockets[0].sent.map(({ command }) => command), ['subscribe', 'dump', 'scenes', 'status']);
  await answerAll(sockets[0]);
  assert.deepEqual(states, ['live']);
  assert.equal(desk.patch.route(1, 1).db, 0);
  assert.deepEqual(desk.patch.scenes, ['Verse']);
});

test('Events that come before the page is live are not lost', async () => {
  const { desk, sockets } = makeDesk();
  desk.link.connect();
  sockets[0].say(kWelcome);
  const ids = Object.fromEntries(sockets[0].take().map(({ command, id }) => [command, id]));
  const answer = (command, more) => sockets[0].say({ answer: command, id: ids[command], ok: true, ...more });
  answer('subscribe', { serial: 0 });
  answer('dump', { serial: 0, routes: [kRoute], inputs: [''], outputs: [''] });
  sockets[0].say({ event: 'changed', serial: 1, cause: 'edit', routes: [{ ...kRoute, db: -6 }], removed: [] });
  sockets[0].say({ answer: 'scenes', id: ids.scenes, ok: false, error: 'there are no scenes' });
  answer('status', { status: kStatus });
  await settle();
  assert.equal(desk.patch.route(1, 1).db, -6);
  assert.equal(desk.patch.scenes, null);
});

test('A lost connection is tried again, less and less often, and the new truth replaces the old', async () => {
  const { desk, sockets, clock } = await makeLiveDesk();
  sockets[0].lose();
  assert.equal(desk.link.state, 'lost');
  for (const [delay, count] of [[250, 2], [500, 3], [1000, 4], [2000, 5], [2000, 6]]) {
    clock.pass(delay - 1);
    assert.equal(sockets.length, count - 1);
    clock.pass(1);
    assert.equal(sockets.length, count);
    if (count < 6) sockets.at(-1).lose();
  }
  sockets[5].say(kWelcome);
  await answerAll(sockets[5], { serial: 0, routes: [{ ...kRoute, output: 2, db: -3 }] });
  assert.equal(desk.link.state, 'live');
  assert.equal(desk.patch.route(1, 1), null);
  assert.equal(desk.patch.route(1, 2).db, -3);
});

test('A server that says nothing for four seconds is lost', async () => {
  const { desk, socket, clock } = await makeLiveDesk();
  clock.pass(3999);
  socket.say({ event: 'status', status: kStatus });
  clock.pass(3999);
  assert.equal(desk.link.state, 'live');
  clock.pass(1);
  assert.equal(desk.link.state, 'lost');
  assert.ok(socket.isClosed);
});

test('A device that wakes up connects at once', async () => {
  const { desk, sockets } = await makeLiveDesk();
  sockets[0].lose();
  desk.link.hurry();
  assert.equal(sockets.length, 2);
  sockets[1].say(kWelcome);
  await answerAll(sockets[1]);
  desk.link.hurry();
  assert.equal(sockets.length, 2);
});

test('What a former connection says is not heard', async () => {
  const { desk, sockets } = await makeLiveDesk();
  sockets[0].lose();
  desk.link.hurry();
  sockets[0].say(kWelcome);
  assert.deepEqual(sockets[0].take(), []);
  sockets[0].lose();
  assert.equal(sockets[1].isClosed, false);
});

test('A wanted token is asked for, said first, and said again after a loss', async () => {
  const { desk, sockets, clock } = makeDesk();
  const asked = [];
  desk.listen('token', (why) => asked.push(why));
  desk.link.connect();
  sockets[0].say(kWantsToken);
  assert.ok(sockets[0].isClosed); // it would time out while somebody types
  assert.deepEqual(asked, [undefined]);
  desk.link.sayToken('secret');
  sockets[1].say(kWantsToken);
  const [hello] = sockets[1].take();
  assert.deepEqual(hello, { command: 'hello', token: 'secret', id: hello.id });
  sockets[1].say({ answer: 'hello', id: hello.id, ok: true, serial: 0 });
  await settle();
  await answerAll(sockets[1]);
  sockets[1].lose();
  clock.pass(250);
  sockets[2].say(kWantsToken);
  assert.equal(sockets[2].take()[0].token, 'secret');
});

test('A token that was not read is kept and said again', async () => {
  const { desk, sockets, clock } = makeDesk();
  const asked = [];
  desk.listen('token', (why) => asked.push(why));
  desk.link.sayToken('secret');
  sockets[0].say(kWantsToken);
  sockets[0].say({ answer: 'hello', id: sockets[0].take()[0].id, ok: false, error: 'too many attempts; wait a few seconds' });
  await settle();
  assert.equal(desk.link.state, 'lost');
  clock.pass(250);
  sockets[1].say(kWantsToken);
  sockets[1].lose(); // before the answer
  await settle();
  clock.pass(250); // and nothing more: the next attempt comes later
  assert.equal(sockets.length, 2);
  clock.pass(250);
  assert.equal(sockets.length, 3);
  sockets[2].say(kWantsToken);
  assert.equal(sockets[2].take()[0].token, 'secret');
  assert.deepEqual(asked, []);
});

test('A wrong token is asked for again, with the reason', async () => {
  const { desk, sockets } = makeDesk();
  const asked = [];
  desk.listen('token', (why) => asked.push(why));
  desk.link.sayToken('wrong');
  sockets[0].say(kWantsToken);
  sockets[0].say({ answer: 'hello', id: sockets[0].take()[0].id, ok: false, error: 'the token is wrong' });
  await settle();
  assert.deepEqual(asked, ['the token is wrong', undefined]);
  assert.equal(desk.link.token, null);
  assert.equal(desk.link.state, 'token');
});
