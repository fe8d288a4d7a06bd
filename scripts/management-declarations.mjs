// Reads how the management calls are declared: the operations of both classes, the calls that they perform, and the
// tables of their params.

import { readdirSync } from 'node:fs';
import { argumentsOf, closing, outsideBrackets, readBody, readFunctions, readSource, splitList } from './cpp-reading.mjs';

const library = 'Sources/OrmelSDK';
const management = `${library}/Management`;
const callKinds = ['Call', 'DroppedCall', 'NotificationCall'];

const filesOf = (folder, pattern) => readdirSync(folder).filter((file) => pattern.test(file)).sort();
const all = (folder, pattern) => filesOf(folder, pattern).map((file) => readSource(`${folder}/${file}`));

// Members of structs of params: {Struct: {member: type}}.
function readStructs(texts) {
  const structs = {};
  for (const text of texts) {
    for (const [, name] of text.matchAll(/struct (\w+Params) \{/g)) {
      const members = readBody(text, `struct ${name} {`).split(';').map((part) => part.replace(/^.*\{ ?\}/, '').trim());
      structs[name] = {};
      for (const member of members.filter((part) => part && !part.startsWith('friend '))) {
        const match = /^(.+?) (\w+)(?: = [^;]+)?$/.exec(member);
        if (!match) throw new Error(`${name}: cannot read the member "${member}"`);
        structs[name][match[2]] = match[1];
      }
    }
  }
  return structs;
}

// {Struct: {fields: [{rule, member, key}], absentWhenEmpty}}
function readTables(texts, structs) {
  const tables = {};
  for (const text of texts) {
    for (const [head, name] of text.matchAll(/struct ormel::coding::ParamsTable<ormel::(\w+)> \{/g)) {
      const body = readBody(text, head);
      const fields = splitList(readBody(body, 'fields[] =').replace(/, ?$/, '')).map((line) => {
        const match = /^(\w+)<&\w+::(\w+)>\("([^"]+)"\)(?:\.codedBy<[\w:]+>\(\))?$/.exec(line);
        if (!match) throw new Error(`ParamsTable<${name}>: cannot read "${line}"`);
        const [, rule, member, key] = match;
        if (!['always', 'ifGiven', 'ifTrue', 'nullWhenEmpty', 'triState'].includes(rule)) {
          throw new Error(`ParamsTable<${name}>: unknown rule ${rule}`);
        }
        return { rule, member, key, type: structs[name]?.[member] };
      });
      tables[name] = { fields, absentWhenEmpty: /absentWhenEmpty = true/.test(body) };
    }
  }
  return tables;
}

// The calls of each family as declared, with the bodies of their definitions.
function readCalls() {
  const calls = [];
  for (const header of filesOf(management, /Calls\.h$/)) {
    const family = header.replace(/Calls\.h$/, '');
    const source = readSource(`${management}/${family}Calls.cpp`);
    const definitions = readFunctions(source, callKinds);
    for (const call of readFunctions(readSource(`${management}/${header}`), callKinds)) {
      const definition = definitions.find((one) => sameSignature(one, call));
      if (!definition?.body) throw new Error(`${family}Calls.cpp does not define ${signature(call)}`);
      calls.push({ ...call, family, body: definition.body, source });
    }
    if (definitions.length !== calls.filter((call) => call.family === family).length) {
      throw new Error(`${family}Calls.cpp defines ${definitions.length} calls, which is not what its header declares`);
    }
  }
  return calls;
}

const typesOf = (parameters) => parameters.map((parameter) => parameter.type);
const signature = (one) => `${one.name}(${typesOf(one.parameters).join(', ')})`;
const sameSignature = (left, right) => signature(left) === signature(right);

// Which call of that name takes arguments of these types; what it takes besides has a default.
function resolve(calls, name, types, what) {
  const found = calls.filter((call) => {
    if (call.name !== name || types.length > call.parameters.length) return false;
    const given = call.parameters.slice(0, types.length);
    const others = call.parameters.slice(types.length);
    return given.every((one, at) => one.type === types[at] || !types[at]) && others.every((one) => one.hasDefault);
  });
  if (found.length !== 1) throw new Error(`${what}: ${found.length} calls match ${name}(${types.join(', ')})`);
  return found[0];
}

// An argument without what turns it into JSON, such as `edits` of `argument(edits)`.
const bare = (expression) => /^(?:[\w:]+\()?(\w+)\)?$/.exec(expression)?.[1] ?? expression;

// "threadID" goes to "threadId" unless the table says otherwise.
const usualKey = (name) => name.replace(/ID/g, 'Id').replace(/URL/g, 'Url').replace(/DB(?=[A-Z])/g, 'Db');
const member = (key, name, mark) => ({ key, mark, argument: usualKey(name) === key ? undefined : name });

const marks = { always: '', ifGiven: '?', ifTrue: '!', nullWhenEmpty: '=null?', triState: '~' };

export class Declarations {
  constructor() {
    const structs = readStructs(all(management, /Params\.h$/));
    this.structs = structs;
    this.tables = readTables(all(management, /Params\.cpp$/), structs);
    this.calls = readCalls();
    this.used = new Set();
  }

  // The operations of a class, each with what it performs: {name, parameters, result, family, methods, params}.
  operations(className, otherMembers) {
    const body = readBody(readSource(`${library}/${className}.h`), `class ${className} {`);
    const declared = readFunctions(body, ['Task']);
    const results = outsideBrackets(body).match(/\bTask</g)?.length ?? 0;
    if (results !== declared.length) throw new Error(`${className} has ${results} tasks, of which ${declared.length} can be read`);
    for (const name of otherMembers) {
      if (!declared.some((one) => one.name === name)) throw new Error(`${className} has no ${name} any more`);
    }
    const definitions = all(library, new RegExp(`^${className}\\+\\w+\\.cpp$`)).flatMap((text) => readFunctions(text, ['Task']));
    return declared.filter((one) => !otherMembers.includes(one.name)).map((operation) => {
      const definition = definitions.find((one) => one.owner === className && sameSignature(one, operation));
      if (!definition) throw new Error(`no ${className}+….cpp defines ${className}::${signature(operation)}`);
      return { ...operation, className, ...this.performed(operation, definition.body) };
    });
  }

  // Calls that no operation performs.
  unusedCalls() {
    return this.calls.filter((call) => !this.used.has(call)).map(signature);
  }

  performed(operation, body) {
    const what = `${operation.name}`;
    const walk = argumentsOf(body, 'detail::allPages');
    if (walk) return this.walked(operation, walk);
    const direct = /calls::\w+/.test(body);
    const name = direct ? undefined : /detail::(\w+)\(performer_, /.exec(body)?.[1];
    const text = direct ? body : this.sourceOf(name, what);
    const calls = [...text.matchAll(/calls::(\w+)\(/g)].map(([, call]) => {
      const types = argumentsOf(text, `calls::${call}`).map((argument) => {
        const type = operation.parameters.find((parameter) => parameter.name === argument)?.type;
        if (!type) throw new Error(`${what}: cannot read the argument "${argument}" of calls::${call}`);
        return type;
      });
      return { call: this.use(resolve(this.calls, call, types, what)), given: types.length };
    });
    if (calls.length === 0) throw new Error(`${what}: cannot read which call it performs`);
    const [{ call, given }] = calls;
    this.checkResult(operation, call);
    const told = this.told(call, given);
    const params = JSON.stringify(told.params);
    for (const other of calls.slice(1)) {
      if (JSON.stringify(this.told(other.call).params) !== params) throw new Error(`${what}: the second call has other params`);
    }
    return { call, family: call.family, methods: calls.map((one) => this.told(one.call).method), params: told.params };
  }

  use(call) {
    this.used.add(call);
    return call;
  }

  // An operation may be told by a function of its own.
  sourceOf(name, what) {
    for (const text of name ? all(management, /\.cpp$/) : []) {
      const found = readFunctions(text, ['Task']).find((one) => one.name === name && one.body);
      if (found) return found.body;
    }
    throw new Error(`${what}: cannot read which call it performs`);
  }

  checkResult(operation, call) {
    const expected = call.kind === 'Call' ? call.result : 'void';
    const same = operation.result === expected || operation.name === 'listThreadTurnItems';
    if (!same) throw new Error(`${operation.name} returns ${operation.result}, but its call ${expected}`);
  }

  walked(operation, [, page]) {
    const call = this.use(resolve(this.calls, page.replace('calls::', ''), [undefined], operation.name));
    const { method } = this.told(call);
    const [{ type }] = operation.parameters;
    const table = this.tables[call.parameters[0].type];
    const first = readFunctions(call.source, [call.parameters[0].type]).find((one) => one.parameters[0]?.type === type);
    if (!first?.body) throw new Error(`${operation.name}: cannot read the params of its first page`);
    const params = this.assigned(first.body, 'page', call.parameters[0].type, type);
    const cursor = table.fields.find((field) => field.member === 'cursor');
    if (!cursor || params.some((one) => one.key === 'cursor')) throw new Error(`${operation.name}: cannot read its cursor`);
    return { call, family: call.family, methods: [method], params: [...params, { key: 'cursor', mark: '', from: 'the second page on' }], walks: true };
  }

  // The method and params of a call: no params, or a list of members. `given` counts the arguments that it gets.
  told(call, given = call.parameters.length) {
    const what = `calls::${signature(call)}`;
    const inner = /\breturn ([^]*);$/.exec(call.body)?.[1];
    if (!inner || inner.includes('return ')) throw new Error(`${what}: cannot read what it returns`);
    if (!inner.startsWith('{')) return this.delegated(call, inner);
    let [method, params, ...rest] = splitList(inner.slice(1, -1));
    if (method.startsWith('{')) [method, params, ...rest] = splitList(method.slice(1, -1));
    if (!/^"[^"]+"$/.test(method) || params === undefined || rest.length > 0) throw new Error(`${what}: cannot read ${inner}`);
    return { method: method.slice(1, -1), params: this.members(call, params, given, what) };
  }

  members(call, expression, given, what) {
    if (expression === 'withoutParams') return { none: true };
    const last = call.parameters.at(-1);
    if (expression === `coding::encodeParams(${last?.name})`) return this.optional(last.type, what);
    const sameParams = /^(\w+)\((.*)\)\.params$/.exec(expression);
    if (sameParams) return this.delegated(call, expression.replace(/\.params$/, '')).params;
    const parts = argumentsOf(expression, 'callParams');
    if (!parts || !expression.startsWith('callParams(') || parts.length > 2) throw new Error(`${what}: cannot read ${expression}`);
    const required = splitList(parts[0].slice(1, -1)).map((entry) => {
      const match = /^\{"([^"]+)", (.+)\}$/.exec(entry);
      if (!match) throw new Error(`${what}: cannot read the member ${entry}`);
      const [, key, value] = match;
      return value.startsWith('"') ? { key, mark: '', value } : member(key, bare(value), '');
    });
    if (parts.length === 1) return required;
    if (parts[1] !== last.name) throw new Error(`${what}: cannot read ${parts[1]}`);
    const optional = this.optional(last.type, what);
    // A struct that is not given sends what such a struct always sends.
    return [...required, ...(given < call.parameters.length ? optional.filter((one) => ['', '=null?'].includes(one.mark)) : optional)];
  }

  optional(type, what) {
    const table = this.tables[type];
    if (!table) throw new Error(`${what}: there is no ParamsTable<${type}>`);
    const members = table.fields.map((field) => member(field.key, field.member, marks[field.rule]));
    if (table.absentWhenEmpty) members.absentWhenEmpty = true;
    return members;
  }

  // The members that a function gives a struct of params which it then sends.
  assigned(body, variable, type, callersType, helpers = '') {
    return this.tables[type].fields.flatMap((field) => {
      const value = new RegExp(`\\b${variable}\\.${field.member} = ([^;]+);`).exec(body)?.[1];
      const byHelper = new RegExp(`\\bparams\\.${field.member} = `).test(helpers);
      if (value === undefined) return byHelper ? [member(field.key, field.member, marks[field.rule])] : [];
      const from = /^params\.(\w+)$/.exec(value)?.[1];
      if (!from) return [{ key: field.key, mark: '', value }];
      const given = this.structs[callersType]?.[from];
      if (!given) throw new Error(`${callersType} has no ${from}`);
      const always = field.rule === 'ifGiven' && !given.startsWith('std::optional<');
      return [member(field.key, field.member, always ? '' : marks[field.rule])];
    });
  }

  // A call that is another one with some of its arguments made here.
  delegated(call, expression) {
    const what = `calls::${signature(call)}`;
    const match = /^(\w+)\((.*)\)$/.exec(expression);
    const candidates = this.calls.filter((one) => one.name === match?.[1] && !sameSignature(one, call) && one.family === call.family);
    const passed = match && splitList(match[2]);
    const fitting = candidates.filter((one) => one.parameters.length === passed.length && /"/.test(one.body.split('return')[1]));
    if (fitting.length !== 1) throw new Error(`${what}: cannot read ${expression}`);
    const told = this.told(fitting[0]);
    const variable = passed.at(-1);
    const type = /^\w+$/.test(variable) && new RegExp(`\\b(\\w+Params) ${variable};`).exec(call.body)?.[1];
    if (!type) return told;
    const helper = new RegExp(`(\\w+)\\([^;]*\\b${variable}\\);`).exec(call.body.split('return')[0])?.[1];
    const made = this.assigned(call.body, variable, type, call.parameters.at(-1).type, helper ? this.helper(call, helper) : '');
    const keys = this.tables[type].fields.map((field) => field.key);
    return { method: told.method, params: [...told.params.filter((one) => !keys.includes(one.key)), ...made] };
  }

  helper(call, name) {
    const at = call.source.search(new RegExp(`\\b[\\w:]+ ${name}\\(`));
    if (at < 0) throw new Error(`calls::${signature(call)}: cannot read ${name}`);
    const open = call.source.indexOf('{', at);
    return call.source.slice(open, closing(call.source, open));
  }
}

// The header of a record, below Sources.
export function recordHeaders() {
  const headers = {};
  for (const file of filesOf(`${library}/Records`, /\.h$/).filter((one) => one !== 'ManagementReplies.h')) {
    const text = readSource(`${library}/Records/${file}`);
    for (const [, name] of text.matchAll(/\bstruct (\w+)(?: : [^;{]+)? \{/g)) headers[name] = `OrmelSDK/Records/${file}`;
    for (const [, name] of text.matchAll(/\busing (\w+) = /g)) headers[name] = `OrmelSDK/Records/${file}`;
  }
  return headers;
}
