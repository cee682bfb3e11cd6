import {Link, takeSecret} from './link.js';
import {ConsolePanel} from './panels/console.js';
import {FlowPanel} from './panels/flow.js';
import {HandoffPanel} from './panels/handoff.js';
import {InboxPanel} from './panels/inbox.js';
import {InspectorPanel} from './panels/inspector.js';
import {PhonePanel} from './panels/phone.js';
import {PhotosPanel} from './panels/photos.js';
import {TimePanel} from './panels/time.js';
import {banners} from './parts/banners.js';
import {PhoneClock} from './parts/clock.js';
import {Device} from './parts/device.js';
import {h} from './parts/dom.js';
import {Fingers} from './parts/fingers.js';
import {header} from './parts/header.js';
import {Mirror} from './parts/mirror.js';
import {Screen} from './parts/screen.js';
import {Tabs} from './parts/tabs.js';
import {Tools} from './parts/tools.js';

const link = new Link(takeSecret());
const clock = new PhoneClock(link);
const floor = h('div', {class: 'floor'});
const device = new Device(floor, () => link.act('home'));
device.upright.tabIndex = 0;
device.upright.setAttribute('role', 'group');
// Before all others that hear of the phone: they place things on its screen.
link.on('phone', phone => {
  device.show(phone);
  device.upright.setAttribute(
    'aria-label', `Screen of the ${phone.profile}. Arrow keys scroll; Tab goes through what can be tapped.`);
});
new Screen(device.canvas, link);
const fingers = new Fingers(device, link);
fingers.interceptors.push(
  () => Boolean(link.last('flow')?.playing));  // the phone takes nobody's fingers then
new Mirror(device, fingers, link);
const tools = new Tools(link, device, fingers);

const flows = new FlowPanel(link);
const inspector = new InspectorPanel(link, device, fingers);
const tabs = new Tabs([
  new ConsolePanel(link), new HandoffPanel(link, clock), new PhotosPanel(link), new InboxPanel(link),
  new PhonePanel(link), new TimePanel(link, clock), inspector, flows
]);
tools.onrecord = () => {
  tabs.choose(flows);
  flows.record();
};
const stage =
  h('main', {class: 'stage', 'aria-label': 'The phone'}, banners(link, device), floor, tools.element);
document.body.replaceChildren(h('div', {class: 'shell'}, header(link, clock), stage, tabs.place, tabs.rail));

// What the phone is told of this viewer, on every connection anew.
let size = null;
const tellSize = () => {
  const view = document.hidden ? {hidden: true} : size;
  if (view) link.command('view', view).catch(() => {});
};
document.addEventListener('visibilitychange', tellSize);
device.onresize = (width, height) => {
  if (size?.width === width && size?.height === height) return;
  size = {width, height};
  tellSize();
};
const tellTopics = () => {
  link.command('watch', {topics: inspector.isShown ? ['elements', 'tree'] : ['elements']}).catch(() => {});
};
inspector.onshown = tellTopics;
link.on('link', ({state}) => {
  if (state !== 'open') return;
  tellSize();
  tellTopics();
});

document.addEventListener('keydown', event => {
  const onPhone = event.target === document.body || stage.contains(event.target);
  if (onPhone && tools.press(event)) event.preventDefault();
});
link.connect();
