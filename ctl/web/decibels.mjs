// Levels in decibels: how they are shown, read and stepped, and where they lie on a fader. null is silence.

// The page makes nothing louder than this.
export const kLoudestDb = 12;
const kQuietestDb = -60; // one step below is silence

// The fader's law: straight lines between these points of position and level.
const kLaw = [[0, -90], [0.06, -60], [0.2, -40], [0.4, -20], [0.56, -10], [0.78, 0], [1, kLoudestDb]];

const kDetentDb = 0.35; // a dragged fader rests at 0 dB within this

function between(value, [fromLow, toLow], [fromHigh, toHigh]) {
  return toLow + (value - fromLow) * (toHigh - toLow) / (fromHigh - fromLow);
}

export function clamp(value, low, high) {
  return Math.min(Math.max(value, low), high);
}

export function roundTo(value, step) {
  return Number((Math.round(value / step) * step).toFixed(4)) + 0; // + 0: never minus zero
}

// Where a level lies on the fader, from 0 to 1.
export function positionOf(db) {
  if (db === null || db <= kLaw[0][1]) return 0;
  const upper = kLaw.findIndex(([, level]) => db <= level);
  if (upper < 0) return 1;
  return between(db, [...kLaw[upper - 1]].reverse(), [...kLaw[upper]].reverse());
}

// The level at a position of the fader, rounded to what a hand can mean there.
export function dbAt(position, { detent = true } = {}) {
  const at = clamp(position, 0, 1);
  const upper = Math.max(1, kLaw.findIndex(([place]) => at <= place));
  const db = between(at, kLaw[upper - 1], kLaw[upper]);
  if (detent && Math.abs(db) < kDetentDb) return 0;
  if (db >= -20) return roundTo(db, 0.1);
  if (db >= -40) return roundTo(db, 0.5);
  return db < kQuietestDb ? null : roundTo(db, 1);
}

// The level so many decibels away. A level that is too loud already never gets louder.
export function stepped(db, by) {
  if (db === null) return by > 0 ? kQuietestDb : null;
  const next = roundTo(db + by, 0.1);
  if (next < kQuietestDb) return by > 0 ? kQuietestDb : null;
  return by > 0 ? Math.min(next, Math.max(kLoudestDb, db)) : next;
}

function signed(text) {
  return text.startsWith('-') ? '\u2212' + text.slice(1) : text;
}

// "+3.0", "0.0", "−6.5", "−∞"
export function formatDb(db) {
  if (db === null) return '\u2212\u221e';
  const text = roundTo(db, 0.1).toFixed(1);
  return (text > 0 ? '+' : '') + signed(text);
}

// As short as it can be, for a cell: "+3", "0", "−6.5"
export function shortDb(db) {
  return formatDb(db).replace(/\.0$/, '');
}

// What a screen reader says.
export function spokenDb(db) {
  return db === null ? 'silent' : formatDb(db) + ' dB';
}

// Reads what somebody typed. Gives {db} or {error}.
export function parseDb(text) {
  const plain = text.trim().toLowerCase().replace(/\s*db$/, '').replace(/[\u2212\u2013]/g, '-').replace(',', '.');
  if (/^(-\s*(\u221e|inf|infinity|oo)|off|silent)$/.test(plain)) return { db: null };
  if (!/^[+-]?(\d+\.?\d*|\.\d+)$/.test(plain)) return { error: 'Type a level in dB, such as \u22126 or 0, or \u201coff\u201d' };
  const db = Number(plain) + 0;
  if (db > kLoudestDb) return { error: `At most +${kLoudestDb} dB here` };
  return { db: db < -140 ? null : db };
}
