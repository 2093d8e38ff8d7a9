// The page: several printers, one of them on the table, or one receipt alone.

import { $, address, api, clock, make, setAttribute, setText } from "./dom.js";
import { Live } from "./live.js";
import { Panel } from "./panel.js";
import { Paper } from "./paper.js";
import { Stream } from "./stream.js";

const kLinesSpoken = 60; // lines of the log that is read out
const kReceiptsListed = 100;

// "/printers/2" or "/printers/2/receipts/7"
const [, chosenPrinter, chosenReceipt] =
  (location.pathname.match(/^\/printers\/(\d+)(?:\/receipts\/(\d+))?/) ?? []).map(Number);

const states = new Map(); // of all printers
let printer = chosenPrinter || 1;
const receipt = chosenReceipt || null; // looked at alone
let lastItem = 0;
let cleared = 0; // receipts up to this one are off the table
let pinned = null; // the place that stays marked
let listed = -1; // for which state the list of receipts was fetched

const panel = new Panel();
const paper = new Paper($("paper"), (place, pin) => point(place, pin, "paper"));
const stream = new Stream($("stream"), $("detail"), $("count"), (place, pin) => point(place, pin, "stream"));

function point(place, pin, from) {
  if (pin) pinned = place;
  const shown = place ?? pinned;
  paper.mark(shown, pin && from === "stream");
  stream.mark(shown, pin && from === "paper");
  if (pin) {
    setText($("line"), place ? paper.text(place) || "an empty line" : "");
    showSaving();
  }
}

// Which receipt is saved: the one of the marked line, else the last that was cut, else what has come out so far.
function showSaving() {
  const state = states.get(printer);
  const number = receipt ?? pinned?.piece ?? (state && (state.rows > 0 || state.piece === 1 ? state.piece : state.piece - 1));
  if (!number) return;
  for (const form of ["png", "txt", "bin", "json"]) {
    const link = $(`save-${form}`);
    setAttribute(link, "href", api(printer, `/receipts/${number}.${form}`));
    setAttribute(link, "download", `printer-${printer}-receipt-${number}.${form}`);
    setAttribute(link, "aria-label", `Save receipt ${number} as ${link.textContent}`);
  }
  $("copy").dataset.path = `/printers/${printer}/receipts/${number}`;
}

function addItems(items) {
  const news = items.filter((item) => item.number > lastItem);
  if (news.length === 0) return;
  lastItem = news.at(-1).number;
  const spoken = [];
  for (const item of news) {
    if (item.event === "line" && item.piece > cleared) {
      paper.piece(item.piece).setLine(item);
      if (item.text.trim()) spoken.push(item.text);
    } else if ((item.event === "cut" || item.event === "torn") && item.piece > cleared) {
      paper.piece(item.piece).end(item.kind ?? "torn");
    }
  }
  stream.add(news);
  speak(spoken);
}

function speak(texts) {
  const log = $("log");
  log.append(...texts.slice(-kLinesSpoken).map((text) => make("li", {}, text)));
  while (log.childElementCount > kLinesSpoken) log.firstElementChild.remove();
}

function showState(state) {
  panel.show(state);
  document.title = `${state.name} \u00b7 Virtual printer`;
  if (receipt) return;
  paper.width = state.width;
  if (state.piece > cleared && state.rows > 0) {
    const piece = paper.piece(state.piece);
    piece.rows = Math.max(piece.rows, state.rows);
  }
  paper.setUnfinished(state.unfinished);
  paper.refresh();
  showUnknown(state.unknown);
  showSaving();
  if (state.cuts + state.piece !== listed) {
    listed = state.cuts + state.piece;
    listReceipts();
  }
}

function showUnknown(unknown) {
  const box = $("unknown");
  box.hidden = unknown.length === 0;
  setText(box.querySelector("summary"), `Not understood: ${unknown.length}`);
  box.querySelector("ul").replaceChildren(...unknown.map((one) =>
    make("li", {}, make("code", {}, one.bytes), ` ${one.why}${one.times > 1 ? `, ${one.times} times` : ""}`)));
}

