import {fill, h} from './dom.js';

/// A text with its lines numbered, of which one can be marked.
export class Source {
  #text = null;
  #marked = null;
  element = h('ol', {class: 'source', tabindex: '0', 'aria-label': 'The flow'});

  /// Marks line number `line`, the first being 1, with a class, and brings it into view; none if `line` is 0.
  show(text, line, kind) {
    if (this.#text !== text) {
      fill(this.element, text.replace(/\n$/, '').split('\n').map(each => h('li', {}, each)));
      this.element.scrollTop = this.element.scrollHeight;
      this.#text = text;
      this.#marked = null;
    }
    if (this.#marked) {
      this.#marked.className = '';
      this.#marked.removeAttribute('aria-current');
    }
    this.#marked = line > 0 ? this.element.children[line - 1] ?? null : null;
    if (!this.#marked) return;
    this.#marked.className = kind;
    this.#marked.setAttribute('aria-current', 'step');
    this.element.scrollTop = this.#marked.offsetTop - this.element.offsetTop - this.element.clientHeight / 2;
  }
}
