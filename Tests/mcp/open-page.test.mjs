// The example host's page reader, on a client's direct connection.

import assert from "node:assert/strict";
import test from "node:test";

import { connect, directTransport, textOf } from "./support/clients.mjs";
import { servePages } from "./support/pages.mjs";
import { cleanup, patience } from "./support/programs.mjs";

async function open(t, page) {
  const defer = cleanup(t);
  const server = await servePages(defer, { "/": page });
  const client = await connect(defer, directTransport());
  return client.callTool({ name: "open_page", arguments: { url: server.url("/") } });
}

const readings = {
  "scripts, styles and hidden parts are left out": [
    "<title> A \n b </title><style>p{}</style><p>seen<script>no()</script><span hidden>no</span><!-- no --> too</p>",
    "A b",
    "seen too",
  ],
  "each block has a line and inline elements have none": [
    "<h1>One</h1><p>two <b>bold</b> <a href=x>link</a><br>three</p><ul><li>four<li>five</ul>",
    "",
    "One\ntwo bold link\nthree\nfour\nfive",
  ],
  "entities are resolved": ["<title>&lt;x&gt;</title>&amp; &copy; &#8364;", "<x>", "& © €"],
  "UTF-8 is read without being declared": ["<title>Grüße</title><p>\u{1F33C}", "Grüße", "\u{1F33C}"],
  "a declared encoding is honoured": [
    Buffer.from('<meta charset="iso-8859-1"><title>Gr\u00fc\u00dfe</title>ok', "latin1"),
    "Grüße",
    "ok",
  ],
  "broken markup is read as far as it goes": ["<p>one<div>two</b></i></div>three<p", "", "one\ntwo\nthree"],
  "senseless nesting does no harm": ["<p>shallow</p>" + "<div>".repeat(20_000), "", "shallow"],
};

for (const [name, [body, title, text]] of Object.entries(readings)) {
  test(name, patience, async (t) => {
    const { structuredContent, isError } = await open(t, { body });
    assert.equal(isError, undefined);
    assert.equal(structuredContent.title, title);
    assert.equal(structuredContent.text, text);
  });
}

test("plain text is given as it is", patience, async (t) => {
  const result = await open(t, { type: "text/plain; charset=utf-8", body: "a\n  <b>" });
  assert.equal(result.structuredContent.text, "a\n  <b>");
});

const refusals = {
  "other content is refused": [{ type: "image/png", body: "" }, 'The address serves no page, but "image/png".'],
  "a failing server is told": [{ status: 500, body: "" }, "The server answered with status 500."],
  "redirects are not followed": [
    { status: 302, headers: { location: "/" }, body: "" },
    "The server answered with status 302.",
  ],
  "a page beyond 4 MiB is refused": [{ body: "x".repeat(4 * 1024 * 1024 + 1) }, "The page is larger than 4 MiB."],
};

for (const [name, [page, reason]] of Object.entries(refusals)) {
  test(name, patience, async (t) => {
    const result = await open(t, page);
    assert.equal(result.isError, true);
    assert.equal(textOf(result), reason);
  });
}

test("only addresses of this machine are opened", patience, async (t) => {
  const client = await connect(cleanup(t), directTransport());
  const urls = ["https://127.0.0.1/", "file:///etc/passwd", "http://192.0.2.1/", "http://127.0.0.1.invalid/",
    "http://localhost.invalid/", "http://127.0.0.1@192.0.2.1/", "http://[::2]/", "127.0.0.1", ""];
  for (const url of urls) {
    const result = await client.callTool({ name: "open_page", arguments: { url } });
    assert.equal(textOf(result), "Only http:// addresses of this machine can be opened.", url);
  }
});
