// Reads the names of sources on standard input and holds their includes against cmake/floors.txt.

import { existsSync, readFileSync } from 'node:fs';

const faults = [];

// {name, floor, only, not} of each room, the longest name first, so that the first that matches is the innermost.
function readRooms(path) {
  const rooms = [];
  for (const line of readFileSync(path, 'utf8').split('\n')) {
    const row = line.replace(/#.*/, '').trim();
    if (!row) continue;
    const [, floor, name, kind, list] = /^(\d+) ([^:\s]+)(?:: (only|not) (.+))?$/.exec(row) ?? [];
    if (name === undefined) faults.push(`cmake/floors.txt: cannot read "${row}"`);
    else rooms.push({ name, floor: Number(floor), [kind ?? 'free']: list?.split(/\s+/) });
  }
  return rooms.sort((left, right) => right.name.length - left.name.length);
}

// As includes write it: below the folder that the compiler searches.
const placeOf = (file) => file.replace(/^(Sources|Tools)\//, '');
const lies = (place, inside) => place === inside || place.startsWith(`${inside}/`);

function includesOf(file) {
  return [...readFileSync(file, 'utf8').matchAll(/^\s*#\s*include\s*["<]([^">]+)[">]/gm)].map((match) => match[1]);
}

const rooms = readRooms('cmake/floors.txt');
const roomOf = (place) => rooms.find((room) => lies(place, room.name));
// The first file that makes each arrow between rooms.
const arrows = new Map(rooms.map((room) => [room, new Map()]));

function checkInclude(file, room, included) {
  if (room.not?.some((forbidden) => lies(included, forbidden)))
    faults.push(`${file}: includes ${included}, which ${room.name} may not use`);
  const other = roomOf(included);
  if (!other || other === room) return;
  if (other.floor > room.floor) faults.push(`${file}: includes ${included}, which is a floor above`);
  if (room.only && !room.only.some((allowed) => lies(included, allowed)))
    faults.push(`${file}: includes ${included}, but ${room.name} may use only ${room.only.join(', ')}`);
  if (!arrows.get(room).has(other)) arrows.get(room).set(other, file);
}

// Follows the arrows down from a room; an arrow to a room on the way closes a circle.
function findCircle(room, way, done) {
  if (done.has(room)) return false;
  for (const [other, file] of arrows.get(room)) {
    const at = [...way, room].indexOf(other);
    if (at >= 0) {
      const circle = [...way, room].slice(at).concat(other).map(({ name }) => name);
      faults.push(`${file}: closes a circle of rooms: ${circle.join(' -> ')}`);
      return true;
    }
    if (findCircle(other, [...way, room], done)) return true;
  }
  done.add(room);
  return false;
}

const files = readFileSync(0, 'utf8').split('\n').filter((file) => file && existsSync(file));
if (files.length === 0) faults.push('check-floors: no sources were named');
for (const file of files) {
  const room = roomOf(placeOf(file));
  if (!room) faults.push(`${file}: cmake/floors.txt names no room for it`);
  else for (const included of includesOf(file)) checkInclude(file, room, included);
}
for (const room of rooms) {
  if (!files.some((file) => roomOf(placeOf(file)) === room))
    faults.push(`cmake/floors.txt: no source lies in the room ${room.name}`);
}
const done = new Set();
rooms.some((room) => findCircle(room, [], done));

if (faults.length > 0) {
  console.error(faults.join('\n'));
  process.exit(1);
}
console.log(`The floors hold: ${files.length} sources in ${rooms.length} rooms, no include goes up, no circle.`);
