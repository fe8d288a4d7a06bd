// A client of the official SDK speaks to the example host through the bridge.

import assert from "node:assert/strict";
import { once } from "node:events";
import { existsSync } from "node:fs";
import test from "node:test";

import { EmptyResultSchema } from "@modelcontextprotocol/sdk/types.js";

import { bridgeTransport, connect, textOf } from "./support/clients.mjs";
import { servePages, signal } from "./support/pages.mjs";
import { bridgeProgram, cleanup, Host, isRunning, patience, runProgram } from "./support/programs.mjs";

async function connectedClient(defer) {
  const host = await Host.start(defer);
  const client = await connect(defer, bridgeTransport(host));
  return { host, client };
}

test("a client initializes, pings and lists the tools", patience, async (t) => {
  const { client } = await connectedClient(cleanup(t));
  assert.equal(client.getServerVersion().name, "tessella-host");
  await client.ping();
  const { tools } = await client.listTools();
  assert.deepEqual(tools.map((tool) => tool.name), ["open_page", "echo", "workspace", "close_page"]);
});

test("the host knows the workspace of the bridge's environment", patience, async (t) => {
  const { client } = await connectedClient(cleanup(t));
  assert.equal(textOf(await client.callTool({ name: "workspace" })), "/work/garden");
});

test("a page of a local server is opened and read", patience, async (t) => {
  const defer = cleanup(t);
  const { client } = await connectedClient(defer);
  const pages = await servePages(defer, { "/": "<title>Gate</title><h1>Open</h1><p>from nine" });
  await client.listTools();
  const result = await client.callTool({ name: "open_page", arguments: { url: pages.url("/") } });
  assert.deepEqual(result.structuredContent, { url: pages.url("/"), title: "Gate", text: "Open\nfrom nine" });
});

test("a failing tool is a result and not an error of the protocol", patience, async (t) => {
  const { client } = await connectedClient(cleanup(t));
  const result = await client.callTool({ name: "close_page" });
  assert.equal(result.isError, true);
  assert.equal(textOf(result), "No page is open.");
});

test("unknown methods and tools are errors of the protocol", patience, async (t) => {
  const { client } = await connectedClient(cleanup(t));
  await assert.rejects(client.request({ method: "garden/water" }, EmptyResultSchema), { code: -32601 });
  await assert.rejects(client.callTool({ name: "water" }), { code: -32602 });
});

test("4 MiB of text travel there and back unchanged", patience, async (t) => {
  const { client } = await connectedClient(cleanup(t));
  const text = "Gänseblümchen \u{1F33C} \"\\\n\u0001 ".repeat(200_000).slice(0, 4 * 1024 * 1024 - 64);
  const big = text.padEnd(4 * 1024 * 1024, "x");
  const result = await client.callTool({ name: "echo", arguments: { text: big } });
  assert.ok(textOf(result) === big);
});

test("a message beyond the bridge's limit fails alone", patience, async (t) => {
  const { client } = await connectedClient(cleanup(t));
  const text = "x".repeat(8 * 1024 * 1024);
  const failure = { code: -32603, message: /The browser message exceeded the bridge limit\.$/ };
  await assert.rejects(client.callTool({ name: "echo", arguments: { text } }), failure);
  await client.ping();
});

test("twenty requests sent before the first answer are all answered, in order, each with its own id", patience, async (t) => {
  const defer = cleanup(t);
  const host = await Host.start(defer);
  const gate = signal();
  const pages = await servePages(defer, { "/slow": { body: "<title>Slow</title>", hold: gate } });
  const transport = bridgeTransport(host);
  defer(() => transport.close());
  const received = [];
  const complete = signal();
  transport.onmessage = (message) => {
    if (received.push(message) === 20) complete.give();
  };
  await transport.start();

  const call = (id, name, args) => ({ jsonrpc: "2.0", id, method: "tools/call", params: { name, arguments: args } });
  const requests = [call("first", "open_page", { url: pages.url("/slow") })];
  for (let i = 1; i < 20; ++i) requests.push(call(i % 2 ? i : `text-${i}`, "echo", { text: `number ${i}` }));
  for (const request of requests) await transport.send(request);
  assert.equal(received.length, 0);
  gate.give();
  await complete.promise;

  assert.deepEqual(received.map((message) => message.id), requests.map((request) => request.id));
  for (let i = 1; i < 20; ++i) assert.equal(textOf(received[i].result), `number ${i}`);
});

