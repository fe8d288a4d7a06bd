// A header that is precompiled is there in every source, whether or not the source includes it. So it is looked up here
// that each source of the library includes what it names of these headers, by itself or by a header of the library, and
// each example by itself.

import { existsSync, readFileSync, readdirSync } from 'node:fs';
import { dirname, join } from 'node:path';
import { execFileSync } from 'node:child_process';

const lists = 'Sources/OrmelSDK/CMakeLists.txt';

// The names by which a header is known. Each name is one that no other header has to bring.
const names = {
  algorithm:
    /\bstd::(ranges::)?(all_of|any_of|clamp|copy|copy_if|copy_n|count|count_if|equal|fill|find|find_if|find_if_not|lower_bound|max|max_element|min|min_element|mismatch|none_of|partition|remove|remove_if|replace|reverse|rotate|search|sort|stable_sort|transform|unique|upper_bound)\s*[<(]/,
  functional: /\bstd::(function|invoke|not_fn|ref|cref|reference_wrapper|less|greater|plus|bind_front)\b/,
  memory: /\bstd::(unique_ptr|shared_ptr|weak_ptr|make_unique|make_shared|enable_shared_from_this|addressof|construct_at|destroy_at)\b/,
  mutex: /\bstd::(mutex|recursive_mutex|lock_guard|unique_lock|scoped_lock|once_flag|call_once)\b/,
  optional: /\bstd::(optional|nullopt|make_optional)\b/,
  string: /\bstd::(string|to_string|stoi|stol|char_traits)\b/,
  string_view: /\bstd::string_view\b/,
  system_error: /\bstd::(system_error|error_code|errc|generic_category|system_category|make_error_code)\b/,
  unordered_map: /\bstd::unordered_(multi)?map\b/,
  variant: /\bstd::(variant|monostate|get_if|holds_alternative|in_place_index)\b/,
  vector: /\bstd::vector\b/,
};
// Headers that are to bring another one.
const brings = { string: ['string_view'] };

const declared = /target_precompile_headers\(OrmelSDK PRIVATE([^)]*)\)/.exec(readFileSync(lists, 'utf8'));
if (!declared) throw new Error(`${lists} precompiles nothing for OrmelSDK`);
const precompiled = [...declared[1].matchAll(/<([a-z_]+)>/g)].map((match) => match[1]);

const faults = precompiled
  .filter((header) => !names[header])
  .map((header) => `${lists}: precompiles <${header}>, for which scripts/check-precompiled.mjs knows no names`);

const withoutComments = (text) => text.replace(/\/\*[^]*?\*\/|\/\/.*/g, '');
const texts = new Map();
const textOf = (file) => {
  if (!texts.has(file)) texts.set(file, readFileSync(file, 'utf8'));
  return texts.get(file);
};

function fileOf(included, from) {
  return [join('Sources', included), join(dirname(from), included)].find((file) => existsSync(file));
}

// The headers of the system that a source includes, by way of the library's headers too.
function reachedBy(file, reached = new Set(), seen = new Set()) {
  if (seen.has(file)) return reached;
  seen.add(file);
  for (const [, open, included] of textOf(file).matchAll(/^\s*#\s*include\s*(["<])([^">]+)[">]/gm)) {
    const own = fileOf(included, file);
    if (own) reachedBy(own, reached, seen);
    else if (open === '<') for (const header of [included, ...(brings[included] ?? [])]) reached.add(header);
  }
  return reached;
}

const sources = execFileSync('git', ['ls-files', '-co', '--exclude-standard', '--', 'Sources/OrmelSDK/*.cpp'])
  .toString()
  .split('\n')
  .filter((file) => file && existsSync(file));
for (const file of sources) {
  const text = withoutComments(textOf(file));
  const reached = reachedBy(file);
  for (const header of precompiled) {
    if (names[header]?.test(text) && !reached.has(header)) faults.push(`${file}: names a part of <${header}> and does not include it`);
  }
}

// The examples have these two precompiled.
const examples = ['numbered', 'management'].flatMap((folder) =>
  readdirSync(`Examples/${folder}`).filter((name) => name.endsWith('.cpp')).map((name) => `Examples/${folder}/${name}`));
for (const file of examples) {
  const reached = new Set([...textOf(file).matchAll(/^#include <([^>]+)>/gm)].map(([, included]) => included));
  if (!reached.has('OrmelSDK/Ormel.h') && !reached.has('OrmelSDK/OrmelSDK.h')) faults.push(`${file}: includes neither Ormel.h nor OrmelSDK.h`);
  if (/\bstd::(cout|cerr|clog|cin)\b/.test(textOf(file)) && !reached.has('iostream'))
    faults.push(`${file}: names a part of <iostream> and does not include it`);
}

for (const fault of faults) console.error(fault);
if (faults.length) process.exit(1);
console.log(`Each of ${sources.length} sources and ${examples.length} examples includes what it names of the precompiled headers.`);
