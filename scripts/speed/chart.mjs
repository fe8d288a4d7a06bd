// The picture of the figures: a plain SVG, readable on a light and on a dark page.

import { decadeText, limitText, peerFigureText, ratioText } from "./words.mjs";
import { peerTitle } from "./rows.mjs";

const width = 880;
const labelWidth = 300;
const plotWidth = 400;
const plotLeft = labelWidth + 10;
const shareShown = 2.5;

const style = `
  .page { fill: #ffffff } .text { fill: #1f2328 } .faint { fill: #59636e } .grid { stroke: #d1d9e0 }
  .ours { fill: #0a5bd3 } .busy { fill: #8ab4f0 } .limit { fill: #59636e } .peer { fill: #b84a00 }
  .aim { stroke: #1f2328; stroke-dasharray: 4 3 }
  text { font: 13px system-ui, "Segoe UI", "Helvetica Neue", Arial, sans-serif }
  .head { font-weight: 600; font-size: 15px } .small { font-size: 12px }
  @media (prefers-color-scheme: dark) {
    .page { fill: #0d1117 } .text { fill: #f0f6fc } .faint { fill: #9198a1 } .grid { stroke: #3d444d }
    .ours { fill: #58a6ff } .busy { fill: #2f5f9e } .limit { fill: #9198a1 } .peer { fill: #f0883e }
    .aim { stroke: #f0f6fc }
  }`;

