// The package in Node: the same pixels as the native tool, and every way in which a call ends.

import assert from "node:assert/strict";
import { readdirSync } from "node:fs";
import test from "node:test";
import { Worker } from "node:worker_threads";

import { argumentsOf, bytesOf, packageUrl, project, tarvo, tool, written } from "./support.mjs";

const { decode, description, fromPixels, load, Picture, TarvoError } = tarvo;

test("nothing is there before it is loaded", () => {
  assert.throws(() => decode(new Uint8Array(8)), (error) => error instanceof TarvoError && error.status === "use");
});

const library = await load();
const coffee = () => decode(bytesOf("docs/pictures/coffee.png"));

test("loaded twice it is there once, and with a source anew", async () => {
  assert.equal(await load(), library);
  const other = await load(new URL("./tarvo.wasm", packageUrl));
  assert.notEqual(other, library);
  assert.throws(() => other.decode(bytesOf("docs/pictures/coffee.png")).call("Difference", [coffee()]), /another module/);
});

test("the description is that of the tool", () => {
  assert.deepEqual(description(), JSON.parse(tool("list", "--json").toString()));
  assert.equal(library.version, description().version);
});

// --- the same pixels ------------------------------------------------------------------------------------------------

const pictures = ["examples/photos", "docs/pictures"].flatMap((folder) =>
  readdirSync(new URL(`../../${folder}/`, import.meta.url))
    .filter((name) => /\.(png|jpe?g)$/.test(name))
    .map((name) => `${folder}/${name}`),
);

test("files are decoded to the pixels that the tool sees", () => {
  assert.ok(pictures.some((name) => name.endsWith(".jpg")) && pictures.some((name) => name.endsWith(".png")));
  for (const name of pictures) {
    const picture = decode(bytesOf(name));
    assert.deepEqual(picture.encode("pam"), written("pam", (out) => ["convert", name, "-o", out]), name);
  }
});

test("PNG files have the pixels that they were made of", () => {
  for (const name of pictures) {
    const picture = decode(bytesOf(name));
    const again = decode(picture.encodePng());
    assert.equal(again.sha256(), picture.sha256(), name);
    again.dispose();
  }
});

test("JPEG files are the tool's, byte for byte", () => {
  const picture = coffee();
  const native = written("jpg", (out) => ["convert", "docs/pictures/coffee.png", "-o", out]);
  assert.deepEqual(picture.encode("jpg"), native);
});

const examples = description().operations.filter((each) => each.example && each.result === "picture");

for (const { name, example } of examples)
  test(`${name} gives what the tool gives`, () => {
    const native = written("pam", (out) => ["apply", ...(example.input ? [example.input] : []), example.call, "-o", out]);
    const on = example.input ? decode(bytesOf(example.input)) : library;
    const args = argumentsOf(example.call, (path) => decode(bytesOf(path)));
    const called = on.call(name, args);
    assert.ok(called instanceof Picture);
    assert.deepEqual(called.encode("pam"), native);
    if (!example.call.includes("/")) assert.equal(on.apply(example.call).sha256(), called.sha256());
  });

test("there is an example of most operations", () => assert.ok(examples.length > 30));

// --- pixels ---------------------------------------------------------------------------------------------------------

test("pixels come out as they went in", () => {
  const rgba = Uint8ClampedArray.from([1, 2, 3, 4, 250, 251, 252, 253, 0, 0, 0, 0, 255, 128, 64, 255, 9, 9, 9, 1, 7, 8, 9, 0]);
  const picture = fromPixels(rgba, 3, 2);
  assert.deepEqual([picture.width, picture.height, picture.hasMask], [3, 2, true]);
  assert.deepEqual(picture.pixels(), rgba);
  assert.deepEqual(decode(picture.encodePng()).pixels(), rgba);
  const inside = new Uint8Array(40).subarray(8, 32);
  inside.set(rgba);
  assert.equal(fromPixels(inside, 3, 2).sha256(), picture.sha256());
});

test("pixels that do not fit the sides are refused", () => {
  assert.throws(() => fromPixels(new Uint8Array(15), 2, 2), { name: "TarvoError", status: "use" });
  assert.throws(() => fromPixels(new Uint8Array(0), 0, 0), { name: "TarvoError", status: "use" });
});

// --- arguments and results --------------------------------------------------------------------------------------------

