// What the tests of the site share: the site, served on this machine, and a browser.

import { execFileSync } from "node:child_process";
import { mkdtempSync, rmSync } from "node:fs";
import { createRequire } from "node:module";
import { tmpdir } from "node:os";
import { join } from "node:path";

import { serve } from "../../web/site/tools/serve.mjs";
import { root, tool } from "./support.mjs";

const require = createRequire(join(root, "build/web/site/"));
const { chromium } = require("playwright-core");

export const site = join(root, "build/site");

/** The site at another path, as `scripts/site --base` makes it. */
export function placedAt(base) {
  const folder = mkdtempSync(join(tmpdir(), "tarvo-site-"));
  process.on("exit", () => rmSync(folder, { recursive: true }));
  execFileSync(join(root, "scripts/site"), ["--base", base, "--into", folder], { stdio: "ignore" });
  return folder;
}

const contexts = [];

/** Serves the site while `work(address)` goes on, with pages that are closed behind it. */
export async function served(folder, work) {
  const { address, close } = await serve(folder);
  try {
    return await work(address);
  } finally {
    for (const context of contexts.splice(0)) await context.close();
    await close();
  }
}

let browser;
export async function closeBrowser() {
  await browser?.close();
}

/** A page that gathers what goes wrong on it: `page.wrong` has what is written to the console as an error, what nobody caught,
 *  and what could not be loaded. */
export async function newPage(options = {}) {
  browser ??= await chromium.launch({ executablePath: "/usr/bin/chromium", args: ["--no-sandbox", "--disable-gpu"] });
  const context = await browser.newContext({ viewport: { width: 1280, height: 900 }, ...options });
  contexts.push(context);
  const page = await context.newPage();
  page.wrong = [];
  page.on("console", (message) => message.type() === "error" && page.wrong.push(message.text()));
  page.on("pageerror", (error) => page.wrong.push(String(error)));
  page.on("response", (response) => response.status() >= 400 && page.wrong.push(`${response.status()} ${response.url()}`));
  page.on("requestfailed", (request) => {
    // A page that is left stops what it has been loading.
    if (request.failure()?.errorText !== "net::ERR_ABORTED") page.wrong.push(`${request.failure()?.errorText} ${request.url()}`);
  });
  return page;
}

/** The hash of what is shown, once all is drawn; other than `before`, if that is given. */
export async function hashOf(page, before = "") {
  await page.waitForFunction((old) => (document.querySelector("[data-result]")?.dataset.sha256 ?? old) !== old, before);
  return page.locator("[data-result]").getAttribute("data-sha256");
}

/** Whether what is shown comes to have the hash. */
export async function shown(page, hash) {
  try {
    await page.waitForFunction((wanted) => document.querySelector("[data-result]")?.dataset.sha256 === wanted, hash, { timeout: 15000 });
    return true;
  } catch {
    return page.evaluate(() => document.querySelector("[data-operation]")?.innerText ?? "nothing");
  }
}

/** The hash of what the tool makes of a picture and calls. */
export function nativeHash(words) {
  return tool("apply", "--hash", "-q", ...words).toString().match(/^[0-9a-f]{64}(?=  )/gm).at(-1);
}

/** Drops a file on the live part of a page. */
export async function dropped(page, name, bytes) {
  const data = await page.evaluateHandle(
    ([name, text]) => {
      const transfer = new DataTransfer();
      transfer.items.add(new File([Uint8Array.from(atob(text), (each) => each.charCodeAt(0))], name));
      return transfer;
    },
    [name, Buffer.from(bytes).toString("base64")],
  );
  await page.dispatchEvent(".tarvo-live", "drop", { dataTransfer: data });
}
