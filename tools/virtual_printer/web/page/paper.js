// The paper: pieces one under the other, drawn dot for dot, with the newest line at the printer's slot below.
//
// Dots are fetched for what can be seen and thrown away for what cannot, so that a long roll costs no more than a short
// one.

import { api, make, setText } from "./dom.js";

const kTile = 512; // rows of dots in one canvas
const kMargin = 24; // dots of unprintable paper on each side
const kHead = 16; // and above the first line
const kEdge = 12; // pixels left free beside it
const kMostPieces = 40; // on the table; older ones are in the list of receipts
const kMostLines = 20000; // of a piece whose places are known
const kZooms = [16, 24, 30, 40, 48, 64, 96, 128, 192].map((n) => n / 64); // so that a tile ends at a whole pixel
const kActualSize = 30 / 64; // 8 dots a millimetre on a screen of 96 dots an inch

class Piece {
  constructor(paper, number) {
    this.paper = paper;
    this.number = number;
    this.rows = 0;
    this.lines = new Map(); // number -> {y, rows, text, kind}
    this.firstLine = 0;
    this.tiles = new Map(); // index -> {canvas, have}
    this.sheet = make("div", { class: "sheet" });
    this.mark = make("div", { class: "mark", hidden: true });
    this.sheet.append(this.mark);
    this.caption = make("span", { class: "quiet" }, `${number}`);
    this.element = make("article", { class: "piece", "aria-label": `Receipt ${number}`, "data-number": number },
      this.sheet, this.caption);
    this.sheet.addEventListener("pointermove", (event) => this.pointAt(event));
    this.sheet.addEventListener("pointerleave", () => paper.onPoint(null));
    this.sheet.addEventListener("click", (event) => this.pointAt(event, true));
  }

  setLine(line) {
    this.lines.set(line.line, line);
    if (this.lines.size > kMostLines) this.lines.delete(this.lines.keys().next().value);
    this.rows = Math.max(this.rows, line.y + line.rows);
  }

  end(kind) {
    this.finished = true;
    this.element.classList.add("cut", kind);
  }

  lineAt(y) {
    for (const line of this.lines.values()) if (y >= line.y && y < line.y + line.rows) return line;
    return null;
  }

  pointAt(event, pinned = false) {
    const y = (event.clientY - this.sheet.getBoundingClientRect().top) / this.paper.dot - kHead;
    const line = this.lineAt(y);
    if (pinned || line?.line !== this.pointed) this.paper.onPoint(line && { piece: this.number, line: line.line }, pinned);
    this.pointed = line?.line;
  }

  layOut() {
    const { dot } = this.paper;
    this.sheet.style.width = `${(this.paper.width + 2 * kMargin) * dot}px`;
    this.sheet.style.height = `${(Math.max(this.rows, 8) + kHead) * dot}px`;
    for (const [index, tile] of this.tiles) this.place(index, tile);
    this.showMark(this.marked);
  }

  place(index, tile) {
    const { dot } = this.paper;
    tile.canvas.style.top = `${(index * kTile + kHead) * dot}px`;
    tile.canvas.style.left = `${kMargin * dot}px`;
    tile.canvas.style.width = `${tile.canvas.width * dot}px`;
    tile.canvas.style.height = `${kTile * dot}px`;
  }

  showMark(number) {
    this.marked = number;
    const line = this.lines.get(number);
    this.mark.hidden = !line;
    if (!line) return;
    this.mark.style.top = `${(line.y + kHead) * this.paper.dot}px`;
    this.mark.style.height = `${line.rows * this.paper.dot}px`;
  }

  // Tiles between two rows of dots, and no others; the first that has not all its rows yet is what to fetch.
  keepTiles(from, to) {
    const first = Math.max(0, Math.floor(from / kTile));
    const last = Math.min(Math.ceil(this.rows / kTile), Math.ceil(to / kTile));
    for (const [index, tile] of this.tiles) {
      if (index < first || index >= last) {
        tile.canvas.remove();
        this.tiles.delete(index);
      }
    }
    let wanted = null;
    for (let index = first; index < last; ++index) {
      if (!this.tiles.has(index)) {
        const tile = { canvas: make("canvas", { width: this.paper.width, height: kTile, "aria-hidden": true }), have: 0 };
        this.tiles.set(index, tile);
        this.place(index, tile);
        this.sheet.prepend(tile.canvas);
      }
      const tile = this.tiles.get(index);
      const all = Math.min(kTile, this.rows - index * kTile);
      if (tile.have < all && !wanted) wanted = { index, from: index * kTile + tile.have, rows: all - tile.have };
    }
    return wanted;
  }

  draw(index, from, stride, bytes) {
    const tile = this.tiles.get(index);
    const rows = Math.floor(bytes.length / stride);
    if (!tile || rows === 0) return;
    const context = tile.canvas.getContext("2d");
    const { width } = tile.canvas;
    const image = context.createImageData(width, rows);
    const pixels = new Uint32Array(image.data.buffer);
    for (let row = 0; row < rows; ++row) {
      for (let x = 0; x < width; ++x) {
        if (bytes[row * stride + (x >> 3)] & (0x80 >> (x & 7))) pixels[row * width + x] = 0xff1c1818;
      }
    }
    context.putImageData(image, 0, from - index * kTile);
    tile.have = from - index * kTile + rows;
  }
}

export class Paper {
  // onPoint(place or null, pinned): the pointer is at a line.
  constructor(table, onPoint) {
    this.table = table;
    this.onPoint = onPoint;
    this.dot = kActualSize * (64 / 48); // a little larger than life
    this.dot = kZooms.reduce((best, zoom) => (Math.abs(zoom - this.dot) < Math.abs(best - this.dot) ? zoom : best));
    this.pieces = new Map();
    this.following = true;
    this.slot = make("div", { class: "slot", "aria-hidden": true });
    this.ghost = make("pre", { class: "ghost", hidden: true, "aria-hidden": true });
    table.append(this.ghost, this.slot);
    table.addEventListener("scroll", () => {
      this.following = table.scrollHeight - table.scrollTop - table.clientHeight < 60;
      this.refresh();
    });
    new ResizeObserver(() => this.refresh()).observe(table);
  }

