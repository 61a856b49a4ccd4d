// assemble.mjs ROOT FOLDER: puts into FOLDER what the site is made of: the pages of docs/ and of this folder, the
// package's own page, and a page for each folder of examples, so that no link leads out of the site.

import { cpSync, mkdirSync, readdirSync, readFileSync, renameSync, rmSync, writeFileSync } from "node:fs";
import { join } from "node:path";

const [root, folder] = process.argv.slice(2);
rmSync(folder, { recursive: true, force: true });
cpSync(join(root, "docs"), folder, { recursive: true });
cpSync(join(root, "web/site/pages"), folder, { recursive: true });
cpSync(join(root, "web/README.md"), join(folder, "web.md"));
cpSync(join(root, "examples/photos"), join(folder, "examples/photos"), { recursive: true });
for (const each of ["ops", "examples/photos"]) renameSync(join(folder, each, "README.md"), join(folder, each, "index.md"));
mkdirSync(join(folder, "public"));
renameSync(join(folder, "operations.schema.json"), join(folder, "public/operations.schema.json"));

const languages = { c: "c", cpp: "cpp", h: "cpp", py: "python", txt: "cmake", ipynb: "json" };

/** A notebook's texts and code as Markdown; any other file as a block of code. */
function shown(path, name) {
  const text = readFileSync(path, "utf8");
  if (!name.endsWith(".ipynb")) return `\`\`\`${languages[name.split(".").at(-1)] ?? ""}\n${text}\`\`\`\n`;
  const source = (cell) => [cell.source].flat().join("");
  return JSON.parse(text)
    .cells.map((cell) => (cell.cell_type === "code" ? `\`\`\`python\n${source(cell)}\n\`\`\`\n` : `${source(cell).replaceAll(/^#/gm, "###")}\n`))
    .join("\n");
}

for (const each of readdirSync(join(root, "examples"), { withFileTypes: true })) {
  if (!each.isDirectory() || each.name === "photos") continue;
  const from = join(root, "examples", each.name);
  const parts = readdirSync(from, { withFileTypes: true })
    .filter((file) => file.isFile())
    .map(({ name }) => `## ${name}\n\n${shown(join(from, name), name)}`);
  mkdirSync(join(folder, "examples"), { recursive: true });
  writeFileSync(join(folder, "examples", `${each.name}.md`), `# examples/${each.name}\n\n${parts.join("\n")}`);
}
