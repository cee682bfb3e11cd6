import {button, clockText, empty, fill, h} from '../parts/dom.js';
import {sizeText} from '../parts/facts.js';
import {Panel, section} from '../parts/panel.js';

/// The photo library: its albums, their movies, which play here.
export class PhotosPanel extends Panel {
  #link;
  #nothing = empty(
    'photos', 'No movies yet', 'A screen recording that was saved appears here, in the library’s own album.');
  #albums = h('div');
  #made = new Map();  // by album and movie, so that one that plays goes on when another comes
  #known = null;

  constructor(link) {
    super('photos', 'Photos', 'photos');
    this.#link = link;
    const label = 'Save a picture of the screen';
    this.header.append(button('', () => this.#savePicture(), {
      icon: 'image',
      kind: 'bare round',
      'aria-label': label,
      title: label,
    }));
    this.body.append(this.#nothing, this.#albums);
    link.on('photos', message => this.#show(message));
  }

  shown(on) {
    if (!on)
      for (const video of this.body.querySelectorAll('video')) video.pause();
  }

  #show({albums, movies}) {
    const byId = new Map(movies.map(movie => [movie.id, movie]));
    const inAlbums = new Set(albums.flatMap(album => album.movies));
    const groups = albums.map(album => [album.title, album.movies.map(id => byId.get(id)).filter(Boolean)]);
    const others = movies.filter(movie => !inAlbums.has(movie.id));
    if (others.length > 0) groups.push(['In no album', others]);
    fill(this.#albums, groups.map(([title, own]) => this.#album(title, own)));
    this.#nothing.hidden = groups.length > 0;
    if (this.#known !== null && movies.length > this.#known) this.news(1);
    this.#known = movies.length;
  }

  #album(title, movies) {
    const list = movies.map(movie => this.#movie(movie, title));
    return section(
      `${title} (${movies.length})`,
      list.length > 0 ? h('ul', {class: 'movies'}, list) : h('p', {class: 'soft'}, 'Empty'));
  }

  #movie({id, name, url, size, duration, width, height}, album) {
    const key = `${album} ${id} ${url}`;
    if (!this.#made.has(key)) {
      const video =
        h('video',
          {src: url, controls: true, preload: 'metadata', playsinline: true, 'aria-label': `Movie ${name}`});
      const remark = `${clockText(duration, 1)} · ${width} × ${height} · ${sizeText(size)}`;
      this.#made.set(
        key, h('li', {class: 'box movie'}, video, h('p', {}, name, h('span', {class: 'soft'}, remark))));
    }
    return this.#made.get(key);
  }

  async #savePicture() {
    try {
      const {url, name} = await this.#link.command('screenshot');
      h('a', {href: url, download: name}).click();
    } catch (problem) {
      this.#link.complain(problem);
    }
  }
}
