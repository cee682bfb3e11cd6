import {button, empty, h, icon} from '../parts/dom.js';
import {Panel} from '../parts/panel.js';

const kMost = 4000;            // lines kept
const kNearEnd = 24;           // CSS pixels
const kCopiedShown = 1500;     // ms
const kLibrary = '<TLV Log>';  // what the library's own lines begin with
const kSpoken = {
  err: 'standard error: ',
  phone: 'the phone: '
};

/// What the application prints, standard error marked, and what the phone remarks.
export class ConsolePanel extends Panel {
  #link;
  #list = h('ol', {class: 'lines', role: 'log', 'aria-label': 'Lines of the console'});
  #nothing = empty(
    'console', 'Nothing printed yet',
    'What the application prints appears here at once. In debug mode the library tells each step.');
  #none = h('p', {class: 'empty', hidden: true}, 'No line has this text.');
  #filter = h('input', {
    type: 'search',
    class: 'field',
    placeholder: 'Filter',
    'aria-label': 'Filter',
    oninput: () => this.#apply(),
  });
  #copy;
  #errors = 0;

  constructor(link) {
    super('console', 'Console', 'console');
    this.#link = link;
    this.#copy = button('', () => this.#copyLines(), {
      icon: 'copy',
      kind: 'bare round',
      'aria-label': 'Copy',
      title: 'Copy the lines that are shown',
    });
    this.header.append(this.#copy, button('', () => this.#clear(), {
                         icon: 'trash',
                         kind: 'bare round',
                         'aria-label': 'Clear',
                         title: 'Clear',
                       }));
    this.body.before(h('div', {class: 'filter'}, this.#filter));
    this.body.append(this.#nothing, this.#none, this.#list);
    link.on('console', message => this.#append(message));
  }

  shown(on) {
    this.#errors = 0;
    if (on) this.#toEnd();
  }

  #append({reset, lines}) {
    const {body} = this;
    const atEnd = body.scrollHeight - body.scrollTop - body.clientHeight < kNearEnd;
    if (reset) this.#list.replaceChildren();
    this.#list.append(...lines.map(line => this.#make(line)));
    while (this.#list.children.length > kMost) this.#list.firstChild.remove();
    this.#update();
    if (atEnd) this.#toEnd();
    if (reset) return;
    this.#errors += lines.filter(line => line.from === 'err').length;
    this.news(this.#errors);
  }

  #make({time, from, text}) {
    const kind = from === 'out' && text.startsWith(kLibrary) ? 'out library' : from;
    const line =
      h('li', {class: kind}, h('time', {}, time.toFixed(2)),
        from in kSpoken && h('b', {class: 'unseen'}, kSpoken[from]), h('span', {dir: 'auto'}, text));
    line.hidden = !this.#matches(line);
    return line;
  }

  #matches(line) {
    return line.lastChild.textContent.toLowerCase().includes(this.#filter.value.trim().toLowerCase());
  }

  #apply() {
    for (const line of this.#list.children) line.hidden = !this.#matches(line);
    this.#update();
    this.#toEnd();
  }

  #update() {
    const lines = [...this.#list.children];
    this.#nothing.hidden = lines.length > 0;
    this.#none.hidden = lines.length === 0 || lines.some(line => !line.hidden);
  }

  #clear() {
    this.#list.replaceChildren();
    this.#update();
  }

  #toEnd() { this.body.scrollTop = this.body.scrollHeight; }

  async #copyLines() {
    const lines =
      [...this.#list.children].filter(line => !line.hidden).map(line => line.lastChild.textContent + '\n');
    try {
      await navigator.clipboard.writeText(lines.join(''));
    } catch {
      this.#link.complain(new Error('The browser does not let this page copy.'));
      return;
    }
    this.#copy.replaceChildren('Copied');
    setTimeout(() => this.#copy.replaceChildren(icon('copy')), kCopiedShown);
  }
}
