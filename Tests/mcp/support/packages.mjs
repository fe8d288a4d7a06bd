// Run ahead of each test file, so that missing packages are told in plain words and not as a failed import.

import { existsSync } from "node:fs";
import { fileURLToPath } from "node:url";

if (!existsSync(new URL("../node_modules/.package-lock.json", import.meta.url))) {
  console.error("Tests/mcp/node_modules is missing or not complete: run scripts/setup, or `npm ci` in Tests/mcp.");
  process.exit(1);
}

export const inspectorProgram = fileURLToPath(new URL("../node_modules/.bin/mcp-inspector", import.meta.url));
