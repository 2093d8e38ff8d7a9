// The printer's own parts: lamps, switches, the customer display, the drawer, the presenter.

import { $, command, make, setAttribute, setText } from "./dom.js";

const lamps = [
  ["power", "Power", (s) => (s.power ? ["good", "on"] : ["off", "off"])],
  ["paper", "Paper", (s) => ({ ok: ["good", "ok"], low: ["warn", "low"], out: ["bad", "out"] })[s.paper]],
  ["cover", "Cover", (s) => (s.cover === "closed" ? ["good", "closed"] : ["bad", "open"])],
  ["error", "Error", (s) => (s.jam ? ["bad", "paper jam"] : s.stopped ? ["bad", "stopped"] : ["off", "none"])],
  ["till", "Till", (s) => (s.connected ? ["good", "connected"] : ["off", "none"])],
];

// A switch: what it is called, its key, the commands that turn it on and off, and whether it is on.
const switches = [
  { id: "cover", label: "Cover open", key: "c", on: "cover open", off: "cover close", is: (s) => s.cover === "open" },
  { id: "jam", label: "Paper jam", key: "j", on: "jam on", off: "jam off", is: (s) => s.jam, has: (s) => s.parts.jam },
  { id: "power", label: "Power off", key: "o", on: "power off", off: "power on", is: (s) => !s.power },
  { id: "mute", label: "Answers nothing", key: "m", on: "mute on", off: "mute off", is: (s) => s.mute },
  { id: "garbage", label: "Answers garbage", key: "g", on: "garbage on", off: "garbage off", is: (s) => s.garbage },
  { id: "refuse", label: "Refuses connections", key: "r", on: "refuse on", off: "refuse off", is: (s) => s.refusing },
  { id: "held", label: "Says it is printing", key: "h", on: "printing hold", off: "printing release",
    is: (s) => s.printing_held, has: (s) => s.parts.jam },
  { id: "sensor", label: "Drawer sensor high", key: "s", on: "drawer high", off: "drawer low",
    is: (s) => s.drawer_signal, has: (s) => s.parts.drawer },
];
const buttons = [
  { id: "drop", label: "Drop the connection", key: "x", line: "drop" },
  { id: "half", label: "Halve the next answer", key: "a", line: "half" },
  { id: "cycle", label: "Power off for 2 s", key: "y", line: "power cycle 2000" },
];
const paperKeys = { ok: "k", low: "l", out: "p" };

export class Panel {
  constructor() {
    this.printer = 1;
    $("lamps").append(...lamps.map(([id, name]) =>
      make("span", { class: "lamp", id: `lamp-${id}` }, make("i", { "aria-hidden": true }),
        make("span", { class: "quiet" }, name), " ", make("b"))));
    this.paper = make("fieldset", { class: "choice" }, make("legend", {}, "Paper"),
      ...Object.keys(paperKeys).map((value) => make("label", { title: paperKeys[value] },
        make("input", { type: "radio", name: "paper", value, onchange: () => this.say(`paper ${value}`) }),
        value)));
    this.rate = this.number("Print speed", "mm/s", "speed", [[0, "no limit"], [50], [100], [150], [250]]);
    this.pace = this.number("Line speed", "bytes/s", "slow", [[0, "no limit"], [120], [960], [1920], [11520]]);
    $("switches").append(this.paper,
      ...switches.map((one) => {
        one.element = make("button", { type: "button", role: "switch", "aria-checked": "false", id: `switch-${one.id}`,
          onclick: () => this.flip(one) }, make("span", { class: "knob", "aria-hidden": true }),
        make("span", {}, one.label), make("kbd", { "aria-hidden": true }, one.key));
        return one.element;
      }),
      make("div", { class: "strikes" }, ...buttons.map((one) =>
        make("button", { type: "button", id: `strike-${one.id}`, onclick: () => this.say(one.line) }, one.label,
          make("kbd", { "aria-hidden": true }, one.key)))),
      this.rate, this.pace);
    $("drawer-push").addEventListener("click", () => this.say(this.state?.drawer === "open" ? "drawer close" : "drawer open"));
    $("ticket-take").addEventListener("click", () => this.say("ticket take"));
  }

  number(label, unit, word, values) {
    return make("label", { class: "speed" }, `${label} `,
      make("select", { name: word, onchange: (event) => this.say(`${word} ${event.target.value}`) },
        ...values.map(([value, text]) => make("option", { value }, text ?? `${value} ${unit}`))));
  }

  async say(line) {
    const problem = await command(this.printer, line);
    $("complaint").hidden = problem === "";
    setText($("complaint"), problem);
  }

  flip(one) {
    if (this.state) this.say(one.is(this.state) ? one.off : one.on);
  }

  // True when the key means something here.
  key(key) {
    const one = switches.find((other) => other.key === key && (other.has?.(this.state) ?? true));
    const strike = buttons.find((other) => other.key === key);
    const paper = Object.keys(paperKeys).find((value) => paperKeys[value] === key);
    if (one) this.flip(one);
    else if (strike) this.say(strike.line);
    else if (paper) this.say(`paper ${paper}`);
    else if (key === "d" && this.state?.parts.drawer) $("drawer-push").click();
    else return false;
    return true;
  }
  static keys() {
    return [...switches, ...buttons].map((one) => [one.key, one.label])
      .concat(Object.entries(paperKeys).map(([value, key]) => [key, `Paper ${value}`]), [["d", "Push the drawer"]]);
  }

  show(state) {
    this.state = state;
    this.printer = state.printer;
    for (const [id, , look] of lamps) {
      const lamp = $(`lamp-${id}`);
      const [colour, text] = look(state);
      setAttribute(lamp, "data-look", colour);
      setText(lamp.lastElementChild, text);
    }
    for (const one of switches) {
      one.element.hidden = !(one.has?.(state) ?? true);
      setAttribute(one.element, "aria-checked", Boolean(one.is(state)));
    }
    for (const input of this.paper.querySelectorAll("input")) input.checked = input.value === state.paper;
    this.choose(this.rate, state.speed);
    this.choose(this.pace, state.pace);
    this.showDisplay(state);
    this.showDrawer(state);
    $("ticket").hidden = !state.parts.presenter || state.ticket === "";
    setText($("ticket-state"), state.ticket === "presented" ? "Ticket presented" : "Ticket in the presenter");
  }

  choose(label, value) {
    const select = label.querySelector("select");
    if (document.activeElement === select) return;
    const known = [...select.options].find((option) => option.value === String(value));
    if (!known) select.add(new Option(value, value));
    select.value = String(value);
  }

  showDisplay(state) {
    const box = $("display");
    box.hidden = state.display.length === 0;
    const text = state.display.join("\n");
    if (box.dataset.text === text) return;
    box.dataset.text = text;
    box.setAttribute("aria-label", `Customer display: ${state.display.map((row) => row.trim()).join(", ") || "dark"}`);
    box.replaceChildren(...state.display.map((row) =>
      make("div", {}, ...[...row].map((character) => make("span", {}, character)))));
  }

  showDrawer(state) {
    $("drawer").hidden = !state.parts.drawer;
    $("drawer").classList.toggle("open", state.drawer === "open");
    setText($("drawer-state"), `Drawer ${state.drawer}`);
    setText($("drawer-push"), state.drawer === "open" ? "Push shut" : "Pull open");
  }
}
