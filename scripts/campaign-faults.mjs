// Plants one fault after another in the turn engine and in what a thread makes of it, and has the campaign look for it; see docs/campaign.md.
// Usage: campaign-faults.mjs <schedules> [--check] [part of a heading...]
import { execFileSync, spawnSync } from "node:child_process";
import { existsSync, mkdirSync, readFileSync, readdirSync, statSync, writeFileSync } from "node:fs";
import path from "node:path";
import process from "node:process";
import { Steps } from "./steps.mjs";

const engine = "Sources/OrmelSDK/AppServerRun/TurnRun";
// Sources of a thread, beside the engine's.
const ofThread = ["Sources/OrmelSDK/Conversation.cpp", "Sources/OrmelSDK/Thread.cpp"];
const table = "Tests/OrmelSDK/AppServerRun/TurnRun/Campaign/Faults.txt";
const build = process.env.ORMEL_CAMPAIGN_BUILD ?? "build/release";
const work = path.resolve("build/campaign-faults");

class Failure extends Error {}

function readTable() {
  const faults = [];
  let fault = null;
  for (const line of readFileSync(table, "utf8").split("\n")) {
    if (line.startsWith("## ")) {
      fault = { rule: line.slice(3), file: null, hunk: [], equivalent: null };
      faults.push(fault);
    } else if (!fault || line.trim() === "") {
      continue;
    } else if (!fault.file) {
      fault.file = line.trim();
    } else if (line.startsWith("equivalent: ")) {
      fault.equivalent = line.slice("equivalent: ".length);
    } else if (" -+".includes(line[0])) {
      fault.hunk.push({ kind: line[0], text: line.slice(1) });
    } else {
      throw new Failure(`${table}: what is this line of "${fault.rule}"? ${line}`);
    }
  }
  return faults;
}

function sourceOf(file) {
  return ofThread.find((source) => path.basename(source) === file) ?? path.join(engine, file);
}

// The source with the fault in it; the old lines must stand in it exactly once.
function planted(fault) {
  const lines = readFileSync(sourceOf(fault.file), "utf8").split("\n");
  const old = fault.hunk.filter((line) => line.kind !== "+").map((line) => line.text.trim());
  const places = [];
  for (let place = 0; place + old.length <= lines.length; ++place) {
    if (old.every((text, index) => lines[place + index].trim() === text)) places.push(place);
  }
  if (places.length !== 1) throw new Failure(`the old lines stand ${places.length} times in ${fault.file}`);
  const fresh = fault.hunk.filter((line) => line.kind !== "-").map((line) => line.text);
  lines.splice(places[0], old.length, ...fresh);
  return lines.join("\n");
}

function compilation() {
  const commands = JSON.parse(readFileSync(path.join(build, "compile_commands.json"), "utf8"));
  const command = commands.find(({ file, output }) =>
    file.includes("TurnRun") && !file.includes("Tests") && (output ?? "OrmelSDK.dir").includes("OrmelSDK.dir"));
  if (!command) throw new Failure(`${build} has no command for the turn engine`);
  const words = command.command.split(/\s+/).filter(Boolean);
  const at = words.indexOf("-o");
  words.splice(at, 2);
  words.splice(words.indexOf("-c"), 2);
  return words.filter((word) => word !== "-Werror").concat("-O1", "-w");
}

function compile(words, source, object) {
  execFileSync(words[0], [...words.slice(1), "-c", source, "-o", object], { stdio: ["ignore", "inherit", "pipe"] });
}

function linkCommand() {
  const lines = execFileSync("ninja", ["-C", build, "-t", "commands", "-s", "bin/turn-run-campaign-tests"], { encoding: "utf8" });
  return lines.trim().split("\n").at(-1).replace(/^: && /, "").replace(/ && :$/, "");
}

// The engine's objects come first, so that none is taken out of the library.
function link(command, objects, program) {
  const words = command.replace("-o bin/turn-run-campaign-tests", `${objects.join(" ")} -o ${program}`);
  execFileSync("sh", ["-c", words], { cwd: build, stdio: ["ignore", "inherit", "pipe"] });
}

// No other scenario goes by a thread; each gets its share of the schedules all the same.
function scenariosFor(file) {
  return ofThread.some((source) => path.basename(source) === file) ? "Scenarios/*Seeds*/Thread*" : "Scenarios/*Seeds*";
}

