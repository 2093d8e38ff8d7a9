// The connection over which the program tells what happens. It comes back by itself.

import { address } from "./dom.js";

const kFirstPause = 500;
const kLongestPause = 5000;

export class Live {
  // onNews gets {printer, missed, items, state}; onLink one of "live", "paused", "lost".
  constructor(onNews, onLink) {
    this.onNews = onNews;
    this.onLink = onLink;
    this.pause = kFirstPause;
    this.paused = false;
    this.connect();
  }

  connect() {
    clearTimeout(this.timer);
    const socket = new WebSocket(`ws://${location.host}${address("/api/live")}`);
    this.socket = socket;
    socket.onopen = () => {
      this.pause = kFirstPause;
      this.onLink("live");
    };
    socket.onmessage = (event) => {
      for (const news of JSON.parse(event.data).printers) this.onNews(news);
    };
    socket.onclose = () => {
      if (this.socket !== socket) return;
      this.onLink(this.paused ? "paused" : "lost");
      if (this.paused) return;
      this.timer = setTimeout(() => this.connect(), this.pause);
      this.pause = Math.min(2 * this.pause, kLongestPause);
    };
  }

  // From the beginning of what is kept.
  again() {
    if (this.paused) return;
    const { socket } = this;
    this.connect();
    socket.close();
  }

  setPaused(paused) {
    this.paused = paused;
    if (paused) this.socket.close();
    else this.connect();
  }
}
