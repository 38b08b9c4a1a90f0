// The lock against stray touches: a touch locks, only a long one unlocks. A keyboard or a screen reader does both at once: it
// does not touch by accident.
import { find } from './dom.mjs';
import { Store } from './store.mjs';

const kHoldMs = 700;
const storedLock = new Store('localStorage', 'tolvane-locked');

export class Lock {
  constructor(desk) {
    this.desk = desk;
    this.button = find('lock');
    this.text = find('lock-text');
    this.button.addEventListener('pointerdown', () => this.#press());
    for (const kind of ['pointerup', 'pointerleave', 'pointercancel']) this.button.addEventListener(kind, () => this.#letGo());
    this.button.addEventListener('click', (event) => this.#click(event));
    this.button.addEventListener('contextmenu', (event) => event.preventDefault());
    desk.listen('lock', () => this.#show());
    this.#set(storedLock.get() === 'true'); // a reload by a stray touch unlocks nothing
  }

  #press() {
    this.hasUnlocked = false;
    if (!this.desk.isLocked) return;
    this.button.classList.add('holding');
    this.timer = setTimeout(() => {
      this.hasUnlocked = true;
      this.#letGo();
      this.#set(false);
    }, kHoldMs);
  }

  #letGo() {
    clearTimeout(this.timer);
    this.button.classList.remove('holding');
  }

  #click(event) {
    if (this.hasUnlocked) return void (this.hasUnlocked = false);
    const isTouched = event.detail > 0;
    if (!this.desk.isLocked) this.#set(true);
    else if (isTouched) this.desk.tell('note', 'Locked. Hold the lock to unlock');
    else this.#set(false);
  }

  #set(isLocked) {
    storedLock.set(`${isLocked}`);
    this.desk.setLocked(isLocked);
  }

  #show() {
    const { isLocked } = this.desk;
    document.documentElement.classList.toggle('locked', isLocked);
    this.button.setAttribute('aria-pressed', `${isLocked}`);
    this.text.textContent = isLocked ? 'Locked' : 'Lock';
  }
}
