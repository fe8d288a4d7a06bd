// A web server on this machine, as an agent's user would have one running.

import { once } from "node:events";
import { createServer } from "node:http";

/** A promise with its handles outside. */
export function signal() {
  const result = {};
  result.promise = new Promise((resolve) => (result.give = resolve));
  return result;
}

/**
 * Serves `pages`: from a path to a text of HTML, or to `{status, type, body, headers}`.
 * A page with `hold` is answered only after that promise; `asked` tells when somebody wants it.
 */
export async function servePages(defer, pages) {
  const server = createServer(async (request, response) => {
    const found = pages[request.url] ?? { status: 404, body: "Nothing here." };
    const page = typeof found === "string" ? { body: found } : found;
    page.asked?.give();
    await page.hold?.promise;
    response.writeHead(page.status ?? 200, { "content-type": page.type ?? "text/html", ...page.headers });
    response.end(page.body);
  });
  server.listen(0, "127.0.0.1");
  await once(server, "listening");
  defer(() => {
    server.closeAllConnections();
    server.close();
  });
  const { port } = server.address();
  return { url: (path) => `http://127.0.0.1:${port}${path}` };
}
