// Writes the table of the management calls from their declarations, or checks with --check that it is current.

import { existsSync, readFileSync, writeFileSync } from 'node:fs';
import { Calls, signature } from './calls.mjs';
import { insist } from './cpp.mjs';
import { management, recordHeaders } from './files.mjs';
import { readOperations } from './operations.mjs';

const page = 'docs/management/calls.md';
const root = '../..';
const tests = 'Tests/OrmelSDK/Management/Conversations';

const families = {
  Thread: ['Threads', 'threads.md'],
  Account: ['Accounts and this device', 'accounts.md'],
  Plugin: ['Plugins and marketplaces', 'plugins.md'],
  Config: ['Configuration, models, permissions, features, skills and hooks', 'configuration.md'],
  App: ['Apps and MCP servers', 'apps.md'],
  Command: ['Commands and environments', 'commands.md'],
  File: ['Files', 'files.md'],
};

// Members of the classes that are tasks, and no calls of the table.
const facade = { className: 'Ormel', others: ['performRPC', 'performNotification', 'diagnose'] };
const session = { className: 'OrmelControlSession', others: ['notifications', 'close'] };

const mostLinesOfDifference = 20;

const code = (text) => `\`${text}\``;
const link = (text, target) => `[${text}](${root}/${target})`;
const classLink = (name) => link(code(name), `Sources/OrmelSDK/${name}.h`);

// The types tell overloads apart.
function nameOf(operation, siblings) {
  const isOverloaded = siblings.filter((one) => one.name === operation.name).length > 1;
  const types = operation.parameters.map((one) => one.type.replace(/^std::string$/, 'text'));
  return code(isOverloaded ? `${operation.name}(${types.join(', ')})` : operation.name);
}

function paramText({ key, mark, value, argument, from }) {
  const notes = [];
  if (value) return code(`${key} = ${value}`);
  if (argument) notes.push(`argument ${code(argument)}`);
  if (from) notes.push(`from ${from}`);
  return code(key + mark) + (notes.length > 0 ? ` (${notes.join(', ')})` : '');
}

function paramsText(params) {
  if (params.none) return 'none';
  if (params.length === 0) return '{}';
  return params.map(paramText).join(', ') + (params.absentWhenEmpty ? '; none if nothing is given' : '');
}

function resultText({ call, result, walks }, headers) {
  if (call.kind === 'NotificationCall') return 'nothing; it is a notification';
  const name = walks ? /^std::vector<(\w+)>$/.exec(result)[1] : result === 'void' ? call.result : result;
  insist(headers[name], `no header of records defines ${name}`);
  const record = link(code(name), `Sources/${headers[name]}`);
  if (walks) return `list of ${record}`;
  return call.kind === 'DroppedCall' ? `nothing (${record}, dropped)` : record;
}

function methodText({ methods }) {
  return methods.map((method) => code(method)).join(', else ');
}

// Operations of both classes that perform the same call in the same form share a row.
function rowsOf(operations, headers) {
  const rows = new Map();
  for (const operation of operations) {
    const cells = [methodText(operation), paramsText(operation.params), resultText(operation, headers)];
    const key = [signature(operation.call), operation.walks, ...cells].join('|');
    const row = rows.get(key) ?? { family: operation.family, cells };
    insist(!row[operation.className], `two operations of ${operation.className} are one row: ${operation.name}`);
    row[operation.className] = nameOf(operation, operations.filter((one) => one.className === operation.className));
    row.method ??= operation.methods[0];
    row.name ??= operation.name;
    rows.set(key, row);
  }
  // A row that only one object has stands beside those of the same method, and first of the same name.
  const list = [...rows.values()];
  const rank = (of) => (row) => list.findIndex((one) => of(one) === of(row));
  const [byMethod, byName] = [rank((row) => row.method), rank((row) => row.name)];
  return [...list].sort((left, right) => byMethod(left) - byMethod(right) || byName(left) - byName(right));
}

