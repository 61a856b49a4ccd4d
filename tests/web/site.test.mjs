// The site as it is built: every link leads somewhere, at any path, and pages come to life in a browser.

import assert from "node:assert/strict";
import { execFileSync, spawn } from "node:child_process";
import { randomBytes } from "node:crypto";
import { existsSync, mkdirSync, mkdtempSync, readdirSync, readFileSync, rmSync, statSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import test, { after } from "node:test";

import { closeBrowser, newPage, placedAt, served, site } from "./browser.mjs";
import { builtBase } from "../../web/site/tools/base.mjs";
import { root } from "./support.mjs";

after(closeBrowser);

const elsewhere = placedAt("/a/b/");
const places = [
  ["/", site],
  ["/a/b/", elsewhere],
];

function unescaped(text) {
  return decodeURIComponent(text.replaceAll("&amp;", "&"));
}

/** What leads nowhere, of all links, scripts, styles and pictures of a site's pages. */
function leadsNowhere(folder, base) {
  const pages = readdirSync(folder, { recursive: true }).map(String).filter((name) => name.endsWith(".html") && name !== "404.html");
  assert.ok(pages.length > 40);
  const texts = new Map(pages.map((page) => [page, readFileSync(join(folder, page), "utf8")]));
  const wrong = [];
  for (const [page, text] of texts)
    for (const [, address] of text.matchAll(/(?:href|src)="([^"]*)"/g)) {
      if (/^(data|https?|mailto):/.test(address)) continue;
      const { pathname, hash } = new URL(unescaped(address), `http://any${base}${page}`);
      let file = pathname.startsWith(base) ? pathname.slice(base.length) : undefined;
      if (file === "" || file?.endsWith("/")) file += "index.html";
      const found = file !== undefined && existsSync(join(folder, file)) && statSync(join(folder, file)).isFile();
      const heading = hash.slice(1);
      if (!found || (heading && !texts.get(file)?.includes(` id="${heading}"`))) wrong.push(`${page}: ${address}`);
    }
  return wrong;
}

for (const [base, folder] of places)
  test(`every link of the site at ${base} leads somewhere`, () => assert.deepEqual(leadsNowhere(folder, base), []));

test("no page names an address outside of the site", () => {
  for (const name of readdirSync(site, { recursive: true }).map(String).filter((each) => /\.(html|css)$/.test(each))) {
    const outside = readFileSync(join(site, name), "utf8").match(/(?:src|href)="https?:[^"]*|url\(["']?https?:[^)]*/g) ?? [];
    assert.deepEqual(outside, [], name);
  }
});

for (const [base, folder] of places)
  test(`a page of the site at ${base} loads, and leads to others`, () =>
    served(folder, async (address) => {
      const page = await newPage();
      await page.goto(`${address}words.html`);
      await page.getByRole("link", { name: "Operations", exact: true }).first().click();
      await page.waitForURL(/\/ops\//);
      await page.getByRole("link", { name: "TRV_Stretch", exact: true }).first().click();
      await page.getByRole("heading", { level: 1, name: /TRV_Stretch/ }).waitFor();
      assert.equal(page.url(), `${address}ops/TRV_Stretch.html`);
      assert.deepEqual(page.wrong, []);
    }));

test("a search finds an operation by its page's words", () =>
  served(site, async (address) => {
    const page = await newPage();
    await page.goto(`${address}words.html`);
    // The key does nothing before the page's scripts have begun.
    const box = page.getByRole("searchbox");
    for (let i = 0; i < 50 && !(await box.isVisible()); ++i) {
      await page.keyboard.press("Control+k");
      await box.waitFor({ timeout: 500 }).catch(() => {});
    }
    await box.fill("quarter turns");
    await page.getByRole("option", { name: /FlipRotate/ }).first().waitFor();
    assert.deepEqual(page.wrong, []);
  }));

test("--serve shows the site, and what is no path is refused", async () => {
  const shown = spawn(join(root, "scripts/site"), ["--serve", "--port", "0", "--into", elsewhere]);
  try {
    const address = await new Promise((done, failed) => {
      shown.stdout.once("data", (line) => done(String(line).trim()));
      shown.once("exit", () => failed(new Error("it has ended")));
    });
    assert.match(address, /^http:\/\/127\.0\.0\.1:\d+\/a\/b\/$/);
    assert.match(await (await fetch(`${address}tool.html`)).text(), /<h1[^>]*>The tool/);
    assert.equal((await fetch(new URL("/tool.html", address))).status, 404);
    assert.equal((await fetch(`${address}..%2f..%2fpackage.json`)).status, 404);
  } finally {
    shown.kill();
  }
  for (const wrong of ["x", "/x", "x/", '/"/'])
    assert.throws(() => execFileSync(join(root, "scripts/site"), ["--base", wrong, "--into", `${elsewhere}-wrong`], { stdio: "ignore" }));
});

test("a page that first loads a megabyte of code fails the build", () => {
  const built = mkdtempSync(join(tmpdir(), "tarvo-size-"));
  try {
    mkdirSync(join(built, "assets"));
    writeFileSync(join(built, "index.html"), `<script src="${builtBase}assets/app.js"></script>`);
    const sized = (bytes) => {
      writeFileSync(join(built, "assets/app.js"), randomBytes(bytes)); // nothing makes it smaller
      execFileSync("node", [join(root, "web/site/tools/check-size.mjs"), built], { stdio: "ignore" });
    };
    sized(990_000);
    assert.throws(() => sized(1_010_000));
    writeFileSync(join(built, "assets/tarvo.x.wasm"), randomBytes(20_000)); // which no page names
    assert.throws(() => sized(990_000));
  } finally {
    rmSync(built, { recursive: true });
  }
});
