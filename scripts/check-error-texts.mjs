// Holds the texts of docs/troubleshooting.md against the sources of the library: each text that the page lists is in
// there, and each text that a failure of the library is made with is on the page.

import { readdirSync, readFileSync } from 'node:fs';

const page = 'docs/troubleshooting.md';

// The library's sources with adjacent literals joined and quotation marks within them as they are shown.
function sources(folder) {
  const names = readdirSync(folder, { recursive: true }).filter((name) => /\.(h|cpp)$/.test(name));
  return names.map((name) => readFileSync(`${folder}/${name}`, 'utf8').replace(/"\s*\n\s*"/g, '')).join('\n');
}

// The first column of each row, as far as it stands in quotation marks up to the end of the cell.
function listedTexts(markdown) {
  const cells = [...markdown.matchAll(/^\| (".*?") \|/gm)].map((match) => match[1]);
  return cells.filter((cell) => !cell.startsWith('"/usr/bin/env')).map((cell) => cell.slice(1, -1));
}

// The parts of a text between its variable ones.
const piecesOf = (text) => text.split('...').map((piece) => piece.trim()).filter((piece) => /\w{2}/.test(piece));

const library = sources('Sources/OrmelSDK');
// Literals are split where something is put in, and hold escaped quotation marks.
const shown = library.replaceAll('\\"', '"');
const markdown = readFileSync(page, 'utf8');
const faults = [];

const texts = listedTexts(markdown);
if (texts.length < 60) faults.push(`${page}: only ${texts.length} texts were found in its tables`);
for (const text of texts) {
  for (const piece of piecesOf(text)) {
    const isThere = piece.split(/: |" /).every((part) => shown.includes(part.replace(/^["]|["]$/g, '')));
    if (!isThere) faults.push(`${page}: lists "${piece}", which no source has`);
  }
}

const makers = /\b(?:streamError|spawnFailed|invalidConfigOverride|refuse|HandlerError|EncodingError|neededThreadID)\(\s*"((?:[^"\\]|\\.)*)"/g;
for (const [, literal] of library.matchAll(makers)) {
  if (!markdown.includes(literal.replaceAll('\\"', '"').trim())) faults.push(`${page}: does not list "${literal}"`);
}

if (faults.length > 0) {
  console.error(faults.join('\n'));
  process.exit(1);
}
console.log(`The texts of errors are those of the sources: ${texts.length} of them.`);
