import {button, choice, h} from './dom.js';
import {line} from './panel.js';

const kPermissions = [['granted', 'Granted'], ['refused', 'Refused'], ['ask', 'Ask']];
const kServices = {
  microphone: 'Microphone',
  photos: 'Photos',
  screen: 'Screen recording'
};

/// What can be done to one of the phone's applications. Controls bear a "data-key", by which the one that has
/// the focus is found again when all is made anew.
export function application(link, told) {
  const {identifier, name, running, companion, permissions} = told;
  const act = (command, members = {}) => link.act(command, {identifier, ...members});
  const control = (text, what, onclick, more = {}) =>
    button(text, onclick, {'data-key': `${identifier} ${what}`, ...more});
  const reset = control('Reset', 'reset', () => act('reset'), {title: 'Ends it and removes its data'});
  const uninstall = control('Uninstall', 'uninstall', () => act('uninstall'), {kind: 'danger'});
  // The companion is opened by who hands something over, and asks for nothing.
  if (companion) return h('div', {class: 'box'}, line(name, identifier), bottom(reset, uninstall));

  const words = h('input', {
    class: 'field wide',
    'aria-label': `Arguments of ${name}`,
    placeholder: 'Arguments: debug=true microphone=false',
    'data-key': `${identifier} arguments`,
    value: Object.entries(told.arguments ?? {}).map(pair => pair.join('=')).join(' '),
    onkeydown: event => {
      if (event.key === 'Enter') launch();
    },
  });
  const launch = () => act('launch', {arguments: parseArguments(words.value)});
  return h(
    'div', {class: 'box'},
    line(
      name, running ? `${identifier} · running` : identifier,
      control(running ? 'Launch anew' : 'Launch', 'launch', launch, {kind: 'primary'})),
    h('div', {class: 'line'}, words),
    Object.entries(permissions ?? {}).map(pair => permission(...pair, name, identifier, act)),
    bottom(control('Stop', 'stop', () => act('stop'), {disabled: !running}), reset, uninstall));
}

const bottom = (...buttons) => h('div', {class: 'line'}, h('div', {class: 'row'}, buttons));

function permission(service, value, name, identifier, act) {
  const title = kServices[service] ?? service;
  const group =
    choice(`${title} for ${name}`, kPermissions, chosen => act('permission', {service, value: chosen}));
  group.choose(value);
  for (const each of group.children) each.dataset.key = `${identifier} ${service} ${each.dataset.value}`;
  return line(title, null, group);
}

/// "debug=true microphone=false" as an object; a word without a value is true.
function parseArguments(text) {
  return Object.fromEntries(text.split(/\s+/).filter(Boolean).map(word => {
    const at = word.indexOf('=');
    return at < 0 ? [word, 'true'] : [word.slice(0, at), word.slice(at + 1)];
  }));
}
