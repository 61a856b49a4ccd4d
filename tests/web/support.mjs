// What the tests of the package share: the package as a project finds it that has installed it, and the native tool to
// compare with.

import { execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync } from "node:fs";
import { createRequire } from "node:module";
import { tmpdir } from "node:os";
import { dirname, join } from "node:path";
import { fileURLToPath, pathToFileURL } from "node:url";

export const root = join(dirname(fileURLToPath(import.meta.url)), "../..");
/** A project in which the package is installed. */
export const project = join(root, "build/web/project");
export const packageUrl = pathToFileURL(createRequire(join(project, "/")).resolve("@tarvo/web"));
export const tarvo = await import(packageUrl);

export const bytesOf = (name) => new Uint8Array(readFileSync(join(root, name)));

/** Runs the native tool, and returns what it prints. */
export function tool(...args) {
  return execFileSync(join(root, "build/release/bin/tarvo"), args, { cwd: root, maxBuffer: 1 << 28 });
}

/** The bytes of the file that the tool writes when `args(name)` tell it to. */
export function written(ending, args) {
  const folder = mkdtempSync(join(tmpdir(), "tarvo-web-"));
  try {
    const name = join(folder, `out.${ending}`);
    tool(...args(name));
    return new Uint8Array(readFileSync(name));
  } finally {
    rmSync(folder, { recursive: true });
  }
}

/** The arguments that a call's text lists, as the package takes them. Pictures come from `picture(name)`; bare names, in
 *  which the tool shows what came back, are left out. */
export function argumentsOf(text, picture) {
  const inside = /^\w+\((.*)\)$/.exec(text)[1];
  const parts = inside.match(/(?:[^,()]|\([^()]*\))+/g) ?? [];
  const numbers = (list) => list.split(",").map(Number);
  return parts.map((part) => part.trim()).flatMap((part) => {
    const made = /^(\w+)\((.*)\)$/.exec(part);
    if (made?.[1] === "rect") {
      const [left, top, width, height] = numbers(made[2]);
      return [{ left, top, width, height }];
    }
    if (made) return [numbers(made[2])];
    if (part === "nil") return [null];
    if (part === "true" || part === "false") return [part === "true"];
    if (part.startsWith("&c")) return [`#${part.slice(2)}`];
    if (part.includes("/")) return [picture(part)];
    return Number.isNaN(Number(part)) ? [] : [Number(part)];
  });
}
