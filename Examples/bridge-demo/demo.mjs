// A real MCP client speaks through the bridge to the example host, and everything that travels is shown.
// scripts/demo starts it, with the host running.

import assert from "node:assert/strict";
import { once } from "node:events";
import { createServer } from "node:http";
import { createRequire } from "node:module";
import { join } from "node:path";

import { headline, remark, travel } from "./Display.mjs";
import { tapFrames } from "./FrameTap.mjs";

const require = createRequire(new URL("../../Tests/mcp/package.json", import.meta.url));
const { Client } = require("@modelcontextprotocol/sdk/client/index.js");
const { StdioClientTransport } = require("@modelcontextprotocol/sdk/client/stdio.js");

const { TESSELLA_BRIDGE: bridgeProgram, DEMO_DIRECTORY: directory, KESTRION_BROWSER_TOKEN: token } = process.env;
assert.ok(bridgeProgram && directory && token, "Start the demo with scripts/demo.");

const workspacePath = "/work/garden";
const page = `<!doctype html>
<title>Opening hours &mdash; Garden</title>
<script>track()</script>
<h1>Opening hours</h1>
<p>The gate is open <b>from nine to five</b>.</p>`;

async function startPageServer() {
  const server = createServer((_, response) => {
    response.setHeader("content-type", "text/html; charset=utf-8");
    response.end(page);
  });
  server.listen(0, "127.0.0.1");
  await once(server, "listening");
  return server;
}

function showRequestFrame({ id, method, params }, size) {
  const message = `${params.message.method} for ${params.workspacePath}`;
  travel("in", "bridge", "host", `frame of ${size} bytes: envelope ${id}, ${method}, with token: ${message}`);
}

function showReplyFrame({ id, result }, size) {
  const kind = result.error ? "an error" : "a result";
  travel("out", "host", "bridge", `frame of ${size} bytes: answer to envelope ${id}, ${kind}`);
}

/** The client's transport, which tells what goes over the bridge's standard streams. */
function shownTransport(socketPath) {
  const transport = new StdioClientTransport({
    command: bridgeProgram,
    env: {
      KESTRION_BROWSER_SOCKET: socketPath,
      KESTRION_BROWSER_TOKEN: token,
      KESTRION_WORKSPACE_PATH: workspacePath,
    },
  });
  const send = transport.send.bind(transport);
  transport.send = (message) => {
    travel("in", "client", "bridge", JSON.stringify(message));
    return send(message);
  };
  transport.onmessage = (message) => travel("out", "bridge", "client", JSON.stringify(message));
  return transport;
}

async function converse(client, transport, pageURL) {
  headline("The client starts the bridge and introduces itself");
  await client.connect(transport);
  remark("The notification at the end goes no further than the bridge: no answer is due for it.");

  headline("It asks for the host's tools");
  const { tools } = await client.listTools();
  for (const tool of tools) remark(`${tool.name.padEnd(10)}  ${tool.description}`);

  headline("It opens a page of a web server on this machine");
  const opened = await client.callTool({ name: "open_page", arguments: { url: pageURL } });
  assert.equal(opened.structuredContent.title, "Opening hours — Garden");
  assert.equal(opened.structuredContent.text, "Opening hours\nThe gate is open from nine to five.");
  for (const line of opened.content[0].text.split("\n")) remark(`│ ${line}`);

  headline("A tool that fails gives a result that the agent can read");
  const refused = await client.callTool({ name: "open_page", arguments: { url: "http://192.0.2.1/" } });
  assert.equal(refused.isError, true);
  remark(refused.content[0].text);

  headline("A tool that does not exist is an error of the protocol");
  await assert.rejects(client.callTool({ name: "make_coffee" }), { code: -32602 });

  headline("The client closes the bridge's standard input, and the bridge ends");
  const bridge = transport.pid;
  await client.close();
  assert.throws(() => process.kill(bridge, 0), { code: "ESRCH" });
  remark("It is gone.");
}

const pageServer = await startPageServer();
const socketPath = join(directory, "tap.sock");
const tap = await tapFrames(socketPath, join(directory, "host.sock"), {
  onRequest: showRequestFrame,
  onReply: showReplyFrame,
});
const transport = shownTransport(socketPath);
const client = new Client({ name: "bridge-demo", version: "1.0.0" });
try {
  await converse(client, transport, `http://127.0.0.1:${pageServer.address().port}/hours.html`);
} finally {
  await client.close();
  pageServer.closeAllConnections();
  pageServer.close();
  tap.close();
}
