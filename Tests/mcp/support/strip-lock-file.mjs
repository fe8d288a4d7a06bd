// npm copies each package's donation links into the lock file. Nothing reads them there, and the file shall hold no
// addresses.

import { readFileSync, writeFileSync } from "node:fs";

const path = new URL("../package-lock.json", import.meta.url);
const lock = JSON.parse(readFileSync(path, "utf8"));
for (const entry of Object.values(lock.packages)) delete entry.funding;
writeFileSync(path, `${JSON.stringify(lock, null, 2)}\n`);
