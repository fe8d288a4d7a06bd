// Finds the figures of each row in what one run has measured. A row without a figure is an error, for a table that
// lacks one silently looks as good as a whole one.

import { existsSync, readFileSync } from "node:fs";
import { join } from "node:path";
import { readLibrary } from "./library.mjs";
import { peerRows, rows } from "./rows.mjs";

export class NoTable extends Error {}

function readJSON(file) {
  if (!existsSync(file)) throw new NoTable(`${file} is missing: run scripts/bench`);
  const text = readFileSync(file, "utf8").replace(/:\s*-?(NaN|Infinity|inf)\b/gi, ": null");
  try {
    return JSON.parse(text);
  } catch (error) {
    throw new NoTable(`${file} is no JSON: ${error.message}`);
  }
}

function number(value, file, what) {
  if (value === undefined) throw new NoTable(`${file} has no row "${what}"`);
  if (!Number.isFinite(value)) throw new NoTable(`${file}: the row "${what}" is not a number`);
  return value;
}

const isKept = (ratio, { atMost, atLeast }) => (atMost === undefined || ratio <= atMost) &&
  (atLeast === undefined || ratio >= atLeast);

function pairOf(run, file, name) {
  const row = run[name];
  if (row === undefined) throw new NoTable(`${file} has no row "${name}"`);
  if (row.hidden !== undefined) return { hidden: row.hidden };
  const pair = { limit: {} };
  for (const member of ["measured", "yardstick", "ratio"]) {
    pair[member] = number(row[member], file, `${name}.${member}`);
  }
  for (const member of ["atMost", "atLeast"]) {
    if (member in row) pair.limit[member] = number(row[member], file, `${name}.${member}`);
  }
  return pair;
}

/** All rows with their figures, those of the peer, and the machine. */
export function readFigures(folder) {
  const at = (name) => join(folder, name);
  const files = { quiet: at("conversation.json"), busy: at("conversation-busy.json"), bridge: at("bridge.json"),
    library: at("library.json"), peer: at("peer.json"), machine: at("machine.json") };
  const quiet = readJSON(files.quiet);
  const busy = readJSON(files.busy);
  const bridge = readJSON(files.bridge);
  const peer = readJSON(files.peer);
  const machine = readJSON(files.machine);
  readJSON(files.library);
  const { fastest } = readLibrary(files.library);

  const figuresOf = (row) => {
    if (row.conversation) {
      const pair = pairOf(quiet, files.quiet, row.conversation);
      if (pair.hidden !== undefined || !row.charted) return pair;
      return { ...pair, busy: pairOf(busy, files.busy, row.conversation).ratio };
    }
    const limit = { atMost: row.atMost, atLeast: row.atLeast };
    if (row.bridge) {
      const { name, member } = row.bridge;
      return { ratio: number(bridge[name]?.[member], files.bridge, `${name}.${member}`), limit };
    }
    const time = (name) => number(fastest.get(name), files.library, name);
    return { ratio: time(row.library.measured) / time(row.library.yardstick), limit };
  };
  const withFigures = rows.map((row) => {
    const figures = figuresOf(row);
    if (figures.hidden !== undefined) return { ...row, ...figures };
    number(figures.ratio, folder, row.what);
    return { ...row, ...figures, isKept: isKept(figures.ratio, figures.limit) };
  });
  const peers = peerRows.map((row) => {
    const ours = pairOf(quiet, files.quiet, row.name);
    const theirs = number(peer[row.name], files.peer, row.name);
    return { ...row, ours: ours.measured, limitFigure: ours.yardstick, peer: theirs };
  });
  return {
    rows: withFigures,
    peers,
    peerVersion: peer.version ?? "",
    machine: { date: machine.date, cores: number(machine.cores, files.machine, "cores"),
      yardstick: number(machine.yardstick, files.machine, "yardstick") },
  };
}
