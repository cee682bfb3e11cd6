import {button, empty, h, icon, select} from '../parts/dom.js';
import {entry, Panel, section} from '../parts/panel.js';
import {Source} from '../parts/source.js';

/// Flows: what is done by hand recorded as one, and one played on the phone with its running line marked.
export class FlowPanel extends Panel {
  #link;
  #state = {recording: false};
  #recorded = '';
  #played = '';  // the source of the flow that was played last

  #record = button('Record taps', () => this.record(), {icon: 'record', kind: 'primary'});
  #again = button('Play it again', () => this.#start({text: this.#recorded}), {icon: 'play', hidden: true});
  #save = h('a', {class: 'button', hidden: true}, icon('download'), 'Download');
  #expect = entry(
    null, 'A text that has to be seen', 'Expect it', text => this.#checkpoint(text), {kind: 'box section'});
  #flows = select('Flow', [], () => {});
  #play = button('Play', () => this.#start({name: this.#flows.value}), {icon: 'play'});
  #stop = button('Stop', () => this.#link.act('stopFlow'), {icon: 'stop', hidden: true});
  #outcome = h('div', {class: 'outcome', role: 'status', hidden: true});
  #nothing = empty(
    'flow', 'Record what you do',
    'Every tap becomes a line of a flow, which can be played again and always gives the same result.');
  #source = new Source();
  #box = h('div', {class: 'box section', hidden: true}, this.#source.element);

  constructor(link) {
    super('flow', 'Flows', 'flow');
    this.#link = link;
    this.body.append(
      section(
        'A flow that comes with the project',
        h('div', {class: 'row'}, h('span', {}, this.#flows), this.#play, this.#stop)),
      section('What you do', h('div', {class: 'row'}, this.#record, this.#again, this.#save), this.#expect),
      this.#outcome, this.#nothing, this.#box);
    link.on('flow', state => {
      if (state.recording && !this.#state.recording) this.#played = '';
      this.#state = state;
      this.#show();
    });
    link.on('link', ({state}) => {
      if (state === 'open') this.#list();
    });
  }

  /// Begins to record, or ends it.
  async record() {
    try {
      const {text, url, name} = await this.#link.command('recordFlow', {on: !this.#state.recording});
      if (text === undefined) return;
      this.#recorded = text;
      this.#save.href = url;
      this.#save.download = name;
      this.#show();
    } catch (problem) {
      this.#link.complain(problem);
    }
  }

  async #list() {
    const {flows} = await this.#link.command('flows').catch(() => ({flows: []}));
    this.#flows.offer(flows.map(({name, title}) => [name, title]));
  }

  async #checkpoint(text) {
    if (await this.#link.act('checkpoint', {text})) this.#expect.field.value = '';
  }

  async #start(members) {
    this.#play.disabled = this.#again.disabled = true;
    await this.#link.act('playFlow', members);
    this.#show();
  }

  #show() {
    const {recording, playing, last, text} = this.#state;
    if (playing) this.#played = playing.text;
    this.#showControls();
    const failed = !playing && !recording && Boolean(last?.problem);
    const source = recording ? text : this.#played || this.#recorded;
    this.#box.hidden = !source;
    this.#nothing.hidden = Boolean(source);
    if (source)
      this.#source.show(source, playing?.line ?? (failed ? last.line : 0), failed ? 'failed' : 'current');
    this.#outcome.hidden = recording || (!playing && !last);
    this.#outcome.classList.toggle('bad', failed);
    const words = failed ? last.problem : 'Everything happened as expected.';
    this.#outcome.textContent = playing ? playing.step : words;
  }

  #showControls() {
    const {recording} = this.#state, isPlaying = Boolean(this.#state.playing);
    this.#record.lastChild.textContent = recording ? 'Stop recording' : 'Record taps';
    this.#record.classList.toggle('danger', recording);
    this.#record.classList.toggle('primary', !recording);
    this.#record.disabled = isPlaying;
    this.#expect.hidden = !recording;
    this.#play.disabled = this.#again.disabled = recording || isPlaying;
    this.#play.hidden = isPlaying;
    this.#stop.hidden = !isPlaying;
    this.#save.hidden = this.#again.hidden = recording || !this.#recorded;
  }
}
