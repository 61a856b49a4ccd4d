// The library at work, beside the page. Of the calls that it is asked for it makes the latest; what is drawn is only for
// looking at: pixels that are told, hashes and files come from the pictures themselves.

import { type Argument, type Library, load, Picture, type Result, TarvoError } from "@tarvo/web";

import {
  type Call,
  type Failure,
  type FromWorker,
  type Histogram,
  isPicture,
  type Pixel,
  type Rect,
  type Setting,
  shortName,
  type Sides,
  type Told,
  type ToWorker,
  type View,
  type Work,
} from "./messages.js";

declare const self: { onmessage: unknown; postMessage(message: FromWorker, transfer?: Transferable[]): void };

// More is not given back while this worker lives, so the page begins a new one.
const mostBytes = 1 << 30;
// What a page can hold several times over.
const mostPixels = 64_000_000;
const mostFileBytes = 256 << 20;
// Pictures with more pixels are worked on reduced first, to so many on the longer side.
const previewFrom = 3_000_000;
const previewSide = 1000;
// Between a preview and the whole: settings that are being moved come sooner.
const restMilliseconds = 80;
// Between the pixels and their hash, of which the same holds.
const hashMilliseconds = 40;
// No screen shows more of it.
const viewSide = 2048;

class CallFailed extends Error {
  constructor(
    readonly call: number,
    readonly reason: unknown,
  ) {
    super(String(reason));
  }
}

function failureOf(error: unknown, call = -1): Failure {
  if (error instanceof CallFailed) return failureOf(error.reason, error.call);
  if (error instanceof TarvoError) return { message: error.message, code: error.code, argument: error.argument, call };
  const message = error instanceof RangeError ? "there is not enough memory for a picture of this size" : error instanceof Error ? error.message : String(error);
  return { message, code: 0, argument: "", call };
}

/** Whether the library has broken down. */
function isEnd(error: unknown): boolean {
  return error instanceof CallFailed ? isEnd(error.reason) : error instanceof TarvoError && error.status === "ended";
}

const library: { now?: Library } = {};
const pictures = new Map<string, Promise<Picture>>();
const reduced = new Map<string, Picture>();
/** What is seen: the pixels of the source and of the result, and the result, which may be the source. */
let shown: { before: Pixels | null; after: Pixels; picture: Picture; owned: boolean } | undefined;
/** The source's pixels, which stay the same for many results. */
let before: { picture: Picture; pixels: Pixels } | undefined;

interface Pixels extends Sides {
  rgba: Uint8ClampedArray<ArrayBuffer>;
}

function pixelsOf(picture: Picture): Pixels {
  const { width, height } = picture;
  if (width * height > mostPixels)
    throw new Error(`${width} x ${height} pixels are too many to be shown in a page: at most ${mostPixels} are`);
  return { width, height, rgba: picture.pixels() };
}

function pixelsBefore(picture: Picture): Pixels {
  if (before?.picture !== picture) before = { picture, pixels: pixelsOf(picture) };
  return before.pixels;
}

function histogramOf({ rgba }: Pixels): Histogram {
  const [red, green, blue]: Histogram = [new Uint32Array(256), new Uint32Array(256), new Uint32Array(256)];
  for (let i = 0; i < rgba.length; i += 4) {
    ++red[rgba[i]!]!;
    ++green[rgba[i + 1]!]!;
    ++blue[rgba[i + 2]!]!;
  }
  return [red, green, blue];
}

async function viewOf(pixels: Pixels): Promise<View> {
  const { width, height, rgba } = pixels;
  const scale = Math.min(1, viewSide / Math.max(width, height));
  const sides = { resizeWidth: Math.max(1, Math.round(width * scale)), resizeHeight: Math.max(1, Math.round(height * scale)) };
  const bitmap = await createImageBitmap(new ImageData(rgba, width, height), scale < 1 ? { ...sides, resizeQuality: "medium" } : {});
  return { width, height, bitmap, histogram: histogramOf(pixels) };
}

// --- pictures -------------------------------------------------------------------------------------------------------

async function bytesOf(from: Blob | string): Promise<ArrayBuffer> {
  if (typeof from === "string") {
    const response = await fetch(from);
    if (!response.ok) throw new Error(`${from}: ${response.status}`);
    return response.arrayBuffer();
  }
  if (from.size > mostFileBytes) throw new Error(`the file has ${from.size} bytes: a page takes at most ${mostFileBytes}`);
  return from.arrayBuffer();
}