const escaped = (text) => text.replace(/&/g, "&amp;").replace(/</g, "&lt;").replace(/>/g, "&gt;");
const plain = (text) => escaped(text.replace(/`/g, ""));
const place = (number) => Number(number.toFixed(1));

function text(x, y, words, { style: name = "text", anchor = "start" } = {}) {
  return `<text x="${place(x)}" y="${place(y)}" class="${name}" text-anchor="${anchor}">${plain(words)}</text>`;
}

const line = (x1, y1, x2, y2, name) =>
  `<line x1="${place(x1)}" y1="${place(y1)}" x2="${place(x2)}" y2="${place(y2)}" class="${name}"/>`;

const bar = (x, y, length, height, name) =>
  `<rect x="${place(x)}" y="${place(y)}" width="${place(Math.max(length, 1))}" height="${height}" rx="2" ` +
  `class="${name}"/>`;

const dot = (x, y, name) => `<circle cx="${place(x)}" cy="${place(y)}" r="5" class="${name}"/>`;

function legend(y, entries) {
  let x = plotLeft;
  return entries.map(([name, words]) => {
    const part = bar(x, y - 9, 10, 10, name) + text(x + 15, y, words, { style: "faint small" });
    x += 30 + words.length * 6.4;
    return part;
  });
}

/** How much of what the aim allows is used: 1 is the aim, less is better, whichever way the ratio counts. */
const shareOf = (ratio, { atMost, atLeast }) => (atMost === undefined ? atLeast / ratio : ratio / atMost);

function aimPanel(rows, top) {
  const scale = plotWidth / shareShown;
  const rowHeight = 34;
  const first = top + 62;
  const bottom = first + rows.length * rowHeight;
  const parts = [
    text(16, top + 20, "Each ratio as a share of what its aim allows (less is better)", { style: "text head" }),
    ...legend(top + 40, [["ours", "ours"], ["busy", "ours, beside a busy process on each core"]]),
  ];
  for (const share of [0, 0.5, 1.5, 2, 2.5]) {
    parts.push(line(plotLeft + share * scale, first - 8, plotLeft + share * scale, bottom, "grid"));
  }
  rows.forEach((row, index) => {
    const y = first + index * rowHeight;
    parts.push(text(labelWidth, y + 14, row.what, { anchor: "end" }));
    if (row.hidden !== undefined) {
      parts.push(text(plotLeft + 4, y + 14, "not measured on this machine", { style: "faint" }));
      return;
    }
    const length = (ratio) => Math.min(shareOf(ratio, row.limit), shareShown) * scale;
    parts.push(bar(plotLeft, y + 2, length(row.ratio), 11, "ours"));
    if (row.busy !== undefined) parts.push(bar(plotLeft, y + 15, length(row.busy), 6, "busy"));
    parts.push(text(plotLeft + plotWidth + 12, y + 14, `${ratioText(row.ratio)}, ${limitText(row.limit)}`));
  });
  const aim = plotLeft + scale;
  parts.push(line(aim, first - 8, aim, bottom, "aim"),
    text(aim, bottom + 16, "aim", { anchor: "middle", style: "text small" }),
    text(plotLeft, bottom + 16, "0", { anchor: "middle", style: "faint small" }),
    text(plotLeft + 2 * scale, bottom + 16, "twice", { anchor: "middle", style: "faint small" }));
  return { parts, bottom: bottom + 24 };
}

/** Each kind of figure has a logarithmic scale of its own, of whole decades. */
function peerPanel(title, rows, top, { better }) {
  const all = rows.flatMap((row) => [row.ours, row.limitFigure, row.peer]);
  const from = Math.floor(Math.log10(Math.min(...all)));
  const to = Math.max(Math.ceil(Math.log10(Math.max(...all))), from + 1);
  const at = (figure) => plotLeft + ((Math.log10(figure) - from) / (to - from)) * plotWidth;
  const seriesHeight = 18;
  const rowHeight = 3 * seriesHeight + 12;
  const first = top + 52;
  const bottom = first + rows.length * rowHeight;
  const parts = [
    text(16, top + 20, `${title} (logarithmic, ${better} is better)`, { style: "text head" }),
    ...legend(top + 40, [["ours", "ours"], ["limit", "the limit"], ["peer", peerTitle]]),
  ];
  for (let decade = from; decade <= to; ++decade) {
    parts.push(line(at(10 ** decade), first - 4, at(10 ** decade), bottom, "grid"),
      text(at(10 ** decade), bottom + 16, decadeText(10 ** decade, rows[0].isRate),
        { anchor: "middle", style: "faint small" }));
  }
  rows.forEach((row, index) => {
    const y = first + index * rowHeight + 4;
    parts.push(text(labelWidth, y + 18, row.what, { anchor: "end" }),
      text(labelWidth, y + 35, `limit: ${row.limit}`, { anchor: "end", style: "faint small" }));
    const series = [["ours", row.ours], ["limit", row.limitFigure], ["peer", row.peer]];
    series.forEach(([name, figure], place) => {
      const middle = y + 10 + place * seriesHeight;
      parts.push(line(plotLeft, middle, at(figure), middle, "grid"), dot(at(figure), middle, name),
        text(at(figure) + 10, middle + 4, peerFigureText(figure, row.isRate), { style: "text small" }));
    });
  });
  return { parts, bottom: bottom + 24 };
}

export function chartText({ rows, peers, machine }) {
  const charted = rows.filter((row) => row.charted);
  const aims = aimPanel(charted, 10);
  const rateRows = peers.filter((row) => row.isRate);
  const timeRows = peers.filter((row) => !row.isRate);
  const rates = peerPanel("Notifications a second", rateRows, aims.bottom + 14, { better: "more" });
  const times = peerPanel("Round trips", timeRows, rates.bottom + 14, { better: "less" });
  const height = times.bottom + 34;
  const said = `${machine.date}, ${machine.cores} cores, yardstick ${machine.yardstick} ns`;
  return [
    `<svg xmlns="http://www.w3.org/2000/svg" width="${width}" height="${height}" ` +
      `viewBox="0 0 ${width} ${height}" role="img">`,
    "<title>The speed of a message: ours, the limit and a peer</title>",
    `<desc>${escaped(said)}. The figures are in the tables beside this picture.</desc>`,
    `<style>${style}\n</style>`,
    `<rect width="${width}" height="${height}" class="page"/>`,
    ...aims.parts, ...rates.parts, ...times.parts,
    text(16, height - 12, said, { style: "faint small" }),
    "</svg>",
    "",
  ].join("\n");
}
