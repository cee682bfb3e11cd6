const kSVG = 'http://www.w3.org/2000/svg';

/// An element: `h('button', {class: 'button', onclick: act}, 'Act')`. Attributes that are functions are
/// listeners, `true` is an attribute without a value, `false`, null and undefined are left out. Children that
/// are text become text nodes, never markup.
export function h(tag, attributes = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) set(element, name, value);
  element.append(...given(children));
  return element;
}

function set(element, name, value) {
  if (typeof value === 'function')
    element.addEventListener(name.slice(2), value);
  else if (value === true)
    element.setAttribute(name, '');
  else if (value !== false && value !== null && value !== undefined)
    element.setAttribute(name, value);
}

/// An element of a drawing.
export function svg(tag, attributes, ...children) {
  const element = document.createElementNS(kSVG, tag);
  for (const [name, value] of Object.entries(attributes)) element.setAttribute(name, value);
  element.append(...children);
  return element;
}

/// Replaces what is in an element.
export function fill(element, ...children) {
  element.replaceChildren(...given(children));
  return element;
}

function given(children) {
  return children.flat(Infinity).filter(child => child !== null && child !== undefined && child !== false);
}

// Paths on a 24 by 24 grid, stroked.
const kPaths = {
  home: 'M4 11l8-7 8 7M6 9.5V20h12V9.5',
  back: 'M9 7l-5 5 5 5M4 12h11a5 5 0 0 1 0 10h-1',
  shake: 'M8 4h8v16H8zM4.5 8v8M1.5 10v4M19.5 8v8M22.5 10v4',
  turn: 'M3 9h11v12H3zM17 14l3-3 3 3M20 11.5A8 8 0 0 0 12 4',
  fingers: 'M5 12a1.8 1.8 0 1 0 .01 0M12 8a1.8 1.8 0 1 0 .01 0M19 12a1.8 1.8 0 1 0 .01 0M5 18h14',
  record: 'M12 4a8 8 0 1 0 .01 0M12 9a3 3 0 1 0 .01 0',
  stop: 'M7 7h10v10H7z',
  play: 'M8 5l11 7-11 7z',
  pause: 'M8 5v14M16 5v14',
  step: 'M6 5l9 7-9 7zM19 5v14',
  console: 'M3 4.5h18v15H3zM7 9l3 3-3 3M12.5 15H17',
  handoff: 'M9 4h6v3H9zM9 5.5H6V20h12V5.5h-3M9.5 13.5h6M13 11l2.5 2.5L13 16',
  photos: 'M3 5h18v14H3zM3 16l5-5 4 4 3-3 6 6M15.5 8.5a1 1 0 1 0 .01 0',
  inbox: 'M3 13l3-8h12l3 8v6H3zM3 13h5l1.5 3h5l1.5-3h5',
  phone: 'M7 2.5h10v19H7zM11 18.5h2',
  time: 'M12 3.5a8.5 8.5 0 1 0 .01 0M12 7.5V12l3 2',
  inspector: 'M4 9V4h5M15 4h5v5M20 15v5h-5M9 20H4v-5M9.5 9.5h5v5h-5z',
  flow: 'M9 6h11M9 12h11M9 18h11M4 5v2M4 11v2M4 17v2',
  copy: 'M8 8h12v12H8zM16 8V4H4v12h4',
  download: 'M12 4v11M7.5 11l4.5 4.5L16.5 11M4 20h16',
  close: 'M6 6l12 12M18 6L6 18',
  trash: 'M4 7h16M9 7V4h6v3M6 7l1 13h10l1-13',
  warning: 'M12 3.5L22 20.5H2zM12 10v5M12 18v.01',
  reload: 'M20 12a8 8 0 1 1-2.5-5.8M20 3v4.5h-4.5',
  open: 'M14 4h6v6M20 4l-9 9M18 14v6H4V6h6',
  image: 'M4 4h16v16H4zM4 16l5-5 4 4 2-2 5 5M14.5 8a1 1 0 1 0 .01 0',
  chevron: 'M9 6l6 6-6 6',
};

export function icon(name) {
  return svg(
    'svg', {class: 'icon', viewBox: '0 0 24 24', 'aria-hidden': 'true'}, svg('path', {d: kPaths[name]}));
}

export function button(label, onclick, {icon: name, kind = '', ...attributes} = {}) {
  return h(
    'button', {type: 'button', class: `button ${kind}`, onclick, ...attributes}, name && icon(name), label);
}

/// A group of buttons of which one is chosen; arrow keys move the choice.
export function choice(label, options, onchoose) {
  const buttons = options.map(
    ([value, text]) =>
      h('button', {
        type: 'button',
        role: 'radio',
        'data-value': value,
        onclick: () => {
          group.choose(value);
          onchoose(value);
        },
      },
        text));
  const group =
    h('div', {
      class: 'choice',
      role: 'radiogroup',
      'aria-label': label,
      onkeydown: event => {
        const step = {ArrowRight: 1, ArrowDown: 1, ArrowLeft: -1, ArrowUp: -1}[event.key];
        const at = buttons.indexOf(document.activeElement);
        if (!step || at < 0) return;
        event.preventDefault();
        const next = buttons[(at + step + buttons.length) % buttons.length];
        next.focus();
        next.click();
      }
    },
      buttons);
  group.choose = value => {
    for (const each of buttons) {
      const chosen = each.dataset.value === String(value);
      each.setAttribute('aria-checked', String(chosen));
      each.tabIndex = chosen ? 0 : -1;
    }
    if (!buttons.some(each => each.tabIndex === 0)) buttons[0].tabIndex = 0;
  };
  group.choose(options[0][0]);
  return group;
}

export function select(label, options, onchange) {
  const element = h('select', {class: 'field', 'aria-label': label, onchange: () => onchange(element.value)});
  element.offer = (all, chosen) => {
    fill(element, all.map(each => {
      const [value, text] = Array.isArray(each) ? each : [each, each];
      return h('option', {value, selected: value === chosen}, text);
    }));
  };
  element.offer(options);
  return element;
}

export function empty(name, title, text) {
  return h('div', {class: 'empty'}, icon(name), h('strong', {}, title), h('p', {}, text));
}

/// "0:07.250" for a number of seconds.
export function clockText(seconds, digits = 3) {
  const minutes = Math.floor(seconds / 60);
  return `${minutes}:${(seconds - minutes * 60).toFixed(digits).padStart(digits ? digits + 3 : 2, '0')}`;
}
