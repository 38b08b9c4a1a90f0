// What the browser keeps for the page. It may keep nothing; then the page starts without it.
export class Store {
  // `area`: 'localStorage' for this browser, 'sessionStorage' for this tab. To ask for it can fail, too.
  constructor(area, key) {
    Object.assign(this, { area, key });
  }

  // The text; null if there is none.
  get() {
    try {
      return globalThis[this.area].getItem(this.key);
    } catch {
      return null;
    }
  }

  set(text) {
    try {
      globalThis[this.area].setItem(this.key, text);
    } catch { /* nothing is kept */ }
  }

  forget() {
    try {
      globalThis[this.area].removeItem(this.key);
    } catch { /* there was nothing */ }
  }
}
