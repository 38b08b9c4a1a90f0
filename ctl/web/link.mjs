// The connection: says the token, asks for the truth, answers requests, and comes back by itself.

const kRetryDelaysMs = [250, 500, 1000, 2000];
const kSilenceMs = 4000; // the server says something every second
const kWrongToken = 'the token is wrong';

// States: 'connecting', 'token' (it wants one), 'live', 'lost'.
export class Link {
  // `open` makes a WebSocket. `handlers`: state(state), event(event), live(answers by command), tokenRefused(text).
  constructor({ open, handlers, after = (call, ms) => setTimeout(call, ms), cancel = (timer) => clearTimeout(timer) }) {
    Object.assign(this, { open, handlers, after, cancel });
    this.state = 'connecting';
    this.token = null;
    this.socket = null;
    this.failures = 0;
    this.lastId = 0;
    this.early = []; // events that came before the truth was known
    this.waiting = new Map(); // id -> {resolve, reject}
  }

  connect() {
    this.cancel(this.retryTimer);
    this.#drop();
    const socket = this.open();
    this.socket = socket;
    const ifCurrent = (call) => (event) => { if (socket === this.socket) call(event); };
    socket.onmessage = ifCurrent((event) => this.#receive(JSON.parse(event.data)));
    socket.onclose = ifCurrent(() => this.#lose());
    this.#expectNews();
  }

  // Connects now if it would only do so later.
  hurry() {
    if (this.state === 'lost') this.connect();
  }

  sayToken(token) {
    this.token = token;
    this.connect();
  }

  get isLive() {
    return this.state === 'live';
  }

  get pending() {
    return this.waiting.size;
  }

  // Resolves with the answer, rejects with an Error that says why not.
  request(body) {
    if (!this.isLive) return Promise.reject(new Error('There is no connection'));
    return this.#send([body])[0];
  }

  #send(bodies) {
    const requests = bodies.map((body) => ({ ...body, id: ++this.lastId }));
    this.socket.send(JSON.stringify(requests.length === 1 ? requests[0] : requests));
    return requests.map(({ id }) => new Promise((resolve, reject) => this.waiting.set(id, { resolve, reject })));
  }

  #receive(message) {
    this.#expectNews();
    if (message.answer !== undefined) this.#settle(message);
    else if (message.event === 'welcome') this.#greet(message.token);
    else if (this.isLive) this.handlers.event(message);
    else this.early.push(message);
  }

  #settle(answer) {
    const request = this.waiting.get(answer.id);
    this.waiting.delete(answer.id);
    if (answer.ok) request?.resolve(answer);
    else request?.reject(new Error(answer.error));
  }

  #greet(wantsToken) {
    if (!wantsToken) return this.#ask();
    if (this.token === null) return this.#wantToken();
    const { socket } = this;
    this.#send([{ command: 'hello', token: this.token }])[0].then(() => this.#ask(), (error) => {
      if (socket !== this.socket) return; // lost meanwhile
      if (error.message !== kWrongToken) return this.#lose(); // not read: too many were said
      this.token = null;
      this.handlers.tokenRefused(error.message);
      this.#wantToken();
    });
  }

  #wantToken() {
    this.#drop();
    this.#become('token');
  }

  #ask() {
    this.early = [];
    const { socket } = this;
    const asked = this.#send(['subscribe', 'dump', 'scenes', 'status'].map((command) => ({ command })));
    const scenes = asked[2].catch(() => ({ scenes: null }));
    Promise.all([asked[0], asked[1], scenes, asked[3]]).then(([, dump, list, status]) => {
      this.failures = 0;
      this.#become('live');
      this.handlers.live({ dump, scenes: list.scenes, status: status.status });
      this.early.splice(0).forEach(this.handlers.event);
    }, () => { if (socket === this.socket) this.#lose(); });
  }

  #expectNews() {
    this.cancel(this.silenceTimer);
    this.silenceTimer = this.after(() => this.#lose(), kSilenceMs);
  }

  #lose() {
    this.#drop();
    const delay = kRetryDelaysMs[Math.min(this.failures++, kRetryDelaysMs.length - 1)];
    this.retryTimer = this.after(() => this.connect(), delay);
    this.#become('lost');
  }

  // Ends the connection. What was asked gets no answer any more.
  #drop() {
    this.cancel(this.silenceTimer);
    const socket = this.socket;
    this.socket = null;
    socket?.close();
    const waiting = [...this.waiting.values()];
    this.waiting.clear();
    for (const { reject } of waiting) reject(new Error('The connection was lost'));
  }

  #become(state) {
    this.state = state;
    this.handlers.state(state);
  }
}
