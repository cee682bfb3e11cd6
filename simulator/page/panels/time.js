import {button, choice, clockText, fill, h, icon} from '../parts/dom.js';
import {Panel, section} from '../parts/panel.js';

const kSteps = [[17, 'One frame'], [100, '0.1 s'], [1000, '1 s'], [10000, '10 s']];
const kSpeeds = [[1, 'As on the wall'], [0.5, '½'], [0.25, '¼']];
const kRealTime = 'As the machine’s own clock, which cannot be stopped';

/// The phone's clock: stopped, moved on by hand, slowed down.
export class TimePanel extends Panel {
  #now = h('p', {class: 'bigtime'}, '0:00.000');
  #state = h('p', {class: 'soft', role: 'status'});
  #pause;
  #steps;
  #speed;
  #paused = false;
  #realTime = false;

  constructor(link, clock) {
    super('time', 'Time', 'time');
    const act = () => link.act(this.#paused ? 'resume' : 'pause');
    this.#pause = button('Pause', act, {icon: 'pause', kind: 'primary'});
    this.#steps = kSteps.map(
      ([milliseconds, text]) => button(text, () => link.act('advance', {milliseconds}), {disabled: true}));
    this.#speed = choice('Speed', kSpeeds, factor => link.act('speed', {factor}));
    this.body.append(
      this.#now, this.#state, section(null, h('div', {class: 'row'}, this.#pause)),
      section(
        'Move on by', h('div', {class: 'row'}, this.#steps),
        h('p', {class: 'hint'}, 'While the phone is paused. What is due in between happens in its order.')),
      section('Speed', this.#speed));
    clock.onchange(time => this.#show(time));
    link.on('hello', ({realTime}) => this.#allow(realTime));
  }

  #show({now, paused, speed, resting, behind}) {
    this.#now.textContent = clockText(now);
    this.#state.textContent = this.#realTime ? kRealTime : state(paused, resting, behind);
    if (paused !== this.#paused) {
      fill(this.#pause, icon(paused ? 'play' : 'pause'), paused ? 'Go on' : 'Pause');
      this.#paused = paused;
    }
    for (const step of this.#steps) step.disabled = !paused || this.#realTime;
    this.#speed.choose(speed);
  }

  #allow(realTime) {
    this.#realTime = realTime;
    for (const each of [this.#pause, ...this.#speed.children]) each.disabled = realTime;
  }
}

function state(paused, resting, behind) {
  if (paused) return 'Paused';
  if (behind) return 'Behind: this machine is too slow for the pace';
  return resting ? 'Resting: nothing is due' : 'Moving';
}
