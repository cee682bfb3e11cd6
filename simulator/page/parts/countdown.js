import {h, svg} from './dom.js';

const kRadius = 20, kRound = 2 * Math.PI * kRadius;

/// A ring that empties, with the seconds that are left and what comes then.
export class Countdown {
  #whole;
  #left = svg('circle', {cx: 24, cy: 24, r: kRadius, class: 'left', 'stroke-dasharray': kRound});
  #seconds = h('strong');

  /// `whole` is how many seconds the full ring stands for.
  constructor(whole, then) {
    this.#whole = whole;
    const track = svg('circle', {cx: 24, cy: 24, r: kRadius, class: 'track'});
    this.element =
      h('div', {class: 'box countdown', hidden: true},
        svg('svg', {viewBox: '0 0 48 48', 'aria-hidden': 'true'}, track, this.#left),
        h('div', {}, this.#seconds, h('span', {class: 'soft'}, then)));
  }

  /// Hidden when `seconds` is nothing.
  show(seconds) {
    this.element.hidden = seconds === null;
    if (seconds === null) return;
    const rest = Math.max(0, seconds);
    this.#left.setAttribute('stroke-dashoffset', kRound * (1 - Math.min(1, rest / this.#whole)));
    this.#seconds.textContent = `${rest.toFixed(1)} s`;
  }
}
