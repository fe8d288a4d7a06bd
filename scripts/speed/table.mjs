// The part of the README that tells the figures of the day.

import { NoTable } from "./figures.mjs";
import { figureText, limitText, peerFigureText, ratioText } from "./words.mjs";
import { peerTitle } from "./rows.mjs";

const begin = "<!-- speed: written by scripts/bench -->";
const end = "<!-- speed: end -->";

const unitsThatAreTold = ["ns", "us", "a second", "calls"];

function withFigure(text, figure, unit) {
  return unitsThatAreTold.includes(unit) ? `${text}: ${figureText(figure, unit)}` : text;
}

function rowText(row) {
  if (row.hidden !== undefined) return `| ${row.what} | ${row.against} | | not measured: ${row.hidden} | |`;
  const ratio = row.isKept ? ratioText(row.ratio) : `**${ratioText(row.ratio)}**`;
  const busy = row.busy === undefined ? "" : ratioText(row.busy);
  const against = row.hasKnownYardstick ? row.against : withFigure(row.against, row.yardstick, row.unit);
  return `| ${withFigure(row.what, row.measured, row.unit)} | ${against} ` +
    `| ${limitText(row.limit)} | ${ratio} | ${busy} |`;
}

function peerText({ work, what, ours, limit, limitFigure, peer, isRate }) {
  const times = isRate ? ours / peer : peer / ours;
  const text = (figure) => peerFigureText(figure, isRate);
  return `| ${work}, ${what} | ${text(ours)} | ${text(limitFigure)} (${limit}) | ${text(peer)} ` +
    `| ${ratioText(times)} times |`;
}

/** `chart` is the way from the page to the picture. */
export function tableText({ rows, peers, peerVersion, machine }, chart) {
  return [
    `Figures of ${machine.date}, on a machine with ${machine.cores} cores where the line of \`scripts/yardstick\` ` +
      `takes ${machine.yardstick} ns:`,
    "ratios of one run, medians of five rounds of both sides by turns, or the fastest repetitions where no figure is",
    "given. Less is better where the aim is *at most*, more where it is *at least*; bold is a ratio that misses it.",
    "The last column is the same work beside a busy process on each core.",
    "",
    `![Ratios as shares of what their aims allow; notifications and round trips: ours, the limit, a peer](${chart})`,
    "",
    "| what | against | aim | ratio | beside busy cores |",
    "|---|---|---|---|---|",
    ...rows.map(rowText),
    "",
    `A peer in the same run: the official ${peerTitle} ${peerVersion}, over stdio on the same flooding server.`,
    "",
    "| work | ours | limit | peer | ours against the peer |",
    "|---|---|---|---|---|",
    ...peers.map(peerText),
  ].join("\n");
}

/** The page with its part between the markers replaced. */
export function withTable(page, text) {
  const from = page.indexOf(begin);
  const to = page.indexOf(end);
  if (from < 0 || to < from) throw new NoTable(`the page has no part between ${begin} and ${end}`);
  return `${page.slice(0, from + begin.length)}\n${text}\n${page.slice(to)}`;
}