// A test finds its call by the name of the operation, and by the method.
function checkTests(family, operations) {
  const file = `${tests}/${family}CallTests.cpp`;
  insist(existsSync(file), `there is no ${file}`);
  const text = readFileSync(file, 'utf8');
  for (const { name, methods } of operations.filter((one) => one.family === family)) {
    insist(text.includes(`.${name}(`), `${file} does not call ${name}`);
    for (const method of methods) insist(text.includes(`"${method}"`), `${file} does not name ${method}`);
  }
  return file;
}

function readAll() {
  const calls = new Calls();
  const operations = [facade, session].flatMap(({ className, others }) => readOperations(calls, className, others));
  const unused = calls.unused();
  insist(unused.length === 0, `no operation performs ${unused.join(', ')}`);
  const strangers = operations.filter((one) => !families[one.family]).map((one) => `${one.name} (${one.family})`);
  insist(strangers.length === 0, `no heading for the family of ${strangers.join(', ')}`);
  return operations;
}

function write() {
  const operations = readAll();
  const rows = rowsOf(operations, recordHeaders());
  const told = rows.reduce((count, row) => count + (row.Ormel ? 1 : 0) + (row.OrmelControlSession ? 1 : 0), 0);
  insist(told === operations.length, `${operations.length} operations are declared, but ${told} are in the table`);

  const methods = new Set(operations.flatMap((one) => one.methods));
  const count = (className) => operations.filter((one) => one.className === className).length;
  const text = [
    '# All management calls',
    '',
    '<!-- Written by scripts/management-table from the declarations; change those, and run it. -->',
    '',
    `${count('Ormel')} operations of ${classLink('Ormel')} and`,
    `${count('OrmelControlSession')} of ${classLink('OrmelControlSession')}, by ${methods.size} methods.`,
    'An operation that takes other params, or gives another result, than its namesake has a row of its own.',
    '',
    'Params go by the name of their key, with `ID` for `Id` and `URL` for `Url`, unless an argument is named.',
    'How they are sent:',
    '',
    '| mark | |',
    '|---|---|',
    '| `key` | always |',
    '| `key = value` | always, with this value |',
    '| `key?` | if it is given, also when it is empty |',
    '| `key!` | if the flag is true, and then as true |',
    '| `key=null?` | always; as null if it is not given |',
    '| `key~` | as its value, as null if it is cleared, and not at all if it is left unchanged |',
    '| none | the request goes out without params |',
    '| {} | the params are an empty object |',
  ];
  for (const [family, [title, about]] of Object.entries(families)) {
    const test = checkTests(family, operations);
    const file = (kind) => `${management}/${family}${kind}`;
    text.push(
      '',
      `## ${title}`,
      '',
      `[About them](${about}); params in ${link(code(`${family}Params.h`), file('Params.h'))}, calls in`,
      `${link(code(`${family}Calls.cpp`), file('Calls.cpp'))}, the lines of each call in`,
      `${link(code(`${family}CallTests.cpp`), test)}.`,
      '',
      '| `Ormel` | `OrmelControlSession` | method | params | result |',
      '|---|---|---|---|---|',
      ...rows
        .filter((row) => row.family === family)
        .map((row) => `| ${[row.Ormel ?? '–', row.OrmelControlSession ?? '–', ...row.cells].join(' | ')} |`),
    );
  }
  return `${text.join('\n')}\n`;
}

// The lines that only one of both has.
function difference(kept, wanted) {
  const [keptLines, wantedLines] = [kept, wanted].map((text) => text.split('\n'));
  const only = (lines, others, sign) => lines.filter((line) => !others.includes(line)).map((line) => `${sign} ${line}`);
  return [...only(keptLines, wantedLines, '-'), ...only(wantedLines, keptLines, '+')];
}

function fail(lines) {
  console.error(lines.join('\n'));
  process.exit(1);
}

try {
  const wanted = write();
  const kept = existsSync(page) ? readFileSync(page, 'utf8') : '';
  if (process.argv[2] === '--check') {
    const lines = difference(kept, wanted).slice(0, mostLinesOfDifference);
    if (kept !== wanted) fail([`${page} is stale; run scripts/management-table.`, ...lines]);
    console.log(`The table of management calls is current: ${wanted.match(/^\| [`–]/gm).length} rows.`);
  } else {
    writeFileSync(page, wanted);
  }
} catch (error) {
  fail([`The management calls cannot be told: ${error.message}`]);
}
