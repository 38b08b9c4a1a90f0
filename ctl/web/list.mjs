// The routes as a list, for small screens and for screen readers.
import { find } from './dom.mjs';
import { formatDb } from './decibels.mjs';
import { Fader } from './fader.mjs';
import { channelText } from './patch.mjs';

const kMostRows = 200;

class Row {
  constructor(desk, { input, output }, select) {
    Object.assign(this, { desk, input, output });
    this.element = find('row').content.firstElementChild.cloneNode(true);
    const part = (name) => this.element.querySelector(`.${name}`);
    this.parts = Object.fromEntries(['route-text', 'route-levels', 'route-db', 'route-mute', 'route-zero', 'route-fader'].map((name) => [name, part(name)]));
    this.fader = new Fader(this.parts['route-fader'], desk, { target: () => ({ input, output }) });
    this.parts['route-mute'].addEventListener('click', () => desk.toggleMute(input, output));
    this.parts['route-zero'].addEventListener('click', () => desk.setDb(input, output, 0));
    this.parts['route-db'].addEventListener('click', () => select(input, output));
  }

  // The levels of the two channels.
  showLevels({ inputs, outputs }) {
    [[inputs, this.input], [outputs, this.output]].forEach(([side, channel], place) => {
      const bar = this.parts['route-levels'].children[place];
      bar.style.transform = `scaleX(${side.rms[channel - 1] ?? 0})`;
      bar.classList.toggle('clip', side.clip[channel - 1] ?? false);
    });
  }

  show() {
    const { desk, input, output, parts } = this;
    const route = desk.route(input, output);
    const { selection, patch } = desk;
    const from = channelText(patch.inputs, input);
    const to = channelText(patch.outputs, output);
    parts['route-text'].textContent = `${from} \u2192 ${to}`;
    const level = formatDb(route.db);
    parts['route-db'].textContent = level;
    parts['route-db'].setAttribute('aria-label', `${level} dB. Details of input ${from} to output ${to}`);
    parts['route-mute'].setAttribute('aria-pressed', `${!route.active}`);
    parts['route-mute'].setAttribute('aria-label', `Mute input ${from} to output ${to}`);
    parts['route-zero'].setAttribute('aria-label', `0 dB for input ${from} to output ${to}`);
    for (const name of ['route-mute', 'route-zero']) parts[name].disabled = !desk.mayEdit;
    this.fader.show(route, `Gain of input ${from} to output ${to}`);
    this.element.classList.toggle('muted', !route.active);
    this.element.classList.toggle('selected', selection.input === input && selection.output === output);
  }
}

export class List {
  constructor(desk, levels, select) {
    Object.assign(this, { desk, select });
    Object.assign(this, { body: find('list-rows'), note: find('list-note'), input: find('list-input'), output: find('list-output') });
    this.rows = new Map();
    this.isShown = false;
    for (const filter of [this.input, this.output]) filter.addEventListener('change', () => this.show());
    find('list-add').addEventListener('click', () => desk.tell('add', { input: Number(this.input.value), output: Number(this.output.value) }));
    desk.listen('names', () => this.#showFilters());
    desk.listen('routes names selection lock link', () => this.show());
    desk.listen('meters', () => {
      if (this.isShown) for (const row of this.rows.values()) row.showLevels(levels);
    });
  }

  setShown(isShown) {
    this.isShown = isShown;
    this.show();
  }

  #showFilters() {
    fillChannels(this.input, this.desk.patch.inputs, 'All inputs');
    fillChannels(this.output, this.desk.patch.outputs, 'All outputs');
  }

  show() {
    if (!this.isShown) return;
    const routes = this.desk.patch.routes().filter((route) => this.#isWanted(route));
    const shown = routes.slice(0, kMostRows);
    const keys = shown.map(({ input, output }) => `${input} ${output}`);
    for (const [key, row] of this.rows) {
      if (keys.includes(key)) continue;
      row.element.remove();
      this.rows.delete(key);
    }
    shown.forEach((route, place) => this.#showRow(keys[place], route, place));
    this.note.textContent = this.#noteOn(routes.length);
  }

  #isWanted({ input, output }) {
    const meets = (filter, channel) => filter.value === '0' || filter.value === '' || Number(filter.value) === channel;
    return meets(this.input, input) && meets(this.output, output);
  }

  #showRow(key, route, place) {
    if (!this.rows.has(key)) this.rows.set(key, new Row(this.desk, route, this.select));
    const row = this.rows.get(key);
    if (this.body.children[place] !== row.element) this.body.insertBefore(row.element, this.body.children[place] ?? null);
    row.show();
  }

  #noteOn(count) {
    if (count === 0) return this.desk.patch.inputs.length ? 'No routes here' : '';
    return count > kMostRows ? `The first ${kMostRows} of ${count} routes. Choose an input or an output to see others` : '';
  }
}

// Fills a choice of channels, keeping what is chosen. `all`: the text of the choice of none.
export function fillChannels(choice, names, all) {
  const chosen = choice.value;
  const option = (value, text) => Object.assign(document.createElement('option'), { value, textContent: text });
  choice.replaceChildren(...all ? [option(0, all)] : [], ...names.map((_, c) => option(c + 1, channelText(names, c + 1))));
  if ([...choice.options].some(({ value }) => value === chosen)) choice.value = chosen;
}
