// The playground: what is built of operations there is what the tool makes of the same recipe.

import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import test, { after } from "node:test";

import { closeBrowser, dropped, hashOf, newPage, nativeHash, placedAt, served, shown, site } from "./browser.mjs";
import { bytesOf, root, tool } from "./support.mjs";

after(closeBrowser);

const coffee = "docs/pictures/coffee.png";

async function playground(address, hash = "") {
  const page = await newPage({ acceptDownloads: true, permissions: ["clipboard-read", "clipboard-write"] });
  await page.goto(`${address}playground.html${hash}`);
  await hashOf(page);
  return page;
}

/** Adds what a search finds first. */
async function add(page, words, name) {
  const steps = page.locator(".tarvo-step");
  const before = await steps.count();
  await page.getByLabel("Add an operation").fill(words);
  const first = page.getByRole("listbox").getByRole("option").first();
  await first.getByText(name, { exact: true }).waitFor();
  await first.click();
  await steps.nth(before).waitFor();
}

const button = (page, name) => page.getByRole("button", { name, exact: true });

/** Keeps what a button saves while `work(path)` goes on. */
async function saved(page, name, work) {
  const folder = mkdtempSync(join(tmpdir(), "tarvo-playground-"));
  try {
    const [download] = await Promise.all([page.waitForEvent("download"), button(page, name).click()]);
    const path = join(folder, download.suggestedFilename());
    await download.saveAs(path);
    return await work(path);
  } finally {
    rmSync(folder, { recursive: true });
  }
}

const expected = (...calls) => nativeHash([coffee, ...calls]);

for (const [base, folder] of [["/", site], ["/a/b/", placedAt("/a/b/")]])
  test(`a chain of five, one with a mask, is a recipe that the tool runs, at ${base}`, () =>
    served(folder, async (address) => {
      const page = await playground(address);
      await add(page, "contrast mask", "AdjustContrastWithMask");
      await page.locator("[data-operation=TRV_AdjustContrastWithMask] [data-argument=red_factor]").fill("2.5");
      await add(page, "hue", "AdjustHSV");
      await add(page, "mirror", "FlipRotate");
      await add(page, "pixelate", "Pixelate");
      await add(page, "resize", "Stretch");
      assert.equal(await page.locator(".tarvo-step").count(), 5);
      const hash = await hashOf(page);
      await saved(page, "Save recipe", (recipe) => {
        const text = readFileSync(recipe, "utf8");
        assert.equal(text.trim().split("\n").filter((line) => !line.startsWith("#")).length, 5, text);
        assert.match(text, /mask = docs\/pictures\/fade\.png.*red_factor = 2\.5/);
        const out = `${recipe}.png`;
        execFileSync("bash", ["-c", 'PATH=$1:$PATH; tarvo apply -q "$2" "@$3" -o "$4"', "", join(root, "build/release/bin"), coffee, recipe, out], { cwd: root });
        assert.equal(tool("hash", out).toString().slice(0, 64), hash);
      });
      await saved(page, "Save picture", (picture) => assert.equal(tool("hash", picture).toString().slice(0, 64), hash));
      assert.deepEqual(page.wrong, []);
    }));

test("steps are moved, switched off, removed, and all of it undone", () =>
  served(site, async (address) => {
    const calls = ["Stretch(90, 60)", "Pixelate(nil, 4)", "Downsample(3)"];
    const page = await playground(address, `#${encodeURI(calls.join("\n"))}`);
    const step = (name) => page.locator(`[data-operation=TRV_${name}]`);
    const [stretch, pixelate, downsample] = calls;
    assert.equal(await shown(page, expected(...calls)), true);
    await step("Pixelate").getByRole("button", { name: "Earlier: Pixelate" }).click();
    assert.equal(await shown(page, expected(pixelate, stretch, downsample)), true);
    await step("Stretch").getByLabel("Stretch: on").uncheck();
    assert.equal(await shown(page, expected(pixelate, downsample)), true);
    await step("Downsample").getByRole("button", { name: "Remove Downsample" }).click();
    assert.equal(await shown(page, expected(pixelate)), true);
    await button(page, "Undo").click();
    assert.equal(await shown(page, expected(pixelate, downsample)), true);
    await button(page, "Undo").click();
    assert.equal(await shown(page, expected(pixelate, stretch, downsample)), true);
    await button(page, "Undo").click();
    assert.equal(await shown(page, expected(...calls)), true);
    await button(page, "Redo").click();
    assert.equal(await shown(page, expected(pixelate, stretch, downsample)), true);
    assert.deepEqual(page.wrong, []);
  }));

