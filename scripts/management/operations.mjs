// The operations of the two classes, and the management calls that they perform.

import { argumentsOf, insist, outsideBrackets, readBody, readFunctions, readSource } from './cpp.mjs';
import { sameSignature, signature } from './calls.mjs';
import { library, management, sourcesOf } from './files.mjs';

function declaredIn(className) {
  const body = readBody(readSource(`${library}/${className}.h`), `class ${className} {`);
  const declared = readFunctions(body, ['Task']);
  const tasks = outsideBrackets(body).match(/\bTask</g)?.length ?? 0;
  insist(tasks === declared.length, `${className} has ${tasks} tasks, of which ${declared.length} can be read`);
  return declared;
}

// The body of a function that performs an operation in its place.
function bodyOf(name, what) {
  const functions = name ? sourcesOf(management, /\.cpp$/).flatMap((text) => readFunctions(text, ['Task'])) : [];
  const found = functions.find((one) => one.name === name && one.body);
  insist(found, `${what}: cannot read which call it performs`);
  return found.body;
}

// Each call in a body, with the types of the arguments that it gets from the operation.
function callsIn(body, operation) {
  return [...body.matchAll(/calls::(\w+)\(/g)].map(([, name]) => {
    const types = argumentsOf(body, `calls::${name}`).map((argument) => {
      const type = operation.parameters.find((parameter) => parameter.name === argument)?.type;
      insist(type, `${operation.name}: cannot read the argument "${argument}" of calls::${name}`);
      return type;
    });
    return { name, types };
  });
}

function performed(calls, operation, body) {
  const isDirect = /calls::\w+/.test(body);
  const where = isDirect ? body : bodyOf(/detail::(\w+)\(performer_, /.exec(body)?.[1], operation.name);
  const performedCalls = callsIn(where, operation).map(({ name, types }) => {
    const call = calls.use(name, types, operation.name);
    return { call, ...calls.told(call, types.length) };
  });
  insist(performedCalls.length > 0, `${operation.name}: cannot read which call it performs`);
  const [{ call, params }] = performedCalls;
  const result = call.kind === 'Call' ? call.result : 'void';
  insist(operation.result === result, `${operation.name} returns ${operation.result}, but its call ${result}`);
  const haveSameParams = performedCalls.every((one) => JSON.stringify(one.params) === JSON.stringify(params));
  insist(haveSameParams, `${operation.name}: its calls have different params`);
  return { call, methods: performedCalls.map((one) => one.method), params };
}

// A walk asks with the params of its first page, and with the cursor from the second one on.
function walked(calls, operation, [, page]) {
  const call = calls.use(page.replace('calls::', ''), [undefined], operation.name);
  const pageType = call.parameters[0].type;
  const callersType = operation.parameters[0].type;
  const firstPages = readFunctions(call.source, [pageType]);
  const first = firstPages.find((one) => one.name === 'firstPage' && one.parameters[0]?.type === callersType);
  insist(first?.body, `${operation.name}: cannot read the params of its first page`);
  const params = calls.assigned(first.body, 'page', pageType, callersType);
  const hasCursor = calls.tables[pageType].fields.some((field) => field.key === 'cursor');
  insist(hasCursor && !params.some((one) => one.key === 'cursor'), `${operation.name}: cannot read its cursor`);
  const cursor = { key: 'cursor', mark: '', from: 'the second page on' };
  return { call, methods: [calls.told(call).method], params: [...params, cursor], walks: true };
}

// The operations of a class, but for the other members, each with what it performs: {className, name, parameters,
// result, family, call, methods, params, walks}.
export function readOperations(calls, className, otherMembers) {
  const declared = declaredIn(className);
  for (const name of otherMembers) {
    insist(declared.some((one) => one.name === name), `${className} has no ${name} any more`);
  }
  const files = new RegExp(`^${className}\\+\\w+\\.cpp$`);
  const definitions = sourcesOf(library, files).flatMap((text) => readFunctions(text, ['Task']));
  return declared.filter((one) => !otherMembers.includes(one.name)).map((operation) => {
    const definition = definitions.find((one) => one.owner === className && sameSignature(one, operation));
    insist(definition, `no ${className}+….cpp defines ${className}::${signature(operation)}`);
    const pages = argumentsOf(definition.body, 'detail::allPages');
    const told = pages ? walked(calls, operation, pages) : performed(calls, operation, definition.body);
    return { ...operation, className, family: told.call.family, ...told };
  });
}
