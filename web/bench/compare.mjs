// compare.mjs ROUNDS: what scripts/bench-web prints.

import { execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync } from "node:fs";
import { createRequire } from "node:module";
import { tmpdir } from "node:os";
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";

import { serve } from "../site/tools/serve.mjs";

const root = join(dirname(fileURLToPath(import.meta.url)), "../..");
const rounds = Number(process.argv[2]);
const { load } = await import(join(root, "build/web/package/dist/index.js"));
const { chromium } = createRequire(join(root, "build/web/site/"))("playwright-core");

const sizes = { 2: [1600, 1250], 12: [4000, 3000] };
const calls = {
  contrast: "AdjustContrast(nil, &c808080, 1.6, 1.6, 1.6)",
  HSV: "AdjustHSV(nil, 120.0, 1.2, 1.0, false)",
  matrix: "AdjustRGB(nil, matrix(0.393, 0.349, 0.272, 0.769, 0.686, 0.534, 0.189, 0.168, 0.131))",
  "RGB offsets": "AdjustRGB(nil, 40, 0, -60)",
  gamma: "AdjustGamma(nil, &c404040, 2.5, 2.5, 2.5)",
  "convolution 5 + 5": "Convolute(nil, convolution(1, 4, 6, 4, 1), convolution(1, 4, 6, 4, 1))",
  "free rotation, direct": "FreeRotateDirect(30.0, &cFFFFFF)",
  "free rotation, shear": "FreeRotateByShear(30.0)",
};

const tarvo = (...args) => execFileSync(join(root, "build/release/bin/tarvo"), args, { cwd: root, maxBuffer: 1 << 28, stdio: ["ignore", "pipe", "ignore"] }).toString();
const folder = mkdtempSync(join(tmpdir(), "tarvo-bench-"));

/** A photograph of so many megapixels. */
function picture(megapixels, ending) {
  const [width, height] = sizes[megapixels];
  const path = join(folder, `${megapixels}.${ending}`);
  tarvo("apply", "-q", "examples/photos/coffee.png", `Stretch(${width}, ${height})`, "-o", path);
  return path;
}

/** The best of what the tool tells of a call, made again and again in one process. */
function native(path, [width, height], call) {
  const again = Array(rounds).fill([call, `Trim(rect(0, 0, ${width}, ${height}), &c000000)`]);
  const told = tarvo("apply", path, ...again.flat());
  const name = /^\w+/.exec(call)[0];
  const times = [...told.matchAll(new RegExp(`^TRV_${name}: .* ([\\d.]+) ms$`, "gm"))].map((each) => Number(each[1]));
  return Math.min(...times);
}

function webAssembly(on, call) {
  const times = [];
  for (let i = 0; i < rounds + 2; ++i) {
    const begun = performance.now();
    const result = on.apply(call);
    times.push(performance.now() - begun);
    result.dispose();
  }
  return { first: times[0], best: Math.min(...times) };
}

const row = (...cells) => console.log(`| ${cells.join(" | ")} |`);
const shown = (milliseconds) => milliseconds.toFixed(milliseconds < 10 ? 1 : 0);

const megapixels = Object.keys(sizes);
row("milliseconds", ...megapixels.flatMap((each) => [`native, ${each} MP`, `WebAssembly, ${each} MP`, "first call", "ratio"]));
row("---", ...megapixels.flatMap(() => ["---", "---", "---", "---"]));
for (const [name, call] of Object.entries(calls)) {
  const cells = [];
  for (const size of megapixels) {
    const path = picture(size, "ppm");
    const on = (await load(await WebAssembly.compile(readFileSync(join(root, "build/web/package/dist/tarvo.wasm"))))).decode(readFileSync(path));
    const own = native(path, sizes[size], call);
    const { first, best } = webAssembly(on, call);
    cells.push(shown(own), shown(best), shown(first), (best / own).toFixed(1));
  }
  row(name, ...cells);
}

// --- pages ------------------------------------------------------------------------------------------------------------

const site = await serve(join(root, "build/site"));
const browser = await chromium.launch({ executablePath: "/usr/bin/chromium", args: ["--no-sandbox", "--disable-gpu"] });

/** A page that shows an operation on a photograph. */
async function pageOf(operation, file) {
  const page = await (await browser.newContext({ viewport: { width: 1280, height: 900 } })).newPage();
  await page.goto(`${site.address}ops/${operation}.html`);
  await page.locator("[data-sha256]").waitFor();
  const chosen = page.waitForEvent("filechooser");
  await page.getByRole("button", { name: "picture: a file of yours" }).click();
  await (await chosen).setFiles(file);
  await page.waitForFunction((name) => document.querySelector("[data-source]").value === name && document.querySelector("[data-result]").dataset.sha256, file.replace(/^.*\//, ""));
  return page;
}

/** From the moving of a slider to the frame behind its result: one step of the keys after the other. */
async function slid(operation, argument, file) {
  const page = await pageOf(operation, file);
  const slider = page.locator(`[data-argument=${argument}]`);
  await slider.evaluate((each) => {
    window.times = [];
    let moved = 0;
    each.addEventListener("input", () => (moved = performance.now()), { capture: true });
    const canvas = document.querySelector(".tarvo-after canvas");
    new MutationObserver(() => {
      const from = moved;
      requestAnimationFrame(() => window.times.push(performance.now() - from));
    }).observe(canvas, { attributes: true, attributeFilter: ["width"] });
  });
  await slider.focus();
  for (let i = 0; i < 30; ++i) {
    await page.keyboard.press("ArrowRight");
    await page.waitForFunction((count) => window.times.length > count, i);
  }
  const times = (await page.evaluate(() => window.times)).sort((one, other) => one - other);
  await page.context().close();
  return { median: times[times.length >> 1], most: times.at(-1) };
}

/** The longest task of the page's own thread while a slider moves; 0 for none of 50 milliseconds. */
async function longestTask(operation, argument, file) {
  const page = await pageOf(operation, file);
  await page.evaluate(() => {
    window.longest = 0;
    new PerformanceObserver((list) => {
      for (const { duration } of list.getEntries()) window.longest = Math.max(window.longest, duration);
    }).observe({ type: "longtask" });
  });
  await page.locator(`[data-argument=${argument}]`).focus();
  for (let i = 0; i < 20; ++i) {
    await page.keyboard.press("ArrowRight");
    await page.waitForTimeout(40);
  }
  await page.waitForFunction(() => document.querySelector("[data-result]").dataset.sha256);
  await page.waitForTimeout(200);
  const longest = await page.evaluate(() => window.longest);
  await page.context().close();
  return longest;
}

console.log();
row("slider to pixels in Chromium, 2 MP", "median", "longest");
row("---", "---", "---");
const two = picture(2, "jpg");
for (const [name, operation, argument] of [
  ["contrast", "TRV_AdjustContrast", "red_factor"],
  ["HSV", "TRV_AdjustHSV", "hue_degrees"],
  ["RGB offsets", "TRV_AdjustRGB", "red_delta"],
  ["free rotation, direct", "TRV_FreeRotateDirect", "rotation"],
]) {
  const { median, most } = await slid(operation, argument, two);
  row(name, shown(median), shown(most));
}
const longest = await longestTask("TRV_FreeRotateDirect", "rotation", picture(12, "jpg"));
console.log(`\nThe page's own thread, while 12 MP are rotated: ${longest === 0 ? "no task of 50 ms or more" : `the longest task takes ${shown(longest)} ms`}`);

await browser.close();
await site.close();
rmSync(folder, { recursive: true });
