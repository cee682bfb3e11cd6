import {h} from './dom.js';

/// What a tab shows: a heading with what stands beside it, and below it the content. Kinds of
/// panel override `shown`.
export class Panel {
  #isShown = false;

  constructor(id, title, icon, actions = []) {
    this.id = id;
    this.title = title;
    this.icon = icon;
    this.count = h('span', {class: 'count', hidden: true});
    this.header = h('header', {}, h('h2', {}, title), actions);
    this.body = h('div', {class: 'content', tabindex: '0', role: 'region', 'aria-label': title});
    this.element = h('div', {class: `panel ${id}`}, this.header, this.body);
  }

  get isShown() { return this.#isShown; }
  set isShown(on) {
    this.#isShown = on;
    if (on) this.news(0);
    this.shown(on);
  }

  /// Called when the panel has come to be shown, or no longer is.
  shown() {}

  /// Tells on the tab how much has come that was not seen yet. Nothing while the panel is shown.
  news(number) {
    this.count.textContent = number > 99 ? '99+' : number;
    this.count.hidden = this.#isShown || number === 0;
  }
}

export function section(title, ...children) {
  return h('section', {class: 'section'}, title && h('h3', {dir: 'auto'}, title), children);
}

/// A line of a box: a name, a remark below it, and what belongs to it.
export function line(name, remark, ...controls) {
  const words =
    h('div', {class: 'name'}, name, typeof remark === 'string' ? h('span', {class: 'soft'}, remark) : remark);
  return h('div', {class: 'line'}, words, controls);
}

/// A line with a name, if it is given one, a field for a text and a button: `act` gets the
/// text, unless it is empty.
export function entry(name, label, does, act, {kind = '', ...attributes} = {}) {
  const field = h('input', {class: 'field', placeholder: label, 'aria-label': label, ...attributes});
  const submit = event => {
    event.preventDefault();
    if (field.value.trim()) act(field.value.trim());
  };
  const form =
    h('form', {class: `line ${kind}`, onsubmit: submit}, name && h('div', {class: 'name'}, name), field,
      h('button', {class: 'button'}, does));
  form.field = field;
  return form;
}
