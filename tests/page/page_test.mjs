// The page of the virtual printer in a real browser, with a till that prints through the service objects.
//
//   node page_test.mjs BIN-FOLDER PICTURES-FOLDER

import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { readFileSync, rmSync, mkdirSync, writeFileSync } from "node:fs";
import { createServer } from "node:http";
import { join, resolve } from "node:path";
import { Program, browse, patience, temporaryFolder } from "./program.mjs";

const [bin, pictures] = process.argv.slice(2).map((path) => resolve(path));
const work = temporaryFolder("page");
const cleanUp = [];
const started = Date.now();

const steps = [];
const step = (name, run) => steps.push({ name, run });

// What all steps use.
const printer = new Program(join(bin, "marbex-virtual-printer"), [
  "--model", "TALIS ETHERNET", "--name", "Till 1", "--tcp", "127.0.0.1:0",
  "--model", "VELA PC", "--name", "Bar", "--tcp", "127.0.0.1:0",
  "--model", "BRISA-HD", "--name", "Kitchen", "--tcp", "127.0.0.1:0", "--web", "0"]);
cleanUp.push(() => printer.end());
const first = JSON.parse((await printer.expect((line) => line.includes('"listening"'), "first line")).line);
const home = first.page;
const { context, close } = await browse();
cleanUp.push(close);
const page = await context.newPage();
const complaints = [];
page.on("pageerror", (error) => complaints.push(error.message));
page.on("console", (message) => message.type() === "error" && complaints.push(message.text()));

const api = (number, path = "") => `${home}api/printers/${number}${path}`;
const print = async (number, bytes) =>
  (await fetch(api(number, "/print"), { method: "POST", body: Buffer.from(bytes, "latin1") })).json();
const state = async (number) => (await fetch(api(number))).json();
const inLog = (text) => page.locator("#log li", { hasText: text }).first().waitFor({ state: "attached" });
const lampSays = (lamp, text) => page.locator(`#lamp-${lamp} b`, { hasText: new RegExp(`^${text}$`) }).waitFor();
// Waits until a function of the page says true.
const until = (run, argument) => page.waitForFunction(run, argument);
const darkDots = () => page.evaluate(() => {
  let dark = 0;
  for (const canvas of document.querySelectorAll(".sheet canvas")) {
    const { data } = canvas.getContext("2d").getImageData(0, 0, canvas.width, canvas.height);
    for (let i = 3; i < data.length; i += 4) dark += data[i] ? 1 : 0;
  }
  return dark;
});

// A till on the other side of the printer.
function makeTill() {
  const registry = join(work, "registry.reg");
  const key = "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage";
  writeFileSync(registry, `Windows Registry Editor Version 5.00\r\n\r\n[${key}]\r\n"ACP"="65001"\r\n`);
  const tool = join(bin, "marbex-opos");
  execFileSync(tool, ["register", "--registry", registry]);
  execFileSync(tool, ["devices", "add", "Till1", "PrinterModel=TALIS ETHERNET", "PortType=ethernet",
    "IPAddress=127.0.0.1", `Port=${first.port}`, "--registry", registry]);
  const till = new Program(tool, ["console", "--registry", registry]);
  cleanUp.push(() => till.end());
  return till;
}

step("shows what a till prints", async () => {
  await page.goto(home);
  await lampSays("cover", "closed");
  const till = makeTill();
  globalThis.till = till;
  for (const line of ['POSPrinter.OpenService("POSPrinter", "Till1")', "POSPrinter.ClaimDevice(2000)",
    "POSPrinter.DeviceEnabled = true", "POSPrinter.AsyncMode = true", "answer retry",
    'POSPrinter.PrintNormal(PTR_S_RECEIPT, "Caf\\u00e9 \\e|bCMARBEX\\e|N\\n")', "expect OutputCompleteEvent 8000"]) {
    till.say(line);
  }
  await inLog("Café MARBEX");
  await lampSays("till", "connected");
  await until(() => document.querySelectorAll("#stream .row").length > 3);
  const mine = await page.locator("#stream .row", { hasText: "Café MARBEX" }).count()
    + await page.locator("#stream .row.text", { hasText: "MARBEX" }).count();
  assert.ok(mine > 0, "the text is in the stream");
  // The canvas shows dots of it, as many as the picture that is saved.
  await until(() => document.querySelector(".sheet canvas"));
  const deadline = Date.now() + patience;
  while ((await darkDots()) < 300) assert.ok(Date.now() < deadline, "no dots on the paper");
});

