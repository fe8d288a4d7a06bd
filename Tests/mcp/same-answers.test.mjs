// The bridge adds nothing between client and server.

import assert from "node:assert/strict";
import test from "node:test";

import { EmptyResultSchema } from "@modelcontextprotocol/sdk/types.js";

import { bridgeTransport, connect, directTransport } from "./support/clients.mjs";
import { servePages } from "./support/pages.mjs";
import { cleanup, Host, patience } from "./support/programs.mjs";

const pages = {
  "/": "<title>Garden &amp; gate</title><p>Grüße</p>",
  "/picture": { type: "image/png", body: "\x89PNG" },
};

const outcome = (call) =>
  call.then(
    (result) => ({ result }),
    (error) => ({ code: error.code, message: error.message, data: error.data }),
  );

/** The session: every kind of request that a client makes, good and bad, one after the other. */
async function session(client, server) {
  const call = (name, args) => () => client.callTool({ name, arguments: args });
  const steps = [
    () => client.ping(),
    () => client.listTools(),
    call("echo", { text: "Gr\u00fc\u00dfe, \u{1F33C}, \"quoted\", \\, \u0000, \u2028" }),
    call("echo", { text: "" }),
    call("echo", { text: 7 }),
    call("echo", {}),
    call("workspace", {}),
    call("workspace"),
    call("open_page", { url: server.url("/") }),
    call("open_page", { url: server.url("/missing") }),
    call("open_page", { url: server.url("/picture") }),
    call("open_page", { url: "https://127.0.0.1/" }),
    call("close_page", {}),
    call("water", {}),
    () => client.request({ method: "garden/water", params: { amount: 1.5 } }, EmptyResultSchema),
    () => client.request({ method: "tools/call" }, EmptyResultSchema),
  ];
  const outcomes = [client.getServerVersion(), client.getServerCapabilities(), client.getInstructions()];
  for (const step of steps) outcomes.push(await outcome(step()));
  return { outcomes, received: client.received };
}

test("a session through bridge and host has the answers of a direct one", patience, async (t) => {
  const defer = cleanup(t);
  const server = await servePages(defer, pages);
  const host = await Host.start(defer);
  const direct = await session(await connect(defer, directTransport()), server);
  const bridged = await session(await connect(defer, bridgeTransport(host)), server);
  assert.equal(direct.received.length, 17);
  assert.deepEqual(bridged, direct);
});
