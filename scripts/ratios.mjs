// Prints the ratios between benchmarks of one run that the project promises, from Google Benchmark's JSON. Fails when
// one of them was not measured, unless the run was a part on purpose.
// Usage: node scripts/ratios.mjs FILE [--partial]
import process from "node:process";
import { readLibrary, sample } from "./speed/library.mjs";

const [file, ...options] = process.argv.slice(2);
const { fastest, highestRate } = readLibrary(file);

/**
 * The promises: [subject, measured, yardstick, highest allowed ratio of their times or nothing, how much more is done].
 */
const promises = [];
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

const unmeasured = [];
console.log("\nRatios of this run (fastest repetitions)\n");
for (const [subject, measured, yardstick, limit, moreIsDone = 1] of promises) {
  const ratio = fastest.get(measured) / fastest.get(yardstick) / moreIsDone;
  const promise = limit === undefined ? "(for information)" : `(at most ${limit.toFixed(2)})`;
  if (!Number.isFinite(ratio)) unmeasured.push(subject.trim());
  const verdict = !Number.isFinite(ratio) ? "  not measured" : limit === undefined || ratio <= limit ? "" : "  MISSED";
  console.log(`${ratio.toFixed(2).padStart(8)}  ${promise.padEnd(17)}  ${subject}${verdict}`);
}

const steps = Math.min(highestRate.get("simulatedSteps"), highestRate.get("simulatedSleeps")) / 1e6;
if (!Number.isFinite(steps)) unmeasured.push("steps of the simulated scheduler");
const verdict = !Number.isFinite(steps) ? "  not measured" : steps >= 5 ? "" : "  MISSED";
console.log(`${steps.toFixed(1).padStart(8)}  (at least 5)      million steps a second of the simulated scheduler${verdict}`);

if (unmeasured.length > 0 && !options.includes("--partial")) {
  console.error(`scripts/ratios.mjs: ${unmeasured.length} ratios were not measured: ${unmeasured.join("; ")}`);
  process.exit(1);
}
