// The pages of operations, live: what they compute is what the tool computes, whatever is set, dropped or refused.

import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { mkdtempSync, readdirSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import test, { after } from "node:test";

import { closeBrowser, dropped, hashOf, newPage, nativeHash, placedAt, served, shown, site } from "./browser.mjs";
import { bytesOf, root, tarvo, tool, written } from "./support.mjs";

after(closeBrowser);

const description = JSON.parse(tool("list", "--json").toString());
const operation = (name) => description.operations.find((each) => each.name === name);
const pages = readdirSync(join(root, "docs/ops"))
  .filter((name) => name.startsWith("TRV_"))
  .map((name) => name.replace(/\.md$/, ""));
// A page has no screen, so there is nothing to call it on.
const live = pages.filter((name) => operation(name).self !== "screen");

const hashes = new Map();
/** What the tool makes of an operation's example, or of the picture that it would be shown on. */
function exampleHash(name) {
  if (hashes.has(name)) return hashes.get(name);
  const { example } = operation(name);
  const hash = example
    ? nativeHash([...(example.input ? [example.input] : []), example.call])
    : tool("hash", "docs/pictures/coffee.png").toString().slice(0, 64);
  hashes.set(name, hash);
  return hash;
}

/** The words of a command that is written for a shell. */
function wordsOf(command) {
  return execFileSync("bash", ["-c", `printf '%s\\0' ${command.replace(/^tarvo apply /, "")}`]).toString().split("\0").slice(0, -1);
}

/** Chooses each form of the operation that the page shows, and looks at what its command gives in a shell. Tells the names
 *  of the operations that are called. */
async function lookAtForms(page) {
  const seen = [];
  const which = page.getByLabel("Which call");
  const forms = (await which.count()) ? await which.locator("option").count() : 1;
  for (let form = 0; form < forms; ++form) {
    if (form > 0) await which.selectOption(String(form));
    const command = (await page.locator("[data-copy=command]").textContent()).trim();
    seen.push(await page.locator("[data-operation]").getAttribute("data-operation"));
    if (command.startsWith("tarvo convert")) continue;
    const words = wordsOf(command);
    assert.equal(await hashOf(page), nativeHash(words.filter((word) => word !== "-o" && word !== "out.png")), command);
  }
  return seen;
}

/** Looks at every operation's page as it is when it has been loaded, and does there what else there is to do. */
const lookAtPages = (folder, further) =>
  served(folder, async (address) => {
    const page = await newPage();
    for (const name of live) {
      await page.goto(`${address}ops/${name}.html`);
      assert.equal(await hashOf(page), exampleHash(name), name);
      assert.equal(await page.locator("[data-operation]").getAttribute("data-operation"), name);
      assert.equal(await page.locator("[data-error]").count(), 0, name);
      await further?.(page);
    }
    assert.ok(live.length > 30);
    await page.goto(`${address}ops/TRV_ScreenCapture.html`);
    await page.locator("[data-operation=TRV_ScreenCapture]").waitFor();
    assert.deepEqual(page.wrong, []);
  });

test("every operation's page at / shows its example with the native pixels, and in every form what its command gives in a shell", async () => {
  const seen = new Set();
  await lookAtPages(site, async (page) => (await lookAtForms(page)).forEach((name) => seen.add(name)));
  const called = description.operations.filter((each) => ["picture", "none", "string"].includes(each.self) && each.family !== "errors");
  assert.deepEqual([...seen].sort(), called.map((each) => each.name).sort());
});

test("every operation's page at /a/b/ shows its example with the native pixels", () => lookAtPages(placedAt("/a/b/")));

test("what is to be copied is a program of its language", () =>
  served(site, async (address) => {
    const folder = mkdtempSync(join(tmpdir(), "tarvo-copies-"));
    try {
      const page = await newPage();
      const made = { c: [], cpp: [], python: [] };
      for (const name of ["TRV_AdjustContrastWithMask", "TRV_AdjustRGB", "TRV_GetAverageRGB", "TRV_MakeGradient", "TRV_ConvertToPicture"]) {
        // Operations without a page of their own are chosen in a link.
        const example = operation(name).example;
        const on = pages.find((each) => readFileSync(join(root, `docs/ops/${each}.md`), "utf8").split("\n")[0].split(/[ ,]+/).includes(name));
        await page.goto("about:blank");
        await page.goto(`${address}ops/${on}.html${example ? `#${encodeURI(example.call)}` : ""}`);
        await hashOf(page);
        assert.equal(await page.locator("[data-operation]").getAttribute("data-operation"), name);
        for (const [language, files] of Object.entries(made)) {
          const file = join(folder, `${name}.${language === "python" ? "py" : language}`);
          writeFileSync(file, await page.locator(`[data-copy=${language}]`).textContent());
          files.push(file);
        }
      }
      const headers = ["-I", join(root, "library"), "-fsyntax-only", "-Wall", "-Wextra", "-Werror"];
      execFileSync("gcc", ["-std=c11", ...headers, ...made.c]);
      execFileSync("g++", ["-std=c++17", ...headers, ...made.cpp]);
      for (const file of made.python) execFileSync("python3", ["-c", "import ast, sys; ast.parse(open(sys.argv[1]).read())", file]);
      assert.match(readFileSync(join(folder, "TRV_AdjustRGB.py"), "utf8"), /picture\.adjust_rgb\(rect=None, red_delta=40, green_delta=0, blue_delta=-60\)/);
    } finally {
      rmSync(folder, { recursive: true });
    }
  }));

test("a text that is pressed is on the clipboard", () =>
  served(site, async (address) => {
    const page = await newPage({ permissions: ["clipboard-read", "clipboard-write"] });
    await page.goto(`${address}ops/TRV_Stretch.html`);
    await hashOf(page);
    for (const language of ["command", "python", "c", "cpp"]) {
      const block = page.locator(`[data-copy=${language}]`);
      await block.click();
      await page.getByText("is on the clipboard").waitFor();
      assert.equal(await page.evaluate(() => navigator.clipboard.readText()), await block.textContent());
    }
  }));

/** The canvas of the result, as it is seen. */
const seen = (page) => page.evaluate(() => document.querySelector("[data-result] .tarvo-after canvas").toDataURL());

test("a slider moves, pixels change, and the link brings them back", () =>
  served(site, async (address) => {
    const page = await newPage();
    await page.goto(`${address}ops/TRV_AdjustContrast.html`);
    const [hash, pixels] = [await hashOf(page), await seen(page)];
    await page.locator("[data-argument=red_factor]").fill("3");
    const changed = await hashOf(page, hash);
    assert.equal(changed, nativeHash(["docs/pictures/coffee.png", "AdjustContrast(nil, &c808080, 3.0, 1.6, 1.6)"]));
    assert.notEqual(await seen(page), pixels);
    await page.waitForURL(/red_factor=3/);
    const other = await newPage();
    await other.goto(page.url());
    assert.equal(await hashOf(other), changed);
    await page.getByRole("button", { name: "As it was" }).click();
    assert.equal(await hashOf(page, changed), hash);
    assert.deepEqual([...page.wrong, ...other.wrong], []);
  }));

test("a server need not know what kind of file the module is", () =>
  served(site, async (address) => {
    const page = await newPage();
    await page.route("**/*.wasm", async (route) => route.fulfill({ response: await route.fetch(), contentType: "application/octet-stream" }));
    await page.goto(`${address}ops/TRV_Downsample.html`);
    assert.equal(await hashOf(page), exampleHash("TRV_Downsample"));
    assert.deepEqual(page.wrong, []);
  }));

test("while a slider moves, what comes is seen", () =>
  served(site, async (address) => {
    const page = await newPage();
    await page.goto(`${address}ops/TRV_AdjustContrast.html`);
    await hashOf(page);
    const drawn = await page.locator("[data-argument=red_factor]").evaluate(async (slider) => {
      let count = 0;
      const canvas = document.querySelector("[data-result] .tarvo-after canvas");
      new MutationObserver(() => ++count).observe(canvas, { attributes: true, attributeFilter: ["width"] });
      // Faster than anything is drawn, until something is.
      for (let i = 0; i < 2000 && count < 5; ++i) {
        slider.value = String(1 + (i % 200) / 100);
        slider.dispatchEvent(new Event("input"));
        await new Promise((done) => setTimeout(done));
      }
      return count;
    });
    assert.ok(drawn >= 5, `${drawn} were drawn`);
  }));

test("of many settings the latest counts", () =>
  served(site, async (address) => {
    const page = await newPage();
    await page.goto(`${address}ops/TRV_FreeRotateDirect.html`);
    await hashOf(page);
    await page.locator("[data-argument=rotation]").evaluate((slider) => {
      for (let angle = 0; angle <= 300; angle += 3) {
        slider.value = String(angle);
        slider.dispatchEvent(new Event("input"));
      }
    });
    assert.equal(await shown(page, nativeHash(["docs/pictures/rocket.png", "FreeRotateDirect(300.0, &cFFFFFF)"])), true);
  }));

test("a refusal is told with code, message and argument, and the page goes on", () =>
  served(site, async (address) => {
    const page = await newPage();
    await page.goto(`${address}ops/TRV_AdjustContrast.html`);
    const hash = await hashOf(page);
    const field = page.getByLabel("red_factor, as a number");
    await field.fill("300");
    const error = page.locator("[data-error]");
    await error.waitFor();
    assert.equal(await error.getAttribute("data-error"), "40");
    assert.match(await error.textContent(), /Error 40.*red_factor is 300/);
    assert.equal(await page.locator("[data-argument=red_factor]").getAttribute("aria-invalid"), "true");
    assert.equal(await page.locator("[data-sha256]").count(), 0);
    await field.fill("1.6");
    assert.equal(await hashOf(page), hash);
    assert.equal(await error.count(), 0);
    assert.equal(await page.locator("[data-argument=red_factor]").getAttribute("aria-invalid"), "false");
  }));

test("more than memory holds is refused, and the page goes on", () =>
  served(site, async (address) => {
    const page = await newPage();
    await page.goto(`${address}ops/TRV_Stretch.html`);
    const hash = await hashOf(page);
    for (const side of [32767, 16000, 9000]) {
      await page.getByLabel("width, as a number").fill(String(side));
      await page.getByLabel("height, as a number").fill(String(side));
      await page.locator("[data-error]", { hasText: /\d+ x \d+/ }).waitFor();
      await page.getByRole("button", { name: "As it was" }).click();
      assert.equal(await hashOf(page), hash);
    }
    assert.deepEqual(page.wrong, []);
  }));

test("a region is drawn with the mouse, and moved with keys", () =>
  served(site, async (address) => {
    const page = await newPage();
    await page.goto(`${address}ops/TRV_Pixelate.html#Pixelate(nil,8)`);
    const whole = await hashOf(page);
    assert.equal(whole, nativeHash(["docs/pictures/chelsea.png", "Pixelate(nil, 8)"]));
    const area = await page.locator(".tarvo-area").boundingBox();
    const at = (x, y) => [area.x + (area.width * (x + 0.5)) / 240, area.y + (area.height * (y + 0.5)) / 160];
    await page.mouse.move(...at(30, 20));
    await page.mouse.down();
    await page.mouse.move(...at(60, 40));
    await page.mouse.move(...at(99, 69));
    await page.mouse.up();
    const drawn = nativeHash(["docs/pictures/chelsea.png", "Pixelate(rect(30, 20, 70, 50), 8)"]);
    assert.equal(await shown(page, drawn), true);
    await page.keyboard.press("ArrowRight");
    await page.keyboard.press("Control+ArrowDown");
    await page.keyboard.press("Shift+ArrowLeft");
    assert.equal(await shown(page, nativeHash(["docs/pictures/chelsea.png", "Pixelate(rect(31, 30, 69, 50), 8)"])), true);
    const fields = page.locator("[data-argument=rect] input[type=number]");
    assert.deepEqual(await fields.evaluateAll((all) => all.map((each) => each.value)), ["31", "30", "69", "50"]);
    await page.getByLabel("rect: all of the picture").check();
    assert.equal(await shown(page, whole), true);
  }));

test("the divider parts before and after", () =>
  served(site, async (address) => {
    const page = await newPage();
    await page.goto(`${address}ops/TRV_AdjustHSV.html`);
    await hashOf(page);
    const divider = page.getByLabel(/^Divider/);
    const cut = () => page.locator(".tarvo-after").evaluate((each) => getComputedStyle(each).clipPath);
    const half = await cut();
    await divider.focus();
    await page.keyboard.press("Home");
    assert.notEqual(await cut(), half);
  }));

test("the pixel under the pointer is told before and after, as it is stored", () =>
  served(site, async (address) => {
    const page = await newPage();
    await page.goto(`${address}ops/TRV_AdjustContrast.html`);
    await hashOf(page);
    await page.getByLabel("x", { exact: true }).fill("100");
    await page.getByLabel("y", { exact: true }).fill("50");
    await tarvo.load();
    const coffee = tarvo.decode(bytesOf("docs/pictures/coffee.png"));
    const result = coffee.apply("AdjustContrast(nil, &c808080, 1.6, 1.6, 1.6)");
    const pixel = (picture) => [...picture.pixels().subarray(4 * (50 * 240 + 100), 4 * (50 * 240 + 101))].join();
    await page.locator(`[data-pixel-before="${pixel(coffee)}"]`).waitFor();
    await page.locator(`[data-pixel-after="${pixel(result)}"]`).waitFor();
  }));

test("one's own picture is taken by dropping and by choosing, and stays from page to page", () =>
  served(site, async (address) => {
    const page = await newPage();
    await page.goto(`${address}ops/TRV_FlipRotate.html`);
    await hashOf(page);
    await dropped(page, "my rocket.jpg", bytesOf("examples/photos/rocket.jpg"));
    assert.equal(await shown(page, nativeHash(["examples/photos/rocket.jpg", "FlipRotate(true, false, 1)"])), true);
    assert.match(await page.locator("[data-copy=command]").textContent(), /^tarvo apply 'my rocket\.jpg' /);
    const chosen = page.waitForEvent("filechooser");
    await page.getByRole("button", { name: "picture: a file of yours" }).click();
    await (await chosen).setFiles(join(root, "examples/photos/chelsea.png"));
    assert.equal(await shown(page, nativeHash(["examples/photos/chelsea.png", "FlipRotate(true, false, 1)"])), true);
    await page.getByRole("link", { name: "Downsample" }).click();
    await page.locator("[data-operation=TRV_Downsample]").waitFor();
    await page.locator("[data-source]").selectOption("my rocket.jpg");
    assert.equal(await shown(page, nativeHash(["examples/photos/rocket.jpg", "Downsample(2)"])), true);
    assert.deepEqual(page.wrong, []);
  }));

test("files that are no pictures are refused with a message, and the page goes on", () =>
  served(site, async (address) => {
    const page = await newPage();
    await page.goto(`${address}ops/TRV_Downsample.html`);
    const hash = await hashOf(page);
    const picture = bytesOf("docs/pictures/coffee.png");
    const huge = picture.slice();
    new DataView(huge.buffer).setUint32(16, 30000); // width and height
    new DataView(huge.buffer).setUint32(20, 30000);
    for (const [name, bytes] of [
      ["corrupt.png", picture.subarray(0, 4000)],
      ["empty.png", new Uint8Array(0)],
      ["letter.txt", new TextEncoder().encode("Dear picture")],
      ["huge.png", huge],
    ]) {
      await dropped(page, name, bytes);
      await page.locator("[data-error]", { hasText: name }).waitFor();
      await page.locator("[data-argument=bits_per_channel]").fill("5");
      await hashOf(page, hash);
      assert.equal(await page.locator("[data-error]").count(), 0);
      await page.locator("[data-argument=bits_per_channel]").fill("2");
      assert.equal(await shown(page, hash), true);
    }
    assert.deepEqual(page.wrong, []);
  }));

test("of a large picture a preview is seen first, and called so until all of it is done", () =>
  served(site, async (address) => {
    const large = written("jpg", (out) => ["apply", "-q", "examples/photos/coffee.png", "Stretch(4000, 3000)", "-o", out]);
    const page = await newPage();
    await page.goto(`${address}ops/TRV_FreeRotateDirect.html`);
    const before = await hashOf(page);
    await page.evaluate(() => {
      window.badges = [];
      const badge = document.querySelector(".tarvo-badge");
      new MutationObserver(() => window.badges.push([badge.hidden, document.querySelector("[data-result]").dataset.sha256 ?? null])).observe(badge, { attributes: true });
    });
    await dropped(page, "large.jpg", large);
    const hash = await hashOf(page, before);
    assert.deepEqual(await page.evaluate(() => window.badges), [[false, null], [true, null]]);
    const folder = mkdtempSync(join(tmpdir(), "tarvo-large-"));
    writeFileSync(join(folder, "large.jpg"), large);
    assert.equal(hash, nativeHash([join(folder, "large.jpg"), "FreeRotateDirect(30.0, &cFFFFFF)"]));
    rmSync(folder, { recursive: true });
    assert.equal(await page.locator(".tarvo-badge").isVisible(), false);
    assert.deepEqual(page.wrong, []);
  }));
