import { find } from './dom.mjs';
import { Desk } from './desk.mjs';
import { AddDialog, SceneDialog, TokenDialog, prepareHelp } from './dialogs.mjs';
import { Levels } from './levels.mjs';
import { List } from './list.mjs';
import { Lock } from './lock.mjs';
import { Matrix } from './matrix.mjs';
import { Scenes } from './scenes.mjs';
import { StatusBar } from './status.mjs';
import { Strip } from './strip.mjs';

const kRareMeterMs = 200; // between two pictures of the meters, if motion is to be reduced

const isSmall = matchMedia('(max-width: 699px)');
const isReduced = matchMedia('(prefers-reduced-motion: reduce)');

const address = new URL('/ws', location.href);
address.protocol = location.protocol === 'https:' ? 'wss:' : 'ws:';

const desk = new Desk(() => new WebSocket(address));
const levels = new Levels(() => !isReduced.matches);
takeMeters();
const matrix = new Matrix(desk, levels);
new Strip(desk, { isUpright: () => !isSmall.matches });
const list = new List(desk, levels, (input, output) => {
  desk.select(input, output);
  document.documentElement.classList.add('details');
  find('strip-db').focus();
});
new StatusBar(desk);
const sceneDialog = new SceneDialog(desk);
new Scenes(desk, (name) => sceneDialog.ask(name));
new AddDialog(desk, (input, output) => desk.select(input, output));
new TokenDialog(desk);
new Lock(desk);
prepareHelp();
prepareViews();
prepareKeys();
showFacts();
desk.link.connect();
keepConnected();
keepAwake();

// Before the matrix listens: it draws what is taken here.
function takeMeters() {
  desk.listen('meters', (event) => {
    const now = performance.now();
    if (isReduced.matches && now - levels.taken < kRareMeterMs) return;
    levels.take(event, now);
    find('clips').hidden = !levels.isClipped;
  });
  desk.listen('link', (state) => {
    if (state !== 'live') levels.clear();
  });
}

function show(view) {
  document.documentElement.dataset.view = view;
  for (const name of ['matrix', 'list']) find(`view-${name}`).setAttribute('aria-pressed', `${view === name}`);
  list.setShown(view === 'list');
  if (view === 'matrix') matrix.layOut();
}

function prepareViews() {
  for (const name of ['matrix', 'list']) find(`view-${name}`).addEventListener('click', () => show(name));
  isSmall.addEventListener('change', () => show(isSmall.matches ? 'list' : 'matrix'));
  show(isSmall.matches ? 'list' : 'matrix');
  const zoom = (size) => {
    for (const name of ['overview', 'normal', 'large']) find(`zoom-${name}`).setAttribute('aria-pressed', `${size === name}`);
    matrix.setZoom(size);
  };
  for (const name of ['overview', 'normal', 'large']) find(`zoom-${name}`).addEventListener('click', () => zoom(name));
  desk.listen('zoom', zoom);
  find('strip-close').addEventListener('click', () => document.documentElement.classList.remove('details'));
  find('clips').addEventListener('click', () => desk.resetClips());
}

function prepareKeys() {
  addEventListener('keydown', (event) => {
    if (!(event.ctrlKey || event.metaKey) || event.target.matches('input')) return;
    const key = event.key.toLowerCase();
    if (key === 'z') event.shiftKey ? desk.redo() : desk.undo();
    else if (key === 'y') desk.redo();
    else return;
    event.preventDefault();
  });
}

// What is known, for whoever inspects the page.
function showFacts() {
  const facts = document.documentElement.dataset;
  desk.listen('routes status link', () => Object.assign(facts, { serial: desk.patch.serial, held: desk.held.size }));
}

// A tablet that wakes up, or finds its network again, does not wait.
function keepConnected() {
  const hurry = () => desk.link.hurry();
  addEventListener('online', hurry);
  addEventListener('pageshow', hurry);
  document.addEventListener('visibilitychange', () => { if (!document.hidden) hurry(); });
}

// Where the browser allows it, the screen stays on.
function keepAwake() {
  const ask = () => { if (!document.hidden) navigator.wakeLock?.request('screen').catch(() => {}); };
  document.addEventListener('visibilitychange', ask);
  ask();
}
