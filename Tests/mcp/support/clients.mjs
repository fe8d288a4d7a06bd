// Real MCP clients, connected through the bridge or directly.

import { Client } from "@modelcontextprotocol/sdk/client/index.js";
import { StdioClientTransport } from "@modelcontextprotocol/sdk/client/stdio.js";

import { bridgeProgram, hostProgram } from "./programs.mjs";

export function bridgeTransport(host, changes) {
  return new StdioClientTransport({ command: bridgeProgram, env: host.environment(changes), stderr: "pipe" });
}

export function directTransport() {
  return new StdioClientTransport({
    command: hostProgram,
    args: ["--stdio", "--workspace", "/work/garden"],
    env: process.env,
    stderr: "pipe",
  });
}

/** A connected client. `client.received` are the messages as they came, `client.standardError()` the server's text. */
export async function connect(defer, transport) {
  const client = new Client({ name: "garden-gate", version: "1.0.0" });
  client.received = [];
  transport.onmessage = (message) => client.received.push(message);
  let standardError = "";
  transport.stderr.setEncoding("utf8").on("data", (text) => (standardError += text));
  client.standardError = () => standardError;
  defer(() => client.close());
  await client.connect(transport);
  return client;
}

/** The text of a tool's result. */
export function textOf(result) {
  return result.content.map((part) => part.text).join("");
}
