import {application} from '../parts/application.js';
import {button, choice, fill, h, select} from '../parts/dom.js';
import {entry, line, Panel, section} from '../parts/panel.js';

const kFile = 'file', kFilePrefix = 'file:';
const kSounds = [
  ['silence', 'Silence'], ['tone:440', 'A tone of 440 Hz'], ['machine', 'This machine’s microphone'],
  ['absent', 'No microphone'], [kFile, 'A sound file …']
];
const kDisks = [['normal', 'Room'], ['low', 'Low'], ['full', 'Full']];

/// What the phone's owner decides: its applications and what they may, and the phone itself.
export class PhonePanel extends Panel {
  #link;
  #applications = h('div');
  #applicationsTold = '';
  #model = select('Model', [], profile => this.#restart({profile}, `as ${profile}`));
  #language = select('Language', [], language => this.#restart({language}, `in ${languageName(language)}`));
  #textSize = select('Text size', [], textSize => this.#restart({textSize}, 'with the other text size'));
  #sound = select('Microphone', [], source => this.#hear(source));
  #file = entry('Sound file', 'Path of a WAV file', 'Use it', path => this.#hear(kFilePrefix + path));
  #disk = choice('Disk', kDisks, state => this.#link.act('disk', {state}));
  #soundLater = later();
  #diskLater = later();
  #diskLine = line('Disk', this.#diskLater, this.#disk);

  constructor(link) {
    super('phone', 'Phone', 'phone');
    this.#link = link;
    const install = entry(
      'Another application', 'Folder of a bundle', 'Install',
      folder => link.act('install', {application: folder}), {kind: 'box bundle'});
    const open = entry(
      'Open a link', 'Tellvane://…', 'Open', address => link.act('openLink', {link: address}), {type: 'url'});
    this.body.append(
      section('Applications', this.#applications, install),
      section(
        'The phone',
        h('div', {class: 'box'}, line('Model', null, this.#model), line('Language', null, this.#language),
          line('Text size', null, this.#textSize)),
        h('p', {class: 'hint'},
          'Changing one of these restarts the phone. Photos, reports and applications stay.'),
        h('div', {class: 'box section'}, line('Microphone hears', this.#soundLater, this.#sound), this.#file,
          this.#diskLine, open)),
      section(
        null,
        h('div', {class: 'row'}, button('Restart', () => this.#restart({}, ''), {icon: 'reload'}),
          button('Switch off', () => link.act('switchOff'), {kind: 'danger'}))));
    link.on('applications', message => this.#showApplications(message));
    link.on('hello', hello => this.#offer(hello));
    link.on('phone', phone => this.#show(phone));
  }

  #showApplications({type, ...message}) {
    const told = JSON.stringify(message);
    if (told === this.#applicationsTold) return;
    this.#applicationsTold = told;
    const {installed, catalog} = message;
    const focused =
      this.#applications.contains(document.activeElement) ? document.activeElement.dataset.key : null;
    const there = new Set(installed.map(({identifier}) => identifier));
    const missing = catalog.filter(({identifier}) => !there.has(identifier));
    const install = ({identifier}) =>
      button('Install', () => this.#link.act('install', {application: identifier}));
    fill(
      this.#applications, installed.map(each => application(this.#link, each)),
      missing.length > 0 &&
        h('div', {class: 'box'}, missing.map(each => line(each.name, each.identifier, install(each)))));
    if (focused) this.#applications.querySelector(`[data-key="${CSS.escape(focused)}"]`)?.focus();
  }

  #offer({profiles, languages, textSizes}) {
    this.#model.offer(profiles.map(({name}) => name));
    this.#language.offer(languages.map(tag => [tag, languageName(tag)]));
    this.#textSize.offer(textSizes.map(name => [name, name.replace('Accessibility', 'Accessibility ')]));
    this.#show(this.#link.last('phone'));
  }

  #show(phone) {
    if (!phone) return;
    this.#model.value = phone.profile;
    this.#language.value = phone.language;
    this.#textSize.value = phone.textSize;
    this.#showSound(phone.microphone.source);
    this.#soundLater.hidden = !phone.microphone.pending;
    this.#diskLine.hidden = !phone.disk;
    if (!phone.disk) return;
    this.#disk.choose(phone.disk.state);
    this.#diskLater.hidden = !phone.disk.pending;
  }

  #showSound(source) {
    if (this.#file.contains(document.activeElement)) return;  // somebody is about to say which file
    const isFile = source.startsWith(kFilePrefix);
    const offered = kSounds.filter(([value]) => value !== 'machine' || this.#link.last('hello')?.realTime);
    if (!isFile && !offered.some(([value]) => value === source)) offered.push([source, source]);
    this.#sound.offer(offered, isFile ? kFile : source);
    this.#file.hidden = !isFile;
    if (isFile) this.#file.field.value = source.slice(kFilePrefix.length);
  }

  #hear(source) {
    this.#file.hidden = !source.startsWith(kFile);
    if (source === kFile)
      this.#file.field.focus();
    else
      this.#link.act('microphone', {source});
  }

  async #restart(members, words) {
    this.#link.restarting(`Restarting the phone ${words}`);
    await this.#link.act('restart', members);
    this.#link.restarting('');
    this.#show(this.#link.last('phone'));
  }
}

const later = () =>
  h('span', {class: 'soft', hidden: true}, 'The application hears it from its next launch on');

function languageName(tag) {
  try {
    return new Intl.DisplayNames(['en'], {type: 'language'}).of(tag);
  } catch {
    return tag;
  }
}
