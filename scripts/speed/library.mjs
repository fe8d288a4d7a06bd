// Reads what Google Benchmark measured of the library.

import { readFileSync } from "node:fs";

const nanoseconds = { ns: 1, us: 1e3, ms: 1e6, s: 1e9 };

/** The fastest repetition of each benchmark, in nanoseconds, and its highest rate. */
export function readLibrary(file) {
  // The spread of a counter that is zero is written as a bare NaN, which is no JSON.
  const run = JSON.parse(readFileSync(file, "utf8").replace(/": -?NaN\b/gi, '": null'));
  const fastest = new Map();
  const highestRate = new Map();
  for (const entry of run.benchmarks) {
    if (entry.run_type === "aggregate" && entry.aggregate_name !== "min") continue;
    const name = entry.run_name.replace(/\/(min_time|repeats|real_time|process_time).*/, "");
    const time = Number.isFinite(entry.real_time) ? entry.real_time * nanoseconds[entry.time_unit] : NaN;
    fastest.set(name, Math.min(time, fastest.get(name) ?? Infinity));
    highestRate.set(name, Math.max(entry.items_per_second ?? 0, highestRate.get(name) ?? 0));
  }
  return { fastest, highestRate };
}

/** The name of a benchmark of a sample of JSON: 0 is a 253-byte line, 1 are nested objects of 1 MB, 2 a 1 MB text. */
export const sample = (name, index) => `${name}/line=0,objects=1,string=2:${index}`;
