import {button, empty, fill, h, icon} from '../parts/dom.js';
import {Panel} from '../parts/panel.js';

/// The companion's reports; each opens in full, sealed off from this page.
export class InboxPanel extends Panel {
  #nothing = empty('inbox', 'No reports yet', 'What the companion receives is filed here as a report.');
  #list = h('ul', {class: 'reports'});
  #whole =
    h('a', {
      class: 'button bare round',
      target: '_blank',
      rel: 'noopener',
      hidden: true,
      'aria-label': 'Open in a tab of its own',
      title: 'Open in a tab of its own',
    },
      icon('open'));
  #close = button(
    'All', () => this.#open(null), {icon: 'back', kind: 'bare', hidden: true, 'aria-label': 'All reports'});
  #reports = null;
  #opened = null;

  constructor(link) {
    super('inbox', 'Inbox', 'inbox');
    this.header.append(this.#whole, this.#close);
    this.#open(null);
    link.on('inbox', ({reports}) => this.#show(reports));
  }

  #show(reports) {
    if (this.#reports && reports.length > this.#reports.length) this.news(1);
    this.#reports = reports;
    this.#nothing.hidden = reports.length > 0;
    fill(this.#list, reports.map(report => this.#card(report)));
    if (this.#opened && !reports.some(({url}) => url === this.#opened.url)) this.#open(null);
  }

  #card(report) {
    const words =
      h('p', {}, h('strong', {dir: 'auto'}, report.title), h('span', {class: 'soft'}, report.received));
    return h(
      'li', {},
      h('button', {type: 'button', class: 'box report', onclick: () => this.#open(report)},
        h('span', {class: 'thumb'}, thumb(report)), words));
  }

  #open(report) {
    this.#opened = report;
    this.element.classList.toggle('reading', report !== null);
    this.#whole.hidden = this.#close.hidden = report === null;
    if (report === null) {
      fill(this.body, this.#nothing, this.#list);
      return;
    }
    this.#whole.href = report.url;
    fill(this.body, h('iframe', {sandbox: '', src: report.url, title: `Report: ${report.title}`}));
    this.#close.focus();
  }
}

function thumb({image, movie}) {
  if (image) return h('img', {src: image, alt: '', loading: 'lazy'});
  if (movie) return h('video', {src: movie, preload: 'metadata', muted: true});
  return icon('image');
}