step("lets the application hear of an open cover, retry, and print the rest", async () => {
  const { till } = globalThis;
  const from = till.lines.length;
  await page.getByRole("switch", { name: "Cover open" }).click();
  await lampSays("cover", "open");
  await till.expect((line) => line.startsWith("! StatusUpdateEvent POSPrinter 11"), "status of the cover", from);
  // More than the printer's buffer and the link take: the till is stuck, and hears of it when its time-out is over.
  const long = "much to print\\n".repeat(22000);
  till.say(`POSPrinter.PrintNormal(PTR_S_RECEIPT, "${long}after the cover\\n")`);
  till.say("expect ErrorEvent 20000");
  const { line } = await till.expect((text) => text.startsWith("! ErrorEvent"), "error event", from, 20000);
  assert.match(line, /^! ErrorEvent POSPrinter \d+ \d+ 1 11/, "answered RETRY");
  assert.equal(await page.locator("#log li", { hasText: "much to print" }).count(), 0);
  await page.getByRole("switch", { name: "Cover open" }).click();
  await lampSays("cover", "closed");
  till.say("expect OutputCompleteEvent 8000");
  await till.expect((text) => text.startsWith("! OutputCompleteEvent"), "completion", from);
  await inLog("after the cover");
  till.say("POSPrinter.ReleaseDevice()");
  till.say("POSPrinter.CloseService()");
});

step("leads from a line to its bytes and back", async () => {
  const number = (await state(1)).piece;
  await print(1, "\x1b!\x08BOLD LINE\n\x1b!\x00plain line\n\x1bi");
  await page.locator(`.piece[data-number="${number}"].cut`).waitFor();
  await page.locator("#stream .row", { hasText: "BOLD LINE" }).click();
  await page.locator("#detail code", { hasText: "42 4F 4C 44 20 4C 49 4E 45" }).waitFor();
  await page.locator(".mark:not([hidden])").waitFor();
  assert.equal(await page.locator("#line").textContent(), "BOLD LINE");
  assert.ok(await page.locator("#stream .row.marked", { hasText: "print mode: bold" }).count() > 0, "its settings, too");
  const box = await page.locator(".mark:not([hidden])").boundingBox();
  await page.mouse.click(box.x + 30, box.y + box.height * 1.5);
  await page.locator("#line", { hasText: "plain line" }).waitFor();
  await page.locator("#stream .row.marked", { hasText: "plain line" }).waitFor();
});

step("saves a receipt in four forms and gives it an address", async () => {
  const content = {};
  for (const form of ["png", "txt", "bin", "json"]) {
    const [download] = await Promise.all([page.waitForEvent("download"), page.locator(`#save-${form}`).click()]);
    content[form] = readFileSync(await download.path());
  }
  assert.equal(content.png.subarray(1, 4).toString(), "PNG");
  assert.match(content.txt.toString(), /BOLD LINE\nplain line\n$/);
  assert.ok(content.bin.toString("latin1").endsWith("\x1b!\x08BOLD LINE\n\x1b!\x00plain line\n\x1bi"));
  const { number } = JSON.parse(content.json);
  const other = await context.newPage();
  await other.goto(`${home}printers/1/receipts/${number}`);
  await other.locator(".single", { hasText: `Receipt ${number} of Till 1` }).waitFor();
  await other.locator("#stream .row", { hasText: "BOLD LINE" }).click();
  await other.locator(".mark:not([hidden])").waitFor();
  await other.close();
});

step("is used by the keyboard alone", async () => {
  await page.goto(`${home}printers/2`);
  await lampSays("paper", "ok");
  await print(2, "first\nsecond\n\x1b\xb2DTOTAL 1,20\x1b\xb2P\x1bp0\x19\x19");
  await inLog("second");
  await page.locator("#drawer-state", { hasText: "Drawer open" }).waitFor();
  assert.match(await page.locator("#display").getAttribute("aria-label"), /TOTAL 1,20/);
  await page.keyboard.press("d");
  await page.locator("#drawer-state", { hasText: "Drawer closed" }).waitFor();
  await page.keyboard.press("p");
  await lampSays("paper", "out");
  await page.keyboard.press("k");
  await lampSays("paper", "ok");
  // Every switch can be reached by the tab key and has a name.
  await page.locator("#skip, .skip").focus();
  const reached = new Set();
  for (let i = 0; i < 60; ++i) {
    await page.keyboard.press("Tab");
    reached.add(await page.evaluate(() => document.activeElement?.id || document.activeElement?.name));
  }
  for (const id of ["switch-cover", "switch-power", "switch-mute", "switch-refuse", "switch-sensor", "strike-drop",
    "drawer-push", "paper", "stream", "find", "pause", "save-png", "clear", "slow", "speed"]) {
    assert.ok(reached.has(id), `the tab key reaches ${id}`);
  }
  const nameless = await page.evaluate(() => [...document.querySelectorAll("button, select, input, a[href]")]
    .filter((one) => one.offsetParent && !(one.textContent.trim() || one.getAttribute("aria-label") || one.labels?.length))
    .map((one) => one.outerHTML));
  assert.deepEqual(nameless, []);
  await page.locator("#switch-cover").focus();
  await page.keyboard.press("Space");
  await lampSays("cover", "open");
  await page.keyboard.press("Enter");
  await lampSays("cover", "closed");
  // Arrows on the paper say the lines.
  await page.locator("#paper").focus();
  await page.keyboard.press("ArrowUp");
  await page.locator("#line", { hasText: "second" }).waitFor();
  await page.keyboard.press("ArrowUp");
  await page.locator("#line", { hasText: "first" }).waitFor();
  await page.keyboard.press("?");
  await page.locator("dialog[open]").waitFor();
  await page.keyboard.press("Escape");
});

