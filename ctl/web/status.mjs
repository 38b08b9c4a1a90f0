// What must always be in sight: the connection, the device, what can be undone, what is saved; and notes.
import { find } from './dom.mjs';

const kNoteMs = 5000;
const kLinkTexts = { connecting: 'Connecting\u2026', token: 'Locked by a token', live: 'Connected', lost: 'No connection' };

const percent = (share) => `${(share * 100).toFixed(share < 0.0995 ? 1 : 0)} %`;
const kilohertz = (rate) => `${Number((rate / 1000).toFixed(1))} kHz`;

export function deviceFacts({ sampleRate, bufferFrames, load, peakLoad, overloads }) {
  const count = overloads.device + overloads.callback;
  return [
    `${count} ${count === 1 ? 'overload' : 'overloads'}`,
    `load ${percent(load)}, peak ${percent(peakLoad)}`,
    sampleRate ? kilohertz(sampleRate) : '',
    bufferFrames ? `${bufferFrames} frames` : '',
  ].filter(Boolean);
}

export class StatusBar {
  constructor(desk) {
    this.desk = desk;
    this.parts = Object.fromEntries(['link', 'device', 'device-name', 'device-facts', 'undo', 'redo', 'save', 'heard', 'note', 'stale']
      .map((id) => [id, find(id)]));
    for (const command of ['undo', 'redo', 'save']) this.parts[command].addEventListener('click', () => desk[command]());
    desk.listen('link status lock', () => this.show());
    desk.listen('note', (text) => this.#note(text));
  }

  show() {
    const { desk: { link, patch }, parts } = this;
    document.documentElement.dataset.link = link.state;
    if (parts.link.textContent !== kLinkTexts[link.state]) parts.link.textContent = kLinkTexts[link.state];
    parts.stale.hidden = link.isLive || !patch.status;
    if (patch.status) this.#showStatus(patch.status, link.isLive);
    this.#showButtons(patch.status);
  }

  #showStatus({ device, heard, routes }, isLive) {
    const { parts } = this;
    const isAlive = isLive && device.alive;
    parts.device.dataset.state = !isLive ? 'unknown' : device.alive ? 'alive' : 'gone';
    parts['device-name'].textContent = device.name + (isAlive ? '' : isLive ? ' \u2014 gone' : ' \u2014 not known');
    parts['device-facts'].replaceChildren(...deviceFacts(device).map((fact) => Object.assign(document.createElement('span'), { textContent: fact })));
    parts.heard.textContent = `${device.inputs} in, ${device.outputs} out. ${heard} of ${routes} ${routes === 1 ? 'route' : 'routes'} heard`;
  }

  #showButtons(status) {
    const { parts, desk } = this;
    parts.undo.disabled = !desk.mayEdit || !status?.undo;
    parts.redo.disabled = !desk.mayEdit || !status?.redo;
    parts.save.disabled = !desk.mayEdit || status?.saved !== false;
    parts.save.title = status?.saved === false ? 'Save the routes to the patch file' : 'The patch file has these routes';
  }

  #note(text) {
    const { note } = this.parts;
    note.textContent = text;
    note.hidden = false;
    clearTimeout(this.noteTimer);
    this.noteTimer = setTimeout(() => { note.hidden = true; note.textContent = ''; }, kNoteMs);
  }
}
