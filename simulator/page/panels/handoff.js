import {Countdown} from '../parts/countdown.js';
import {clockText, empty, fill, h} from '../parts/dom.js';
import {facts, sizeText} from '../parts/facts.js';
import {Panel, section} from '../parts/panel.js';

const kStay = 3;  // seconds that a hand-off stays

/// What lies on the pasteboard, decoded, how long it will, and what became of it. What was
/// emptied stays to be read.
export class HandoffPanel extends Panel {
  #nothing = empty(
    'handoff', 'The pasteboard is empty',
    'What the library hands over after “Capture Screen” or a recording appears here.');
  #countdown = new Countdown(
    kStay, 'Then the library empties the pasteboard and looks whether the companion has opened.');
  #remark = h('p', {class: 'hint', hidden: true}, 'The pasteboard is empty again. This was on it last:');
  #items = h('div');
  #log = h('ol', {class: 'events'});
  #history = section('What happened', this.#log);
  #emptiesAt = null;
  #changes = 0;

  constructor(link, clock) {
    super('handoff', 'Hand-off', 'handoff');
    this.body.append(this.#nothing, this.#countdown.element, this.#remark, this.#items, this.#history);
    clock.onchange(({now}) => this.#count(now));
    link.on('pasteboard', message => this.#show(message, clock.now));
  }

  #show({items, changes, emptiesAt, log}, now) {
    const here = items.length > 0;
    if (here && changes !== this.#changes) {
      fill(this.#items, items.map(item => item.types.map(showType)));
      this.news(1);
    }
    this.#changes = changes;
    this.#emptiesAt = here ? emptiesAt ?? null : null;
    const kept = this.#items.children.length > 0;
    this.#items.classList.toggle('gone', !here);
    this.#remark.hidden = here || !kept;
    this.#nothing.hidden = kept;
    this.#history.hidden = log.length === 0;
    fill(
      this.#log,
      log.map(event => h('li', {}, h('time', {}, clockText(event.time, 1)), sentence(event))).reverse());
    this.#count(now);
  }

  #count(now) { this.#countdown.show(this.#emptiesAt === null ? null : this.#emptiesAt - now); }
}

function showType({type, size, url, kind, rows, text}) {
  const head =
    h('div', {class: 'kind'}, h('span', {class: 'code'}, type), h('span', {class: 'soft'}, sizeText(size)),
      url && h('a', {href: url, download: type}, 'Download'));
  return h(
    'div', {class: 'box'}, head, kind === 'archive' && rows && facts(rows),
    kind === 'text' && h('pre', {dir: 'auto'}, text),
    kind === 'image' && h('img', {class: 'shot', src: url, alt: 'The screen as it was captured'}));
}

function sentence({what, by, text}) {
  const words = {filled: 'Filled', emptied: 'Emptied', replaced: 'Replaced'}[what] ?? what;
  return h('span', {}, `${words}${by ? ` by ${by}` : ''}${text ? `: ${text}` : ''}`);
}
