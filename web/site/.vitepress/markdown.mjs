// What the site adds to pages as they are written for people who read the files.

/** What lies beside docs/ lies in it here, and files of examples have their places on the page of their folder. */
export function placesOfTheSite(markdown) {
  const placed = (address) => {
    const [, up, target] = /^((?:\.\.\/)*)(examples\/.*|.*)$/.exec(address);
    const [, folder, file] = /^(examples\/(?!photos)\w+)(?:\/(.*))?$/.exec(target) ?? [];
    const within = up && /^(examples\/|README\.md$)/.test(target) ? `./${up.slice("../".length)}` : up;
    if (folder) return `${within}${folder}.md${file ? `#${file.toLowerCase().replaceAll(/[^a-z0-9]+/g, "-")}` : ""}`;
    return within + target.replace(/\bREADME\.md/, "index.md");
  };
  markdown.core.ruler.push("places_of_the_site", ({ tokens }) => {
    for (const token of tokens.flatMap((each) => each.children ?? [])) {
      const name = { link_open: "href", image: "src" }[token.type];
      if (name) token.attrSet(name, placed(token.attrGet(name)));
    }
  });
}

/** Commands, which stand indented in files, are blocks like others. */
export function commandsAsBlocks(markdown) {
  markdown.core.ruler.push("commands_as_blocks", ({ tokens }) => {
    for (const token of tokens)
      if (token.type === "code_block") Object.assign(token, { type: "fence", tag: "code", info: "sh", markup: "```" });
  });
}

/** A cell that heads nothing is no heading. */
export function headlessColumns(markdown) {
  markdown.core.ruler.push("headless_columns", ({ tokens }) => {
    for (const [i, token] of tokens.entries())
      if (token.type === "th_open" && tokens[i + 1].content === "") for (const each of [token, tokens[i + 2]]) each.tag = "td";
  });
}

/** A page of docs/ops is live: behind what it says first comes what its title names. */
export function liveOperations(markdown) {
  markdown.core.ruler.push("live_operations", ({ env, tokens, Token }) => {
    if (!/^ops\/TRV_\w+\.md$/.test(env.relativePath)) return;
    const title = tokens.findIndex((token) => token.type === "heading_open");
    const first = tokens.findIndex((token, i) => i > title && token.type === "paragraph_close");
    const live = new Token("html_block", "", 0);
    live.content = `<LivePart names="${tokens[title + 1].content}" />\n`;
    tokens.splice(first + 1, 0, live);
  });
}
