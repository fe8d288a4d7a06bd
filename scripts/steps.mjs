// For scripts that take long: tells on standard error which step of how many begins and how long the script has run.
// The lines are those of scripts/steps.sh.

import process from "node:process";

export function elapsedText(milliseconds) {
  const seconds = Math.floor(milliseconds / 1000);
  const two = (number) => String(number).padStart(2, "0");
  const hours = Math.floor(seconds / 3600);
  const minutes = Math.floor(seconds / 60) % 60;
  return hours > 0 ? `${hours}:${two(minutes)}:${two(seconds % 60)}` : `${minutes}:${two(seconds % 60)}`;
}

export class Steps {
  #name;
  #count;
  #begun = 0;
  #words = "";
  #start = Date.now();
  #told = -Infinity;
  #interval;

  /** With an interval in milliseconds, steps that begin sooner after one that was told are not told themselves. */
  constructor(name, count, interval = 0) {
    this.#name = name;
    this.#count = count;
    this.#interval = interval;
  }

  begin(words) {
    ++this.#begun;
    this.#words = words;
    const now = Date.now();
    if (now - this.#told < this.#interval && this.#begun < this.#count) return;
    this.#told = now;
    this.#tell(this.#place(), words);
  }

  done() {
    this.#tell(`done, ${this.#elapsed()}`);
  }

  failed(status) {
    this.#tell(this.#place(), `FAILED with status ${status}: ${this.#words}`);
  }

  #place() {
    return `${this.#begun} of ${this.#count}, ${this.#elapsed()}`;
  }

  #elapsed() {
    return elapsedText(Date.now() - this.#start);
  }

  #tell(place, words) {
    process.stderr.write(`${this.#name}: [${place}]${words ? ` ${words}` : ""}\n`);
  }
}