async function decoded(from: Blob | string): Promise<Picture> {
  const file = await bytesOf(from);
  const picture = library.now!.decode(file);
  if (picture.width * picture.height <= mostPixels) return picture;
  picture.dispose();
  throw new Error(`${picture.width} x ${picture.height} pixels are too many for a page: at most ${mostPixels} are`);
}

async function open(name: string, from: Blob | string): Promise<void> {
  const opening = decoded(from);
  pictures.set(name, opening);
  reduced.delete(name);
  try {
    const view = await viewOf(pixelsBefore(await opening));
    self.postMessage({ kind: "opened", name, view }, [view.bitmap]);
  } catch (error) {
    pictures.delete(name);
    self.postMessage({ kind: "refused", name, failure: failureOf(error) });
    tire(isEnd(error));
  }
}

// The page begins another worker where this one holds too much, or can do nothing any more.
function tire(ended = false): void {
  if (ended || library.now!.memoryBytes > mostBytes) self.postMessage({ kind: "grown" });
}

async function pictureOf(name: string): Promise<Picture> {
  const picture = pictures.get(name);
  if (!picture) throw new Error(`there is no picture ${name} here`);
  return picture;
}

/** The picture with its sides changed by the scale. */
async function reducedOf(name: string, scale: number): Promise<Picture> {
  const known = reduced.get(name);
  const whole = await pictureOf(name);
  const sides = { width: scaled(whole.width, scale), height: scaled(whole.height, scale) };
  if (known?.width === sides.width && known.height === sides.height) return known;
  known?.dispose();
  const made = whole.call("Stretch", sides);
  reduced.set(name, made);
  return made;
}

const scaled = (pixels: number, scale: number) => (pixels > 0 ? Math.max(1, Math.round(pixels * scale)) : Math.round(pixels * scale));

// --- calls ----------------------------------------------------------------------------------------------------------

const isRect = (setting: Setting): setting is Rect => typeof setting === "object" && setting !== null && "left" in setting;

/** A setting as the library takes it; on reduced pictures what counts pixels is reduced with them. */
async function argumentOf(name: string, setting: Setting, operation: string, scale: number): Promise<Argument> {
  if (isPicture(setting)) return scale === 1 ? pictureOf(setting.picture) : reducedOf(setting.picture, scale);
  if (scale === 1) return setting;
  if (isRect(setting))
    return {
      left: Math.round(setting.left * scale),
      top: Math.round(setting.top * scale),
      width: scaled(setting.width, scale),
      height: scaled(setting.height, scale),
    };
  const about = library.now!.description().operations.find((each) => each.name === operation)!.arguments;
  const counts = about.some((each) => each.name === name && each.unit === "pixels" && each.type === "integer");
  return counts && typeof setting === "number" ? scaled(setting, scale) : setting;
}

function makeCall({ operation }: Call, args: Record<string, Argument>, on: Picture | null): Result {
  const now = library.now!;
  const about = now.description().operations.find((each) => each.name === operation);
  if (about?.self === "none") return now.call<Result>(operation, args);
  if (!on) throw new Error(`${shortName(operation)} needs a picture to work on`);
  // Strings of pictures are all that a page has of those.
  if (about?.self === "string") return now.call<Result>(operation, [on.call<Uint8Array>("ConvertToString")]);
  return on.call<Result>(operation, args);
}

/** What a result that is no picture is, for people. */
function textOf(result: Result): string {
  if (result instanceof Uint8Array) {
    const text = new TextDecoder().decode(result);
    return /^[\x20-\x7e\s]*$/.test(text) ? text : `${result.length} bytes`;
  }
  return String(result);
}

function answersOf(call: Call, result: Result): string[] {
  const name = shortName(call.operation);
  if (typeof result !== "object" || result === null || result instanceof Uint8Array || Array.isArray(result)) return [`${name} = ${textOf(result)}`];
  return Object.entries(result).map(([part, value]) => `${part === "value" ? name : part} = ${textOf(value)}`);
}

