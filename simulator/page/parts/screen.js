const kHeader = 32;  // bytes in front of a picture's own
const kPNG = 2, kWhole = 1;

/// What a picture's message says about it.
function readHeader(data) {
  const view = new DataView(data);
  const u16 = at => view.getUint16(at, true);
  return {
    type: view.getUint8(1) === kPNG ? 'image/png' : 'image/jpeg',
    whole: (view.getUint8(2) & kWhole) !== 0,
    exact: (view.getUint8(2) & 2) !== 0,
    sequence: view.getUint32(4, true),
    time: Number(view.getBigUint64(8, true)) / 1e9,
    touch: view.getUint32(16, true),
    x: u16(20),
    y: u16(22),
    width: u16(28),
    height: u16(30),
  };
}

/// The canvas that shows the phone's display. Pictures are decoded as they come and painted in their order,
/// each only where it differs; every one is acknowledged once it is painted, for the phone sends no more than
/// two ahead. The canvas tells each as an event "painted" whose detail is the picture's header.
export class Screen {
  #canvas;
  #context;
  #link;
  #last = Promise.resolve();

  constructor(canvas, link) {
    this.#canvas = canvas;
    this.#context = canvas.getContext('2d', {alpha: false});
    this.#link = link;
    link.onpicture = data => this.#receive(data);
  }

  #receive(data) {
    const header = readHeader(data);
    const blob = new Blob([new Uint8Array(data, kHeader)], {type: header.type});
    const decoded = createImageBitmap(blob, {colorSpaceConversion: 'none', premultiplyAlpha: 'none'});
    decoded.catch(() => {});  // told where it is waited for
    const earlier = this.#last;
    this.#last = this.#paint(earlier, decoded, header);
  }

  async #paint(earlier, decoded, header) {
    await earlier;
    try {
      const bitmap = await decoded;
      const canvas = this.#canvas;
      if (header.whole && (canvas.width !== header.width || canvas.height !== header.height)) {
        canvas.width = header.width;
        canvas.height = header.height;
      }
      this.#context.drawImage(bitmap, header.x, header.y);
      bitmap.close();
    } catch (problem) {
      console.error(`A picture could not be shown: ${problem.message}`);
    }
    this.#link.shown(header.sequence);
    this.#canvas.dispatchEvent(new CustomEvent('painted', {detail: header}));
  }
}
