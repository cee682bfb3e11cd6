const kProtocol = 'tellvane.1';
const kPauses = [500, 1000, 2000, 4000];  // ms until the next attempt to connect

// What the socket says when it closes for good.
const kSwitchedOff = 1001, kBrokeARule = 1008, kTooManyViewers = 1013;

/// The connection to the phone. It comes back by itself when it is lost; everything the phone then tells
/// replaces what was known. `link.on(type, listener)` hears the messages of that type, and at once the last
/// one there was; the type "link" is the state of the connection itself: `{state, text}` with the states
/// connecting, open, lost, off, refused.
export class Link {
  #secret;
  #socket = null;
  #attempts = 0;
  #listeners = new Map();
  #last = new Map();
  #waiting = new Map();  // commands without an answer, by id
  #nextCommand = 1;
  #lastTouch = 0;

  /// Called with every picture's bytes.
  onpicture = () => {};

  constructor(secret) { this.#secret = secret; }

  on(type, listener) {
    if (!this.#listeners.has(type)) this.#listeners.set(type, new Set());
    this.#listeners.get(type).add(listener);
    if (this.#last.has(type)) listener(this.#last.get(type));
  }

  /// The last message of a type, or nothing.
  last(type) { return this.#last.get(type); }

  connect() {
    if (!this.#secret) {
      this.#tell(
        'refused',
        'This page was opened without its key. Open the address that the phone printed when it started.');
      return;
    }
    this.#tell('connecting', 'Connecting');
    const socket = new WebSocket(`ws://${location.host}/socket`, [kProtocol, `secret.${this.#secret}`]);
    let opened = false;
    socket.binaryType = 'arraybuffer';
    socket.onopen = () => {
      opened = true;
      this.#attempts = 0;
      this.#lastTouch = 0;
      this.#tell('open', 'Connected');
    };
    socket.onmessage = ({data}) => {
      if (typeof data === 'string')
        this.#hear(JSON.parse(data));
      else
        this.onpicture(data);
    };
    socket.onclose = event => this.#closed(event, opened);
    this.#socket = socket;
  }

  /// Sends a command; the promise has the answer, or fails with the problem.
  command(name, members = {}) {
    if (!this.#isOpen()) return Promise.reject(new Error('The phone is not connected.'));
    const id = this.#nextCommand++;
    this.#socket.send(JSON.stringify({id, command: name, ...members}));
    return new Promise((resolve, reject) => this.#waiting.set(id, {resolve, reject}));
  }

  /// Sends a command whose problem is shown to the person. True if it was done.
  async act(name, members = {}) {
    try {
      await this.command(name, members);
      return true;
    } catch (problem) {
      this.complain(problem);
      return false;
    }
  }

  /// Says what the phone is restarted for while it is; an empty text when it is over.
  restarting(text) { this.#hear({type: 'restarting', text}); }

  complain(problem) { this.#hear({type: 'notice', level: 'problem', text: problem.message}); }

  /// Changes of fingers, `[finger, phase, x, y]` each; the result numbers them, 0 when nobody takes them.
  touch(fingers) {
    if (!this.#isOpen()) return 0;
    this.#socket.send(JSON.stringify({touch: ++this.#lastTouch, fingers}));
    return this.#lastTouch;
  }

  shown(sequence) {
    if (this.#isOpen()) this.#socket.send(JSON.stringify({shown: sequence}));
  }

  #isOpen() { return this.#socket?.readyState === WebSocket.OPEN; }

  #hear(message) {
    if ('answer' in message) {
      const waiting = this.#waiting.get(message.answer);
      this.#waiting.delete(message.answer);
      if (message.problem !== undefined)
        waiting?.reject(new Error(message.problem));
      else
        waiting?.resolve(message);
      return;
    }
    // Notices and lines are events; what happened before somebody listened is theirs to keep.
    if (!['notice', 'console', 'touched'].includes(message.type)) this.#last.set(message.type, message);
    for (const listener of this.#listeners.get(message.type) ?? []) listener(message);
  }

  #tell(state, text) { this.#hear({type: 'link', state, text}); }

  async #closed(event, opened) {
    for (const {reject} of this.#waiting.values())
      reject(new Error('The connection was lost before the phone answered.'));
    this.#waiting.clear();
    if (event.code === kSwitchedOff) return this.#tell('off', 'The phone has been switched off.');
    if (event.code === kBrokeARule)
      return this.#tell('refused', `The phone ended the connection: ${event.reason || 'no reason given'}`);
    if (event.code === kTooManyViewers)
      return this.#tell('refused', 'Too many pages show this phone. Close one and reload this one.');
    if (!opened && await this.#isRefused()) {
      return this.#tell('refused', 'The phone was started anew. Open the address that it printed.');
    }
    this.#tell('lost', 'The connection was lost. Trying again.');
    setTimeout(() => this.connect(), kPauses[Math.min(this.#attempts++, kPauses.length - 1)]);
  }

  /// A socket does not say why it was refused; the page's own address does.
  async #isRefused() {
    try {
      return (await fetch('/', {method: 'HEAD', cache: 'no-store'})).status === 403;
    } catch {
      return false;  // nobody is there: not refused
    }
  }
}

/// The secret of this phone, from the address or, after a reload, from the session. The address is cleaned.
export function takeSecret() {
  const given = location.hash.slice(1);
  if (/^[0-9a-f]{64}$/.test(given)) {
    sessionStorage.setItem('secret', given);
    history.replaceState(null, '', '/');
  }
  return sessionStorage.getItem('secret');
}
