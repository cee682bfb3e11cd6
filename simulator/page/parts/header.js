import {clockText, h} from './dom.js';

/// The line at the top: what phone this is, what is in front, the phone's time, the connection.
export function header(link, clock) {
  const about = h('span', {class: 'about', dir: 'auto'});
  const taps = h('span', {class: 'pill recording', hidden: true}, 'Recording taps');
  const time = h('span', {class: 'pill time', title: 'The phone’s time since it was started'}, '0:00.0');
  const connection = h('span', {class: 'pill waiting', role: 'status'}, 'Connecting');
  link.on('phone', phone => {
    const front = phone.running?.inFront ? phone.running.name : kFronts[phone.front] ?? phone.front;
    about.textContent = `${phone.profile} · ${phone.language} · ${front}`;
    document.title = `${front} – ${phone.profile}`;
  });
  link.on('flow', ({recording, playing}) => {
    taps.hidden = !recording && !playing;
    taps.textContent = playing ? `Playing ${playing.name}` : 'Recording taps';
  });
  clock.onchange(({now, paused, speed, behind}) => {
    const remark = paused ? ' paused' : behind ? ' behind' : speed === 1 ? '' : ` × ${speed}`;
    time.textContent = clockText(now, 1) + remark;
    time.className = `pill time ${paused || behind ? 'waiting' : 'good'}`;
  });
  link.on('link', ({state}) => {
    connection.textContent = kStates[state];
    connection.className = `pill ${{open: 'good', off: 'bad', refused: 'bad'}[state] ?? 'waiting'}`;
  });
  return h(
    'header', {class: 'header'}, h('h1', {}, 'Tellvane'), about, h('span', {class: 'spring'}), taps, time,
    connection);
}

const kFronts = {
  home: 'Home screen',
  settings: 'Settings'
};
const kStates = {
  connecting: 'Connecting',
  open: 'Connected',
  lost: 'Reconnecting',
  off: 'Switched off',
  refused: 'Not connected'
};
