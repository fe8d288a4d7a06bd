// The example host, as a bridge sees it: its socket file, its frames, its end.

import assert from "node:assert/strict";
import { existsSync, readFileSync, statSync, writeFileSync } from "node:fs";
import { dirname, join } from "node:path";
import test from "node:test";

import { envelope, frame, FrameSocket } from "./support/frames.mjs";
import { cleanup, Host, hostProgram, patience, runProgram, temporaryDirectory } from "./support/programs.mjs";

const ping = (id) => ({ jsonrpc: "2.0", id, method: "ping" });
const pong = (id) => ({ jsonrpc: "2.0", id, result: {} });
const permissions = (path) => statSync(path).mode & 0o777;

async function connected(t) {
  const defer = cleanup(t);
  const host = await Host.start(defer);
  return { defer, host, socket: await FrameSocket.connect(defer, host) };
}

async function exchange(socket, body) {
  socket.write(frame(body));
  return socket.reply();
}

async function assertServes(socket, host) {
  assert.deepEqual(await exchange(socket, envelope(host, 99, ping("alive"))), { id: 99, result: pong("alive") });
}

const startOnce = (path, env = { KESTRION_BROWSER_TOKEN: "sesame" }) =>
  runProgram(hostProgram, ["--socket", path], { env });

test("the socket and the directory made for it belong to the user alone", patience, async (t) => {
  const defer = cleanup(t);
  const host = await Host.start(defer, { socket: join(temporaryDirectory(defer), "own", "browser.sock") });
  assert.equal(permissions(host.socket), 0o600);
  assert.equal(permissions(dirname(host.socket)), 0o700);
});

test("the socket of a host that died is replaced", patience, async (t) => {
  const defer = cleanup(t);
  const killed = await Host.start(defer);
  assert.equal(await killed.stop("SIGKILL"), "SIGKILL");
  assert.equal(existsSync(killed.socket), true);
  const host = await Host.start(defer, { socket: killed.socket });
  await assertServes(await FrameSocket.connect(defer, host), host);
});

test("the socket of a living host is left to it", patience, async (t) => {
  const { host, socket } = await connected(t);
  const second = await startOnce(host.socket);
  assert.equal(second.status, 1);
  assert.equal(second.stderr, `tessella-host: Another host listens on ${host.socket}\n`);
  await assertServes(socket, host);
});

test("a file that is no socket is left alone", patience, async (t) => {
  const path = join(temporaryDirectory(cleanup(t)), "diary");
  writeFileSync(path, "dear diary");
  const run = await startOnce(path);
  assert.equal(run.status, 1);
  assert.equal(run.stderr, `tessella-host: Something that is no socket stands at ${path}\n`);
  assert.equal(readFileSync(path, "utf8"), "dear diary");
});

test("a path that no bridge would accept is refused", patience, async () => {
  const run = await startOnce(`/tmp/${"x".repeat(99)}`);
  assert.equal(run.status, 1);
  assert.match(run.stderr, /longer than 103 bytes/);
});

test("a host without a token does not start", patience, async (t) => {
  const path = join(temporaryDirectory(cleanup(t)), "browser.sock");
  const run = await startOnce(path, { KESTRION_BROWSER_TOKEN: "" });
  assert.equal(run.status, 1);
  assert.equal(existsSync(path), false);
});

for (const signal of ["SIGINT", "SIGTERM"]) {
  test(`${signal} ends the host with status 0 and removes its socket, also with bridges connected`, patience, async (t) => {
    const { host, socket } = await connected(t);
    await assertServes(socket, host);
    assert.equal(await host.stop(signal), 0);
    assert.equal(existsSync(host.socket), false);
    assert.equal(await socket.reply(), undefined);
  });
}

test("frames may come in pieces, and several at once", patience, async (t) => {
  const { host, socket } = await connected(t);
  const bytes = Buffer.concat([1, 2, 3].map((id) => frame(envelope(host, id, ping(id)))));
  for (const byte of bytes.subarray(0, 50)) socket.write(Buffer.from([byte]));
  socket.write(bytes.subarray(50));
  for (const id of [1, 2, 3]) assert.deepEqual(await socket.reply(), { id, result: pong(id) });
});

