// Where the declarations of management calls lie.

import { readdirSync } from 'node:fs';
import { readSource } from './cpp.mjs';

export const library = 'Sources/OrmelSDK';
export const management = `${library}/Management`;

export const filesOf = (folder, pattern) => readdirSync(folder).filter((file) => pattern.test(file)).sort();
export const sourcesOf = (folder, pattern) => filesOf(folder, pattern).map((file) => readSource(`${folder}/${file}`));

// The header of each record, below Sources.
export function recordHeaders() {
  const headers = {};
  for (const file of filesOf(`${library}/Records`, /\.h$/).filter((one) => one !== 'ManagementReplies.h')) {
    const text = readSource(`${library}/Records/${file}`);
    const names = [...text.matchAll(/\bstruct (\w+)(?: : [^;{]+)? \{|\busing (\w+) = /g)];
    for (const [, struct, alias] of names) headers[struct ?? alias] = `OrmelSDK/Records/${file}`;
  }
  return headers;
}
