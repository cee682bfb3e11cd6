import {h} from './dom.js';

// How far the body is turned for each way of holding it, in degrees.
const kAngles = {
  portrait: 0,
  upsideDown: 180,
  landscapeLeft: -90,
  landscapeRight: 90
};
const kMargin = 20;          // CSS pixels around the phone
const kRoundingReach = .05;  // a scale this near to a whole number of pixels per point becomes it

/// The body of the phone: a frame that is turned as the phone is held, and on its screen a
/// view that stays upright.
export class Device {
  #unit = 1;
  #shown = null;
  #angle = 0;
  #offCentre = 0;  // how far the screen's middle is below the body's, in points, when it stands upright

  constructor(floor, onhome) {
    this.floor = floor;
    this.canvas = h('canvas', {'aria-hidden': 'true', width: 2, height: 2});
    this.upright = h('div', {class: 'upright'}, this.canvas);
    this.screen = h('div', {class: 'screen'}, this.upright);
    this.home =
      h('button',
        {type: 'button', class: 'home', 'aria-label': 'Home button', title: 'Home (H)', onclick: onhome});
    this.element =
      h('div', {class: 'device', hidden: true},
        ['key mute', 'key louder', 'key quieter', 'key lock', 'speaker', 'camera'].map(
          part => h('div', {class: `part ${part}`})),
        this.screen, this.home);
    floor.append(this.element);
    new ResizeObserver(() => this.#fit()).observe(floor);
  }

  /// Called with the size of the screen in pixels of the viewer's display, when that has changed.
  onresize = () => {};

  /// CSS pixels in a point of the phone.
  get unit() { return this.#unit; }

  show(phone) {
    const before = this.#shown;
    this.#shown = phone;
    const style = this.element.style;
    const sideways = phone.orientation.startsWith('landscape');
    const [width, height] = sideways ? [phone.height, phone.width] : [phone.width, phone.height];
    style.setProperty('--width', width);
    style.setProperty('--height', height);
    this.element.classList.toggle('pad', phone.pad);
    // The shorter way round from where it is.
    const turn = kAngles[phone.orientation] - this.#angle;
    this.#angle += ((turn % 360) + 540) % 360 - 180;
    style.setProperty('--angle', `${this.#angle}deg`);
    this.upright.style.setProperty('--turned', `${- this.#angle}deg`);
    this.upright.style.setProperty('--upright-width', phone.width);
    this.upright.style.setProperty('--upright-height', phone.height);
    if (before && before.orientation !== phone.orientation) this.#mark(this.canvas, 'turning', 450);
    this.element.hidden = false;
    this.#fit();
  }

  /// The point of the phone's screen at a place in the window, where it will be when the
  /// body has come to rest.
  pointAt(clientX, clientY) {
    const box = this.floor.getBoundingClientRect(), {width, height} = this.#shown;
    const turned = this.#angle * Math.PI / 180, off = this.#offCentre * this.#unit;
    const x = box.left + box.width / 2 - off * Math.sin(turned),
          y = box.top + box.height / 2 + off * Math.cos(turned);
    return {x: (clientX - x) / this.#unit + width / 2, y: (clientY - y) / this.#unit + height / 2};
  }

  contains({x, y}) { return x >= 0 && y >= 0 && x < this.#shown.width && y < this.#shown.height; }

  get size() { return this.#shown && {width: this.#shown.width, height: this.#shown.height}; }

  shake() { this.#mark(this.element, 'shaking', 460); }

  #mark(element, name, duration) {
    element.classList.remove(name);
    void element.offsetWidth;  // begins the animation anew
    element.classList.add(name);
    setTimeout(() => element.classList.remove(name), duration);
  }

  #fit() {
    const phone = this.#shown;
    if (!phone) return;
    const measure = getComputedStyle(this.element);
    const [side, top, bottom] =
      ['--side', '--top', '--bottom'].map(name => Number(measure.getPropertyValue(name)));
    const [across, along] = [2 * side, top + bottom];
    this.#offCentre = (top - bottom) / 2;
    const sideways = phone.orientation.startsWith('landscape');
    const width = phone.width + (sideways ? along : across),
          height = phone.height + (sideways ? across : along);
    const margin = Math.min(kMargin, this.floor.clientWidth / 36);
    let unit = Math.min(
      (this.floor.clientWidth - 2 * margin) / width, (this.floor.clientHeight - 2 * margin) / height, 1.5);
    const pixels = unit * devicePixelRatio, whole = Math.round(pixels);
    if (whole > 0 && pixels >= whole && pixels - whole < kRoundingReach * whole)
      unit = whole / devicePixelRatio;
    unit = Math.max(unit, .1);
    this.#unit = unit;
    this.element.style.setProperty('--u', `${unit}px`);
    this.onresize(
      Math.round(phone.width * unit * devicePixelRatio), Math.round(phone.height * unit * devicePixelRatio));
  }
}
