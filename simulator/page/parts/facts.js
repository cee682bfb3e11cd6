import {h} from './dom.js';

/// A table of names and values.
export function facts(rows) {
  return h(
    'table', {class: 'facts'},
    h('tbody', {},
      rows.map(
        ([name, value]) =>
          h('tr', {}, h('th', {scope: 'row'}, name), h('td', {dir: 'auto'}, String(value))))));
}

/// "81 kB"
export function sizeText(bytes) {
  if (bytes < 1000) return `${bytes} bytes`;
  return bytes < 1e6 ? `${Math.round(bytes / 1000)} kB` : `${(bytes / 1e6).toFixed(1)} MB`;
}
