import {h} from './dom.js';

const kApart = 40;     // points between three fingers side by side
const kWheelEnd = 90;  // ms without a turn of the wheel after which its finger is lifted
const kLine = 24, kWheelFinger = 9;
const kSwipe = 220;  // ms that a swipe made by a key takes

const hundredths = value => Math.round(value * 100) / 100;

/// Turns what a mouse, a pen, real fingers, a trackpad or keys do on the phone's screen into touches of the
/// phone, and shows where its fingers are. Of moves, the first in an animation frame is sent at once and the others
/// with the frame; all else is sent at once.
export class Fingers {
  #device;
  #link;
  #layer;
  #pointers = new Map();  // pointerId → the phone's fingers, [{id, dx}], the pointer's type and where it is
  #used = new Set();
  #moves = new Map();  // finger → [x, y] not sent yet
  #frame = 0;
  #marks = new Map();
  #wheel = null;
  #three = false;
  #alt = false;
  #pointer = null;  // where the mouse is, in the window

  /// Called when three fingers were switched on or off.
  onthree = () => {};
  /// When one of them answers true, the pointer's event is not for the phone.
  interceptors = [];

  constructor(device, link) {
    this.#device = device;
    this.#link = link;
    this.#layer = h('div', {class: 'layer', 'aria-hidden': 'true'});
    device.upright.append(this.#layer);
    const canvas = device.canvas;
    canvas.addEventListener('pointerdown', event => this.#down(event));
    canvas.addEventListener('pointermove', event => this.#move(event));
    // Where there is one, it comes without waiting for the next frame.
    canvas.addEventListener('pointerrawupdate', event => this.#move(event));
    canvas.addEventListener('pointerup', event => this.#up(event, 'ended'));
    canvas.addEventListener('pointercancel', event => this.#up(event, 'cancelled'));
    for (const name of ['touchend', 'touchcancel']) {
      canvas.addEventListener(name, event => {
        if (event.touches.length === 0) this.#liftTouches();
      });
    }
    canvas.addEventListener('pointerleave', () => {
      this.#pointer = null;
      this.#preview();
    });
    canvas.addEventListener('contextmenu', event => event.preventDefault());
    canvas.addEventListener('wheel', event => this.#turnWheel(event), {passive: false});
    for (const name of ['keydown', 'keyup']) {
      addEventListener(name, event => {
        if (event.key === 'Alt') this.#hold(name === 'keydown', event);
      });
    }
    addEventListener('blur', () => this.#hold(false));
    link.on('link', ({state}) => {
      if (state !== 'open') this.#forget();
    });
  }

  get three() { return this.#three; }
  set three(on) {
    this.#three = on;
    this.onthree(on);
    this.#preview();
  }

  /// A tap at a point of the phone, as quick as a person's.
  tap(x, y) {
    const fingers = this.#take(this.#three ? 3 : 1);
    this.#send(fingers, 'began', {x, y});
    setTimeout(() => {
      this.#send(fingers, 'ended', {x, y});
      this.#release(fingers);
    }, 60);
  }

  /// One finger's swipe over the middle of the screen, by so much of its size.
  swipe(dx, dy) {
    const {width, height} = this.#device.size;
    const fingers = this.#take(1), begin = performance.now();
    const at = part => ({x: width * (.5 + dx * (part - .5)), y: height * (.5 + dy * (part - .5))});
    this.#send(fingers, 'began', at(0));
    const go = now => {
      const part = Math.min(1, (now - begin) / kSwipe);
      this.#send(fingers, part < 1 ? 'moved' : 'ended', at(part));
      if (part < 1)
        requestAnimationFrame(go);
      else
        this.#release(fingers);
    };
    requestAnimationFrame(go);
  }

  #down(event) {
    if (event.button !== 0 || this.#isIntercepted(event)) return;
    event.preventDefault();
    this.#device.upright.focus({preventScroll: true});
    this.#liftWheel();
    const fingers = this.#take(this.#three || event.altKey ? 3 : 1);
    if (fingers.length === 0) return;
    this.#device.canvas.setPointerCapture(event.pointerId);
    const at = this.#point(event);
    this.#pointers.set(event.pointerId, {fingers, type: event.pointerType, at});
    this.#send(fingers, 'began', at);
  }

  #move(event) {
    if (event.pointerType === 'mouse') this.#pointer = {x: event.clientX, y: event.clientY};
    const pointer = this.#pointers.get(event.pointerId);
    if (!pointer) return this.#preview();
    const {x, y} = pointer.at = this.#point(event);
    for (const {id, dx} of pointer.fingers) {
      this.#moves.set(id, [this.#clampX(x + dx), y]);
      this.#mark(id, this.#clampX(x + dx), y);
    }
    this.#sendMoves();
  }

  #up(event, phase) {
    const pointer = this.#pointers.get(event.pointerId);
    if (!pointer) return;
    this.#pointers.delete(event.pointerId);
    this.#send(pointer.fingers, phase, this.#point(event));
    this.#release(pointer.fingers);
    this.#preview();
  }

  /// Of fingers that leave together, Firefox tells of one by its pointer; by its touches it tells of all.
  #liftTouches() {
    for (const [id, {fingers, type, at}] of this.#pointers) {
      if (type !== 'touch') continue;
      this.#pointers.delete(id);
      this.#send(fingers, 'ended', at);
      this.#release(fingers);
    }
  }

  // A trackpad's two fingers, or a wheel, are one finger that drags the screen's content along.
  #turnWheel(event) {
    event.preventDefault();
    if (event.ctrlKey || this.#pointers.size > 0 || this.#isIntercepted(event)) return;
    const scale = (event.deltaMode === 1 ? kLine : 1) / this.#device.unit;
    if (!this.#wheel) {
      const fingers = [{id: kWheelFinger, dx: 0}];
      this.#used.add(kWheelFinger);
      this.#wheel = {fingers, at: this.#point(event), timer: 0};
      this.#send(fingers, 'began', this.#wheel.at);
    }
    const wheel = this.#wheel;
    wheel.at = {x: wheel.at.x - event.deltaX * scale, y: wheel.at.y - event.deltaY * scale};
    this.#moves.set(kWheelFinger, [wheel.at.x, wheel.at.y]);
    this.#sendMoves();
    clearTimeout(wheel.timer);
    if (!this.#device.contains(wheel.at)) return this.#liftWheel();
    wheel.timer = setTimeout(() => this.#liftWheel(), kWheelEnd);
  }

  #liftWheel() {
    if (!this.#wheel) return;
    const {fingers, at, timer} = this.#wheel;
    clearTimeout(timer);
    this.#wheel = null;
    this.#flush();
    this.#send(fingers, 'ended', at);
    this.#release(fingers);
  }

  #isIntercepted(event) { return this.interceptors.some(intercepts => intercepts(event)); }

  #point(event) {
    const {x, y} = this.#device.pointAt(event.clientX, event.clientY);
    return {x: this.#clampX(x), y: this.#clampY(y)};
  }

  #clampX(x) { return Math.max(0, Math.min(this.#device.size.width - .5, x)); }
  #clampY(y) { return Math.max(0, Math.min(this.#device.size.height - .5, y)); }

  #take(count) {
    const fingers = [];
    for (let id = 0; id < kWheelFinger && fingers.length < count; ++id) {
      if (!this.#used.has(id)) fingers.push({id, dx: kApart * (fingers.length - (count - 1) / 2)});
    }
    if (fingers.length < count) return [];
    for (const {id} of fingers) this.#used.add(id);
    return fingers;
  }

  #release(fingers) {
    for (const {id} of fingers) {
      this.#used.delete(id);
      this.#marks.get(id)?.remove();
      this.#marks.delete(id);
    }
  }

  #send(fingers, phase, {x, y}) {
    if (fingers.length === 0) return;
    this.#flush();
    const changes = fingers.map(({id, dx}) => [id, phase, this.#clampX(x + dx), this.#clampY(y)]);
    for (const [id, , fx, fy] of changes) this.#mark(id, fx, fy);
    this.#tell(changes);
  }

  #tell(changes) {
    this.#link.touch(changes.map(([id, phase, x, y]) => [id, phase, hundredths(x), hundredths(y)]));
  }

  #sendMoves() {
    if (this.#frame) return;
    this.#flush();
    this.#frame = requestAnimationFrame(() => this.#flush());
  }

  #flush() {
    cancelAnimationFrame(this.#frame);
    this.#frame = 0;
    if (this.#moves.size === 0) return;
    const changes = [...this.#moves].map(([id, [x, y]]) => [id, 'moved', this.#clampX(x), this.#clampY(y)]);
    this.#moves.clear();
    this.#tell(changes);
  }

  /// The connection is lost, and the phone has cancelled every finger by itself.
  #forget() {
    this.#pointers.clear();
    this.#moves.clear();
    clearTimeout(this.#wheel?.timer);
    this.#wheel = null;
    this.#release([...this.#used].map(id => ({id})));
  }

  #hold(on, event) {
    if (on && this.#pointer) event.preventDefault();  // some browsers open their menu
    this.#alt = on;
    this.#preview();
  }

  /// Before they touch, three fingers are shown where they would.
  #preview() {
    const showing = (this.#three || this.#alt) && this.#pointer && this.#pointers.size === 0;
    const at = showing && this.#device.pointAt(this.#pointer.x, this.#pointer.y);
    for (const place of [-1, 0, 1]) {
      const key = `preview${place}`;
      if (showing) {
        this.#mark(key, this.#clampX(at.x + place * kApart), at.y, false);
      } else {
        this.#marks.get(key)?.remove();
        this.#marks.delete(key);
      }
    }
  }

  #mark(key, x, y, down = true) {
    let mark = this.#marks.get(key);
    if (!mark) {
      mark = h('div', {class: down ? 'finger down' : 'finger'});
      this.#marks.set(key, mark);
      this.#layer.append(mark);
    }
    mark.style.left = `${x * this.#device.unit}px`;
    mark.style.top = `${y * this.#device.unit}px`;
  }
}
