// Runs the tests of one program that match a filter, and tells how far they are; a test that fails speaks for itself.
// Usage: play-tests.mjs NAME PROGRAM FILTER     NAME stands at the head of each line

import { execFileSync, spawn } from "node:child_process";
import process from "node:process";
import { createInterface } from "node:readline";
import { Steps } from "./steps.mjs";

/** Many tests of a campaign take less than a second each. */
const millisecondsBetweenLines = 5000;

const [name, program, filter] = process.argv.slice(2);

function numberOfTests() {
  const list = execFileSync(program, [`--gtest_filter=${filter}`, "--gtest_list_tests"], { encoding: "utf8" });
  return list.split("\n").filter((line) => line.startsWith("  ") && !/^ +DISABLED_|\.DISABLED_/.test(line)).length;
}

const count = numberOfTests();
if (count === 0) {
  console.error(`${name}: no test of ${program} matches ${filter}`);
  process.exit(1);
}
const steps = new Steps(name, count, millisecondsBetweenLines);
const tests = spawn(program, [`--gtest_filter=${filter}`], { stdio: ["ignore", "pipe", "inherit"] });
createInterface({ input: tests.stdout }).on("line", (line) => {
  const begun = /^\[ RUN {6}\] (.*)/.exec(line);
  if (begun) steps.begin(begun[1]);
  else if (!/^(\[ {7}OK \]|\[-{10}\]|\[={10}\]|Note: Google Test|$)/.test(line)) console.log(line);
});
tests.on("close", (status, signal) => {
  if (status === 0) steps.done();
  else steps.failed(status ?? signal);
  process.exitCode = status ?? 1;
});
