// Everything that a person may do to the patch, and everything the views need to know of it.
import { Link } from './link.mjs';
import { Patch } from './patch.mjs';

const keyOf = (input, output) => `${input} ${output}`;

// Tells listeners: 'link', 'routes', 'status', 'scenes', 'names', 'meters' (with the event), 'lock', 'selection',
// 'token' (with a reason, or none), 'note' (with a text).
export class Desk {
  // `open` makes a WebSocket; `clock` has the timers, the browser's if there is none.
  constructor(open, clock = {}) {
    this.patch = new Patch();
    this.isLocked = false;
    this.selection = { input: 1, output: 1 };
    this.held = new Map(); // pair -> {db, gesture, isOnItsWay, until}: gains that a hand gives and the server has not told yet
    this.lastGesture = 0;
    this.listeners = new Map();
    this.link = new Link({ open, ...clock, handlers: {
      state: (state) => this.#linkChanged(state),
      live: (truth) => this.#takeTruth(truth),
      event: (event) => this.#takeEvent(event),
      tokenRefused: (why) => this.tell('token', why),
    } });
  }

  listen(kinds, call) {
    for (const kind of kinds.split(' ')) this.listeners.set(kind, [...this.listeners.get(kind) ?? [], call]);
  }

  tell(kind, about) {
    for (const call of this.listeners.get(kind) ?? []) call(about);
  }

  get mayEdit() {
    return this.link.isLive && !this.isLocked;
  }

  // The route as it shall look: with the gain that a hand gives it right now.
  route(input, output) {
    const route = this.patch.route(input, output);
    const held = this.held.get(keyOf(input, output));
    return route && held ? { ...route, db: held.db } : route;
  }

  select(input, output) {
    this.selection = { input, output };
    this.tell('selection');
  }

  setLocked(isLocked) {
    this.isLocked = isLocked;
    this.tell('lock');
  }

  newGesture() {
    return ++this.lastGesture;
  }

  // Sets a level. Of the levels that come while one is on its way, only the newest is sent.
  setDb(input, output, db, gesture = this.newGesture()) {
    if (!this.#checkMayEdit()) return;
    const key = keyOf(input, output);
    const held = this.held.get(key);
    if ((held ?? this.patch.route(input, output))?.db === db) return;
    const isOnItsWay = held?.isOnItsWay ?? false;
    this.held.set(key, { db, gesture, isOnItsWay });
    this.tell('routes');
    if (!isOnItsWay) this.#sendHeld(key, input, output);
  }

  async #sendHeld(key, input, output) {
    const sent = this.held.get(key);
    sent.isOnItsWay = true;
    const answer = await this.#ask({ command: 'route/gain', input, output, db: sent.db, gesture: sent.gesture });
    const newest = this.held.get(key);
    if (!newest) return;
    newest.isOnItsWay = false;
    if (answer && newest !== sent) return this.#sendHeld(key, input, output);
    // The answer comes before the event: what is held stays until the event has come.
    if (answer && answer.serial > this.patch.serial) return void (newest.until = answer.serial);
    this.held.delete(key);
    this.tell('routes');
  }

  // A new route. One that is there keeps its level.
  addRoute(input, output, gain) {
    if (this.mayEdit && this.patch.route(input, output)) return this.tell('note', 'There is such a route already');
    return this.#edit({ command: 'route', input, output, gain });
  }
  setMute(input, output, mute) {
    return this.#edit({ command: 'route/mute', input, output, mute });
  }
  setLabel(input, output, label) {
    return this.#edit({ command: 'route/label', input, output, label });
  }
  removeRoute(input, output) {
    return this.#edit({ command: 'route/remove', input, output });
  }
  recallScene(scene) {
    return this.#edit({ command: 'scene', scene });
  }
  saveScene(scene) {
    return this.#edit({ command: 'scene/save', scene });
  }
  undo() {
    return this.#edit({ command: 'undo' });
  }
  redo() {
    return this.#edit({ command: 'redo' });
  }
  save() {
    return this.#edit({ command: 'save' });
  }
  resetClips() {
    return this.#ask({ command: 'clips/reset' });
  }

  // A double tap: a new route at 0 dB, or the one that is there to 0 dB.
  toZero(input, output) {
    if (this.patch.route(input, output)) this.setDb(input, output, 0);
    else this.addRoute(input, output, 1);
  }

  toggleMute(input, output) {
    const route = this.route(input, output);
    if (route) this.setMute(input, output, route.active);
  }

  #edit(body) {
    return this.#checkMayEdit() ? this.#ask(body) : Promise.resolve(null);
  }

  // The answer; null if there is none, after telling why.
  async #ask(body) {
    try {
      return await this.link.request(body);
    } catch (error) {
      this.tell('note', error.message);
      return null;
    }
  }

  #checkMayEdit() {
    if (this.mayEdit) return true;
    this.tell('note', this.isLocked ? 'Locked. Hold the lock to unlock' : 'There is no connection');
    return false;
  }

  #linkChanged(state) {
    this.held.clear();
    this.tell('link', state);
    if (state === 'token') this.tell('token');
  }

  #takeTruth({ dump, scenes, status }) {
    this.patch.takeDump(dump);
    this.patch.scenes = scenes;
    this.patch.status = status;
    for (const kind of ['names', 'scenes', 'status', 'routes']) this.tell(kind);
  }

  #takeEvent(event) {
    const take = {
      changed: () => this.#takeChange(event),
      status: () => { this.patch.status = event.status; },
      scenes: () => { this.patch.scenes = event.scenes; },
      names: () => { this.patch.inputs = event.inputs; this.patch.outputs = event.outputs; },
      meters: () => {},
      dropped: () => this.tell('note', event.why),
    }[event.event];
    if (!take) return;
    take();
    this.tell(event.event === 'changed' ? 'routes' : event.event, event);
  }

  #takeChange(change) {
    if (!this.patch.takeChange(change)) this.#askAll();
    for (const [key, { until }] of this.held) {
      if (until <= this.patch.serial) this.held.delete(key);
    }
  }

  async #askAll() {
    const dump = await this.#ask({ command: 'dump' });
    if (!dump) return;
    this.patch.takeDump(dump);
    this.tell('names');
    this.tell('routes');
  }
}