async function listReceipts() {
  const response = await fetch(api(printer, "/receipts"));
  if (!response.ok) return;
  const { receipts } = await response.json();
  const recent = receipts.slice(-kReceiptsListed).reverse();
  $("receipts").replaceChildren(...recent.map((one) => make("li", {},
    make("a", { href: address(`/printers/${printer}/receipts/${one.number}`),
      "aria-current": one.number === receipt ? "page" : null },
    make("b", {}, `${one.number}`), " ", make("span", { class: "title" }, one.title ?? "no text"),
    make("span", { class: "quiet" }, `${clock(one.ended)} \u00b7 ${Math.round(one.rows / 8)} mm`),
    one.unknown ? make("em", { title: "with something that was not understood" }, "?") : null))));
  // The sizes of those on the table, whose lines may have come before the page did.
  if (receipt) return;
  for (const one of receipts) {
    if (one.number <= cleared || !paper.pieces.has(one.number)) continue;
    paper.piece(one.number).rows = one.rows;
    paper.piece(one.number).end(one.end);
  }
  paper.refresh();
}

// Lines and commands of one receipt, for a page that was not there when it was printed.
async function fetchPiece(number) {
  const response = await fetch(api(printer, `/receipts/${number}.json`));
  if (!response.ok) return null;
  const content = await response.json();
  const piece = paper.piece(number);
  for (const line of content.lines) piece.setLine(line);
  piece.rows = Math.max(piece.rows, content.rows);
  if (content.end) piece.end(content.end);
  return content;
}

async function lookAtReceipt() {
  document.body.classList.add("alone");
  const state = states.get(printer);
  paper.reset(printer, state.width);
  zoom(0);
  const content = await fetchPiece(receipt);
  $("single").hidden = false;
  const text = content
    ? `Receipt ${receipt} of ${state.name}, ${new Date(content.begun).toLocaleString()}, ${content.bytes} bytes.`
    : `Receipt ${receipt} has been forgotten.`;
  setText($("single").firstElementChild, text);
  $("back").href = address(`/printers/${printer}`);
  if (!content) return;
  paper.width = content.width;
  paper.following = false;
  stream.add(content.commands.map((one, index) =>
    ({ ...one, event: "executed", piece: receipt, number: index, text: one.name === "text" ? one.text ?? "" : undefined })));
  paper.refresh();
  showSaving();
  listReceipts();
}

function choosePrinter(number) {
  printer = number;
  lastItem = 0;
  cleared = 0;
  pinned = null;
  listed = -1;
  $("log").replaceChildren();
  stream.reset();
  const state = states.get(number);
  paper.reset(number, state.width);
  zoom(0);
  showState(state);
  if (state.rows > 0) fetchPiece(state.piece).then(() => paper.refresh());
}

function showPrinters() {
  const nav = $("printers");
  nav.hidden = states.size < 2;
  for (const state of states.values()) {
    let link = nav.querySelector(`[data-printer="${state.printer}"]`);
    if (!link) {
      link = make("a", { href: address(`/printers/${state.printer}`), "data-printer": state.printer },
        make("i", { "aria-hidden": true }), make("span", {}, state.name), make("span", { class: "quiet" }));
      link.addEventListener("click", (event) => {
        if (event.ctrlKey || event.metaKey || receipt) return;
        event.preventDefault();
        history.replaceState(null, "", link.href);
        live.again();
        choosePrinter(state.printer);
      });
      nav.append(link);
    }
    const trouble = !state.power || state.stopped || state.paper === "out" ? "bad" : state.paper === "low" ? "warn" : "good";
    setAttribute(link, "data-look", trouble);
    setText(link.lastElementChild, `${state.place} \u00b7 ${state.lines} lines`);
    if (state.printer === printer) setAttribute(link, "aria-current", "page");
    else link.removeAttribute("aria-current");
  }
}

