// The pictures that come with the site, by their names in the project.

const small = import.meta.glob<string>("../src/pictures/*.png", { query: "?url", import: "default", eager: true });
const photographs = import.meta.glob<string>("../src/examples/photos/*.{png,jpg}", { query: "?url", import: "default", eager: true });

export const samples: ReadonlyMap<string, string> = new Map([
  ...Object.entries(small).map(([path, address]) => [path.replace("../src/", "docs/"), address] as const),
  ...Object.entries(photographs).map(([path, address]) => [path.replace("../src/", ""), address] as const),
]);

export const photographNames: readonly string[] = [...samples.keys()].filter((name) => name.startsWith("examples/"));
