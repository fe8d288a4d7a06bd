// Stands between the bridge and its host, hands everything on, and shows each frame that passes.

import { once } from "node:events";
import { connect, createServer } from "node:net";

const headerSize = 4;

/** Cuts a stream into the JSON bodies of its frames. */
function frameReader(onFrame) {
  let pending = Buffer.alloc(0);
  return (chunk) => {
    pending = Buffer.concat([pending, chunk]);
    while (pending.length >= headerSize) {
      const end = headerSize + pending.readUInt32LE();
      if (pending.length < end) return;
      onFrame(JSON.parse(pending.subarray(headerSize, end)), end);
      pending = pending.subarray(end);
    }
  };
}

function forward(from, to, onFrame) {
  const read = frameReader(onFrame);
  from.on("data", (chunk) => {
    read(chunk);
    to.write(chunk);
  });
  from.on("end", () => to.end());
  from.on("error", () => to.destroy());
}

/** Listens at `path` for a bridge and connects it with the host at `hostPath`. */
export async function tapFrames(path, hostPath, { onRequest, onReply }) {
  const server = createServer({ allowHalfOpen: true }, (bridge) => {
    const host = connect({ path: hostPath, allowHalfOpen: true });
    forward(bridge, host, onRequest);
    forward(host, bridge, onReply);
  });
  server.listen(path);
  await once(server, "listening");
  return server;
}
