// Writes the table and the chart of what one run has measured.
// Usage: node publish.mjs FOLDER PAGE CHART
//   FOLDER  the figures of scripts/bench
//   PAGE    the part between its markers is replaced; "-" for FOLDER/table.md, which is written whole
//   CHART   the SVG

import { mkdirSync, readFileSync, writeFileSync } from "node:fs";
import { dirname, join, relative } from "node:path";
import process from "node:process";
import { chartText } from "./chart.mjs";
import { NoTable, readFigures } from "./figures.mjs";
import { tableText, withTable } from "./table.mjs";

const [folder, page, chart] = process.argv.slice(2);
if (!chart) {
  console.error("usage: node publish.mjs FOLDER PAGE CHART");
  process.exit(1);
}
const target = page === "-" ? join(folder, "table.md") : page;
try {
  const figures = readFigures(folder);
  const table = tableText(figures, relative(dirname(target), chart));
  const whole = page === "-" ? `${table}\n` : withTable(readFileSync(page, "utf8"), table);
  mkdirSync(dirname(chart), { recursive: true });
  writeFileSync(chart, chartText(figures));
  writeFileSync(target, whole);
} catch (error) {
  if (!(error instanceof NoTable)) throw error;
  console.error(`No table: ${error.message}`);
  process.exit(1);
}
console.log(`Wrote ${target} and ${chart}.`);
