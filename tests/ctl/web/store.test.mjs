// A browser may keep what the page asks it to keep, forget it, or refuse.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { Store } from '../../../ctl/web/store.mjs';

class Area {
  #texts = new Map();
  getItem(key) { return this.#texts.get(key) ?? null; }
  setItem(key, text) { this.#texts.set(key, text); }
  removeItem(key) { this.#texts.delete(key); }
}

test('What is kept is found again, under its own key, until it is forgotten', () => {
  globalThis.sessionStorage = new Area();
  const [token, other] = ['token', 'other'].map((key) => new Store('sessionStorage', key));
  assert.equal(token.get(), null);
  token.set('secret');
  assert.equal(token.get(), 'secret');
  assert.equal(other.get(), null);
  token.forget();
  assert.equal(token.get(), null);
});

test('A browser that refuses costs nothing but the memory', () => {
  for (const refusal of [{ get() { throw new Error('refused'); } }, { value: { setItem() { throw new Error('full'); } } }, { value: undefined }]) {
    Object.defineProperty(globalThis, 'localStorage', { configurable: true, ...refusal });
    const store = new Store('localStorage', 'locked');
    store.set('true');
    store.forget();
    assert.equal(store.get(), null);
  }
});
