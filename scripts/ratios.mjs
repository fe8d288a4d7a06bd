// Prints the ratios between benchmarks of one run that the project promises, from Google Benchmark's JSON.
// Usage: node scripts/ratios.mjs FILE
import { readFileSync } from "node:fs";

const run = JSON.parse(readFileSync(process.argv[2], "utf8"));

/** The fastest repetition of each benchmark, in nanoseconds. */
const nanoseconds = { ns: 1, us: 1e3, ms: 1e6, s: 1e9 };
const fastest = new Map();
for (const entry of run.benchmarks) {
  if (entry.aggregate_name !== "min") continue;
  fastest.set(entry.run_name.replace(/\/(min_time|repeats|real_time|process_time).*/, ""), entry.real_time * nanoseconds[entry.time_unit]);
}

/** What is promised: [subject, measured, yardstick, highest allowed ratio of their times]. */
const samples = { "a 253-byte line": 0, "1 MB of nested objects": 1, "a 1 MB text": 2 };
const sample = (name, index) => `${name}/line=0,objects=1,string=2:${index}`;
const promises = [];
for (const [what, index] of Object.entries(samples)) {
  promises.push([`decode ${what}, against simdjson's parse and walk`, sample("decodePaddedToJSONValue", index),
    sample("decodeBySimdjsonParseAndWalk", index), 1.3]);
}
for (const [what, index] of Object.entries(samples)) {
  promises.push([`encode ${what}, against RapidJSON's writer`, sample("encodeJSONValue", index),
    sample("encodeByRapidJSON", index), 1]);
}
const kinds = [...fastest.keys()].filter((name) => name.startsWith("decodeItem/")).map((name) => name.split("/")[1]);
for (const kind of kinds) {
  promises.push([`decode the item ${kind}, against nlohmann's record`, `decodeItem/${kind}`, `decodeItemByNlohmann/${kind}`, 1]);
  promises.push([`decode the item ${kind}, against a walk that copies texts`, `decodeItem/${kind}`,
    `walkItemAndCopyTexts/${kind}`, 2]);
}
promises.push(["copy a 1 MB value, against copying a 253-byte one", sample("copyJSONValue", 1), sample("copyJSONValue", 0), 1.3]);

console.log("\nRatios of this run (fastest repetitions)\n");
for (const [subject, measured, yardstick, limit] of promises) {
  const ratio = fastest.get(measured) / fastest.get(yardstick);
  const verdict = Number.isNaN(ratio) ? "not measured" : ratio <= limit ? "" : "  MISSED";
  console.log(`${ratio.toFixed(2).padStart(8)}  (at most ${limit})  ${subject}${verdict}`);
}
