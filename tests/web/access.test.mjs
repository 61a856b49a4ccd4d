// The site for everybody: without a mouse, on a phone, in light and dark, and by the rules of axe-core.

import assert from "node:assert/strict";
import { readdirSync, readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { join } from "node:path";
import test, { after } from "node:test";

import { closeBrowser, hashOf, newPage, nativeHash, served, shown, site } from "./browser.mjs";
import { root } from "./support.mjs";

after(closeBrowser);

const axe = readFileSync(createRequire(join(root, "build/web/site/")).resolve("axe-core/axe.min.js"), "utf8");

async function violations(page) {
  await page.evaluate(axe);
  const { violations: found } = await page.evaluate(() => window.axe.run());
  return found.flatMap(({ id, nodes }) => nodes.map((node) => `${id}: ${node.html.slice(0, 120)} ${node.any.map((each) => each.message).join()}`));
}

const chain = `playground.html#${encodeURI("AdjustContrastWithMask(docs/pictures/fade.png, &c808080, 2.0, 2.0, 2.0)\n#Pixelate(nil, 8)\nTrim(rect(1, 2, 30, 40), &cFF0000)")}`;
const looks = ["index.html", "ops/index.html", "words.html", "tool.html", "ops/TRV_AdjustContrast.html", "ops/TRV_Convolute.html", "ops/TRV_Composite.html", "ops/TRV_Compare.html", "404.html", chain];
const desktop = { width: 1280, height: 900 };
const phone = { width: 360, height: 740 };

for (const [name, options] of [
  ["light", { viewport: desktop, colorScheme: "light" }],
  ["dark, on a phone", { viewport: phone, colorScheme: "dark", hasTouch: true, isMobile: true }],
])
  test(`axe-core finds no violation: ${name}`, () =>
    served(site, async (address) => {
      const page = await newPage(options);
      for (const path of looks) {
        await page.goto("about:blank");
        await page.goto(address + path);
        if (await page.locator(".tarvo-place").count()) await hashOf(page);
        if (path === chain) await page.getByRole("button", { name: "Trim", exact: true }).click();
        assert.deepEqual(await violations(page), [], path);
      }
      await page.goto(`${address}ops/TRV_Stretch.html`);
      await hashOf(page);
      await page.getByLabel("width, as a number").fill("0");
      await page.locator("[data-error]").waitFor();
      assert.deepEqual(await violations(page), [], "with an error");
      await page.goto(`${address}playground.html`);
      await hashOf(page);
      await page.getByLabel("Add an operation").fill("blur");
      await page.getByRole("listbox").getByRole("option").first().waitFor();
      assert.deepEqual(await violations(page), [], "with what is found");
    }));

test("no page is wider than a phone", () =>
  served(site, async (address) => {
    const inPhone = { viewport: phone, hasTouch: true, isMobile: true };
    // What is live takes its time, and is alike on all pages.
    const page = await newPage(inPhone), plain = await newPage({ ...inPhone, javaScriptEnabled: false });
    const look = async (shownIn, path) => {
      await shownIn.goto("about:blank");
      await shownIn.goto(address + path);
      if (shownIn === page && (await page.locator(".tarvo-place").count())) await page.locator(".tarvo-live").waitFor();
      const wide = await shownIn.evaluate(() => document.documentElement.scrollWidth - window.innerWidth);
      assert.ok(wide <= 0, `${path} is ${wide} pixels too wide`);
    };
    const pages = readdirSync(site, { recursive: true }).map(String).filter((name) => name.endsWith(".html") && name !== "404.html");
    assert.ok(pages.length > looks.length);
    for (const path of pages) await look(plain, path);
    for (const path of looks) await look(page, path);
  }));

test("light and dark are what the system asks for", () =>
  served(site, async (address) => {
    const background = async (colorScheme) => {
      const page = await newPage({ colorScheme });
      await page.goto(`${address}playground.html`);
      return page.evaluate(() => getComputedStyle(document.body).backgroundColor);
    };
    assert.notEqual(await background("light"), await background("dark"));
  }));

// --- without a mouse --------------------------------------------------------------------------------------------------

/** What has the focus, as a test knows it: of a control of an argument its name. */
const focused = (page) =>
  page.evaluate(() => {
    const now = document.activeElement;
    const argument = now.closest(".tarvo-row")?.querySelector("[data-argument]").dataset.argument;
    return { argument, type: now.type ?? now.tagName, label: now.getAttribute("aria-label") ?? now.textContent, live: now.closest(".tarvo-live") !== null };
  });

/** Presses Tab through the live part, and calls `at` for each place that the focus comes to. */
async function walk(page, at) {
  await page.evaluate(() => {
    const before = document.querySelector(".tarvo-live").previousElementSibling ?? document.querySelector(".tarvo-place");
    before.setAttribute("tabindex", "-1");
    before.focus({ preventScroll: true });
  });
  let inside = false;
  for (let i = 0; i < 80; ++i) {
    await page.keyboard.press("Tab");
    const now = await focused(page);
    if (inside && !now.live) return;
    inside ||= now.live;
    if (now.live) await at(now);
  }
  assert.fail("Tab does not leave the live part");
}

for (const call of [
  "AdjustContrast(rect(10, 10, 100, 100), &c808080, 1.6, 1.6, 1.6)",
  "AdjustHSV(nil, 120.0, 1.2, 1.0, false)",
  "AdjustRGB(nil, matrix(1, 0, 0, 0, 1, 0, 0, 0, 1))",
  "Convolute(rect(10, 10, 100, 100), convolution(1, 2, 1), convolution(1, 2, 1))",
  "Composite(docs/pictures/chelsea.png, 0.6, 80, 24)",
  "FlipRotate(true, false, 1)",
])
  test(`Tab reaches every control, and arrows change it: ${call.replace(/\(.*/, "")} of ${call.split(",").length}`, () =>
    served(site, async (address) => {
      const page = await newPage();
      await page.goto(`${address}ops/TRV_${call.replace(/\(.*/, "")}.html#${encodeURI(call)}`);
      await hashOf(page);
      const link = () => page.locator("[data-copy=command]").textContent();
      const names = await page.locator("[data-argument]").evaluateAll((all) => all.map((each) => each.dataset.argument));
      const changed = new Map();
      const other = [];
      await walk(page, async ({ argument, type, label }) => {
        if (argument === undefined || type === "color" || type === "button") return void other.push(label);
        const before = await link();
        for (const key of ["ArrowRight", "ArrowUp", "ArrowLeft", "ArrowDown"]) {
          await page.keyboard.press(key);
          if ((await link()) !== before) changed.set(argument, (changed.get(argument) ?? 0) + 1);
          if ((await link()) !== before) break;
        }
      });
      assert.deepEqual([...changed.keys()].sort(), [...names].sort());
      for (const wanted of [/^picture/, /a file of yours/, /^Divider/, /As it was/, /tarvo\.hpp/]) assert.ok(other.some((each) => wanted.test(each)), String(wanted));
      if (call.includes("rect")) assert.ok(other.some((each) => /^Region/.test(each)));
      assert.deepEqual(page.wrong, []);
    }));

test("a chain is built, changed and undone by keys alone", () =>
  served(site, async (address) => {
    const page = await newPage();
    await page.goto(`${address}playground.html`);
    await hashOf(page);
    const tabTo = async (label) => {
      for (let i = 0; i < 60; ++i) {
        const now = await focused(page);
        if (now.live && label.test(now.label)) return;
        await page.keyboard.press("Tab");
      }
      assert.fail(`Tab does not reach ${label}`);
    };
    const typed = async (words) => {
      await tabTo(/^Add an operation/);
      await page.keyboard.type(words);
      await page.keyboard.press("Enter");
    };
    await typed("posterize");
    await typed("mirror");
    const coffee = "docs/pictures/coffee.png";
    assert.equal(await shown(page, nativeHash([coffee, "Downsample(2)", "FlipRotate(true, false, 1)"])), true);
    await tabTo(/^Earlier: FlipRotate/);
    await page.keyboard.press("Enter");
    await tabTo(/^Downsample: on/);
    await page.keyboard.press("ArrowLeft");
    assert.equal(await shown(page, nativeHash([coffee, "FlipRotate(true, false, 1)"])), true);
    await page.keyboard.press("Control+z");
    assert.equal(await shown(page, nativeHash([coffee, "FlipRotate(true, false, 1)", "Downsample(2)"])), true);
    assert.deepEqual(page.wrong, []);
  }));
