// A server's side of the page's connection, without a network, and a clock that the test turns.
import { Desk } from '../../../ctl/web/desk.mjs';

export class Clock {
  constructor() {
    this.now = 0;
    this.timers = [];
  }
  after = (call, ms) => {
    const timer = { call, at: this.now + ms };
    this.timers.push(timer);
    return timer;
  };
  cancel = (timer) => {
    this.timers = this.timers.filter((other) => other !== timer);
  };
  pass(ms) {
    const end = this.now + ms;
    for (;;) {
      const [next] = this.timers.filter(({ at }) => at <= end).sort((a, b) => a.at - b.at);
      if (!next) break;
      this.now = next.at;
      this.cancel(next);
      next.call();
    }
    this.now = end;
  }
}

export class FakeSocket {
  sent = [];
  isClosed = false;
  send(text) {
    this.sent.push(...[JSON.parse(text)].flat());
  }
  close() {
    this.isClosed = true;
  }
  say(message) {
    this.onmessage({ data: JSON.stringify(message) });
  }
  lose() {
    this.onclose({});
  }
  // Takes what was sent since the last time.
  take() {
    return this.sent.splice(0);
  }
}

export const kStatus = {
  device: { name: 'Box', alive: true, inputs: 2, outputs: 2, sampleRate: 48000, bufferFrames: 64, cycles: 1,
    overloads: { device: 0, callback: 0 }, load: 0.1, peakLoad: 0.2 },
  serial: 0, routes: 1, heard: 1, undo: 0, redo: 0, saved: true, scene: '', patch: 'p.json', ramp: 0,
};

export const kRoute = { input: 1, output: 1, gain: 1, db: 0, active: true, label: '' };

// Lets promises settle.
export const settle = () => new Promise((resolve) => setImmediate(resolve));

// A desk and the sockets that it has opened.
export function makeDesk() {
  const clock = new Clock();
  const sockets = [];
  const desk = new Desk(() => {
    sockets.push(new FakeSocket());
    return sockets.at(-1);
  }, clock);
  return { clock, sockets, desk };
}

// Answers the questions of a page that has just connected.
export async function answerAll(socket, { serial = 0, routes = [kRoute], scenes = ['Verse'] } = {}) {
  const answers = {
    subscribe: { serial }, dump: { serial, routes, inputs: ['Vox', ''], outputs: ['', 'Wedge'] }, scenes: { scenes }, status: { status: kStatus },
  };
  for (const { command, id } of socket.take()) socket.say({ answer: command, id, ok: true, ...answers[command] });
  await settle();
}

export async function makeLiveDesk() {
  const made = makeDesk();
  made.desk.link.connect();
  made.sockets[0].say({ event: 'welcome', program: 'test', token: false });
  await answerAll(made.sockets[0]);
  return { ...made, socket: made.sockets[0] };
}
