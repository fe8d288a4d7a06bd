// How the demo looks.

const coloured = process.stdout.isTTY && !process.env.NO_COLOR;
const paint = (code) => (text) => (coloured ? `\u001b[${code}m${text}\u001b[0m` : text);
const bold = paint("1");
const dim = paint("2");
const ways = { in: paint("36"), out: paint("32") };

const longestText = 160; // characters

function shorten(text) {
  const characters = [...text];
  return characters.length <= longestText ? text : `${characters.slice(0, longestText - 1).join("")}…`;
}

export function headline(text) {
  console.log(`\n${bold(text)}`);
}

export function remark(text) {
  console.log(`  ${dim(text)}`);
}

/** One message on its way: `in` towards the host, `out` back to the client. */
export function travel(way, from, to, text) {
  console.log(`  ${ways[way](`${from} → ${to}`.padEnd(16))}  ${shorten(text)}`);
}
