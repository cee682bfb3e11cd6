/// The phone's time between the messages that tell it, for what counts along: it runs at the phone's pace and
/// is set right with each message.
export class PhoneClock {
  #told = null;
  #at = 0;
  #listeners = [];
  #timer = 0;

  constructor(link) {
    link.on('time', time => {
      this.#told = time;
      this.#at = performance.now();
      this.#tell();
    });
    link.on('link', ({state}) => {
      if (state === 'open' || !this.#told) return;
      this.#told = {...this.#told, now: this.now, paused: true};
      this.#tell();
    });
    document.addEventListener('visibilitychange', () => this.#tell());
  }

  get now() {
    if (!this.#told) return 0;
    const {now, paused, speed} = this.#told;
    return paused ? now : now + (performance.now() - this.#at) / 1000 * speed;
  }

  /// Calls with the time as told, its `now` as of this moment, ten times a second while it moves
  /// and the page is seen.
  onchange(listener) {
    this.#listeners.push(listener);
    if (this.#told) listener({...this.#told, now: this.now});
  }

  #tell() {
    clearTimeout(this.#timer);
    if (!this.#told) return;
    const time = {...this.#told, now: this.now};
    for (const listener of this.#listeners) listener(time);
    if (!time.paused && !document.hidden) this.#timer = setTimeout(() => this.#tell(), 100);
  }
}
