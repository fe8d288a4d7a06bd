// Reads just as much of C++ as the declarations of management calls need. Anything else is an error.

import { readFileSync } from 'node:fs';

export function insist(holds, fault) {
  if (!holds) throw new Error(fault);
}

const openers = '([{<';
const closers = ')]}>';

// A source without comments and directives, its white space made single; texts in quotes stay as they are.
export function readSource(path) {
  const text = readFileSync(path, 'utf8')
    .replace(/^\s*#.*$/gm, '')
    .replace(/"(?:[^"\\\n]|\\.)*"|\/\/[^\n]*|\/\*[^]*?\*\//g, (match) => (match.startsWith('"') ? match : ' '));
  return text.replace(/\s+/g, ' ');
}

// The place behind the bracket that closes the one at `start`.
export function closing(text, start) {
  let depth = 0;
  let quoted = false;
  for (let at = start; at < text.length; ++at) {
    if (text[at] === '"' && text[at - 1] !== '\\') quoted = !quoted;
    if (quoted) continue;
    if (text[at] === text[start]) ++depth;
    if (text[at] === closers[openers.indexOf(text[start])] && --depth === 0) return at + 1;
  }
  throw new Error(`no bracket closes: ${text.slice(start, start + 80)}`);
}

// The parts between commas that stand in no bracket.
export function splitList(text) {
  const parts = [];
  let depth = 0;
  let quoted = false;
  let begin = 0;
  for (let at = 0; at < text.length; ++at) {
    if (text[at] === '"' && text[at - 1] !== '\\') quoted = !quoted;
    if (quoted) continue;
    if (openers.includes(text[at])) ++depth;
    if (closers.includes(text[at]) && text[at - 1] !== '-') --depth;
    if (text[at] === ',' && depth === 0) {
      parts.push(text.slice(begin, at).trim());
      begin = at + 1;
    }
  }
  insist(depth === 0, `brackets do not match: ${text}`);
  const last = text.slice(begin).trim();
  return last || parts.length > 0 ? [...parts, last] : [];
}

// "const std::string& threadID" or "const P& params = P()" as {type, name, hasDefault}.
function readParameter(text) {
  const [declaration, ...value] = text.split(/\s=\s/);
  const match = /^(?:const )?(.+?)(?: ?&)? (\w+)$/.exec(declaration.trim());
  insist(match, `cannot read the parameter "${text}"`);
  return { type: match[1], name: match[2], hasDefault: value.length > 0 };
}

// All functions whose result is one of these templates: {result, kind, owner, name, parameters, body}. The body is
// missing in a declaration. Each place where such a result stands at the start of a statement must be readable.
export function readFunctions(text, templates) {
  const start = new RegExp(`(?<=^|[;{}:>] ?)\\s*(${templates.join('|')})(?=[ <])`, 'g');
  const functions = [];
  for (const match of text.matchAll(start)) {
    let at = match.index + match[0].length;
    let result = '';
    if (text[at] === '<') {
      const end = closing(text, at);
      result = text.slice(at + 1, end - 1);
      at = end;
    }
    const isVariable = /^ \w+;/.test(text.slice(at));
    if (isVariable) continue;
    const name = /^ (?:(\w+)::)?(\w+) ?\(/.exec(text.slice(at));
    insist(name, `cannot read "${text.slice(match.index, match.index + 120).trim()}"`);
    const open = at + name[0].length - 1;
    const close = closing(text, open);
    const parameters = splitList(text.slice(open + 1, close - 1)).map(readParameter);
    const tail = /^ ?(?:const )?(?:noexcept )?(;|\{)/.exec(text.slice(close).replace(/^ ?const;/, ' ;'));
    insist(tail, `cannot read what follows ${name[2]}: "${text.slice(close, close + 60)}"`);
    const brace = tail[1] === '{' ? text.indexOf('{', close) : -1;
    const body = brace < 0 ? undefined : text.slice(brace + 1, closing(text, brace) - 1).trim();
    functions.push({ kind: match[1], result, owner: name[1], name: name[2], parameters, body });
  }
  return functions;
}

// A text without all that stands in parentheses and braces.
export function outsideBrackets(text) {
  let rest = text;
  let before;
  do {
    before = rest;
    rest = rest.replace(/\([^(){}]*\)|\{[^(){}]*\}/g, ' ');
  } while (rest !== before);
  return rest;
}

// The text between the braces of a class or struct.
export function readBody(text, head) {
  const at = text.indexOf(head);
  insist(at >= 0, `there is no "${head}"`);
  const open = text.indexOf('{', at);
  return text.slice(open + 1, closing(text, open) - 1);
}

// "calls::name(a, b)" and the like: the arguments of the first call of it, or nothing.
export function argumentsOf(text, name) {
  const at = text.indexOf(`${name}(`);
  if (at < 0) return undefined;
  const open = at + name.length;
  return splitList(text.slice(open + 1, closing(text, open) - 1));
}
