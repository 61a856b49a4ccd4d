// check-size.mjs FOLDER: what a page loads first, the module and its scripts, has less than a megabyte as servers send it.

import { readdirSync, readFileSync } from "node:fs";
import { join } from "node:path";
import { brotliCompressSync, constants } from "node:zlib";

const most = 1_000_000;
const folder = process.argv[2];
let all = 0;
for (const name of readdirSync(folder).filter((each) => /\.(js|wasm)$/.test(each))) {
  const params = { [constants.BROTLI_PARAM_QUALITY]: 9 };
  all += brotliCompressSync(readFileSync(join(folder, name)), { params }).length;
}
console.log(`${all} bytes compressed, at most ${most} are allowed`);
if (all === 0 || all > most) process.exit(1);
