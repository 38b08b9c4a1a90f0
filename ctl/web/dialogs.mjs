// The small windows: the token, a new route, a scene's name, the keys.
import { find } from './dom.mjs';
import { fillChannels } from './list.mjs';
import { Store } from './store.mjs';
import { tokenOf } from './token.mjs';

const storedToken = new Store('sessionStorage', 'tolvane-token');
const kLongestSceneBytes = 100;

// The token of the address's fragment, which browsers send nowhere. It is taken out of the address at once.
function tokenOfAddress() {
  const token = tokenOf(location.hash);
  if (token !== null) history.replaceState(null, '', location.pathname);
  return token;
}

// Opens a dialog whose form calls `done` when it is sent.
function prepare(id, done) {
  const dialog = find(id);
  dialog.querySelector('form')?.addEventListener('submit', (event) => {
    event.preventDefault();
    dialog.close();
    done();
  });
  for (const button of dialog.querySelectorAll('.cancel')) button.addEventListener('click', () => dialog.close());
  return dialog;
}

export class TokenDialog {
  constructor(desk) {
    this.field = find('token');
    this.why = find('token-why');
    this.dialog = prepare('token-dialog', () => {
      storedToken.set(this.field.value);
      desk.link.sayToken(this.field.value);
    });
    this.dialog.addEventListener('cancel', (event) => event.preventDefault()); // nothing to see without it
    desk.listen('token', (why) => this.#ask(why));
    desk.listen('link', (state) => { if (state === 'live') this.why.textContent = ''; });
    desk.link.token = tokenOfAddress() ?? storedToken.get();
    if (desk.link.token !== null) storedToken.set(desk.link.token);
  }

  #ask(why) {
    if (why) {
      storedToken.forget();
      this.why.textContent = `Not accepted: ${why}`;
    }
    if (!this.dialog.open) this.dialog.showModal();
    this.field.select();
  }
}

export class AddDialog {
  constructor(desk, select) {
    Object.assign(this, { input: find('add-input'), output: find('add-output') });
    const at = () => [Number(this.input.value), Number(this.output.value)];
    this.dialog = prepare('add-dialog', () => {
      desk.addRoute(...at(), find('add-silent').checked ? 0 : 1);
      select(...at());
    });
    desk.listen('names', () => {
      fillChannels(this.input, desk.patch.inputs);
      fillChannels(this.output, desk.patch.outputs);
    });
    desk.listen('add', ({ input, output }) => {
      if (input) this.input.value = input;
      if (output) this.output.value = output;
      this.dialog.showModal();
    });
  }
}

export class SceneDialog {
  constructor(desk) {
    this.field = find('scene-name');
    this.dialog = prepare('scene-dialog', () => desk.saveScene(this.field.value.trim()));
    this.field.addEventListener('input', () => this.#check());
  }

  ask(name) {
    this.field.value = name;
    this.#check();
    this.dialog.showModal();
    this.field.select();
  }

  // A name that is too long keeps the dialog open.
  #check() {
    const bytes = new TextEncoder().encode(this.field.value.trim()).length;
    this.field.setCustomValidity(bytes > kLongestSceneBytes ? 'The name is too long' : '');
  }
}

export function prepareHelp() {
  const dialog = prepare('help-dialog', () => {});
  find('help').addEventListener('click', () => dialog.showModal());
}
