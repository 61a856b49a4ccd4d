// serve.mjs SITE [PORT]: shows the site on this machine alone, under the path that it has been placed for.

import { createReadStream, existsSync, readFileSync, statSync } from "node:fs";
import { createServer } from "node:http";
import { extname, join, normalize } from "node:path";
import { fileURLToPath } from "node:url";

const types = {
  ".css": "text/css",
  ".html": "text/html; charset=utf-8",
  ".jpg": "image/jpeg",
  ".js": "text/javascript",
  ".json": "application/json",
  ".png": "image/png",
  ".svg": "image/svg+xml",
  ".txt": "text/plain; charset=utf-8",
  ".wasm": "application/wasm",
};

/** Begins to serve; port 0 takes any that is free. */
export async function serve(site, port = 0) {
  const base = readFileSync(join(site, "base.txt"), "utf8").trim();
  const server = createServer((request, response) => {
    let path = decodeURIComponent(new URL(request.url, "http://localhost").pathname);
    if (!path.startsWith(base)) {
      response.writeHead(404).end();
      return;
    }
    path = normalize(`/${path.slice(base.length)}`);
    let file = join(site, path);
    if (existsSync(file) && statSync(file).isDirectory()) file = join(file, "index.html");
    const found = existsSync(file);
    if (!found) file = join(site, "404.html");
    response.writeHead(found ? 200 : 404, { "Content-Type": types[extname(file)] ?? "application/octet-stream" });
    createReadStream(file).pipe(response);
  });
  await new Promise((done) => server.listen(port, "127.0.0.1", done));
  return { address: `http://127.0.0.1:${server.address().port}${base}`, close: () => new Promise((done) => server.close(done)) };
}

if (process.argv[1] === fileURLToPath(import.meta.url)) {
  const { address } = await serve(process.argv[2], Number(process.argv[3] ?? 8080));
  console.log(address);
}