test("several bridges are served at once, and a waiting one holds up no other", patience, async (t) => {
  const defer = cleanup(t);
  const host = await Host.start(defer);
  const gate = signal();
  const pages = await servePages(defer, { "/slow": { body: "<title>Slow</title>", hold: gate } });
  const waiting = await connect(defer, bridgeTransport(host));
  const slowPage = waiting.callTool({ name: "open_page", arguments: { url: pages.url("/slow") } });

  await Promise.all(
    ["/work/one", "/work/two", "/work/three"].map(async (workspace) => {
      const client = await connect(defer, bridgeTransport(host, { KESTRION_WORKSPACE_PATH: workspace }));
      assert.equal(textOf(await client.callTool({ name: "workspace" })), workspace);
    }),
  );
  gate.give();
  assert.equal((await slowPage).structuredContent.title, "Slow");
});

test("a wrong token is told to the client", patience, async (t) => {
  const defer = cleanup(t);
  const host = await Host.start(defer);
  const transport = bridgeTransport(host, { KESTRION_BROWSER_TOKEN: "guessed" });
  await assert.rejects(connect(defer, transport), { code: -32001, message: /The token is wrong\.$/ });
});

test("a client's farewell ends the bridge, and a signal the host: nothing is left", patience, async (t) => {
  const { host, client } = await connectedClient(cleanup(t));
  const bridgePID = client.transport.pid;
  await client.ping();
  await client.close();
  assert.equal(client.standardError(), "");
  assert.equal(isRunning(bridgePID), false);
  assert.equal(await host.stop("SIGTERM"), 0);
  assert.equal(existsSync(host.socket), false);
});

test("the bridge ends with status 0 at the end of its input", patience, async (t) => {
  const host = await Host.start(cleanup(t));
  const input = '{"jsonrpc":"2.0","method":"notifications/initialized"}\n{"jsonrpc":"2.0","id":7,"method":"ping"}';
  const run = await runProgram(bridgeProgram, [], { env: host.environment(), input });
  assert.deepEqual(JSON.parse(run.stdout), { jsonrpc: "2.0", id: 7, result: {} });
  assert.deepEqual([run.status, run.stderr], [0, ""]);
});

test("a host that ends during a call fails the call and the bridge", patience, async (t) => {
  const defer = cleanup(t);
  const { host, client } = await connectedClient(defer);
  const page = { body: "never sent", asked: signal(), hold: signal() };
  const pages = await servePages(defer, { "/slow": page });
  const closed = once(client.transport.stderr, "end");
  const call = client.callTool({ name: "open_page", arguments: { url: pages.url("/slow") } });
  const failed = assert.rejects(call, { code: -32603, message: /Kestrion's browser socket disconnected\.$/ });

  await page.asked.promise;
  assert.equal(await host.stop("SIGTERM"), 0);
  await failed;
  await closed;
  assert.equal(client.standardError(), "Tessella browser MCP bridge: Kestrion's browser socket disconnected.\n");
});

test("a host that ended between two calls ends the bridge at the next one", patience, async (t) => {
  const { host, client } = await connectedClient(cleanup(t));
  const bridgePID = client.transport.pid;
  assert.equal(await host.stop("SIGTERM"), 0);
  await assert.rejects(client.ping(), { code: -32000 });
  assert.equal(isRunning(bridgePID), false);
});
