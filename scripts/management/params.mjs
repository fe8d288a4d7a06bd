// The structs and tables of the params that calls take.

import { insist, readBody, splitList } from './cpp.mjs';

const rules = ['always', 'ifGiven', 'ifTrue', 'nullWhenEmpty', 'triState'];

// Members of structs of params: {Struct: {member: type}}.
export function readStructs(texts) {
  const structs = {};
  for (const text of texts) {
    for (const [, name] of text.matchAll(/struct (\w+Params) \{/g)) {
      const members = readBody(text, `struct ${name} {`).split(';').map((part) => part.replace(/^.*\{ ?\}/, '').trim());
      structs[name] = {};
      for (const member of members.filter((part) => part && !part.startsWith('friend '))) {
        const match = /^(.+?) (\w+)(?: = [^;]+)?$/.exec(member);
        insist(match, `${name}: cannot read the member "${member}"`);
        structs[name][match[2]] = match[1];
      }
    }
  }
  return structs;
}

// {Struct: {fields: [{rule, member, key}], absentWhenEmpty}}
export function readTables(texts) {
  const tables = {};
  for (const text of texts) {
    for (const [head, name] of text.matchAll(/struct ormel::coding::ParamsTable<ormel::(\w+)> \{/g)) {
      const body = readBody(text, head);
      const fields = splitList(readBody(body, 'fields[] =').replace(/, ?$/, '')).map((line) => {
        const match = /^(\w+)<&\w+::(\w+)>\("([^"]+)"\)(?:\.codedBy<[\w:]+>\(\))?$/.exec(line);
        insist(match, `ParamsTable<${name}>: cannot read "${line}"`);
        const [, rule, member, key] = match;
        insist(rules.includes(rule), `ParamsTable<${name}>: unknown rule ${rule}`);
        return { rule, member, key };
      });
      tables[name] = { fields, absentWhenEmpty: /absentWhenEmpty = true/.test(body) };
    }
  }
  return tables;
}