let begun = false;
const live = new Live((news) => {
  if (news.state) {
    // A program that was started anew counts from the beginning again.
    if (news.printer === printer && begun && news.state.next < lastItem) location.reload();
    states.set(news.printer, news.state);
    showPrinters();
  }
  if (news.printer !== printer) return;
  if (!begun && states.has(printer)) {
    begun = true;
    if (receipt) lookAtReceipt();
    else choosePrinter(printer);
  }
  if (!receipt) {
    if (news.missed > 0 && lastItem > 0) {
      stream.add([{ event: "overrun", bytes: `${news.missed} items not shown,`, number: lastItem }]);
    }
    addItems(news.items);
  }
  if (news.state) showState(news.state);
  paper.refresh();
}, (how) => {
  setText($("link"), { live: "live", paused: "paused", lost: "not connected" }[how]);
  setAttribute($("link"), "data-look", { live: "good", paused: "warn", lost: "bad" }[how]);
});

function pause() {
  const now = $("pause").getAttribute("aria-pressed") !== "true";
  $("pause").setAttribute("aria-pressed", now);
  setText($("pause"), now ? "Go on" : "Pause");
  live.setPaused(now);
}

async function clearPaper() {
  const state = states.get(printer);
  if (!state || receipt) return;
  if (state.rows > 0) await panel.say("tear");
  cleared = state.rows > 0 ? state.piece : state.piece - 1;
  pinned = null;
  paper.forget(cleared);
  stream.reset();
  $("log").replaceChildren();
}

const kThemes = ["auto", "light", "dark"];
function setTheme(theme) {
  if (theme === "auto") delete document.documentElement.dataset.theme;
  else document.documentElement.dataset.theme = theme;
  setText($("theme"), { auto: "Theme", light: "Light", dark: "Dark" }[theme]);
  try {
    localStorage.setItem("theme", theme);
  } catch {
    // A browser that remembers nothing can still be used.
  }
}
function nextTheme() {
  const now = document.documentElement.dataset.theme ?? "auto";
  setTheme(kThemes[(kThemes.indexOf(now) + 1) % kThemes.length]);
}
try {
  setTheme(kThemes.includes(localStorage.getItem("theme")) ? localStorage.getItem("theme") : "auto");
} catch {
  setTheme("auto");
}

function zoom(steps) {
  paper.zoomBy(steps);
  setText($("zoom"), paper.zoomText());
}
zoom(0);

$("pause").addEventListener("click", pause);
$("theme").addEventListener("click", nextTheme);
$("clear").addEventListener("click", clearPaper);
$("smaller").addEventListener("click", () => zoom(-1));
$("larger").addEventListener("click", () => zoom(1));
$("find").addEventListener("input", (event) => stream.find(event.target.value));
$("copy").addEventListener("click", async () => {
  const place = new URL(address($("copy").dataset.path), location.href).href;
  try {
    await navigator.clipboard.writeText(place);
    setText($("copy"), "Copied");
  } catch {
    prompt("The address of this receipt", place);
  }
  setTimeout(() => setText($("copy"), "Copy address"), 2000);
});

$("keys").querySelector("dl").append(...[["space", "Pause, go on"], ["+ and -", "Size of the paper"],
  ["\u2191 and \u2193", "From line to line, on the paper and in the stream"], ["?", "This help"], ...Panel.keys()]
  .flatMap(([key, what]) => [make("dt", {}, make("kbd", {}, key)), make("dd", {}, what)]));
$("help").addEventListener("click", () => $("keys").showModal());

$("paper").addEventListener("keydown", (event) => {
  const step = { ArrowDown: 1, ArrowUp: -1 }[event.key];
  if (!step) return;
  event.preventDefault();
  const place = paper.neighbour(pinned, step);
  if (!place) return;
  paper.following = false;
  point(place, true, "paper");
  paper.mark(place, true);
});

document.addEventListener("keydown", (event) => {
  const typing = event.target.closest("input:not([type=radio]), select, textarea, dialog");
  if (typing || event.ctrlKey || event.metaKey || event.altKey) return;
  const onButton = event.target.closest("button, a, summary, input");
  if (event.key === " " && !onButton) pause();
  else if (event.key === "+") zoom(1);
  else if (event.key === "-") zoom(-1);
  else if (event.key === "?") $("keys").showModal();
  else if (event.key === " " || !panel.key(event.key)) return;
  event.preventDefault();
});
