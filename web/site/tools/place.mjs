// place.mjs BUILT SITE BASE: writes the site that has been built in BUILT to SITE, for the path BASE. Pages and scripts are
// built for a path that occurs nowhere else, so another one is put there by its text alone.

import { cpSync, mkdirSync, readdirSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { join } from "node:path";

import { builtBase } from "./base.mjs";

const [built, site, base] = process.argv.slice(2);
if (!/^\/([\w.~-]+\/)*$/.test(base)) {
  console.error(`${base}: a path begins and ends with "/", and has letters, digits, "-", "_", "." and "~" between`);
  process.exit(2);
}

// Pages have their paths as names, too.
const inNames = (path) => path.replaceAll(/\/+/g, "_");

rmSync(site, { recursive: true, force: true });
for (const each of readdirSync(built, { recursive: true, withFileTypes: true })) {
  const from = join(each.parentPath ?? each.path, each.name);
  const to = join(site, from.slice(built.length));
  if (each.isDirectory()) mkdirSync(to, { recursive: true });
  else if (/\.(html|js|css|json|txt)$/.test(each.name)) {
    mkdirSync(join(to, ".."), { recursive: true });
    writeFileSync(to, readFileSync(from, "utf8").replaceAll(builtBase, base).replaceAll(inNames(builtBase), inNames(base)));
  } else cpSync(from, to);
}
writeFileSync(join(site, "base.txt"), `${base}\n`);