test("a link brings back picture, calls and what is off", () =>
  served(site, async (address) => {
    const page = await playground(address);
    await page.locator("[data-source]").selectOption("docs/pictures/chelsea.png");
    await add(page, "blur", "Convolute");
    await add(page, "posterize", "Downsample");
    await page.getByLabel("Convolute: on").uncheck();
    const hash = nativeHash(["docs/pictures/chelsea.png", "Downsample(2)"]);
    assert.equal(await shown(page, hash), true);
    await button(page, "Copy link").click();
    await page.getByText("the link is on the clipboard").waitFor();
    const link = await page.evaluate(() => navigator.clipboard.readText());
    const other = await newPage();
    await other.goto(link);
    assert.equal(await shown(other, hash), true);
    await other.getByLabel("Convolute: on").check();
    assert.equal(await shown(other, nativeHash(["docs/pictures/chelsea.png", "Convolute(nil, convolution(1, 2, 3, 4, 3, 2, 1), convolution(1, 2, 3, 4, 3, 2, 1))", "Downsample(2)"])), true);
    assert.deepEqual([...page.wrong, ...other.wrong], []);
  }));

test("a recipe is opened again, and what is none is refused", () =>
  served(site, async (address) => {
    const page = await playground(address);
    const file = page.locator("input[accept*=txt]");
    const recipe = (text) => ({ name: "recipe.txt", mimeType: "text/plain", buffer: Buffer.from(text) });
    await file.setInputFiles(recipe("# a comment\nStretch(60, 50)\n# Downsample(1)\nAdjustRGB(rect = rect(5, 5, 20, 20), red_delta = 9, green_delta = -9, blue_delta = 0)\n"));
    const hash = expected("Stretch(60, 50)", "AdjustRGB(rect(5, 5, 20, 20), 9, -9, 0)");
    assert.equal(await shown(page, hash), true);
    assert.equal(await page.locator(".tarvo-step").count(), 3);
    await file.setInputFiles(recipe("Stretch(width / 2, 50)\n"));
    await page.getByText("That is no recipe").waitFor();
    assert.equal(await shown(page, hash), true);
  }));

test("a call that is refused is marked, and the others stay", () =>
  served(site, async (address) => {
    const page = await playground(address, `#${encodeURI("Downsample(2)\nFlipRotate(true, false, 1)")}`);
    const hash = expected("Downsample(2)", "FlipRotate(true, false, 1)");
    assert.equal(await shown(page, hash), true);
    await button(page, "FlipRotate").click();
    await page.getByLabel("rotation, as a number").fill("7");
    await page.locator("[data-error]", { hasText: "rotation" }).waitFor();
    assert.equal(await page.locator(".tarvo-refused[data-operation=TRV_FlipRotate]").count(), 1);
    assert.equal(await page.locator(".tarvo-refused").count(), 1);
    await page.getByLabel("FlipRotate: on").uncheck();
    assert.equal(await shown(page, expected("Downsample(2)")), true);
    assert.equal(await page.locator(".tarvo-refused, [data-error]").count(), 0);
  }));

test("a region is drawn for the step that is open, where its picture has the sides of the first", () =>
  served(site, async (address) => {
    const page = await playground(address, `#${encodeURI("Downsample(4)\nPixelate(nil, 8)\nStretch(100, 100)\nPixelate(nil, 3)")}`);
    const area = page.locator(".tarvo-area");
    assert.equal(await area.isVisible(), false);
    const names = page.getByRole("button", { name: "Pixelate", exact: true });
    await names.first().click();
    await area.waitFor();
    const box = await area.boundingBox();
    await page.mouse.move(box.x + 5, box.y + 5);
    await page.mouse.down();
    await page.mouse.move(box.x + box.width / 2, box.y + box.height / 2);
    await page.mouse.up();
    const sides = await page.locator("[data-argument=rect]").first().locator("input[type=number]").evaluateAll((all) => all.map((each) => each.value));
    assert.equal(await shown(page, expected("Downsample(4)", `Pixelate(rect(${sides.join(", ")}), 8)`, "Stretch(100, 100)", "Pixelate(nil, 3)")), true);
    await names.last().click();
    assert.equal(await area.isVisible(), false);
  }));

test("a picture that is dropped begins the chain", () =>
  served(site, async (address) => {
    const page = await playground(address, "#Downsample(3)");
    await dropped(page, "cat.png", bytesOf("examples/photos/chelsea.png"));
    assert.equal(await shown(page, nativeHash(["examples/photos/chelsea.png", "Downsample(3)"])), true);
    await saved(page, "Save recipe", (recipe) => assert.match(readFileSync(recipe, "utf8"), /^# tarvo apply cat\.png @recipe\.txt/));
    await dropped(page, "letter.txt", new TextEncoder().encode("Dear picture"));
    await page.locator("[data-error]", { hasText: "letter.txt" }).waitFor();
    assert.deepEqual(page.wrong, []);
  }));
