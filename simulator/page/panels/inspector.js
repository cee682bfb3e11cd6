import {button, empty, fill, h} from '../parts/dom.js';
import {facts} from '../parts/facts.js';
import {Panel} from '../parts/panel.js';

const kNearTop = 30;  // points: a name above a view that begins higher would be cut off

/// The views on the phone's screen: the one under the pointer is marked on it; "Choose" makes the next click
/// choose one instead of touching the phone.
export class InspectorPanel extends Panel {
  #device;
  #views = [];     // as the tree has them, from back to front
  #chosen = null;  // its path in the tree
  #isPicking = false;
  #top = h('p', {class: 'soft'});
  #nothing = empty('inspector', 'No views', 'The tree of views appears once the phone shows something.');
  #list = h('ul', {
    class: 'views',
    role: 'tree',
    'aria-label': 'Views',
    tabindex: '0',
    onkeydown: event => this.#moveByKey(event),
  });
  #details = h('div', {class: 'details'});
  #mark = h('div', {class: 'pointed', hidden: true}, h('span'));
  #pick = button('Choose', () => this.#setPicking(!this.#isPicking), {
    icon: 'inspector',
    'aria-pressed': 'false',
    title: 'Choose a view on the phone instead of touching it',
  });

  /// Called when the panel has come to be shown, or no longer is: whether the tree is wanted.
  onshown = () => {};

  constructor(link, device, fingers) {
    super('inspector', 'Inspector', 'inspector');
    this.#device = device;
    this.header.append(this.#pick);
    this.body.before(h('div', {class: 'filter'}, this.#top));
    this.body.append(this.#nothing, this.#list, this.#details);
    device.upright.append(h('div', {class: 'layer', 'aria-hidden': 'true'}, this.#mark));
    device.canvas.addEventListener('pointermove', event => {
      if (this.isShown && event.pointerType !== 'touch') this.#point(this.#viewUnder(event));
    });
    device.canvas.addEventListener('pointerleave', () => this.#point(null));
    fingers.interceptors.push(event => this.#intercept(event));
    link.on('tree', message => this.#show(message));
  }

  shown(on) {
    if (!on) {
      this.#setPicking(false);
      this.#point(null);
    }
    this.onshown();
  }

  #show({top, tree}) {
    this.#top.textContent =
      top ? `Top view controller: ${top}` : 'No view controller of an application is in front.';
    this.#views = flatten(tree);
    for (const view of this.#views) view.row = this.#row(view);
    const place = this.#list.scrollTop;
    fill(this.#list, this.#views.map(({row}) => row));
    this.#list.scrollTop = place;
    this.#nothing.hidden = this.#views.length > 0;
    this.#choose(this.#views.find(({path}) => path === this.#chosen) ?? null);
  }

  #row(view) {
    const row =
      h('li', {
        role: 'treeitem',
        'aria-level': view.depth + 1,
        class: view.absent ? 'absent' : '',
        onclick: () => this.#choose(view),
        onpointerenter: () => this.#point(view),
        onpointerleave: () => this.#point(null),
      },
        view.class, h('span', {dir: 'auto'}, view.label));
    row.style.setProperty('--depth', view.depth);
    return row;
  }

  #point(view) {
    this.#mark.hidden = !view;
    if (!view) return;
    const [x, y, width, height] = view.frame, size = this.#device.size, {style} = this.#mark;
    style.left = `${x / size.width * 100}%`;
    style.top = `${y / size.height * 100}%`;
    style.width = `${width / size.width * 100}%`;
    style.height = `${height / size.height * 100}%`;
    this.#mark.firstChild.textContent = `${view.class} ${width} × ${height}`;
    this.#mark.classList.toggle('low', y < kNearTop);
  }

  #choose(view) {
    this.#chosen = view?.path ?? null;
    for (const each of this.#views) each.row.setAttribute('aria-selected', String(each === view));
    fill(this.#details, view && facts(describe(view)));
  }

  /// The view in front under the pointer, the deepest one.
  #viewUnder(event) {
    const {x, y} = this.#device.pointAt(event.clientX, event.clientY);
    return this.#views.findLast(
             ({absent, frame: [left, above, width, height]}) =>
               !absent && x >= left && y >= above && x < left + width && y < above + height) ??
      null;
  }

  #setPicking(on) {
    this.#isPicking = on;
    this.#pick.setAttribute('aria-pressed', String(on));
  }

  #intercept(event) {
    if (!this.#isPicking) return false;
    if (event.type === 'pointerdown') {
      const view = this.#viewUnder(event);
      this.#choose(view);
      this.#point(view);
      view?.row.scrollIntoView({block: 'nearest'});
      this.#setPicking(false);
    }
    return true;
  }

  #moveByKey(event) {
    const step = {ArrowDown: 1, ArrowUp: -1}[event.key];
    if (!step || this.#views.length === 0) return;
    event.preventDefault();
    const at = this.#views.findIndex(({path}) => path === this.#chosen);
    const next = this.#views[Math.max(0, Math.min(this.#views.length - 1, at + step))];
    this.#choose(next);
    this.#point(next);
    next.row.scrollIntoView({block: 'nearest'});
  }
}

/// The views of a tree in its order, each with its depth, its path and whether it, or one
/// around it, is hidden.
function flatten(nodes, depth = 0, path = '', hidden = false) {
  return nodes.flatMap((node, index) => {
    const view = {...node, depth, path: `${path}/${index}`, absent: hidden || node.hidden};
    return [view, ...flatten(node.children ?? [], depth + 1, view.path, view.absent)];
  });
}

function describe({class: name, frame: [x, y, width, height], label, role, enabled, hidden}) {
  return [
    ['Class', name], ['Frame', `${x}, ${y}; ${width} × ${height}`], ['Label', label || 'none'],
    ['Role', role], ['Enabled', enabled ? 'yes' : 'no'], ['Hidden', hidden ? 'yes' : 'no']
  ];
}
