// The strip of the selected route: its fader, its digits, its buttons.
import { find } from './dom.mjs';
import { formatDb, parseDb, stepped } from './decibels.mjs';
import { Fader } from './fader.mjs';
import { channelText } from './patch.mjs';

export class Strip {
  constructor(desk, { isUpright }) {
    this.desk = desk;
    this.typing = null; // the field that has the focus: {field, at, text}
    this.parts = Object.fromEntries(['strip', 'strip-from', 'strip-to', 'strip-note', 'strip-fader', 'strip-db', 'strip-mute', 'strip-zero',
      'strip-down', 'strip-up', 'strip-remove', 'strip-add', 'strip-add-silent', 'strip-label', 'strip-route', 'strip-empty']
      .map((id) => [id.replace(/^strip-/, ''), find(id)]));
    this.fader = new Fader(this.parts.fader, desk, { target: () => desk.selection, isUpright, hasMarks: true });
    this.#listenToButtons();
    this.#listenToFields();
    desk.listen('routes names selection lock link', () => this.show());
    desk.listen('entry', () => { this.parts.db.focus(); this.parts.db.select(); });
  }

  get #at() {
    const { input, output } = this.desk.selection;
    return [input, output];
  }
  get #route() {
    return this.desk.route(...this.#at);
  }

  #listenToButtons() {
    const { desk, parts } = this;
    const on = (name, call) => parts[name].addEventListener('click', call);
    on('mute', () => desk.toggleMute(...this.#at));
    on('zero', () => desk.setDb(...this.#at, 0));
    on('down', () => desk.setDb(...this.#at, stepped(this.#route.db, -1)));
    on('up', () => desk.setDb(...this.#at, stepped(this.#route.db, 1)));
    on('remove', () => desk.removeRoute(...this.#at));
    on('add', () => desk.addRoute(...this.#at, 1));
    on('add-silent', () => desk.addRoute(...this.#at, 0));
  }

  #listenToFields() {
    const { db, label } = this.parts;
    this.#listenToField(db, (typed, at) => this.#takeDb(typed, at));
    this.#listenToField(label, (typed, at) => this.desk.setLabel(...at, typed.trim()));
    db.addEventListener('focus', () => db.select());
  }

  // What is typed is of the route that was selected when the field took the focus. A field that nobody typed in says nothing.
  #listenToField(field, take) {
    field.addEventListener('focus', () => { this.typing = { field, at: this.#at, text: field.value }; });
    field.addEventListener('blur', () => {
      if (!this.typing) return;
      const { at, text } = this.typing;
      this.typing = null;
      if (field.value !== text && this.desk.route(...at)) take(field.value, at);
      this.show(true);
    });
    field.addEventListener('keydown', (event) => {
      if (event.key === 'Escape') field.value = this.typing.text;
      if (event.key === 'Enter' || event.key === 'Escape') field.blur();
    });
  }

  #takeDb(typed, at) {
    const read = parseDb(typed);
    if (read.error) this.desk.tell('note', read.error);
    else this.desk.setDb(...at, read.db);
  }

  // Another route is shown next: what was typed for the last one is taken first.
  #endTypingElsewhere() {
    const { typing } = this;
    if (typing && String(typing.at) !== String(this.#at)) typing.field.blur();
  }

  // What somebody types stays, unless `isForced`.
  show(isForced = false) {
    this.#endTypingElsewhere();
    const { parts, desk } = this;
    const { patch } = desk;
    const [input, output] = this.#at;
    const route = this.#route;
    parts.from.textContent = `In ${channelText(patch.inputs, input)}`;
    parts.to.textContent = `Out ${channelText(patch.outputs, output)}`;
    parts.route.hidden = !route;
    parts.empty.hidden = Boolean(route);
    for (const button of parts.strip.querySelectorAll('button')) button.disabled = !desk.mayEdit;
    parts.db.readOnly = parts.label.readOnly = !desk.mayEdit;
    this.fader.show(route, 'Gain');
    if (!route) return;
    parts.note.textContent = [route.gain < 0 ? 'Polarity inverted' : '', route.count > 1 ? `${route.count} routes, changed together` : '']
      .filter(Boolean).join('. ');
    parts.mute.setAttribute('aria-pressed', `${!route.active}`);
    this.#put(parts.db, formatDb(route.db), isForced);
    this.#put(parts.label, route.label, isForced);
  }

  #put(field, text, isForced) {
    if (isForced || document.activeElement !== field) field.value = text;
  }
}
