import { readdirSync, readFileSync } from "node:fs";
import { basename, join } from "node:path";
import { fileURLToPath } from "node:url";

import { defineConfig } from "vitepress";

import { builtBase } from "../tools/base.mjs";
import { commandsAsBlocks, headlessColumns, liveOperations, placesOfTheSite } from "./markdown.mjs";

const root = fileURLToPath(new URL("..", import.meta.url));
const { load } = await import(join(root, "../package/dist/index.js"));
const { operations } = (await load()).description();

const families: Record<string, string> = {
  tone: "Tone and colour",
  combine: "Two pictures and more",
  geometry: "Geometry",
  filters: "Filters and gradients",
  interchange: "Interchange",
};

/** A link to each page of operations, by what the first one on it is. */
function operationLinks() {
  const pages = readdirSync(join(root, "src/ops")).filter((name) => name.startsWith("TRV_"));
  return Object.entries(families).map(([family, text]) => {
    const names = operations.filter((each) => each.family === family).map((each) => each.name);
    const own = names.filter((name) => pages.includes(`${name}.md`));
    return { text, items: own.map((name) => ({ text: name.replace(/^TRV_/, ""), link: `/ops/${name}` })) };
  });
}

const guides = [
  ["tool", "The tool"],
  ["python", "Python"],
  ["library", "C and C++"],
  ["web", "Pages and Node"],
  ["metadata", "What photographs carry"],
  ["golden-tests", "Golden pictures"],
  ["exactness", "The same bits"],
  ["safety", "Safety"],
  ["host", "The host"],
  ["errors", "Errors"],
  ["words", "Words"],
].map(([name, text]) => ({ text: text!, link: `/${name}` }));
const classes = readdirSync(join(root, "src/classes")).map((file) => {
  const name = basename(file, ".md");
  return { text: name.replace(/^TRV_/, ""), link: `/classes/${name}` };
});
const examples = ["host", "library", "python"].map((name) => ({ text: `examples/${name}`, link: `/examples/${name}` }));
const guideSidebar = [
  { text: "Guide", items: guides },
  { text: "Classes", items: classes },
  { text: "Examples", items: examples },
];

const icon = readFileSync(join(root, "icon.svg"), "utf8").replaceAll(/\s*\n\s*/g, " ").trim();

export default defineConfig({
  title: "Tarvo Graphics",
  description: "Picture operations, fixed to the bit, live in the page",
  lang: "en",
  base: builtBase,
  srcDir: "src",
  outDir: "dist",
  cacheDir: "cache",
  metaChunk: true,
  head: [["link", { rel: "icon", href: `data:image/svg+xml,${encodeURIComponent(icon)}` }]],
  // What is live wants the width.
  transformPageData: (page) => void (/^ops\/TRV_/.test(page.relativePath) && (page.frontmatter.aside = false)),
  markdown: {
    theme: { light: "github-light-high-contrast", dark: "github-dark-high-contrast" },
    config: (markdown) => void markdown.use(placesOfTheSite).use(commandsAsBlocks).use(headlessColumns).use(liveOperations),
  },
  vite: {
    resolve: { alias: { "@tarvo/web": join(root, "../package/dist") } },
    server: { fs: { allow: [join(root, "..")] } },
    // Named as the page names it, so that the module is there once.
    worker: { format: "es", rollupOptions: { output: { assetFileNames: "assets/[name].[hash][extname]" } } },
    build: { target: "es2022", chunkSizeWarningLimit: 1000 },
  },
  themeConfig: {
    outline: [2, 3],
    search: { provider: "local" },
    nav: [
      { text: "Operations", link: "/ops/", activeMatch: "/ops/" },
      { text: "Playground", link: "/playground" },
      { text: "Guide", link: "/tool", activeMatch: "^/(tool|python|library|web|metadata|golden|exactness|safety|host|errors|words|classes|examples)" },
    ],
    sidebar: {
      "/ops/": [{ text: "By what they are for", link: "/ops/" }, ...operationLinks()],
      "/playground": [],
      "/": guideSidebar,
    },
    docFooter: { prev: false, next: false },
  },
});