function play(program, schedules, scenarios = "Scenarios/*Seeds*") {
  const begin = Date.now();
  const result = spawnSync(program, [`--gtest_filter=${scenarios}`, "--gtest_brief=1", "--gtest_fail_fast"], {
    encoding: "utf8",
    env: { ...process.env, ORMEL_CAMPAIGN_SCHEDULES: String(schedules), ORMEL_CAMPAIGN_BASE: "1000000" },
    maxBuffer: 1 << 28,
  });
  const text = result.stdout + result.stderr;
  const promise = /broken promise: (.*)/.exec(text)?.[1] ?? /(The simulation .{0,60})/.exec(text)?.[1];
  const scenario = /scenario (\w+), seed (\d+)/.exec(text);
  return {
    isFound: result.status !== 0,
    how: promise ?? (result.status === 0 ? "" : `the program ends: ${result.signal ?? result.status}`),
    where: scenario ? `${scenario[1]} ${scenario[2]}` : "",
    seconds: Math.round((Date.now() - begin) / 1000),
  };
}

function objectOf(file) {
  return path.join(work, file.replace(/\.cpp$/, ".o"));
}

function compileEngine(words) {
  const sources = readdirSync(engine).filter((name) => name.endsWith(".cpp")).concat(ofThread.map((source) => path.basename(source)));
  const newest = Math.max(...readdirSync("Sources/OrmelSDK", { recursive: true })
    .filter((name) => name.endsWith(".h"))
    .map((name) => statSync(path.join("Sources/OrmelSDK", name)).mtimeMs));
  for (const source of sources) {
    const object = objectOf(source);
    const file = path.resolve(sourceOf(source));
    const isFresh = existsSync(object) && statSync(object).mtimeMs > Math.max(newest, statSync(file).mtimeMs);
    if (!isFresh) compile(words, file, object);
  }
  return sources;
}

function tell(word, fault, detail) {
  console.log(`${word.padEnd(11)} ${fault.rule}${detail ? `\n            ${detail}` : ""}`);
}

// Whether the campaign does with the fault what it should.
function tryFault(fault, words, command, sources, schedules) {
  const source = path.join(work, fault.file);
  const object = path.join(work, "planted.o");
  const program = path.join(work, "planted");
  writeFileSync(source, planted(fault));
  try {
    compile(words, source, object);
    link(command, sources.map((name) => (name === fault.file ? object : objectOf(name))), program);
  } catch (error) {
    throw new Failure(`it does not compile: ${error.stderr ?? error.message}`);
  }
  const { isFound, how, where, seconds } = play(program, schedules, scenariosFor(fault.file));
  if (isFound) tell(fault.equivalent ? "NOT EQUAL" : "found", fault, `${how} (${where}, ${seconds} s)`);
  else tell(fault.equivalent ? "equivalent" : "SURVIVES", fault, fault.equivalent ?? `${schedules} schedules, ${seconds} s`);
  return isFound !== Boolean(fault.equivalent);
}

function main() {
  const [schedules, ...rest] = process.argv.slice(2);
  const wanted = rest.filter((word) => !word.startsWith("--"));
  const faults = readTable().filter(({ rule }) => wanted.length === 0 || wanted.some((word) => rule.includes(word)));
  const failed = [];
  const attempt = (fault, work) => {
    try {
      if (work() === false) failed.push(fault);
    } catch (error) {
      if (!(error instanceof Failure)) throw error;
      tell("BROKEN", fault, error.message);
      failed.push(fault);
    }
  };
  if (rest.includes("--check")) {
    for (const fault of faults) attempt(fault, () => void planted(fault));
  } else {
    mkdirSync(work, { recursive: true });
    const words = compilation();
    const command = linkCommand();
    const steps = new Steps("campaign-faults", faults.length + 2);
    steps.begin("the engine, compiled file by file");
    const sources = compileEngine(words);
    steps.begin("without any fault");
    const sound = path.join(work, "sound");
    link(command, sources.map(objectOf), sound);
    const control = play(sound, schedules);
    if (control.isFound) throw new Error(`the campaign fails without any fault: ${control.how} (${control.where})`);
    for (const fault of faults) {
      steps.begin(fault.rule);
      attempt(fault, () => tryFault(fault, words, command, sources, schedules));
    }
    steps.done();
  }
  console.log(`${faults.length - failed.length} of ${faults.length} faults as they should be`);
  process.exit(failed.length === 0 ? 0 : 1);
}

main();
