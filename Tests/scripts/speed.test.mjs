// The table and the chart of scripts/bench, from the figures of a real short run in speed-figures: whole, and with any
// one figure gone.

import assert from "node:assert/strict";
import { spawnSync } from "node:child_process";
import { cpSync, existsSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import test from "node:test";
import { fileURLToPath } from "node:url";
import { NoTable, readFigures } from "../../scripts/speed/figures.mjs";

const project = fileURLToPath(new URL("../../", import.meta.url));
const publish = join(project, "scripts/speed/publish.mjs");
const ratios = join(project, "scripts/ratios.mjs");
const figures = fileURLToPath(new URL("speed-figures", import.meta.url));
const begin = "<!-- speed: written by scripts/bench -->";
const end = "<!-- speed: end -->";

/** Does `work` with a folder of the figures, changed by `change`. */
function withFolder(change, work) {
  const folder = mkdtempSync(join(tmpdir(), "ormel-speed-"));
  try {
    cpSync(figures, folder, { recursive: true });
    change({
      edit: (name, deed) => {
        const file = join(folder, name);
        const value = JSON.parse(readFileSync(file, "utf8"));
        deed(value);
        writeFileSync(file, JSON.stringify(value));
      },
      replace: (name, from, to) => {
        const text = readFileSync(join(folder, name), "utf8");
        assert.ok(text.includes(from), `${name} holds ${from}`);
        writeFileSync(join(folder, name), text.replace(from, to));
      },
      remove: (name) => rmSync(join(folder, name)),
    });
    return work(folder);
  } finally {
    rmSync(folder, { recursive: true });
  }
}

/** What publishing the figures on a page says and writes. */
function published(change = () => {}, page = `before\n${begin}\nold\n${end}\nafter\n`) {
  return withFolder(change, (folder) => {
    const pageFile = join(folder, "page.md");
    const chartFile = join(folder, "docs/speed.svg");
    writeFileSync(pageFile, page);
    const run = spawnSync(process.execPath, [publish, folder, pageFile, chartFile], { encoding: "utf8" });
    return { status: run.status, said: run.stderr, page: readFileSync(pageFile, "utf8"), before: page,
      chart: existsSync(chartFile) ? readFileSync(chartFile, "utf8") : undefined };
  });
}

function rowOf(page, words) {
  const row = page.split("\n").find((line) => line.startsWith(`| ${words}`));
  assert.ok(row, `there is a row ${words}`);
  return row.split("|").slice(1, -1).map((cell) => cell.trim());
}

/** The work that the table has to have, the benchmark that measures it, and the aim. */
const measured = [
  ["a request and its answer, awaited", "roundTrip", "at most 1.60"],
  ["the same, blocking `get()`", "blockingRoundTrip", "at most 3.00"],
  ["one event in an idle system", "latency", "at most 1.80"],
  ["events, the server writes blocks", "eventsOfBlocks", "at least 0.65"],
  ["events, one line a write", "eventsOfLines", "at least 0.60"],
  ["turns of 400 conversations at once", "conversationsAtOnce", "at least 1.80"],
  ["system calls of a round trip", "systemCalls", "at most 1.38"],
  ["processor time of 1,000 idle conversations", "idleConversations", "at most 1.00"],
];
const unchartedRows = ["commandOutput", "peakMemoryOutput", "oneShotCall", "sessionCall"];
const peers = ["eventsOfBlocks", "eventsOfLines", "roundTripTimeP50", "roundTripTimeP99"];
const bridges = ["roundTrip300B", "roundTrip4MiBPage", "roundTrip4MiBText", "peakMemoryPage", "peakMemorySingleText"];

test("the figures of a run become a table between the markers of the page, and a chart", () => {
  const { status, said, page, chart } = published();
  assert.equal(said, "");
  assert.equal(status, 0);
  assert.match(page, /^before\n<!-- speed: written by scripts\/bench -->\n[^]*\n<!-- speed: end -->\nafter\n$/);
  assert.doesNotMatch(page, /\bold\n|NaN|undefined|null|Infinity/);
  const quiet = JSON.parse(readFileSync(join(figures, "conversation.json"), "utf8"));
  const busy = JSON.parse(readFileSync(join(figures, "conversation-busy.json"), "utf8"));
  for (const [words, name, aim] of measured) {
    const cells = rowOf(page, words);
    assert.equal(cells[2], aim);
    assert.equal(Number(cells[3].replaceAll("*", "")), Number(quiet[name].ratio.toFixed(quiet[name].ratio >= 10 ? 0 : 2)));
    assert.equal(Number(cells[4]), Number(busy[name].ratio.toFixed(busy[name].ratio >= 10 ? 0 : 2)));
  }
  assert.ok(page.includes("![") && page.includes("](docs/speed.svg)"));
  assert.ok(page.includes("the line of `scripts/yardstick` takes"));
  assert.ok(chart.startsWith("<svg ") && chart.endsWith("</svg>\n"));
  assert.match(chart, /prefers-color-scheme: dark/);
  assert.doesNotMatch(chart, /NaN|undefined|Infinity/);
});

test("the README has the place for the table", () => {
  const { status, said } = published(undefined, readFileSync(join(project, "README.md"), "utf8"));
  assert.equal(said, "");
  assert.equal(status, 0);
});

test("a page without the markers is an error", () => {
  for (const page of ["no markers\n", `${begin}\n`, `${end}\n${begin}\n`]) {
    const { status, said, page: after } = published(undefined, page);
    assert.equal(status, 1);
    assert.match(said, /^No table: the page has no part between/);
    assert.equal(after, page);
  }
});

/** A change after which there must be no table, and what is to be said. */
const losses = [];
function lose(file, path, words) {
  const at = (value) => path.slice(0, -1).reduce((part, name) => part[name], value);
  losses.push([`${file} without ${path.join(".")}`, (run) => run.edit(file, (value) => delete at(value)[path.at(-1)]), words]);
  losses.push([`${file} with null for ${path.join(".")}`, (run) => run.edit(file, (value) => (at(value)[path.at(-1)] = null)), words]);
}
for (const [, name] of measured) {
  for (const file of ["conversation.json", "conversation-busy.json"]) {
    losses.push([`${file} without ${name}`, (run) => run.edit(file, (value) => delete value[name]), `${file} has no row "${name}"`]);
    lose(file, [name, "ratio"], `"${name}.ratio"`);
  }
}
for (const name of [...unchartedRows, "roundTripTimeP50", "roundTripTimeP99"]) {
  losses.push([`no ${name}`, (run) => run.edit("conversation.json", (value) => delete value[name]), `has no row "${name}"`]);
  for (const member of ["measured", "yardstick"]) lose("conversation.json", [name, member], `"${name}.${member}"`);
}
for (const name of peers) lose("peer.json", [name], `"${name}"`);
for (const name of bridges) {
  losses.push([`no ${name}`, (run) => run.edit("bridge.json", (value) => delete value[name]), `"${name}.`]);
}
for (const name of ["cores", "yardstick"]) lose("machine.json", [name], `"${name}"`);
for (const name of ["strandHop", "startAndReapBare", "splitIntoTexts<BareSplit>"]) {
  losses.push([`no ${name}`, (run) => run.edit("library.json", (value) => {
    value.benchmarks = value.benchmarks.filter((entry) => entry.run_name.replace(/\/(min_time|repeats|real_time|process_time).*/, "") !== name);
  }), `has no row "${name}"`]);
  losses.push([`no time for ${name}`, (run) => run.edit("library.json", (value) => {
    for (const entry of value.benchmarks) if (entry.run_name.startsWith(name)) entry.real_time = null;
  }), `the row "${name}" is not a number`]);
}
for (const file of ["conversation.json", "conversation-busy.json", "bridge.json", "library.json", "peer.json", "machine.json"]) {
  losses.push([`no ${file}`, (run) => run.remove(file), `${file} is missing`]);
  losses.push([`${file} torn`, (run) => run.replace(file, "{", ""), `${file} is no JSON`]);
}

test("one figure that is missing or no number is an error that says which", () => {
  for (const [title, change, words] of losses) {
    withFolder(change, (folder) => {
      assert.throws(() => readFigures(folder), (error) => error instanceof NoTable && error.message.includes(words), title);
    });
  }
});

test("without a figure there is neither a table nor a chart", () => {
  const { status, said, page, before, chart } = published((run) =>
    run.edit("conversation.json", (value) => (value.roundTrip.ratio = null)));
  assert.equal(status, 1);
  assert.match(said, /^No table: .*conversation\.json: the row "roundTrip\.ratio" is not a number\n$/);
  assert.equal(page, before);
  assert.equal(chart, undefined);
});

test("a bare NaN or inf, as the benchmarks write it, is no number", () => {
  for (const text of ["NaN", "-nan", "inf", "Infinity"]) {
    const { status, said } = published((run) => {
      run.edit("peer.json", (value) => (value.eventsOfLines = "HERE"));
      run.replace("peer.json", '"HERE"', text);
    });
    assert.equal(status, 1, text);
    assert.match(said, /^No table: .*peer\.json/, text);
  }
});

test("a ratio that misses its aim is bold, on either side", () => {
  for (const [words, name, kept, missed] of [["a request and its answer, awaited", "roundTrip", 1.6, 1.61],
    ["events, the server writes blocks", "eventsOfBlocks", 0.65, 0.64]]) {
    for (const [ratio, cell] of [[kept, kept.toFixed(2)], [missed, `**${missed.toFixed(2)}**`]]) {
      const { page } = published((run) => run.edit("conversation.json", (value) => (value[name].ratio = ratio)));
      assert.equal(rowOf(page, words)[3], cell);
    }
  }
});

test("a figure that the system hides is told and does not stop the table", () => {
  const { status, page, chart } = published((run) => {
    for (const file of ["conversation.json", "conversation-busy.json"]) {
      run.edit(file, (value) => (value.systemCalls = { hidden: "ptrace: Operation not permitted" }));
    }
  });
  assert.equal(status, 0);
  assert.equal(rowOf(page, "system calls of a round trip")[3], "not measured: ptrace: Operation not permitted");
  assert.match(chart, /not measured on this machine/);
});

test("a bar that keeps its aim ends before the aim, on either side, and one that misses it beyond", () => {
  for (const [name, kept, missed] of [["latency", 1.5, 2.1], ["eventsOfLines", 0.7, 0.5]]) {
    for (const [ratio, isKept] of [[kept, true], [missed, false]]) {
      const { chart } = published((run) => run.edit("conversation.json", (value) => (value[name].ratio = ratio)));
      const aim = Number(/<line x1="([\d.]+)"[^>]*class="aim"/.exec(chart)[1]);
      const index = measured.findIndex((row) => row[1] === name);
      const bars = [...chart.matchAll(/<rect x="([\d.]+)" y="[\d.]+" width="([\d.]+)" height="11"[^>]*class="ours"/g)];
      assert.equal(bars.length, measured.length);
      assert.equal(Number(bars[index][1]) + Number(bars[index][2]) < aim, isKept, `${name} ${ratio}`);
    }
  }
});

test("a bar stays within the chart however far a ratio is off", () => {
  const { chart } = published((run) => run.edit("conversation.json", (value) => (value.latency.ratio = 1e9)));
  const width = Number(/<svg [^>]*width="(\d+)"/.exec(chart)[1]);
  const bars = [...chart.matchAll(/<rect x="([\d.]+)" y="[\d.]+" width="([\d.]+)"/g)];
  assert.ok(bars.length > 0);
  for (const [, x, length] of bars) assert.ok(Number(x) + Number(length) <= width);
});

test("the ratios of the library fail when one was not measured, unless a part was asked for", () => {
  const library = JSON.parse(readFileSync(join(figures, "library.json"), "utf8"));
  const run = (benchmarks, ...options) => {
    const folder = mkdtempSync(join(tmpdir(), "ormel-ratios-"));
    writeFileSync(join(folder, "library.json"), JSON.stringify({ benchmarks }));
    const result = spawnSync(process.execPath, [ratios, join(folder, "library.json"), ...options], { encoding: "utf8" });
    rmSync(folder, { recursive: true });
    return result;
  };
  const whole = run(library.benchmarks);
  assert.equal(whole.stderr, "");
  assert.equal(whole.status, 0);
  const lacking = library.benchmarks.filter((entry) => !entry.run_name.startsWith("startAndReapBare"));
  const failed = run(lacking);
  assert.equal(failed.status, 1);
  assert.equal(failed.stderr, "scripts/ratios.mjs: 1 ratios were not measured: start and reap a child, against a bare posix_spawn\n");
  assert.equal(run(lacking, "--partial").status, 0);
  for (const name of ["startAndReapBare", "startAndReapChild"]) {
    const unfinished = library.benchmarks.map((entry) =>
      (entry.run_name.startsWith(name) ? { ...entry, real_time: null } : entry));
    assert.equal(run(unfinished).status, 1, name);
  }
});
