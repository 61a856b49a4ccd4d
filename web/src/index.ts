/**
 * Tarvo Graphics where JavaScript runs: pages, workers and Node.
 *
 *     import { load, decode } from "@tarvo/web";
 *
 *     await load();
 *     using photo = decode(bytes);                      // PNG, JPEG, ...
 *     using small = photo.apply("Stretch(fit(200))");   // as the tool takes it
 *     const file = small.encodePng();
 */

import type { Description } from "./description.js";
import { Engine } from "./engine.js";
import { TarvoError } from "./error.js";
import { Library } from "./library.js";
import type { Picture } from "./objects.js";

export type * from "./description.js";
export { TarvoError, type Status } from "./error.js";
export { Library } from "./library.js";
export { Picture, TarvoObject } from "./objects.js";
export type { Argument, Arguments, Rectangle, Result } from "./values.js";

/** Where the compiled module comes from. */
export type Source = WebAssembly.Module | BufferSource | Response | URL | string;

let shared: Promise<Library> | undefined;
let loaded: Library | undefined;

async function bytesOf(file: URL): Promise<BufferSource> {
  if (file.protocol !== "file:") {
    const response = await fetch(file);
    if (!response.ok) throw new TarvoError("file", `${file}: ${response.status} ${response.statusText}`);
    return response.arrayBuffer();
  }
  const files = "node:fs/promises"; // only where there is one
  const { readFile } = (await import(/* @vite-ignore */ files)) as { readFile(file: URL): Promise<Uint8Array<ArrayBuffer>> };
  return readFile(file);
}

async function compiled(source: Source): Promise<WebAssembly.Module> {
  if (source instanceof WebAssembly.Module) return source;
  if (typeof source === "string") return compiled(new URL(source));
  if (source instanceof URL) return WebAssembly.compile(await bytesOf(source));
  if (typeof Response !== "undefined" && source instanceof Response)
    return WebAssembly.compile(await source.arrayBuffer());
  return WebAssembly.compile(source as BufferSource);
}

/**
 * Loads the library. It is there once for all who load it so; one that has broken down is loaded anew. With a source, such
 * as a module that is compiled already, this is another one, which shares nothing with any.
 */
export async function load(source?: Source): Promise<Library> {
  if (source !== undefined) return new Library(await Engine.start(await compiled(source)));
  if (loaded?.engine.broken) shared = loaded = undefined;
  shared ??= load(new URL("./tarvo.wasm", import.meta.url));
  try {
    loaded = await shared;
  } catch (error) {
    shared = undefined; // the next one tries again
    throw error;
  }
  return loaded;
}

function library(): Library {
  if (!loaded) throw new TarvoError("use", "await load() first");
  return loaded;
}

/** `decode` of the library that `load()` has loaded; so also the others. */
export const decode = (bytes: Uint8Array | ArrayBuffer): Picture => library().decode(bytes);
export const fromPixels = (rgba: Uint8Array | Uint8ClampedArray, width: number, height: number): Picture =>
  library().fromPixels(rgba, width, height);
export const description = (): Description => library().description();
