// One hand on one gain: drag, wheel, double tap and keys, the same wherever a gain can be taken.
import { find } from './dom.mjs';
import { dbAt, formatDb, positionOf, stepped } from './decibels.mjs';

const kDragFromPx = 4;
const kFine = 5; // times finer with Shift
const kPauseMs = 800; // what comes within this belongs to the same undo step
const kDoubleTapMs = 350;

// The level in large digits, beside the finger that hides it.
function showBubble(text, x, y) {
  const bubble = find('bubble');
  bubble.hidden = !text;
  bubble.textContent = text;
  bubble.style.transform = `translate(${Math.max(8, Math.min(x - 60, innerWidth - 128))}px, ${Math.max(8, y - 96)}px)`;
}

// The gesture of steps that follow each other closely.
class Steps {
  constructor(desk) {
    this.desk = desk;
    this.at = -Infinity;
  }
  gesture() {
    const now = performance.now();
    if (now - this.at > kPauseMs) this.number = this.desk.newGesture();
    this.at = now;
    return this.number;
  }
}

export class GainHand {
  // `target` gives {input, output}; `isUpright` tells if up is louder, else right is; `travel` gives the pixels from silence to
  // the top. `mayTurn` tells if the wheel is meant for the gain now.
  constructor(element, desk, { target, isUpright, travel, mayTurn = () => true }) {
    Object.assign(this, { element, desk, target, isUpright, travel, mayTurn });
    this.steps = new Steps(desk);
    this.drag = null;
    this.wasDragged = false; // until the next press: the click that ends a drag is no tap
    this.turned = 0;
    this.tapped = { at: -Infinity };
    element.addEventListener('pointerdown', () => { this.wasDragged = false; }, { capture: true }); // of presses that go elsewhere, too
    element.addEventListener('pointerdown', (event) => this.#press(event));
    element.addEventListener('pointermove', (event) => this.#move(event));
    for (const kind of ['pointerup', 'pointercancel']) element.addEventListener(kind, (event) => this.#release(event));
    element.addEventListener('wheel', (event) => this.#turn(event), { passive: false });
  }

  get route() {
    const { input, output } = this.target();
    return this.desk.route(input, output);
  }

  #set(db, gesture) {
    const { input, output } = this.target();
    this.desk.setDb(input, output, db, gesture);
  }

  #press(event) {
    const route = this.route;
    if (event.button !== 0 || !route || !this.desk.mayEdit || this.drag) return;
    this.drag = { pointer: event.pointerId, x: event.clientX, y: event.clientY, position: positionOf(route.db), target: this.target() };
    this.element.setPointerCapture(event.pointerId); // else a release outside would not be told, and the drag would go on
  }

  #move(event) {
    const { drag } = this;
    if (drag?.pointer !== event.pointerId) return;
    const by = this.isUpright() ? drag.y - event.clientY : event.clientX - drag.x;
    if (!drag.gesture) {
      if (Math.abs(by) < kDragFromPx) return;
      drag.gesture = this.desk.newGesture();
      Object.assign(drag, { x: event.clientX, y: event.clientY });
      return;
    }
    this.wasDragged = true;
    const db = dbAt(drag.position + by / this.travel() / (event.shiftKey ? kFine : 1), { detent: !event.shiftKey });
    this.desk.setDb(drag.target.input, drag.target.output, db, drag.gesture);
    showBubble(formatDb(db), event.clientX, event.clientY);
  }

  #release(event) {
    if (this.drag?.pointer !== event.pointerId) return;
    this.drag = null;
    showBubble('', 0, 0);
  }

  #turn(event) {
    if (event.ctrlKey || !this.mayTurn() || !this.route || !this.desk.mayEdit) return;
    event.preventDefault();
    const delta = -(event.deltaY || event.deltaX) * (event.deltaMode === 0 ? 1 : 40); // Shift may make it sideways
    const isNotch = Math.abs(delta) >= 60;
    this.turned = isNotch ? Math.sign(delta) : this.turned + delta / 100;
    if (event.shiftKey && isNotch) this.turned /= 10;
    const whole = Math.trunc(this.turned * 10) / 10;
    if (whole === 0) return;
    this.turned -= whole;
    this.#set(stepped(this.route.db, whole), this.steps.gesture());
  }

  // Tells if a tap here is the second one of a double tap. `now` is the tap's own time: the page may be late.
  isSecondTap(now) {
    const { input, output } = this.target();
    const last = this.tapped;
    this.tapped = { input, output, at: now };
    const isSecond = last.input === input && last.output === output && now - last.at < kDoubleTapMs;
    if (isSecond) this.tapped.at = -Infinity;
    return isSecond;
  }

  // Handles a key. True if it meant the gain or the route.
  key(event, { arrows = false } = {}) {
    if (event.ctrlKey || event.metaKey) return false;
    const { input, output } = this.target();
    const step = this.#stepOf(event, arrows);
    if (step !== 0) {
      if (this.route) this.#set(stepped(this.route.db, step), this.steps.gesture());
      return true;
    }
    const action = {
      0: () => this.route && this.#set(0, this.steps.gesture()),
      m: () => this.desk.toggleMute(input, output),
      ' ': () => this.desk.toggleMute(input, output),
      Delete: () => this.route && this.desk.removeRoute(input, output),
      Backspace: () => this.route && this.desk.removeRoute(input, output),
    }[event.key.toLowerCase().length === 1 ? event.key.toLowerCase() : event.key];
    if (!action) return false;
    if (!event.repeat) action();
    return true;
  }

  #stepOf(event, arrows) {
    if (event.key === '+' || event.key === '=') return 1;
    if (event.key === '-' || event.key === '_') return -1;
    if (event.key === 'PageUp' || event.key === 'PageDown') return arrows ? (event.key === 'PageUp' ? 6 : -6) : 0;
    if (!arrows && !event.shiftKey && !event.altKey) return 0;
    const up = ['ArrowUp', 'ArrowRight'].indexOf(event.key) >= 0;
    const down = ['ArrowDown', 'ArrowLeft'].indexOf(event.key) >= 0;
    return (up - down) * (event.altKey ? 0.1 : 1);
  }
}
