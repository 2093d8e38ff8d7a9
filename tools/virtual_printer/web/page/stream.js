// What went over the link, command by command. Only the rows that can be seen are in the document.

import { clock, make, setText } from "./dom.js";

const kMostRows = 5000;

const kStatusNames = { 1: "printer status", 2: "cause of being off line", 20: "full status" };

// Journal item -> row, or null for what is not shown here.
export function rowOf(item) {
  switch (item.event) {
    case "executed":
      if (item.name === "?") return null; // told with its reason
      return {
        kind: item.text !== undefined ? "text" : "command",
        name: item.name,
        means: item.text !== undefined ? item.text : item.means,
        bytes: item.bytes, at: item.at, length: item.length, piece: item.piece, line: item.line, number: item.number,
      };
    case "status_query":
      return {
        kind: "question", name: `DLE EOT ${item.kind}`,
        means: item.answer ? `${kStatusNames[item.kind] ?? "status"} \u2192 ${item.answer}` : "not answered",
        bytes: `10 04 ${item.kind.toString(16).padStart(2, "0").toUpperCase()}`, time: item.time, number: item.number,
      };
    case "identity_query":
      return { kind: "question", name: "answer", means: `identity \u2192 ${item.answer}`, bytes: item.answer,
        time: item.time, number: item.number };
    case "connected":
      return { kind: "event", name: "connected", means: `a till, ${clock(item.time)}`, number: item.number };
    case "disconnected":
      return { kind: "event", name: "disconnected", number: item.number,
        means: clock(item.time) + (item.unread ? `, ${item.unread} bytes never read` : "") };
    case "cancelled":
      return { kind: "event", name: item.by, means: `${item.discarded} bytes thrown away`, number: item.number };
    case "unknown":
      return { kind: "strange", name: "unknown", means: item.why, bytes: item.bytes, number: item.number };
    case "overrun":
      return { kind: "strange", name: "overrun", means: `${item.bytes} bytes lost`, number: item.number };
    case "power_off":
      return { kind: "event", name: "power off", means: `${item.lost} bytes lost`, number: item.number };
    case "power_on":
      return { kind: "event", name: "power on", means: "", number: item.number };
    case "torn":
      return { kind: "event", name: "torn off", means: `receipt ${item.piece}`, number: item.number };
    case "answered":
      return { kind: "question", name: "answer", means: item.bytes, bytes: item.bytes, number: item.number };
    default:
      return null;
  }
}

export class Stream {
  // onPoint(place or null, pinned): a row that belongs to a line of paper is looked at.
  constructor(box, detail, count, onPoint) {
    this.box = box;
    this.detail = detail;
    this.count = count;
    this.onPoint = onPoint;
    this.all = [];
    this.rows = [];
    this.words = "";
    this.following = true;
    this.inner = make("div", { class: "inner", role: "presentation" });
    box.append(this.inner);
    box.addEventListener("scroll", () => {
      this.following = box.scrollHeight - box.scrollTop - box.clientHeight < 40;
      this.refresh();
    });
    box.addEventListener("pointerover", (event) => this.pointed(event, false));
    box.addEventListener("pointerleave", () => this.onPoint(null));
    box.addEventListener("click", (event) => this.pointed(event, true));
    box.addEventListener("keydown", (event) => this.key(event));
    new ResizeObserver(() => this.refresh()).observe(box);
  }

  reset() {
    this.all = [];
    this.rows = [];
    this.chosen = null;
    this.marked = null;
    this.following = true;
    this.showDetail(null);
    this.refresh();
  }

  add(items) {
    for (const item of items) {
      const row = rowOf(item);
      if (!row) continue;
      this.all.push(row);
      if (this.fits(row)) this.rows.push(row);
    }
    if (this.all.length > kMostRows) {
      const gone = new Set(this.all.splice(0, this.all.length - kMostRows));
      this.rows = this.rows.filter((row) => !gone.has(row));
    }
    this.refresh();
  }

