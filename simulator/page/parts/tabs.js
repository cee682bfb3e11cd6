import {fill, h, icon} from './dom.js';

const kRemembered = 'panel';
const kNarrow = matchMedia('(max-width: 52rem)');

/// The rail of tabs and the place where the chosen one's panel is shown. The choice is remembered. The chosen
/// tab once more closes the panel.
export class Tabs {
  #panels;
  #tabs = new Map();
  #chosen = null;
  #close =
    h('button', {
      type: 'button',
      class: 'button bare round close',
      'aria-label': 'Close',
      onclick: () => this.choose(null),
    },
      icon('close'));

  constructor(panels) {
    this.#panels = panels;
    this.place = h('section', {
      class: 'panels',
      id: 'panel',
      role: 'tabpanel',
      hidden: true,
      onkeydown: event => this.#escape(event),
    });
    for (const panel of panels) {
      this.#tabs.set(
        panel,
        h('button', {
          type: 'button',
          class: 'tab',
          role: 'tab',
          id: `tab-${panel.id}`,
          'aria-controls': 'panel',
          'aria-selected': 'false',
          onclick: () => this.choose(this.#chosen === panel ? null : panel),
        },
          icon(panel.icon), panel.title, panel.count));
    }
    this.rail =
      h('div', {
        class: 'rail',
        role: 'tablist',
        'aria-label': 'Panels',
        'aria-orientation': 'vertical',
        onkeydown: event => this.#moveFocus(event),
      },
        [...this.#tabs.values()]);
    const remembered = localStorage.getItem(kRemembered);
    if (kNarrow.matches)
      this.choose(null);
    else if (remembered === null)
      this.choose(panels[0]);
    else
      this.choose(panels.find(panel => panel.id === remembered) ?? null);
  }

  choose(panel) {
    const before = this.#chosen;
    if (before && before === panel) return;
    this.#chosen = panel;
    if (before) before.isShown = false;
    for (const [each, tab] of this.#tabs) {
      tab.setAttribute('aria-selected', String(each === panel));
      tab.tabIndex = each === (panel ?? this.#panels[0]) ? 0 : -1;
    }
    this.place.hidden = !panel;
    if (panel) this.#show(panel);
    if (!kNarrow.matches) localStorage.setItem(kRemembered, panel?.id ?? '');
  }

  #show(panel) {
    this.place.setAttribute('aria-labelledby', `tab-${panel.id}`);
    panel.header.append(this.#close);
    fill(this.place, panel.element);
    this.#tabs.get(panel).scrollIntoView({block: 'nearest', inline: 'nearest'});
    panel.isShown = true;
  }

  #escape(event) {
    if (event.key === 'Escape' && kNarrow.matches) this.choose(null);
  }

  #moveFocus(event) {
    const tabs = [...this.#tabs.values()];
    const step = {ArrowDown: 1, ArrowRight: 1, ArrowUp: -1, ArrowLeft: -1}[event.key];
    const at = tabs.indexOf(document.activeElement);
    if (!step || at < 0) return;
    event.preventDefault();
    tabs[(at + step + tabs.length) % tabs.length].focus();
  }
}