test("arguments have names, or an order", () => {
  const picture = coffee();
  const [width, height] = [30, 20];
  const hash = picture.apply(`Stretch(${width}, ${height})`).sha256();
  assert.equal(picture.call("Stretch", { width, height }).sha256(), hash);
  assert.equal(picture.call("TRV_Stretch", [width, height]).sha256(), hash);
  assert.equal(picture.call("stretch", { height, width, yield: undefined }).sha256(), hash);
});

test("colours, rectangles, matrices and convolutions are written in several ways", () => {
  const picture = coffee();
  const trim = picture.apply("Trim(rect(3, 4, 20, 10), &c204080)").sha256();
  const rectangle = library.object("TRV_Rectangle");
  for (const [side, value] of Object.entries({ left: 3, top: 4, width: 20, height: 10 })) rectangle.set(side, value);
  assert.equal(rectangle.get("right"), 22);
  for (const trim_rect of [[3, 4, 20, 10], { left: 3, top: 4, width: 20, height: 10 }, rectangle])
    for (const frame_color of [0x204080, "#204080", [0x20, 0x40, 0x80]])
      assert.equal(picture.call("Trim", { trim_rect, frame_color }).sha256(), trim);

  const turned = picture.call("AdjustRGB", { cm: [[0, 1, 0], [0, 0, 1], [1, 0, 0.5]] });
  const matrix = library.object("TRV_ColorMatrix");
  for (const [place, value] of [[[0, 0], 0], [[0, 1], 1], [[1, 1], 0], [[1, 2], 1], [[2, 0], 1], [[2, 2], 0.5]])
    matrix.call("Value", [...place, value]);
  assert.equal(matrix.call("Value", [2, 2]), 0.5);
  assert.equal(picture.call("AdjustRGB", { cm: matrix }).sha256(), turned.sha256());
  assert.notEqual(turned.sha256(), picture.sha256());

  const blurred = picture.apply("Convolute(nil, convolution(1, 2, 1), nil)").sha256();
  assert.equal(picture.call("Convolute", { horiz_convolution: [1, 2, 1], vert_convolution: null }).sha256(), blurred);
});

test("what comes back in arguments is an object", () => {
  const picture = coffee();
  const average = picture.call("GetAverageRGB");
  const told = tool("apply", "docs/pictures/coffee.png", "TRV_GetAverageRGB(nil, r, g, b)").toString();
  assert.deepEqual(Object.keys(average), ["red", "green", "blue"]);
  assert.deepEqual(Object.values(average).map(String), told.match(/(?<== )\d+$/gm));
});

test("numbers, booleans, bytes and nothing come back", () => {
  const picture = coffee();
  assert.equal(picture.call("Compare", [picture]), true);
  assert.equal(picture.call("RowBytes"), 4 * picture.width);
  const text = picture.call("ConvertToString");
  assert.ok(text instanceof Uint8Array && text.length > picture.width * picture.height);
  assert.equal(library.call("ConvertToPicture", [text]).sha256(), picture.sha256());
  const block = picture.call("MakeMemoryBlock", { rect: [0, 0, 3, 2], mask_to_alpha: false });
  assert.ok(block.value instanceof Uint8Array);
});

// --- failures -------------------------------------------------------------------------------------------------------

test("a refusal has the operation, the argument and the code", () => {
  const picture = coffee();
  assert.throws(() => picture.apply("AdjustContrast(nil, &c808080, 300, 1, 1)"), {
    name: "TarvoError",
    status: "operation",
    code: 40,
    operation: "TRV_AdjustContrast",
    argument: "red_factor",
  });
  assert.throws(() => picture.call("AdjustContrast", { center: 0, red_factor: -1, green_factor: 1, blue_factor: 1 }), {
    code: 40,
    argument: "red_factor",
  });
});

test("wrong use is told", () => {
  const picture = coffee();
  const wrong = { name: "TarvoError", status: "use" };
  assert.throws(() => picture.apply("Strech(3, 4)"), { ...wrong, message: /Stretch/ });
  assert.throws(() => picture.apply("Stretch(3,"), wrong);
  assert.throws(() => picture.call("Stretch", { wide: 3 }), wrong);
  assert.throws(() => picture.call("Stretch", { width: 1.5, height: 2 }), { ...wrong, argument: "width" });
  assert.throws(() => picture.call("Trim", { trim_rect: [1, 2], frame_color: 0 }), { ...wrong, argument: "trim_rect" });
  assert.throws(() => picture.call("Trim", { trim_rect: [1, 2, 3, 4], frame_color: "red" }), { ...wrong, argument: "frame_color" });
  assert.throws(() => picture.apply("Add(docs/pictures/rocket.png)"), wrong);
  assert.throws(() => library.apply("Stretch(3, 4)"), wrong);
  assert.throws(() => picture.encode("gif"), wrong);
  picture.dispose();
  assert.throws(() => picture.sha256(), { ...wrong, message: /disposed/ });
});

