// A canvas in CSS pixels, with the few things that the matrix is drawn with.

const kMostPictures = 2000; // a picture of a cell takes 8 to 40 KB

export const kSans = 'system-ui, "DejaVu Sans", sans-serif';
export const kMono = 'ui-monospace, "DejaVu Sans Mono", monospace';

export class Canvas {
  constructor(element) {
    this.element = element;
    this.context = element.getContext('2d', { alpha: false });
    this.ratio = 1; // device pixels in one CSS pixel
    this.pictures = new Map();
  }

  resize(width, height, ratio) {
    Object.assign(this.element, { width: Math.round(width * ratio), height: Math.round(height * ratio) });
    Object.assign(this.element.style, { width: `${width}px`, height: `${height}px` });
    this.ratio = ratio;
    this.pictures.clear();
  }

  begin() {
    this.context.setTransform(this.ratio, 0, 0, this.ratio, 0, 0);
  }

  // The nearest whole device pixel: what lies between two is drawn blurred.
  snap(length) {
    return Math.round(length * this.ratio) / this.ratio;
  }

  fill(color, x, y, width, height) {
    this.context.fillStyle = color;
    this.context.fillRect(x, y, width, height);
  }

  text(text, x, y, font, color, align) {
    Object.assign(this.context, { font, fillStyle: color, textAlign: align, textBaseline: 'middle' });
    this.context.fillText(text, x, y);
  }

  // The text, cut where it would not fit.
  fittedText(text, x, y, room, font, color) {
    if (!text) return;
    this.context.font = font;
    let shown = text;
    while (shown && this.context.measureText(shown).width > room) shown = shown.slice(0, -1);
    this.text(shown === text ? text : shown.slice(0, -1) + '\u2026', x, y, font, color, 'left');
  }

  // Draws inside a rectangle only.
  within(x, y, width, height, draw) {
    this.context.save();
    this.context.beginPath();
    this.context.rect(x, y, width, height);
    this.context.clip();
    draw();
    this.context.restore();
  }

  // Draws what `draw` draws at the origin. It is drawn once and kept under `key`.
  kept(key, x, y, width, height, draw) {
    const picture = this.pictures.get(key) ?? this.#keep(key, width, height, draw);
    this.context.drawImage(picture, x, y, picture.width / this.ratio, picture.height / this.ratio);
  }

  #keep(key, width, height, draw) {
    if (this.pictures.size >= kMostPictures) this.pictures.clear();
    const picture = new OffscreenCanvas(Math.ceil(width * this.ratio), Math.ceil(height * this.ratio));
    const { context } = this;
    this.context = picture.getContext('2d');
    this.context.scale(this.ratio, this.ratio);
    draw();
    this.context = context;
    this.pictures.set(key, picture);
    return picture;
  }
}
