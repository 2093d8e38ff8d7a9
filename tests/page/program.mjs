// The programs that the browser test runs, and the browser.

import { spawn } from "node:child_process";
import { createInterface } from "node:readline";
import { mkdtempSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { chromium } from "playwright-core";

export const patience = 10000; // milliseconds, for anything that should happen at once

export function temporaryFolder(name) {
  return mkdtempSync(join(tmpdir(), `marbex-${name}-`));
}

// A program that is told lines and says lines.
export class Program {
  constructor(file, args) {
    this.process = spawn(file, args, { stdio: ["pipe", "pipe", "inherit"] });
    this.lines = [];
    this.waiting = [];
    this.ended = new Promise((resolve) => this.process.on("exit", resolve));
    createInterface({ input: this.process.stdout }).on("line", (line) => {
      this.lines.push(line);
      for (const look of [...this.waiting]) look();
    });
  }
  say(line) {
    this.process.stdin.write(`${line}\n`);
  }
  // The first line that fits, from a place in the output on.
  expect(fits, what, from = 0, limit = patience) {
    return new Promise((resolve, reject) => {
      const stop = () => {
        clearTimeout(timer);
        this.waiting = this.waiting.filter((other) => other !== look);
      };
      const look = () => {
        const index = this.lines.findIndex((line, i) => i >= from && fits(line));
        if (index < 0) return;
        stop();
        resolve({ line: this.lines[index], next: index + 1 });
      };
      const timer = setTimeout(() => {
        stop();
        reject(new Error(`no ${what}; the last lines were\n${this.lines.slice(-12).join("\n")}`));
      }, limit);
      this.waiting.push(look);
      look();
    });
  }
  async end() {
    this.process.stdin.end();
    const timer = setTimeout(() => this.process.kill("SIGKILL"), patience);
    const code = await this.ended;
    clearTimeout(timer);
    return code;
  }
}

// A browser of its own, with nothing remembered and nothing asked of the network.
export async function browse(options = {}) {
  const profile = temporaryFolder("profile");
  const context = await chromium.launchPersistentContext(profile, {
    executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium",
    headless: true,
    viewport: { width: 1400, height: 900 },
    colorScheme: "light",
    acceptDownloads: true,
    args: ["--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
      "--disable-component-update", "--disable-sync"],
    ...options,
  });
  context.setDefaultTimeout(patience);
  return {
    context,
    close: async () => {
      await context.close();
      rmSync(profile, { recursive: true, force: true });
    },
  };
}