test("what is no picture is refused", () => {
  const file = bytesOf("docs/pictures/coffee.png");
  for (const bytes of [new Uint8Array(0), new TextEncoder().encode("not a picture"), file.subarray(0, 5000)])
    assert.throws(() => decode(bytes), { name: "TarvoError", status: "file" });
  const huge = file.slice();
  new DataView(huge.buffer).setUint32(16, 2 ** 30); // the width
  assert.throws(() => decode(huge), TarvoError);
});

test("out of memory is an error, and the module goes on", async () => {
  const other = await load(new URL("./tarvo.wasm", packageUrl));
  const picture = other.decode(bytesOf("docs/pictures/coffee.png"));
  const before = picture.apply("Stretch(40, 30)").sha256();
  for (const [width, height] of [[20000, 20000], [32767, 16000], [32767, 32767]])
    assert.throws(
      () => picture.call("Stretch", { width, height }),
      (error) => error instanceof TarvoError && ["memory", "limit"].includes(error.status) && error.operation === "TRV_Stretch",
    );
  const kept = [];
  assert.throws(
    () => {
      for (;;) kept.push(picture.call("Stretch", { width: 6000, height: 6000 }));
    },
    (error) => error instanceof TarvoError && error.status === "memory",
  );
  assert.ok(kept.length > 3);
  for (const each of kept) each.dispose();
  assert.equal(picture.apply("Stretch(40, 30)").sha256(), before);
  assert.equal(picture.call("Stretch", { width: 6000, height: 6000 }).width, 6000);
});

test("a thousand calls take no more memory than fifty", async () => {
  const other = await load(new URL("./tarvo.wasm", packageUrl));
  const picture = other.decode(bytesOf("docs/pictures/coffee.png"));
  const calls = ["AdjustContrast(nil, &c808080, 1.6, 1.6, 1.6)", "FreeRotateDirect(30.0, &cFFFFFF)", "Stretch(500, 400)"];
  let before = 0;
  for (let i = 0; i < 1000; ++i) {
    const result = picture.apply(calls[i % calls.length]);
    result.pixels();
    if (i % 50 === 0) result.encodePng();
    result[Symbol.dispose]();
    assert.throws(() => picture.apply("Stretch(-1, 3)"), TarvoError);
    if (i === 50) before = other.memoryBytes;
  }
  assert.equal(other.memoryBytes, before);
});

// --- elsewhere ------------------------------------------------------------------------------------------------------

test("it works in a worker, with a module that is compiled already", async () => {
  const source = `
    const { parentPort, workerData } = require("node:worker_threads");
    import(workerData.package).then(async ({ load }) => {
      const library = await load(workerData.module);
      const picture = library.decode(workerData.file);
      parentPort.postMessage(picture.apply("Pixelate(nil, 5)").sha256());
    });`;
  const module = await WebAssembly.compile(bytesOf("build/web/package/dist/tarvo.wasm"));
  const file = bytesOf("docs/pictures/coffee.png");
  const worker = new Worker(source, { eval: true, workerData: { package: packageUrl.href, module, file } });
  const hash = await new Promise((done, failed) => worker.once("message", done).once("error", failed));
  await worker.terminate();
  const picture = decode(file);
  assert.equal(hash, picture.apply("Pixelate(nil, 5)").sha256());
});

test("what is packed is the package, and nothing else", () => {
  const all = readdirSync(`${project}/node_modules/@tarvo/web`, { recursive: true }).map(String).sort();
  assert.ok(all.includes("dist/tarvo.wasm") && all.includes("dist/index.d.ts") && all.includes("LICENSE"));
  const allowed = /^(LICENSE|README\.md|package\.json|dist|dist\/(tarvo\.wasm|[a-z]+(\.d\.ts|\.js)))$/;
  assert.deepEqual(all.filter((name) => !allowed.test(name)), []);
});
