// How figures are written, in the table as in the chart.

const digits = (figure) => (figure >= 100 ? figure.toFixed(0) : figure >= 10 ? figure.toFixed(1) : figure.toFixed(2));

export const ratioText = (ratio) => (ratio >= 10 ? ratio.toFixed(0) : ratio.toFixed(2));

function timeText(microseconds) {
  return microseconds >= 1e3 ? `${digits(microseconds / 1e3)} ms` : `${digits(microseconds)} us`;
}

/** A figure of a row in the unit in which it was measured. */
export function figureText(figure, unit) {
  if (unit === "ns") return timeText(figure / 1e3);
  if (unit === "us") return timeText(figure);
  return unit === "a second" ? `${rateText(figure)} a second` : digits(figure);
}

export function rateText(rate) {
  if (rate >= 1e6) return `${digits(rate / 1e6)} million`;
  return (rate >= 1e4 ? Math.round(rate / 1e3) * 1e3 : Math.round(rate)).toLocaleString("en");
}

export const limitText = ({ atMost, atLeast }) => atMost !== undefined ? `at most ${ratioText(atMost)}`
  : atLeast !== undefined ? `at least ${ratioText(atLeast)}` : "";

/** A power of ten on a scale. */
export const decadeText = (figure, isRate) => peerFigureText(figure, isRate).replace(/(\d)\.0+ /, "$1 ");

/** A figure of a row with a peer, in events a second or in a time. */
export const peerFigureText = (figure, isRate) => (isRate ? rateText(figure) : figureText(figure, "ns"));
