// The declared management calls, and what each of them sends.

import { argumentsOf, closing, insist, readFunctions, readSource, splitList } from './cpp.mjs';
import { filesOf, management, sourcesOf } from './files.mjs';
import { readStructs, readTables } from './params.mjs';

const callKinds = ['Call', 'DroppedCall', 'NotificationCall'];

export const signature = (one) => `${one.name}(${one.parameters.map((parameter) => parameter.type).join(', ')})`;
export const sameSignature = (left, right) => signature(left) === signature(right);

// The calls of a family as declared, with the bodies of their definitions.
function readFamily(family) {
  const source = readSource(`${management}/${family}Calls.cpp`);
  const definitions = readFunctions(source, callKinds);
  const calls = readFunctions(readSource(`${management}/${family}Calls.h`), callKinds).map((call) => {
    const definition = definitions.find((one) => sameSignature(one, call));
    insist(definition?.body, `${family}Calls.cpp does not define ${signature(call)}`);
    return { ...call, family, body: definition.body, source };
  });
  const areAsMany = definitions.length === calls.length;
  insist(areAsMany, `${family}Calls.cpp defines ${definitions.length} calls, but its header declares ${calls.length}`);
  return calls;
}

const marks = { always: '', ifGiven: '?', ifTrue: '!', nullWhenEmpty: '=null?', triState: '~' };
const marksOfAlwaysSent = ['', '=null?'];

// "threadID" goes to "threadId" unless the table says otherwise.
const usualKey = (name) => name.replace(/ID/g, 'Id').replace(/URL/g, 'Url').replace(/DB(?=[A-Z])/g, 'Db');

// A member of params: its key, how it is sent, and the argument that it comes from if that goes by another name.
const member = (key, name, mark) => ({ key, mark, argument: usualKey(name) === key ? undefined : name });
const memberOf = (field) => member(field.key, field.member, marks[field.rule]);

// An argument without what turns it into JSON, such as `edits` of `argument(edits)`.
const bare = (expression) => /^(?:[\w:]+\()?(\w+)\)?$/.exec(expression)?.[1] ?? expression;

export class Calls {
  constructor() {
    const families = filesOf(management, /Calls\.h$/).map((header) => header.replace(/Calls\.h$/, ''));
    this.all = families.flatMap(readFamily);
    this.structs = readStructs(sourcesOf(management, /Params\.h$/));
    this.tables = readTables(sourcesOf(management, /Params\.cpp$/));
    this.used = new Set();
  }

  // The call of that name that takes arguments of these types, or of any type where it is undefined; what it takes
  // besides has a default.
  use(name, types, what) {
    const found = this.all.filter((call) => {
      if (call.name !== name || types.length > call.parameters.length) return false;
      const fit = types.every((type, at) => type === undefined || type === call.parameters[at].type);
      return fit && call.parameters.slice(types.length).every((one) => one.hasDefault);
    });
    insist(found.length === 1, `${what}: ${found.length} calls match ${name}(${types.join(', ')})`);
    this.used.add(found[0]);
    return found[0];
  }

  unused() {
    return this.all.filter((call) => !this.used.has(call)).map(signature);
  }

  // The method and the members of the params, or {none: true}. `given` is how many arguments the call gets.
  told(call, given = call.parameters.length) {
    const what = `calls::${signature(call)}`;
    const returned = /\breturn ([^]*);$/.exec(call.body)?.[1];
    insist(returned && !returned.includes('return '), `${what}: cannot read what it returns`);
    if (!returned.startsWith('{')) return this.delegated(call, returned);
    let parts = splitList(returned.slice(1, -1));
    if (parts[0].startsWith('{')) parts = splitList(parts[0].slice(1, -1));
    insist(parts.length === 2 && /^"[^"]+"$/.test(parts[0]), `${what}: cannot read ${returned}`);
    return { method: parts[0].slice(1, -1), params: this.params(call, parts[1], given, what) };
  }

