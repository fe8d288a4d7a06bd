// Reads the names of all files on standard input and holds what the documents among them name against these.

import { existsSync, readFileSync } from 'node:fs';
import { basename, dirname, join, normalize } from 'node:path';

const files = readFileSync(0, 'utf8').split('\n').filter((file) => file && existsSync(file));
const baseNames = new Set(files.map((file) => basename(file)));
const tops = new Set(files.filter((file) => file.includes('/')).map((file) => file.split('/')[0]));
const sourceKinds = /\.(h|cpp|cmake|txt|mjs|py)$/;

// A link is relative to its page.
function brokenLinks(page, text) {
  const targets = [...text.matchAll(/\]\(([^)\s]+)\)/g)].map((match) => match[1].replace(/#.*/, ''));
  return targets.filter((target) => target && !/^\w+:/.test(target) && !existsSync(join(dirname(page), target)));
}

// In backticks: a path from the top of the project, or the name of a source alone or below its room.
function missingFiles(text) {
  const names = [...text.replace(/^```.*?^```/gms, '').matchAll(/`([\w.+/-]+)`/g)].map((match) => match[1]);
  return names.filter((name) => {
    if (name.startsWith('.') || name.startsWith('/')) return false;
    if (tops.has(name.split('/')[0]) && name.includes('/')) return !existsSync(normalize(name));
    return sourceKinds.test(name) && !baseNames.has(basename(name));
  });
}

// A program is copied whole, but for the comment at its head, behind the marker <!-- program: FILE -->.
function staleProgram(page, file, copy) {
  if (!existsSync(file)) return `${page}: shows ${file}, which is not there`;
  const program = readFileSync(file, 'utf8').replace(/^(\/\/.*\n)+\n/, '');
  return copy === program ? undefined : `${page}: does not show ${file} as it is`;
}

function staleCopies(page, text) {
  const marked = [...text.matchAll(/<!-- program: (\S+) -->(?:\n+```cpp\n([^]*?)^```$)?/gm)];
  return marked.map(([, file, copy]) => staleProgram(page, file, copy)).filter(Boolean);
}

// Each program of the folder is shown on a page.
function unshownPrograms(folder, texts) {
  const programs = files.filter((file) => file.startsWith(folder) && file.endsWith('.cpp'));
  return programs.filter((file) => !texts.some((text) => text.includes(`<!-- program: ${file} -->`)));
}

const pages = files.filter((file) => file.endsWith('.md'));
const faults = pages.flatMap((page) => {
  const text = readFileSync(page, 'utf8');
  return [
    ...brokenLinks(page, text).map((target) => `${page}: links to ${target}, which is not there`),
    ...missingFiles(text).map((name) => `${page}: names ${name}, which is not there`),
    ...staleCopies(page, text),
  ];
});
const texts = pages.map((page) => readFileSync(page, 'utf8'));
faults.push(...unshownPrograms('Examples/management/', texts).map((file) => `${file}: no page shows it`));

if (faults.length > 0) {
  console.error(faults.join('\n'));
  process.exit(1);
}
console.log(`The documents name nothing that is gone: ${pages.length} pages.`);
