// A bridge's end of the socket, byte by byte.

import { once } from "node:events";
import { connect } from "node:net";

export function frame(body) {
  const bytes = Buffer.from(body);
  const header = Buffer.alloc(4);
  header.writeUInt32LE(bytes.length);
  return Buffer.concat([header, bytes]);
}

export function envelope(host, id, message, changes = {}) {
  const params = { token: host.token, workspacePath: "/work/garden", message, ...changes };
  return JSON.stringify({ jsonrpc: "2.0", id, method: "tessellaMCP", params });
}

export class FrameSocket {
  static async connect(defer, host) {
    const socket = connect(host.socket);
    await once(socket, "connect");
    defer(() => socket.destroy());
    return new FrameSocket(socket);
  }

  constructor(socket) {
    this.socket = socket;
    socket.on("error", () => {});
    this.chunks = socket[Symbol.asyncIterator]();
    this.buffered = Buffer.alloc(0);
  }

  write(bytes) {
    this.socket.write(bytes);
  }

  /** The next reply, or undefined once the host has closed the connection. */
  async reply() {
    if (!(await this.#fill(4))) return undefined;
    const length = this.buffered.readUInt32LE();
    if (!(await this.#fill(4 + length))) return undefined;
    const body = this.buffered.subarray(4, 4 + length);
    this.buffered = this.buffered.subarray(4 + length);
    return JSON.parse(body.toString("utf8"));
  }

  async #fill(size) {
    const parts = [this.buffered];
    let available = this.buffered.length;
    while (available < size) {
      const { value, done } = await this.chunks.next().catch(() => ({ done: true }));
      if (done) return false;
      parts.push(value);
      available += value.length;
    }
    this.buffered = Buffer.concat(parts);
    return true;
  }
}