  // Another printer, or one receipt alone.
  reset(printer, width) {
    this.printer = printer;
    this.width = width;
    this.marked = null;
    this.following = true;
    for (const piece of this.pieces.values()) piece.element.remove();
    this.pieces.clear();
    this.ghost.hidden = true;
    // No larger than there is room for.
    const room = this.table.clientWidth - 2 * kEdge;
    const fitting = kZooms.filter((zoom) => zoom * (width + 2 * kMargin) <= room);
    this.dot = Math.min(this.dot, fitting.at(-1) ?? kZooms[0]);
  }

  piece(number) {
    let piece = this.pieces.get(number);
    if (!piece) {
      piece = new Piece(this, number);
      const later = [...this.pieces.keys()].sort((a, b) => a - b).find((other) => other > number);
      this.table.insertBefore(piece.element, later ? this.pieces.get(later).element : this.ghost);
      this.pieces.set(number, piece);
      this.forgetOldest();
    }
    return piece;
  }

  forgetOldest() {
    const numbers = [...this.pieces.keys()].sort((a, b) => a - b);
    for (const number of numbers.slice(0, Math.max(0, numbers.length - kMostPieces))) {
      this.pieces.get(number).element.remove();
      this.pieces.delete(number);
    }
  }

  forget(upTo) {
    for (const [number, piece] of this.pieces) {
      if (number > upTo) continue;
      piece.element.remove();
      this.pieces.delete(number);
    }
  }

  setUnfinished(text) {
    this.ghost.hidden = text === "";
    setText(this.ghost, text);
    this.ghost.style.width = `${(this.width + 2 * kMargin) * this.dot}px`;
    this.ghost.style.fontSize = `${20 * this.dot}px`;
    this.ghost.style.lineHeight = `${32 * this.dot}px`;
    this.ghost.style.paddingInline = `${kMargin * this.dot}px`;
  }

  // 1: larger, -1: smaller.
  zoomBy(steps) {
    const next = kZooms[kZooms.indexOf(this.dot) + steps];
    if (!next) return;
    const centre = (this.table.scrollTop + this.table.clientHeight / 2) / this.dot;
    this.dot = next;
    this.layOut();
    if (!this.following) this.table.scrollTop = centre * this.dot - this.table.clientHeight / 2;
  }
  zoomText() {
    return `${Math.round((100 * this.dot) / kActualSize)} %`;
  }

  layOut() {
    for (const piece of this.pieces.values()) piece.layOut();
    this.setUnfinished(this.ghost.textContent);
    this.refresh();
  }

  refresh() {
    if (this.frame) return;
    this.frame = requestAnimationFrame(() => {
      this.frame = 0;
      for (const piece of this.pieces.values()) {
        const height = Math.max(piece.rows, 8) * this.dot;
        if (piece.height !== height || piece.dot !== this.dot) piece.layOut();
        piece.height = height;
        piece.dot = this.dot;
      }
      if (this.following) this.table.scrollTop = this.table.scrollHeight;
      this.fetchMissing();
    });
  }

  async fetchMissing() {
    const view = this.table.getBoundingClientRect();
    const reach = view.height;
    let wanted = null;
    for (const piece of this.pieces.values()) {
      const { top } = piece.sheet.getBoundingClientRect();
      const found = piece.keepTiles((view.top - reach - top) / this.dot - kHead, (view.bottom + reach - top) / this.dot);
      if (found) wanted = { piece, ...found };
    }
    if (!wanted || this.fetching) return;
    this.fetching = true;
    const { printer } = this;
    let fetched = false;
    try {
      const path = `/receipts/${wanted.piece.number}.dots?from=${wanted.from}&rows=${wanted.rows}`;
      const response = await fetch(api(printer, path));
      if (response.ok && printer === this.printer) {
        const from = Number(response.headers.get("X-From"));
        const bytes = new Uint8Array(await response.arrayBuffer());
        const stride = Number(response.headers.get("X-Stride"));
        // Rows that were forgotten meanwhile are passed over.
        if (from > wanted.from) wanted.piece.tiles.get(wanted.index).have += Math.min(wanted.rows, from - wanted.from);
        else wanted.piece.draw(wanted.index, from, stride, bytes);
        fetched = bytes.length > 0;
      }
    } catch {
      // The connection is watched elsewhere.
    } finally {
      this.fetching = false;
    }
    if (fetched) this.refresh();
  }

  mark(place, reveal = false) {
    if (this.marked) this.pieces.get(this.marked.piece)?.showMark(null);
    this.marked = place;
    const piece = place && this.pieces.get(place.piece);
    if (!piece) return;
    piece.showMark(place.line);
    if (reveal && !piece.mark.hidden) piece.mark.scrollIntoView({ block: "nearest" });
  }

  // The place of the line before or after another one, over the ends of pieces.
  neighbour(place, step) {
    const places = [...this.pieces.keys()].sort((a, b) => a - b)
      .flatMap((number) => [...this.pieces.get(number).lines.keys()].map((line) => ({ piece: number, line })));
    if (!place) return places[step < 0 ? places.length - 1 : 0] ?? null;
    const at = places.findIndex((other) => other.piece === place.piece && other.line === place.line);
    return places[at + step] ?? place;
  }

  text(place) {
    return this.pieces.get(place.piece)?.lines.get(place.line)?.text ?? "";
  }
}