  params(call, expression, given, what) {
    if (expression === 'withoutParams') return { none: true };
    const last = call.parameters.at(-1);
    if (expression === `coding::encodeParams(${last?.name})`) return this.optional(last.type, what);
    if (expression.endsWith(').params')) return this.delegated(call, expression.replace(/\.params$/, '')).params;
    const parts = expression.startsWith('callParams(') ? argumentsOf(expression, 'callParams') : [];
    insist(parts.length === 1 || (parts.length === 2 && parts[1] === last.name), `${what}: cannot read ${expression}`);
    const required = splitList(parts[0].slice(1, -1)).map((entry) => {
      const match = /^\{"([^"]+)", (.+)\}$/.exec(entry);
      insist(match, `${what}: cannot read the member ${entry}`);
      const [, key, value] = match;
      return value.startsWith('"') ? { key, mark: '', value } : member(key, bare(value), '');
    });
    if (parts.length === 1) return required;
    const optional = this.optional(last.type, what);
    const isStructGiven = given === call.parameters.length;
    return [...required, ...optional.filter((one) => isStructGiven || marksOfAlwaysSent.includes(one.mark))];
  }

  optional(type, what) {
    const table = this.tables[type];
    insist(table, `${what}: there is no ParamsTable<${type}>`);
    const members = table.fields.map(memberOf);
    if (table.absentWhenEmpty) members.absentWhenEmpty = true;
    return members;
  }

  // The members that a function gives to a struct of params, by itself or by a helper of it.
  assigned(body, variable, type, callersType, helper = '') {
    return this.tables[type].fields.flatMap((field) => {
      const value = new RegExp(`\\b${variable}\\.${field.member} = ([^;]+);`).exec(body)?.[1];
      const isByHelper = new RegExp(`\\bparams\\.${field.member} = `).test(helper);
      if (value === undefined) return isByHelper ? [memberOf(field)] : [];
      const from = /^params\.(\w+)$/.exec(value)?.[1];
      if (!from) return [{ key: field.key, mark: '', value }];
      const given = this.structs[callersType]?.[from];
      insist(given, `${callersType} has no ${from}`);
      const isAlwaysGiven = field.rule === 'ifGiven' && !given.startsWith('std::optional<');
      return [isAlwaysGiven ? member(field.key, field.member, '') : memberOf(field)];
    });
  }

  // A call that is another one of its family, with some of the arguments made here.
  delegated(call, expression) {
    const what = `calls::${signature(call)}`;
    const [, name, list] = /^(\w+)\((.*)\)$/.exec(expression) ?? [];
    const passed = splitList(list ?? '');
    const found = this.all.filter((one) => {
      const isAnother = one.name === name && one.family === call.family && !sameSignature(one, call);
      return isAnother && one.parameters.length === passed.length && /\breturn \{/.test(one.body);
    });
    insist(found.length === 1, `${what}: cannot read ${expression}`);
    const told = this.told(found[0]);
    const variable = passed.at(-1);
    const type = /^\w+$/.test(variable) && new RegExp(`\\b(\\w+Params) ${variable};`).exec(call.body)?.[1];
    if (!type) return told;
    const keys = this.tables[type].fields.map((field) => field.key);
    const others = told.params.filter((one) => !keys.includes(one.key));
    const callersType = call.parameters.at(-1).type;
    const made = this.assigned(call.body, variable, type, callersType, this.helperFilling(call, variable));
    return { method: told.method, params: [...others, ...made] };
  }

  // The helper that a call hands its struct of params to, if there is one.
  helperFilling(call, variable) {
    const before = call.body.slice(0, call.body.lastIndexOf('return '));
    const name = new RegExp(`(\\w+)\\([^;]*\\b${variable}\\);`).exec(before)?.[1];
    if (!name) return '';
    const at = call.source.search(new RegExp(`\\b[\\w:]+ ${name}\\(`));
    insist(at >= 0, `calls::${signature(call)}: cannot read ${name}`);
    const open = call.source.indexOf('{', at);
    return call.source.slice(open, closing(call.source, open));
  }
}
