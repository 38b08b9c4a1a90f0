// A fader: a slider that never jumps to the finger, so that a stray touch changes nothing.
import { kLoudestDb, positionOf, spokenDb } from './decibels.mjs';
import { GainHand } from './gain_hand.mjs';

const kSilentValue = -90; // what a slider's value is called when the level is silence
const kMarks = [12, 6, 0, -6, -12, -20, -40, null];

function part(name) {
  const element = document.createElement('div');
  element.className = name;
  return element;
}

export class Fader {
  // `target` gives {input, output}.
  constructor(element, desk, { target, isUpright = () => false, hasMarks = false }) {
    Object.assign(this, { element, desk, isUpright });
    element.classList.add('fader');
    Object.entries({ role: 'slider', tabindex: '0', 'aria-valuemin': kSilentValue, 'aria-valuemax': kLoudestDb })
      .forEach(([name, value]) => element.setAttribute(name, value));
    element.append(part('track'), part('fill'), ...hasMarks ? kMarks.map((db) => this.#mark(db)) : [], part('cap'));
    const length = () => (isUpright() ? element.clientHeight : element.clientWidth) || 1;
    this.hand = new GainHand(element, desk, {
      target, isUpright, travel: length, mayTurn: () => document.activeElement === element,
    });
    element.addEventListener('keydown', (event) => { if (this.hand.key(event, { arrows: true })) event.preventDefault(); });
    element.addEventListener('click', (event) => this.#tap(target(), event.timeStamp));
  }

  #mark(db) {
    const mark = part('mark');
    mark.textContent = db === null ? '\u2212\u221e' : (db > 0 ? '+' : '') + `${Math.abs(db)}`;
    mark.style.setProperty('--at', positionOf(db));
    mark.setAttribute('aria-hidden', 'true');
    return mark;
  }

  #tap({ input, output }, time) {
    this.element.focus({ preventScroll: true });
    if (!this.hand.wasDragged && this.hand.isSecondTap(time)) this.desk.toZero(input, output);
  }

  // Shows a route; null is none.
  show(route, name) {
    const { element } = this;
    const set = (attribute, value) => { if (element.getAttribute(attribute) !== `${value}`) element.setAttribute(attribute, value); };
    element.style.setProperty('--at', positionOf(route?.db ?? null));
    element.classList.toggle('muted', route ? !route.active : true);
    set('aria-label', name);
    set('aria-orientation', this.isUpright() ? 'vertical' : 'horizontal');
    set('aria-valuenow', Math.min(route?.db ?? kSilentValue, kLoudestDb));
    set('aria-valuetext', route ? (route.active ? '' : 'muted, ') + spokenDb(route.db) : 'no route');
    set('aria-disabled', !(route && this.desk.mayEdit));
  }
}
