// How far a long script is: the same lines from the shell and from node, and a step that fails says which it was.

import assert from "node:assert/strict";
import { spawnSync } from "node:child_process";
import { chmodSync, mkdtempSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import test from "node:test";
import { fileURLToPath } from "node:url";

const project = fileURLToPath(new URL("../../", import.meta.url));
const scripts = join(project, "scripts");

function shell(script) {
  return spawnSync("bash", ["-c", `set -euo pipefail\n. ${scripts}/steps.sh\n${script}`], { encoding: "utf8" });
}

function node(script) {
  const text = `import { Steps, elapsedText } from "${scripts}/steps.mjs";\n${script}`;
  return spawnSync(process.execPath, ["--input-type=module", "-e", text], { encoding: "utf8" });
}

const withoutTimes = (text) => text.replace(/\d+:\d\d(?=\])/g, "TIME");

function inFolder(work) {
  const folder = mkdtempSync(join(tmpdir(), "ormel-steps-"));
  try {
    return work(folder);
  } finally {
    rmSync(folder, { recursive: true });
  }
}

test("each step is told on standard error before it runs, and the end as well", () => {
  const run = shell('steps_of scripts/it 2\nstep "First" echo one\nstep "Second, with words" echo two');
  assert.equal(run.status, 0);
  assert.equal(run.stdout, "one\ntwo\n");
  assert.equal(withoutTimes(run.stderr),
    "scripts/it: [1 of 2, TIME] First\nscripts/it: [2 of 2, TIME] Second, with words\nscripts/it: [done, TIME]\n");
});

test("a step that fails ends the script with its status and says which it was", () => {
  for (const [deed, status] of [["false", 1], ["sh -c 'exit 7'", 7], ["sh -c 'kill -KILL $$'", 137], ["no-such-command", 127]]) {
    const run = shell(`steps_of scripts/it 3\nstep "First" true\nstep "Second" ${deed}\nstep "Third" echo never`);
    assert.equal(run.status, status, deed);
    assert.equal(run.stdout, "");
    const last = withoutTimes(run.stderr).trimEnd().split("\n").at(-1);
    assert.equal(last, `scripts/it: [2 of 3, TIME] FAILED with status ${status}: Second`);
  }
});

test("a function that fails in its middle fails its step", () => {
  const run = shell('work() { false; echo never; }\nsteps_of scripts/it 1\nstep "Work" work');
  assert.equal(run.status, 1);
  assert.equal(run.stdout, "");
  assert.match(run.stderr, /\[1 of 1, 0:0\d\] FAILED with status 1: Work/);
});

test("a trap of the script's own still cleans up behind a failing step", () => {
  const run = shell("steps_of scripts/it 1\ntrap 'steps_end; echo cleaned' EXIT\nstep \"Work\" sh -c 'exit 3'");
  assert.equal(run.status, 3);
  assert.equal(run.stdout, "cleaned\n");
  assert.match(run.stderr, /FAILED with status 3: Work/);
});

test("a script that fails between its steps blames none of them", () => {
  const run = shell('steps_of scripts/it 1\nstep "Work" true\nfalse');
  assert.equal(run.status, 1);
  assert.doesNotMatch(run.stderr, /FAILED|done/);
});

test("the elapsed time has minutes and, once there are any, hours", () => {
  for (const [seconds, text] of [[0, "0:00"], [9, "0:09"], [75, "1:15"], [3599, "59:59"], [3600, "1:00:00"], [36754, "10:12:34"]]) {
    assert.equal(shell(`steps_elapsed ${seconds}`).stdout, text);
    assert.equal(node(`console.log(elapsedText(${seconds * 1000 + 999}))`).stdout, `${text}\n`);
  }
});

test("node tells the same lines as the shell", () => {
  const run = node('const steps = new Steps("scripts/it", 2);\nsteps.begin("First");\nsteps.begin("Second, with words");\nsteps.done();');
  assert.equal(withoutTimes(run.stderr),
    "scripts/it: [1 of 2, TIME] First\nscripts/it: [2 of 2, TIME] Second, with words\nscripts/it: [done, TIME]\n");
  const failing = node('const steps = new Steps("scripts/it", 2);\nsteps.begin("First");\nsteps.failed(7);');
  assert.equal(withoutTimes(failing.stderr).trimEnd().split("\n").at(-1), "scripts/it: [1 of 2, TIME] FAILED with status 7: First");
});

// A program that speaks like GoogleTest's, with two tests in one suite.
function playTests(lines, status, list = "Suite.\n  One\n  Two\n") {
  return inFolder((folder) => {
    const program = join(folder, "tests");
    const output = lines.map((line) => `echo '${line}'`).join("\n");
    writeFileSync(program, `#!/bin/sh\ncase "$*" in *--gtest_list_tests*) printf '${list.replaceAll("\n", "\\n")}'; exit ;; esac\n${output}\nexit ${status}\n`);
    chmodSync(program, 0o755);
    return spawnSync(process.execPath, [join(scripts, "play-tests.mjs"), "campaign", program, "Suite.*"], { encoding: "utf8" });
  });
}

test("the tests of a program are counted while they run, and only what fails is shown", () => {
  const one = ["[==========] Running 2 tests from 1 test suite.", "[ RUN      ] Suite.One", "[       OK ] Suite.One (3 ms)"];
  const good = playTests([...one, "[ RUN      ] Suite.Two", "[       OK ] Suite.Two (3 ms)"], 0);
  assert.equal(good.status, 0);
  assert.equal(good.stdout, "");
  assert.match(good.stderr, /^campaign: \[1 of 2, 0:0\d\] Suite\.One\ncampaign: \[2 of 2, 0:0\d\] Suite\.Two\ncampaign: \[done, /);
  const bad = playTests([...one, "[ RUN      ] Suite.Two", "broken promise: seed 7", "[  FAILED  ] Suite.Two (3 ms)"], 1);
  assert.equal(bad.status, 1);
  assert.equal(bad.stdout, "broken promise: seed 7\n[  FAILED  ] Suite.Two (3 ms)\n");
  assert.match(bad.stderr, /campaign: \[2 of 2, 0:0\d\] FAILED with status 1: Suite\.Two\n$/);
});

test("no test that matches is an error", () => {
  const run = playTests([], 0, "");
  assert.equal(run.status, 1);
  assert.match(run.stderr, /^campaign: no test of .* matches Suite\.\*\n$/);
});
