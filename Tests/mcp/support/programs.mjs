// The programs under test, and where they live for one test.

import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import { once } from "node:events";
import { existsSync, mkdtempSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { createInterface } from "node:readline";

function program(variable) {
  const path = process.env[variable];
  assert.ok(path && existsSync(path), `${variable} must name the built program: run these tests through ctest.`);
  return path;
}

export const bridgeProgram = program("TESSELLA_BRIDGE");
export const hostProgram = program("TESSELLA_HOST");

/** Longer than anything takes on a slow machine with sanitizers, so that a hanging test fails with its name. */
export const patience = { timeout: 120_000 };

/** Undoes things at the end of the test, the last one first. */
export function cleanup(t) {
  const steps = [];
  t.after(async () => {
    for (const step of steps.reverse()) await step();
  });
  return (step) => steps.push(step);
}

export function temporaryDirectory(defer) {
  const directory = mkdtempSync(join(tmpdir(), "tessella-"));
  defer(() => rmSync(directory, { recursive: true, force: true }));
  return directory;
}

/** Runs a program to its end with `input`, and gives its exit status and what it wrote. */
export async function runProgram(command, args, { env = {}, input = "" } = {}) {
  const child = spawn(command, args, { env: { ...process.env, ...env } });
  const output = { stdout: "", stderr: "" };
  for (const name of ["stdout", "stderr"]) {
    child[name].setEncoding("utf8").on("data", (text) => (output[name] += text));
  }
  child.stdin.on("error", () => {});
  child.stdin.end(input);
  const [status, signal] = await once(child, "close");
  return { status, signal, ...output };
}

export function isRunning(pid) {
  try {
    process.kill(pid, 0);
    return true;
  } catch (error) {
    assert.equal(error.code, "ESRCH");
    return false;
  }
}

/** A running `tessella-host` that listens on a socket. */
export class Host {
  static async start(defer, options = {}) {
    const host = new Host(defer, options);
    await host.#listening();
    return host;
  }

  constructor(defer, { socket, token = "sesame" }) {
    this.socket = socket ?? join(temporaryDirectory(defer), "browser.sock");
    this.token = token;
    this.log = "";
    this.child = spawn(hostProgram, ["--socket", this.socket, "--verbose"], {
      env: { ...process.env, KESTRION_BROWSER_TOKEN: token },
      stdio: ["ignore", "pipe", "pipe"],
    });
    this.child.stderr.setEncoding("utf8").on("data", (text) => (this.log += text));
    this.closed = once(this.child, "close");
    defer(() => this.stop("SIGKILL"));
  }

  /** The environment that a bridge needs. */
  environment(changes = {}) {
    return {
      ...process.env,
      KESTRION_BROWSER_SOCKET: this.socket,
      KESTRION_BROWSER_TOKEN: this.token,
      KESTRION_WORKSPACE_PATH: "/work/garden",
      ...changes,
    };
  }

  /** Sends the signal and gives the exit status, or the signal that ended the host. */
  async stop(signal = "SIGTERM") {
    this.child.kill(signal);
    const [status, endingSignal] = await this.closed;
    return status ?? endingSignal;
  }

  async #listening() {
    const lines = createInterface({ input: this.child.stdout });
    const first = await Promise.race([once(lines, "line"), this.closed.then(() => [`no host: ${this.log}`])]);
    assert.equal(first[0], `listening on ${this.socket}`);
  }
}