async function run({ source, calls }: Work, scale: number): Promise<{ picture: Picture; owned: boolean; told: Told }> {
  const first = source === null ? null : await (scale === 1 ? pictureOf(source) : reducedOf(source, scale));
  let picture = first;
  const told: Told = { answers: [], inputs: [] };
  for (const [i, call] of calls.entries()) {
    try {
      const args: Record<string, Argument> = {};
      for (const [name, setting] of Object.entries(call.settings)) args[name] = await argumentOf(name, setting, call.operation, scale);
      told.inputs.push({ width: picture?.width ?? 0, height: picture?.height ?? 0 });
      const result = makeCall(call, args, picture);
      if (!(result instanceof Picture)) {
        told.answers.push(...answersOf(call, result));
        continue;
      }
      if (picture !== first) picture?.dispose();
      picture = result;
    } catch (error) {
      if (picture !== first) picture?.dispose();
      throw new CallFailed(i, error);
    }
  }
  if (!picture) throw new Error("there is no picture to begin with");
  return { picture, owned: picture !== first, told };
}

// --- answers --------------------------------------------------------------------------------------------------------

interface Asked {
  id: number;
  work: Work;
}
let next: Asked | undefined;
let working = false;
let wake = () => {};

// Lets settings that have come meanwhile be seen; one that comes ends it.
const rest = (milliseconds: number) =>
  new Promise<void>((done) => {
    wake = done;
    setTimeout(done, milliseconds);
  });

async function preview({ id, work }: Asked): Promise<void> {
  const whole = work.source === null ? null : await pictureOf(work.source);
  if (!whole || whole.width * whole.height <= previewFrom) return;
  const { picture, owned, told } = await run(work, previewSide / Math.max(whole.width, whole.height));
  const view = await viewOf(pixelsOf(picture));
  if (owned) picture.dispose();
  self.postMessage({ kind: "drawn", id, preview: true, view, told }, [view.bitmap]);
  await rest(restMilliseconds);
}

async function whole({ id, work }: Asked): Promise<void> {
  const { picture, owned, told } = await run(work, 1);
  const source = work.source === null ? null : await pictureOf(work.source);
  const after = owned ? pixelsOf(picture) : pixelsBefore(picture);
  const view = await viewOf(after);
  shown = { before: source && pixelsBefore(source), after, picture, owned };
  self.postMessage({ kind: "drawn", id, preview: false, view, told }, [view.bitmap]);
  await rest(hashMilliseconds);
  if (!next) self.postMessage({ kind: "hashed", id, sha256: picture.sha256() });
}

function forget(): void {
  if (shown?.owned) shown.picture.dispose();
  shown = undefined;
}

async function answer(asked: Asked): Promise<void> {
  forget();
  try {
    // What goes wrong in small tells nothing of the whole.
    await preview(asked).catch(() => {});
    if (!next) await whole(asked);
    tire();
  } catch (error) {
    forget();
    self.postMessage({ kind: "failed", id: asked.id, failure: failureOf(error) });
    tire(isEnd(error));
  }
}

async function workOn(): Promise<void> {
  if (working) return;
  working = true;
  while (next) {
    const asked: Asked = next;
    next = undefined;
    await answer(asked);
  }
  working = false;
}

function pixelAt(pixels: Pixels | null | undefined, x: number, y: number): Pixel {
  if (!pixels || x < 0 || y < 0 || x >= pixels.width || y >= pixels.height) return null;
  const at = 4 * (y * pixels.width + x);
  return [...pixels.rgba.subarray(at, at + 4)] as Pixel;
}

function take(message: ToWorker): void {
  switch (message.kind) {
    case "open":
      return void open(message.name, message.from);
    case "run":
      next = message;
      wake();
      return void workOn();
    case "pixel": {
      const { id, x, y } = message;
      return self.postMessage({ kind: "pixel", id, before: pixelAt(shown?.before, x, y), after: pixelAt(shown?.after, x, y) });
    }
    case "save": {
      const file = shown ? new Blob([shown.picture.encodePng()], { type: "image/png" }) : new Blob();
      return self.postMessage({ kind: "saved", id: message.id, file });
    }
  }
}

const waiting: ToWorker[] = [];
self.onmessage = async ({ data }: { data: ToWorker }) => {
  if (data.kind !== "begin") return library.now ? take(data) : void waiting.push(data);
  library.now = await load(data.module);
  self.postMessage({ kind: "begun", description: library.now.description() });
  for (const each of waiting.splice(0)) take(each);
};
