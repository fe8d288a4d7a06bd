// Measures the official MCP client for TypeScript on the server of the conversations, as its peer in the same run.
// Usage: node mcp-typescript.mjs SERVER FILE [--short]     FILE takes the figures, as JSON

import { readFileSync, writeFileSync } from "node:fs";
import { createRequire } from "node:module";
import { pathToFileURL } from "node:url";

const packages = new URL("../../Tests/mcp/", import.meta.url);
const fromPackages = createRequire(packages);
const load = (name) => import(pathToFileURL(fromPackages.resolve(`@modelcontextprotocol/sdk/${name}`)));

const [server, file, ...options] = process.argv.slice(2);
const isShort = options.includes("--short");
const rounds = 5;
const notifications = isShort ? 3_000 : 20_000;
const requests = isShort ? 1_000 : 5_000;

// The texts of `Thread::steer`, so that both clients send and read the same.
const threadId = "0199a213-81c0-7800-8aa1-bbab2a035a53";
const expectedTurnId = "0199a213-8243-7a51-9c2d-6b6f3c1d8e4f";
const inputOf = (text) => [{ text, text_elements: [], type: "text" }];

function median(values) {
  return values.slice().sort((one, other) => one - other)[Math.floor(values.length / 2)];
}

const nanosecondsNow = () => Number(process.hrtime.bigint());

async function notificationsPerSecond(client, anyResult, workload) {
  let count = 0;
  client.fallbackNotificationHandler = async () => void ++count;
  const params = { threadId, input: inputOf(`${workload} ${notifications}`) };
  const start = nanosecondsNow();
  await client.request({ method: "turn/start", params }, anyResult);
  const taken = nanosecondsNow() - start;
  if (count !== notifications) throw new Error(`${count} of ${notifications} notifications came`);
  return notifications / (taken / 1e9);
}

async function roundTripTimes(client, anyResult) {
  const params = { expectedTurnId, input: inputOf("go on"), threadId };
  const times = [];
  for (let request = 0; request < requests; ++request) {
    const start = nanosecondsNow();
    await client.request({ method: "turn/steer", params }, anyResult);
    times.push(nanosecondsNow() - start);
  }
  times.sort((one, other) => one - other);
  return [0.5, 0.99].map((share) => times[Math.floor(share * (times.length - 1))]);
}

async function measure(client, anyResult) {
  const taken = { eventsOfBlocks: [], eventsOfLines: [], roundTripTimeP50: [], roundTripTimeP99: [] };
  // The compiler of the machine under the script has seen everything once before it counts.
  for (let round = -1; round < rounds; ++round) {
    const blocks = await notificationsPerSecond(client, anyResult, "blocks");
    const lines = await notificationsPerSecond(client, anyResult, "lines");
    const [half, most] = await roundTripTimes(client, anyResult);
    if (round < 0) continue;
    taken.eventsOfBlocks.push(blocks);
    taken.eventsOfLines.push(lines);
    taken.roundTripTimeP50.push(half);
    taken.roundTripTimeP99.push(most);
  }
  return Object.fromEntries(Object.entries(taken).map(([name, values]) => [name, median(values)]));
}

if (!server || !file) {
  console.error("usage: node mcp-typescript.mjs SERVER FILE [--short]");
  process.exit(1);
}
const { Client } = await load("client/index.js");
const { StdioClientTransport } = await load("client/stdio.js");
const { ResultSchema } = await load("types.js");
const { version } = JSON.parse(readFileSync(new URL("node_modules/@modelcontextprotocol/sdk/package.json", packages)));

const client = new Client({ name: "benchmark", version: "1" });
await client.connect(new StdioClientTransport({ command: server, args: ["mcp"] }));
const figures = await measure(client, ResultSchema);
await client.close();
writeFileSync(file, `${JSON.stringify({ version, ...figures })}\n`);
console.log(`the MCP client for TypeScript ${version}:`);
for (const [name, figure] of Object.entries(figures)) console.log(`  ${name.padEnd(20)} ${Math.round(figure)}`);
