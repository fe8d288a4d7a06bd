// The rows of the README's table: what is measured against what, and where the figures of a row are found.

import { sample } from "./library.mjs";

const third = 1 / 3;

/** Times of Google Benchmark's; the limits are those of scripts/ratios.mjs. */
const library = (what, against, measured, yardstick, atMost) =>
  ({ what, against, library: { measured, yardstick }, atMost });

/** A row of the benchmark of conversations has its limit in the figures; the unit is that of the benchmark. */
const conversation = (name, what, against, unit, more = {}) => ({ what, against, conversation: name, unit, ...more });

const bridge = (name, what, against, member, limit = {}) => ({ what, against, bridge: { name, member }, ...limit });

export const rows = [
  conversation("roundTrip", "a request and its answer, awaited", "a bare exchange over epoll", "ns", { charted: true }),
  conversation("blockingRoundTrip", "the same, blocking `get()`", "the same", "ns", { charted: true }),
  conversation("latency", "one event in an idle system", "a wake-up by the bare pipe", "ns", { charted: true }),
  conversation("eventsOfBlocks", "events, the server writes blocks", "splitting and decoding alone", "a second",
    { charted: true }),
  conversation("eventsOfLines", "events, one line a write", "reading the bare pipe", "a second", { charted: true }),
  conversation("conversationsAtOnce", "turns of 400 conversations at once", "one at a time", "a second",
    { charted: true }),
  conversation("systemCalls", "system calls of a round trip, awaited", "the bare exchange's", "calls",
    { charted: true }),
  conversation("idleConversations", "processor time of 1,000 idle conversations", "a millisecond a minute", "us",
    { charted: true, hasKnownYardstick: true }),
  conversation("commandOutput", "a turn with 100 MB of a command's output", "one with 25 MB", "us"),
  conversation("peakMemoryOutput", "peak memory of a turn with 100 MB of output", "the text", "bytes"),
  conversation("oneShotCall", "a one-shot management call", "start, handshake and exchange by hand", "ns"),
  conversation("sessionCall", "a call on a session", "a bare exchange", "ns"),

  library("reading a 253-byte line into a `JSONValue`", "simdjson's parse and walk",
    sample("decodePaddedToJSONValue", 0), sample("decodeBySimdjsonParseAndWalk", 0), 1.3),
  library("reading 1 MB of nested objects", "the same", sample("decodePaddedToJSONValue", 1),
    sample("decodeBySimdjsonParseAndWalk", 1), 1.3),
  library("reading a 1 MB text", "the same", sample("decodePaddedToJSONValue", 2),
    sample("decodeBySimdjsonParseAndWalk", 2), 1.3),
  library("writing a 253-byte line", "RapidJSON's writer", sample("encodeJSONValue", 0),
    sample("encodeByRapidJSON", 0), 1),
  library("writing 1 MB of nested objects", "the same", sample("encodeJSONValue", 1),
    sample("encodeByRapidJSON", 1), 1),
  library("writing a 1 MB text", "the same", sample("encodeJSONValue", 2), sample("encodeByRapidJSON", 2), 1),
  library("a hop inside a strand", "Asio's", "strandHop", "strandHopOfAsio", third),
  library("a one-shot wait", "Asio's channel", "oneShotWait", "oneShotWaitOfAsio", third),
  library("an event channel in turns", "the same", "channelTurns", "channelTurnsOfAsio", third),
  library("a timer armed and cancelled", "Asio's", "timerArmAndCancel", "timerArmAndCancelOfAsio", third),
  library("cutting lines", "a bare `memchr` split", "splitIntoTexts<AppServerJSONLineBuffer>",
    "splitIntoTexts<BareSplit>", 2),
  library("cutting a 100 MB line that comes in 4 KB chunks", "the same",
    "assembleOneLine<AppServerJSONLineBuffer>/megabytes:100", "assembleOneLine<BareSplit>/megabytes:100", 2),
  library("starting and reaping a child", "a bare `posix_spawn`", "startAndReapChild", "startAndReapBare", 1.2),

  bridge("roundTrip300B", "bridge: a round trip of 300 bytes", "a relay that only copies", "timeRatio"),
  bridge("roundTrip4MiBPage", "bridge: rate of 4 MiB of page content", "the same", "rateRatio", { atLeast: 0.4 }),
  bridge("roundTrip4MiBText", "bridge: rate of 4 MiB in one text", "the same", "rateRatio"),
  bridge("peakMemoryPage", "bridge: peak memory, a 64 MiB reply of page content", "the reply", "replyRatio"),
  bridge("peakMemorySingleText", "bridge: peak memory, a 64 MiB reply in one text", "the reply", "replyRatio"),
];

/** What the peer does as well; the limit is the yardstick of ours. */
export const peerRows = [
  { name: "eventsOfBlocks", work: "notifications a second", what: "the server writes blocks",
    limit: "splitting and decoding alone", isRate: true },
  { name: "eventsOfLines", work: "notifications a second", what: "one line a write", limit: "the bare pipe",
    isRate: true },
  { name: "roundTripTimeP50", work: "a round trip", what: "half take less (p50)", limit: "a bare exchange",
    isRate: false },
  { name: "roundTripTimeP99", work: "a round trip", what: "99 of 100 take less (p99)", limit: "a bare exchange",
    isRate: false },
];

export const peerTitle = "MCP client for TypeScript";
