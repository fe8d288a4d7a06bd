// The MCP inspector's command line, through the bridge.

import assert from "node:assert/strict";
import test from "node:test";

import { inspectorProgram } from "./support/packages.mjs";
import { bridgeProgram, cleanup, Host, patience, runProgram } from "./support/programs.mjs";

async function inspect(t, ...args) {
  const host = await Host.start(cleanup(t));
  const run = await runProgram(inspectorProgram, ["--cli", bridgeProgram, ...args], { env: host.environment() });
  assert.equal(run.status, 0, run.stderr);
  return JSON.parse(run.stdout);
}

test("the inspector lists the tools", patience, async (t) => {
  const { tools } = await inspect(t, "--method", "tools/list");
  assert.deepEqual(tools.map((tool) => tool.name), ["open_page", "echo", "workspace", "close_page"]);
});

test("the inspector calls a tool", patience, async (t) => {
  const result = await inspect(t, "--method", "tools/call", "--tool-name", "echo", "--tool-arg", "text=good morning");
  assert.deepEqual(result, { content: [{ type: "text", text: "good morning" }] });
});

test("the inspector shows a tool's failure", patience, async (t) => {
  const result = await inspect(t, "--method", "tools/call", "--tool-name", "close_page");
  assert.deepEqual(result, { content: [{ type: "text", text: "No page is open." }], isError: true });
});
