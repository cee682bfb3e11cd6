import {h} from './dom.js';

/// What is on the phone's screen, once more as elements of this page: invisible, in the same places, in the
/// focus order and for screen readers. Pressing one taps the middle of what it stands for. Pointers go
/// through to the phone.
export class Mirror {
  #layer;
  #device;
  #fingers;
  #shown = new Map();

  constructor(device, fingers, link) {
    this.#device = device;
    this.#fingers = fingers;
    this.#layer = h('div', {class: 'layer mirror', role: 'group', 'aria-label': 'On the phone’s screen'});
    device.upright.append(this.#layer);
    link.on('elements', ({elements}) => this.#show(elements));
  }

  // Elements that stay keep their nodes, and so the focus.
  #show(elements) {
    const shown = new Map(), seen = new Map();
    let before = null;
    for (const element of inReadingOrder(elements)) {
      const kind = `${element.focusable ? 'b' : 't'} ${element.role} ${element.text}`;
      const count = (seen.get(kind) ?? 0) + 1;
      seen.set(kind, count);
      const key = `${kind} ${count}`;
      const node = this.#shown.get(key) ?? this.#make(element);
      this.#update(node, element);
      const place = before ? before.nextSibling : this.#layer.firstChild;
      if (place !== node) this.#layer.insertBefore(node, place);
      shown.set(key, node);
      before = node;
    }
    let lost = false;
    for (const [key, node] of this.#shown) {
      if (shown.has(key)) continue;
      lost ||= node === document.activeElement;
      node.remove();
    }
    this.#shown = shown;
    if (lost) this.#device.upright.focus({preventScroll: true});
  }

  #make({text, role, focusable}) {
    if (focusable) {
      const node = h('button', {type: 'button', dir: 'auto', onclick: () => this.#press(node)}, text);
      if (role === 'switch') node.setAttribute('role', 'switch');
      return node;
    }
    return role === 'image' ? h('div', {role: 'img', 'aria-label': text}) : h('div', {dir: 'auto'}, text);
  }

  #update(node, element) {
    const [x, y, width, height] = element.frame;
    const {style} = node, size = this.#device.size;
    if (!size) return;
    node.frame = element.frame;
    style.left = `${x / size.width * 100}%`;
    style.top = `${y / size.height * 100}%`;
    style.width = `${width / size.width * 100}%`;
    style.height = `${height / size.height * 100}%`;
    if (element.focusable) node.setAttribute('aria-disabled', String(!element.enabled));
    if (element.role === 'switch') node.setAttribute('aria-checked', String(element.on ?? false));
  }

  #press(node) {
    const [x, y, width, height] = node.frame;
    this.#fingers.tap(x + width / 2, y + height / 2);
  }
}

/// From top to bottom and, within a line, from the left; what is in front of other things is
/// in no special place.
function inReadingOrder(elements) {
  return elements.filter(element => element.text).sort((a, b) => {
    const [, ay, , ah] = a.frame, [, by, , bh] = b.frame;
    const middleA = ay + ah / 2, middleB = by + bh / 2;
    return Math.abs(middleA - middleB) < 8 ? a.frame[0] - b.frame[0] : middleA - middleB;
  });
}