  find(words) {
    this.words = words.trim().toLowerCase();
    this.rows = this.all.filter((row) => this.fits(row));
    this.refresh();
  }
  fits(row) {
    return this.words === "" || `${row.name} ${row.means} ${row.bytes}`.toLowerCase().includes(this.words);
  }

  refresh() {
    if (this.frame) return;
    this.frame = requestAnimationFrame(() => {
      this.frame = 0;
      this.render();
    });
  }

  rowHeight() {
    return parseFloat(getComputedStyle(this.box).getPropertyValue("--row"));
  }

  render() {
    const height = this.rowHeight();
    setText(this.count, `${this.rows.length}`);
    this.inner.style.height = `${this.rows.length * height}px`;
    if (this.following) this.box.scrollTop = this.box.scrollHeight;
    const first = Math.max(0, Math.floor(this.box.scrollTop / height) - 5);
    const last = Math.min(this.rows.length, Math.ceil((this.box.scrollTop + this.box.clientHeight) / height) + 5);
    const shown = [];
    for (let index = first; index < last; ++index) shown.push(this.element(index, height));
    this.inner.replaceChildren(...shown);
    const chosen = this.chosen ? this.rows.indexOf(this.chosen) : -1;
    if (chosen >= first && chosen < last) this.box.setAttribute("aria-activedescendant", `row${chosen}`);
    else this.box.removeAttribute("aria-activedescendant");
  }

  element(index, height) {
    const row = this.rows[index];
    const marked = this.marked && row.piece === this.marked.piece && row.line === this.marked.line;
    const element = make("div", {
      id: `row${index}`, class: `row ${row.kind}${marked ? " marked" : ""}`, role: "option",
      "aria-selected": row === this.chosen ? "true" : "false", "aria-setsize": this.rows.length,
      "aria-posinset": index + 1, "data-index": index,
    },
    make("span", { class: "name" }, row.name),
    make("span", { class: "means" }, row.means),
    make("span", { class: "bytes" }, row.bytes ?? ""));
    element.style.top = `${index * height}px`;
    return element;
  }

  pointed(event, pinned) {
    const element = event.target.closest("[data-index]");
    const row = element && this.rows[Number(element.dataset.index)];
    if (!row) return;
    if (pinned) this.choose(row);
    else this.onPoint(this.place(row), false);
  }

  place(row) {
    return row.piece === undefined ? null : { piece: row.piece, line: row.line };
  }

  choose(row) {
    this.chosen = row;
    this.showDetail(row);
    this.onPoint(this.place(row), true);
    this.refresh();
  }

  showDetail(row) {
    this.detail.replaceChildren();
    if (!row) return;
    const facts = [row.means, row.length !== undefined ? `byte ${row.at}, ${row.length} long, receipt ${row.piece}` : ""];
    this.detail.append(make("b", {}, row.name), " ", facts.filter(Boolean).join(" \u00b7 "),
      make("code", {}, row.bytes ?? ""));
  }

  key(event) {
    const steps = { ArrowDown: 1, ArrowUp: -1, PageDown: 20, PageUp: -20, Home: -Infinity, End: Infinity };
    const step = steps[event.key];
    if (step === undefined || this.rows.length === 0) return;
    event.preventDefault();
    const now = this.chosen ? this.rows.indexOf(this.chosen) : this.rows.length;
    const next = Math.min(this.rows.length - 1, Math.max(0, now + step));
    this.following = next === this.rows.length - 1;
    this.choose(this.rows[next]);
    this.reveal(next);
  }

  reveal(index) {
    const height = this.rowHeight();
    const top = index * height;
    if (top < this.box.scrollTop) this.box.scrollTop = top;
    else if (top + height > this.box.scrollTop + this.box.clientHeight) {
      this.box.scrollTop = top + height - this.box.clientHeight;
    }
  }

  mark(place, reveal = false) {
    this.marked = place;
    if (place && reveal) {
      const index = this.rows.findIndex((row) => row.piece === place.piece && row.line === place.line);
      if (index >= 0) {
        this.following = false;
        this.reveal(index);
      }
    }
    this.refresh();
  }
}
