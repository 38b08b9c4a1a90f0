// What the page knows of the running patch: always the server's own word, never a guess.

function summaryOf(routes) {
  const main = routes.find((route) => route.active) ?? routes[0];
  return { ...main, count: routes.length };
}

export class Patch {
  constructor() {
    this.clear();
  }

  clear() {
    this.serial = 0;
    this.rows = new Map(); // input -> output -> summary of the routes of this pair
    this.inputs = [];      // names; '' is none
    this.outputs = [];
    this.scenes = null; // null: the server has none
    this.status = null; // null: not known yet
  }

  route(input, output) {
    return this.rows.get(input)?.get(output) ?? null;
  }

  // All routes, by input, then by output.
  routes() {
    const all = [...this.rows.values()].flatMap((row) => [...row.values()]);
    return all.sort((a, b) => a.input - b.input || a.output - b.output);
  }

  takeDump(dump) {
    this.serial = dump.serial;
    this.rows = new Map();
    this.inputs = dump.inputs;
    this.outputs = dump.outputs;
    this.#put(dump.routes);
  }

  // False if changes before this one are missing: only a new dump helps.
  takeChange(change) {
    if (change.serial <= this.serial) return true;
    if (change.serial !== this.serial + 1) return false;
    this.serial = change.serial;
    for (const { input, output } of change.removed) this.rows.get(input)?.delete(output);
    this.#put(change.routes);
    return true;
  }

  #put(routes) {
    const pairs = new Map();
    for (const route of routes) {
      const key = `${route.input} ${route.output}`;
      pairs.set(key, [...pairs.get(key) ?? [], route]);
    }
    for (const pair of pairs.values()) {
      const { input, output } = pair[0];
      if (!this.rows.has(input)) this.rows.set(input, new Map());
      this.rows.get(input).set(output, summaryOf(pair));
    }
  }
}

// "3 Vox", or "3" for a channel without a name.
export function channelText(names, channel) {
  const name = names[channel - 1];
  return name ? `${channel} ${name}` : `${channel}`;
}