step("pauses, clears, and follows the address to another printer", async () => {
  await page.locator("#pause").click();
  await page.locator("#link", { hasText: "paused" }).waitFor();
  await print(2, "while paused\n");
  assert.equal(await page.locator("#log li", { hasText: "while paused" }).count(), 0);
  await page.locator("#pause").click();
  await inLog("while paused");
  await page.locator("#clear").click();
  await until(() => document.querySelectorAll(".piece").length === 0);
  assert.equal((await state(2)).rows, 0);
  await page.locator("nav a", { hasText: "Kitchen" }).click();
  await until(() => location.pathname === "/printers/3");
  await page.getByRole("switch", { name: "Paper jam" }).click();
  await lampSays("error", "paper jam");
  await page.keyboard.press("j");
  await lampSays("error", "none");
});

step("shows two browsers the same", async () => {
  const second = await browse();
  try {
    const other = await second.context.newPage();
    await other.goto(`${home}printers/3`);
    await other.getByRole("switch", { name: "Cover open" }).click();
    await lampSays("cover", "open");
    await page.getByRole("switch", { name: "Cover open" }).click();
    await other.locator("#lamp-cover b", { hasText: /^closed$/ }).waitFor();
    await print(3, "for both\n");
    for (const one of [page, other]) await one.locator("#log li", { hasText: "for both" }).waitFor({ state: "attached" });
  } finally {
    await second.close();
  }
});

step("stays small while ten thousand lines go by", async () => {
  const memory = () => Number(/VmRSS:\s+(\d+)/.exec(readFileSync(`/proc/${printer.process.pid}/status`))[1]);
  const heap = async () => {
    const session = await context.newCDPSession(page);
    await session.send("HeapProfiler.collectGarbage");
    const { usedSize } = await session.send("Runtime.getHeapUsage");
    await session.detach();
    return usedSize;
  };
  const many = (name) => Array.from({ length: 5000 }, (_, i) => `${name} line ${i + 1} of five thousand\n`).join("");
  await print(3, many("first"));
  await inLog("first line 5000");
  const before = { memory: memory(), heap: await heap() };
  await print(3, many("second"));
  await inLog("second line 5000");
  assert.ok((await state(3)).lines >= 10000);
  const counts = await page.evaluate(() => ({
    all: document.querySelectorAll("*").length, canvases: document.querySelectorAll("canvas").length,
    rows: document.querySelectorAll("#stream .row").length, spoken: document.querySelectorAll("#log li").length }));
  assert.ok(counts.all < 1500 && counts.canvases < 20 && counts.rows < 100 && counts.spoken <= 60, JSON.stringify(counts));
  const grown = { memory: memory() - before.memory, heap: (await heap()) - before.heap };
  // 5000 lines are 160000 rows of 120 bytes, which the paper keeps up to its 50 metres: 19 MB, twice while it grows.
  assert.ok(grown.memory < 90000, `the program grew by ${grown.memory} kB`);
  assert.ok(grown.heap < 8e6, `the page grew by ${grown.heap} bytes`);
  await page.locator("#paper").evaluate((table) => { table.scrollTop = 0; });
  await until(() => document.querySelector(".sheet canvas") && document.querySelector("#paper").scrollTop === 0);
});

