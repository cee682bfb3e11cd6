import {h, icon} from './dom.js';

const kOrientations = ['portrait', 'landscapeRight', 'upsideDown', 'landscapeLeft'];  // clockwise

/// What can be done to the phone, below it, and the same by keys while the phone has the focus.
export class Tools {
  #link;
  #device;
  #fingers;
  #byKey = new Map();

  constructor(link, device, fingers) {
    this.#link = link;
    this.#device = device;
    this.#fingers = fingers;
    const tool = (name, label, key, act, {word, ...attributes} = {}) => {
      const button =
        h('button', {
          type: 'button',
          class: 'tool',
          title: `${label} (${key.toUpperCase()})`,
          'aria-label': label,
          'aria-keyshortcuts': key.toUpperCase(),
          onclick: act,
          ...attributes,
        },
          icon(name), word && h('span', {class: 'label'}, word));
      this.#byKey.set(key, button);
      return button;
    };
    this.home = tool('home', 'Home', 'h', () => link.act('home'));
    this.back = tool('back', 'Back to the application', 'b', () => link.act('back'));
    this.shake = tool('shake', 'Shake', 's', () => this.#shake(), {word: 'Shake'});
    this.turn = tool('turn', 'Turn', 'r', event => this.#turn(event.shiftKey ? -1 : 1), {word: 'Turn'});
    this.three = tool(
      'fingers', 'Three fingers', 't', () => { fingers.three = !fingers.three; },
      {'aria-pressed': 'false', word: 'Three fingers'});
    this.three.title = 'Three fingers (T, or hold Alt)';
    this.pause = tool('pause', 'Pause', 'p', () => this.#pause(), {'aria-pressed': 'false'});
    this.step = tool('step', 'Next frame', '.', () => link.act('advance', {milliseconds: 17}));
    this.record = tool(
      'record', 'Record taps', 'f', () => this.onrecord(),
      {'aria-pressed': 'false', class: 'tool live', word: 'Record taps'});
    fingers.onthree = on => this.three.setAttribute('aria-pressed', String(on));
    this.element =
      h('div', {class: 'tools'},
        h('div', {class: 'bar', role: 'toolbar', 'aria-label': 'The phone'}, this.home, this.back, this.shake,
          this.turn, this.three, h('span', {class: 'divider'}), this.pause, this.step,
          h('span', {class: 'divider'}), this.record));
    link.on('phone', phone => this.#showPhone(phone));
    link.on('time', time => this.#showTime(time));
    link.on('flow', ({recording}) => this.record.setAttribute('aria-pressed', String(recording)));
    link.on('hello', ({realTime}) => { this.pause.disabled = this.step.disabled = realTime; });
  }

  /// Called when the recording of taps is to begin or to end.
  onrecord = () => {};

  /// Does what a key stands for while the phone has the focus; true if it stands for anything.
  press(event) {
    if (event.ctrlKey || event.metaKey || event.altKey) return false;
    const swipe = {
      ArrowUp: [0, .3],
      ArrowDown: [0, -.3],
      ArrowLeft: [.5, 0],
      ArrowRight: [-.5, 0],
      PageUp: [0, .7],
      PageDown: [0, -.7]
    }[event.key];
    if (swipe && event.target === this.#device.upright) {
      if (!event.repeat) this.#fingers.swipe(...swipe);
      return true;
    }
    const key = event.key.toLowerCase();
    const button = this.#byKey.get(key);
    if (!button || button.disabled || (event.repeat && key !== '.')) return false;
    if (key === 'r')
      this.#turn(event.shiftKey ? -1 : 1);
    else
      button.click();
    return true;
  }

  async #shake() {
    if (await this.#link.act('shake')) this.#device.shake();
  }

  #turn(by) {
    const phone = this.#link.last('phone');
    if (!phone) return;
    const at = kOrientations.indexOf(phone.orientation);
    this.#link.act('rotate', {orientation: kOrientations[(at + by + 4) % 4]});
  }

  #pause() { this.#link.act(this.#link.last('time')?.paused ? 'resume' : 'pause'); }

  #showPhone({running}) {
    this.back.disabled = !running || running.inFront;
    const label = running && !running.inFront ? `Back to ${running.name}` : 'Back to the application';
    this.back.title = `${label} (B)`;
    this.back.setAttribute('aria-label', label);
  }

  #showTime({paused}) {
    const label = paused ? 'Go on' : 'Pause';
    this.pause.title = `${label} (P)`;
    this.pause.setAttribute('aria-label', label);
    this.pause.setAttribute('aria-pressed', String(paused));
    this.pause.replaceChildren(icon(paused ? 'play' : 'pause'));
    this.step.disabled = !paused;
  }
}
