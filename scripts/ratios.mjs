// Prints the ratios between benchmarks of one run that the project promises, from Google Benchmark's JSON.
// Usage: node scripts/ratios.mjs FILE
import { readFileSync } from "node:fs";

// The spread of a counter that is zero is written as a bare NaN, which is no JSON.
const text = readFileSync(process.argv[2], "utf8").replace(/": -?NaN\b/gi, '": null');
const run = JSON.parse(text);

/** The fastest repetition of each benchmark, in nanoseconds. */
const nanoseconds = { ns: 1, us: 1e3, ms: 1e6, s: 1e9 };
const fastest = new Map();
const highestRate = new Map();
for (const entry of run.benchmarks) {
  if (entry.run_type === "aggregate" && entry.aggregate_name !== "min") continue;
  const name = entry.run_name.replace(/\/(min_time|repeats|real_time|process_time).*/, "");
  const time = entry.real_time * nanoseconds[entry.time_unit];
  fastest.set(name, Math.min(time, fastest.get(name) ?? Infinity));
  highestRate.set(name, Math.max(entry.items_per_second ?? 0, highestRate.get(name) ?? 0));
}

/**
 * The promises: [subject, measured, yardstick, highest allowed ratio of their times or nothing, how much more is done].
 */
const promises = [];
const sample = (name, index) => `${name}/line=0,objects=1,string=2:${index}`;
for (const [index, what] of ["a 253-byte line", "1 MB of nested objects", "a 1 MB text"].entries()) {
  promises.push([`decode ${what}, against simdjson's parse and walk`, sample("decodePaddedToJSONValue", index),
    sample("decodeBySimdjsonParseAndWalk", index), 1.3]);
  promises.push([`encode ${what}, against RapidJSON's writer`, sample("encodeJSONValue", index),
    sample("encodeByRapidJSON", index), 1]);
}
const third = 1 / 3;
promises.push(
  ["copy a 1 MB value, against copying a 253-byte one", sample("copyJSONValue", 1), sample("copyJSONValue", 0), 1.3],
  ["hop inside a strand, against Asio's", "strandHop", "strandHopOfAsio", third],
  ["one-shot wait, against Asio's channel", "oneShotWait", "oneShotWaitOfAsio", third],
  ["event channel in turns, against Asio's channel", "channelTurns", "channelTurnsOfAsio", third],
  ["event channel with a backlog, against Asio's", "channelBacklog", "channelBacklogOfAsio", third],
  ["timer armed and cancelled, against Asio's", "timerArmAndCancel", "timerArmAndCancelOfAsio", third],
  ["split into lines, against a bare memchr split", "splitIntoTexts<AppServerJSONLineBuffer>",
    "splitIntoTexts<BareSplit>", 2],
  ["a 100 MB line in 4 KB chunks, against the bare split", "assembleOneLine<AppServerJSONLineBuffer>/megabytes:100",
    "assembleOneLine<BareSplit>/megabytes:100", 2],
  ["a 200 MB line in 4 KB chunks, a byte, against a 50 MB line", "assembleOneLine<AppServerJSONLineBuffer>/megabytes:200",
    "assembleOneLine<AppServerJSONLineBuffer>/megabytes:50", 2, 4],
  ["start and reap a child, against a bare posix_spawn", "startAndReapChild", "startAndReapBare", 1.2],
);

/**
 * Records against their three yardsticks: another library's records, a walk over the value, and a walk that also makes a
 * string of each text. No record that owns its texts can be faster than the last, which is printed to tell a slow decoder
 * from a promise that the texts alone break.
 */
function promiseRecords(what, decoded, byNlohmann, walk, walkAndCopy) {
  promises.push([`decode ${what}, against nlohmann's record`, decoded, byNlohmann, 1]);
  promises.push([`decode ${what}, against a walk`, decoded, walk, 2]);
  promises.push([`  making strings of its texts alone, against a walk`, walkAndCopy, walk]);
}
for (const [kindOf, name] of [["item", "Item"], ["event", "Event"]]) {
  const prefix = `decode${name}/`;
  for (const kind of [...fastest.keys()].filter((key) => key.startsWith(prefix)).map((key) => key.slice(prefix.length))) {
    promiseRecords(`the ${kindOf} ${kind}`, prefix + kind, `decode${name}ByNlohmann/${kind}`, `walk${name}/${kind}`,
      `walk${name}AndCopyTexts/${kind}`);
  }
}
promiseRecords("a 1 MB reply to thread/read", "threadReadToRecords", "threadReadByMacroRecords", "threadReadByWalking",
  "threadReadByCopyingTexts");
for (const [method, name] of [["model/list", "modelList"], ["plugin/list", "pluginList"]]) {
  promises.push([`1 MB of a reply to ${method} to its record, against nlohmann's`, `${name}ToRecords`,
    `${name}ByMacroRecords`, 0.2]);
}

console.log("\nRatios of this run (fastest repetitions)\n");
for (const [subject, measured, yardstick, limit, moreIsDone = 1] of promises) {
  const ratio = fastest.get(measured) / fastest.get(yardstick) / moreIsDone;
  const promise = limit === undefined ? "(for information)" : `(at most ${limit.toFixed(2)})`;
  const verdict = Number.isNaN(ratio) ? "  not measured" : limit === undefined || ratio <= limit ? "" : "  MISSED";
  console.log(`${ratio.toFixed(2).padStart(8)}  ${promise.padEnd(17)}  ${subject}${verdict}`);
}

const steps = Math.min(highestRate.get("simulatedSteps"), highestRate.get("simulatedSleeps")) / 1e6;
const verdict = Number.isNaN(steps) ? "  not measured" : steps >= 5 ? "" : "  MISSED";
console.log(`${steps.toFixed(1).padStart(8)}  (at least 5)      million steps a second of the simulated scheduler${verdict}`);