step("cannot be used by a page from elsewhere", async () => {
  const server = createServer((request, response) => {
    response.setHeader("Content-Type", "text/html");
    response.end("<title>elsewhere</title>");
  });
  await new Promise((listening) => server.listen(0, "127.0.0.1", listening));
  try {
    const hostile = await context.newPage();
    for (const host of ["127.0.0.1", "localhost"]) {
      await hostile.goto(`http://${host}:${server.address().port}/`);
      const results = await hostile.evaluate(async (target) => {
        const done = [];
        const url = `${target}api/printers/1/command`;
        await fetch(url, { method: "POST", mode: "no-cors", body: "cover open" }).catch(() => {});
        done.push(await fetch(`${target}api/printers`).then((r) => r.status, () => "refused"));
        done.push(await new Promise((answer) => {
          const socket = new WebSocket(`${target.replace("http", "ws")}api/live`);
          socket.onopen = () => answer("open");
          socket.onerror = () => answer("refused");
        }));
        const form = Object.assign(document.createElement("form"), { method: "POST", action: url, enctype: "text/plain" });
        form.append(Object.assign(document.createElement("input"), { name: "cover open", value: "" }));
        document.body.append(form);
        form.submit();
        return done;
      }, home);
      assert.deepEqual(results, ["refused", "refused"]);
      await hostile.waitForURL(/command/);
      assert.match(await hostile.content(), /may not use/);
    }
    const framed = await hostile.goto(`http://127.0.0.1:${server.address().port}/`).then(() =>
      hostile.evaluate((target) => new Promise((answer) => {
        const frame = Object.assign(document.createElement("iframe"), { src: target });
        frame.onload = () => answer("loaded");
        document.body.append(frame);
      }), home));
    assert.equal(framed, "loaded");
    assert.ok(hostile.frames().every((frame) => !frame.url().startsWith(home)), "not inside another page");
    await hostile.close();
  } finally {
    server.close();
  }
  assert.equal((await state(1)).cover, "closed");
});

step("draws its pictures", async () => {
  mkdirSync(pictures, { recursive: true });
  const receipt = readFileSync(new URL("receipt.bin", import.meta.url)).toString("latin1");
  await print(2, receipt);
  await print(2, "\x1b\xb2D\x1b\xa0\x00TOTAL          13,00Thank you!\x1b\xb2P\x1bp0\x19\x19\x10\x04\x14");
  await print(2, "Order 42\nTable 7\n2 x Cappuccino\n");
  await page.goto(`${home}printers/2`);
  await page.locator("#stream .row", { hasText: "Cappuccino" }).last().waitFor();
  await page.locator("#stream .row.text", { hasText: "Table 7" }).click();
  await page.locator(".mark:not([hidden])").waitFor();
  await until(() => document.querySelectorAll(".sheet canvas").length > 1);
  const settled = () => page.waitForFunction(() => new Promise((quiet) => setTimeout(() => quiet(true), 150)));
  await settled();
  await page.screenshot({ path: join(pictures, "page.png") });
  await page.emulateMedia({ colorScheme: "dark" });
  await page.getByRole("switch", { name: "Cover open" }).click();
  await lampSays("cover", "open");
  await settled();
  await page.screenshot({ path: join(pictures, "page-dark.png") });
  await page.setViewportSize({ width: 390, height: 844 });
  await page.goto(`${home}printers/2/receipts/2`);
  await page.locator(".single", { hasText: "Receipt 2" }).waitFor();
  await page.emulateMedia({ colorScheme: "light" });
  await settled();
  await page.screenshot({ path: join(pictures, "page-phone.png") });
  // A narrow screen shows the paper whole.
  const { sheet, screen } = await page.evaluate(() => ({
    sheet: document.querySelector(".sheet").getBoundingClientRect().right, screen: innerWidth }));
  assert.ok(sheet <= screen, `paper ends at ${sheet} of ${screen}`);
});

let failed = 0;
for (const { name, run } of steps) {
  const begun = Date.now();
  try {
    await run();
    console.log(`ok   ${name} (${Date.now() - begun} ms)`);
  } catch (error) {
    ++failed;
    console.log(`FAIL ${name}\n${error.stack}`);
    await page.screenshot({ path: join(work, "failed.png") }).catch(() => {});
    console.log(printer.lines.filter((l) => !/"text"/.test(l)).slice(-12).map((l) => l.slice(0, 300)).join("\n"));
    console.log(`     the page then: ${join(work, "failed.png")}`);
    break;
  }
}
for (const complaint of complaints) console.log(`FAIL the page complains: ${complaint}`);
for (const end of cleanUp.reverse()) await end();
if (failed === 0 && complaints.length === 0) rmSync(work, { recursive: true, force: true });
console.log(`${steps.length} steps, ${((Date.now() - started) / 1000).toFixed(1)} s`);
process.exit(failed > 0 || complaints.length > 0 ? 1 : 0);