test("the largest frame is answered", patience, async (t) => {
  const { host, socket } = await connected(t);
  const body = envelope(host, 1, ping(1));
  const reply = await exchange(socket, body.padEnd(8 * 1024 * 1024, " "));
  assert.deepEqual(reply, { id: 1, result: pong(1) });
});

test("a frame beyond the limit ends its connection and no other", patience, async (t) => {
  const { defer, host, socket } = await connected(t);
  const greedy = await FrameSocket.connect(defer, host);
  const header = Buffer.alloc(4);
  header.writeUInt32LE(8 * 1024 * 1024 + 1);
  greedy.write(header);
  assert.equal(await greedy.reply(), undefined);
  await assertServes(socket, host);
  assert.equal(await host.stop(), 0);
  assert.match(host.log, /^bridge 2: A frame of 8388609 bytes exceeds the limit of 8 MiB\.$/m);
});

test("a connection that ends inside a frame is told in the log", patience, async (t) => {
  const { host, socket } = await connected(t);
  socket.socket.end(frame(envelope(host, 1, ping(1))).subarray(0, 20));
  assert.equal(await socket.reply(), undefined);
  assert.equal(await host.stop(), 0);
  assert.match(host.log, /^bridge 1: The connection ended inside a frame\.$/m);
});

test("a body that is not JSON is refused, and the connection goes on", patience, async (t) => {
  const { host, socket } = await connected(t);
  for (const body of ["", "{", "\xff"]) {
    const reply = await exchange(socket, Buffer.from(body, "latin1"));
    assert.equal(reply.id, null);
    assert.equal(reply.result.error.code, -32700);
  }
  await assertServes(socket, host);
});

test("a body that is no envelope is refused under its id", patience, async (t) => {
  const { host, socket } = await connected(t);
  const malformed = [
    { id: 5 },
    { id: 5, method: "tessellaMCP" },
    { id: 5, method: "otherMCP", params: {} },
    { id: 5, method: "tessellaMCP", params: [] },
    { id: 5, method: "tessellaMCP", params: { token: host.token, workspacePath: "/" } },
    { id: 5, method: "tessellaMCP", params: { token: host.token, message: ping(1) } },
    { id: 5, method: "tessellaMCP", params: { token: 1, workspacePath: "/", message: ping(1) } },
  ];
  for (const body of malformed) {
    const reply = await exchange(socket, JSON.stringify(body));
    assert.equal(reply.id, 5);
    assert.equal(reply.result.error.code, -32600, JSON.stringify(reply));
  }
  await assertServes(socket, host);
});

test("an envelope's id comes back as the number it is, however large", patience, async (t) => {
  const { host, socket } = await connected(t);
  assert.equal((await exchange(socket, envelope(host, 1e19, ping(1)))).id, 1e19);
});

test("a wrong token is refused with the client's id, whatever its length", patience, async (t) => {
  const { host, socket } = await connected(t);
  for (const token of ["sesamf", "", "sesame street"]) {
    const reply = await exchange(socket, envelope(host, 3, ping("mine"), { token }));
    const error = { code: -32001, message: "The token is wrong." };
    assert.deepEqual(reply, { id: 3, result: { jsonrpc: "2.0", id: "mine", error } });
  }
  await assertServes(socket, host);
});

test("an envelope with a notification is acknowledged without an answer for the client", patience, async (t) => {
  const { host, socket } = await connected(t);
  const notification = { jsonrpc: "2.0", method: "notifications/initialized" };
  assert.deepEqual(await exchange(socket, envelope(host, 1, notification)), { id: 1, result: null });
});

test("a message that is no request gets an error response", patience, async (t) => {
  const { host, socket } = await connected(t);
  for (const message of [[], 7, null, {}, { id: 1 }, { id: null, method: "ping" }, { id: 1, method: 7 }]) {
    const { result } = await exchange(socket, envelope(host, 1, message));
    assert.equal(result.error.code, -32600, JSON.stringify(message));
  }
});

test("a log line stays one line, whatever the client sends", patience, async (t) => {
  const { host, socket } = await connected(t);
  await exchange(socket, envelope(host, 1, { id: 1, method: "a\nb\u001b[2J" }));
  assert.equal(await host.stop(), 0);
  assert.match(host.log, /^bridge 1: a\?b\?\[2J: error -32601, Unknown method: a\?b\?\[2J \(\d+\.\d ms\)\n$/);
});
