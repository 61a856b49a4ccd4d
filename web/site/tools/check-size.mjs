// check-size.mjs BUILT: what a page loads first has less than a megabyte of code, as servers send it: the scripts and the
// styles that the page names, and, as each may be live, the worker and the module.

import { readdirSync, readFileSync } from "node:fs";
import { join } from "node:path";
import { brotliCompressSync, constants } from "node:zlib";

import { builtBase } from "./base.mjs";

const most = 1_000_000;
const built = process.argv[2];
const sizes = new Map();

function sizeOf(name) {
  if (!sizes.has(name)) {
    const params = { [constants.BROTLI_PARAM_QUALITY]: 9 };
    sizes.set(name, brotliCompressSync(readFileSync(join(built, name)), { params }).length);
  }
  return sizes.get(name);
}

const files = readdirSync(built, { recursive: true }).map(String);
const everywhere = files.filter((name) => /^assets\/(worker-.*\.js|tarvo\..*\.wasm|tarvo-.*\.wasm)$/.test(name));
const pages = files.filter((name) => name.endsWith(".html"));
if (pages.length === 0) process.exit(1);

let largest = ["", 0];
for (const page of pages) {
  const text = readFileSync(join(built, page), "utf8");
  const named = text.matchAll(new RegExp(`(?:src|href)="${builtBase}([^"]+\\.(?:js|css))"`, "g"));
  const names = new Set([...everywhere, ...[...named].map((each) => each[1])]);
  const all = [...names].reduce((sum, name) => sum + sizeOf(name), 0);
  if (all > largest[1]) largest = [page, all];
}
console.log(`${largest[0]} first loads ${largest[1]} bytes of code, compressed; at most ${most} are allowed`);
if (largest[1] > most) process.exit(1);
