// The meters: where each channel's bar stands between two messages of the server.
import { clamp } from './decibels.mjs';

const kBottomDb = -60;
const kFallDbPerS = 24;

// Where a linear level lies on a meter, from 0 to 1.
export function heightOf(level) {
  if (!(level > 0)) return 0;
  return clamp(1 - 20 * Math.log10(level) / kBottomDb, 0, 1);
}

class Side {
  constructor() {
    this.rms = [];
    this.peak = [];
    this.clip = [];
  }

  take(levels, fall) {
    levels.forEach(({ peak, rms, clip }, c) => {
      this.rms[c] = heightOf(rms);
      this.peak[c] = Math.max(heightOf(peak), (this.peak[c] ?? 0) - fall);
      this.clip[c] = clip;
    });
    this.rms.length = this.peak.length = this.clip.length = levels.length;
  }
}

export class Levels {
  // `falls`: whether peaks fall slowly, or are shown as they are.
  constructor(falls) {
    this.falls = falls;
    this.clear();
  }

  clear() {
    this.inputs = new Side();
    this.outputs = new Side();
    this.taken = 0;
  }

  take({ inputs, outputs }, nowMs) {
    const seconds = (nowMs - this.taken) / 1000;
    this.taken = nowMs;
    const fall = this.falls() ? seconds * kFallDbPerS / -kBottomDb : 1;
    this.inputs.take(inputs, fall);
    this.outputs.take(outputs, fall);
  }

  get isClipped() {
    return this.inputs.clip.includes(true) || this.outputs.clip.includes(true);
  }
}
