import {button, h, icon} from './dom.js';

const kStay = 6000;  // ms that a notice stays

/// What has to be said over the stage: notices that go by themselves, problems that stay until they are read,
/// and what covers the phone's screen while nothing can be done on it.
export function banners(link, device) {
  const element = h('div', {class: 'banners', role: 'status', 'aria-live': 'polite'});
  const shown = new Map();  // text → banner
  let cover = null;

  function say(level, text) {
    shown.get(text)?.remove();
    const banner =
      h('div', {class: `banner ${level === 'problem' ? 'bad' : ''}`}, level === 'problem' && icon('warning'),
        h('p', {dir: 'auto'}, text),
        h('button',
          {type: 'button', class: 'button bare round', 'aria-label': 'Dismiss', onclick: () => dismiss()},
          icon('close')));
    const dismiss = () => {
      banner.remove();
      shown.delete(text);
    };
    shown.set(text, banner);
    element.append(banner);
    while (element.children.length > 3) element.firstChild.remove();
    if (level !== 'problem') setTimeout(dismiss, kStay);
  }

  /// Why nothing can be done on the screen, the first reason that holds.
  function reason() {
    const {state, text} = link.last('link') ?? {};
    if (state === 'off' || state === 'refused') return [icon('warning'), h('p', {}, text)];
    if (state === 'lost' || state === 'connecting') return [spinner(), h('p', {}, text)];
    const restarting = link.last('restarting');
    if (restarting?.text) return [spinner(), h('p', {}, restarting.text)];
    const running = link.last('phone')?.running;
    if (running && !running.responding) {
      return [
        icon('warning'), h('p', {}, `${running.name} is not responding.`),
        button(`End ${running.name}`, () => link.act('end', {identifier: running.identifier}))
      ];
    }
    return null;
  }

  let coveredFor = null;
  function update() {
    const why = reason(), place = device.element.hidden ? device.floor : device.upright;
    const words = why?.map(each => each.textContent).join(' ') ?? null;
    if (words === coveredFor && (!cover || cover.parentNode === place)) return;
    coveredFor = words;
    cover?.remove();
    cover = why && h('div', {class: 'cover', role: 'alert'}, why);
    if (cover) place.append(cover);
  }

  link.on('notice', ({level, text}) => say(level, text.charAt(0).toUpperCase() + text.slice(1)));
  for (const type of ['link', 'phone', 'restarting']) link.on(type, update);
  return element;
}

const spinner = () => h('div', {class: 'spinner'});
