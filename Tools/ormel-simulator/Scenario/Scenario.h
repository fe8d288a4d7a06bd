#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "OrmelSDK/JSON/JSONValue.h"
#include "ormel-simulator/Scenario/ScenarioError.h"

namespace ormel::simulator {

using std::chrono::milliseconds;

struct Statement;
using Block = std::vector<Statement>;

/// One of the three streams, by its descriptor.
enum class Stream { input = 0, output = 1, error = 2 };

/// The form that a received value must have; see Example matching in docs/simulator.md.
struct Example {
  JSONValue value;
  /// Whether objects may have no other members than those of the example.
  bool exact = false;
};

/// The client's expected next step.
struct Expectation {
  enum class Kind { request, notification, answer, errorAnswer, message, endOfInput };

  Kind kind = Kind::request;
  /// The method of a request or notification; "*" stands for any.
  std::string method;
  /// An example of the params, the result, the error or the whole message; without one, anything matches.
  std::optional<Example> example;
  bool withoutParams = false;
  /// For a request, the name that it gets; for an answer, the name of the server's request.
  std::string name;
};

struct Expect {
  Expectation expectation;
};

/// Expectations that may be met in any order.
struct ExpectInAnyOrder {
  Block body;
};

struct Answer {
  /// Name of the client's request; empty for the latest one that has no answer yet.
  std::string name;
  JSONValue payload;
  bool isError = false;
};

struct Notify {
  std::string method;
  std::optional<JSONValue> params;
};

struct Ask {
  std::string method;
  std::optional<JSONValue> params;
  std::optional<JSONValue> id;
  std::string name;
  std::optional<Expectation> expecting;
};

struct SendMessage {
  JSONValue message;
};

struct Piece {
  std::string text;
  std::size_t times = 1;
};

struct WriteRaw {
  Stream stream = Stream::output;
  /// Each is written on its own, the next one only when the client has taken the one before.
  std::vector<Piece> pieces;
};

struct Flood {
  Stream stream = Stream::error;
  std::size_t bytes = 0;
};

struct CloseStream {
  Stream stream = Stream::input;
};

struct IgnoreSignal {
  int signal = 0;
};

struct SetReading {
  bool reading = true;
};

struct Exit {
  int status = 0;
  /// 0 for an ordinary exit.
  int signal = 0;
};

struct Fork {
  Block body;
};

struct Wait {
  enum class Until { elapsed, inputClosed, killed, fileExists, signalArrived };

  Until until = Until::elapsed;
  milliseconds duration{0};
  /// Relative to the folder of the scenario.
  std::string file;
  int signal = 0;
};

struct Repeat {
  std::size_t times = 0;
  /// Variable that counts from 1; may be empty.
  std::string name;
  Block body;
};

struct InOneWrite {
  Block body;
};

struct InRun {
  std::size_t run = 1;
  bool orLater = false;
  Block body;
};

/// A message that is dealt with wherever it comes.
struct Always {
  Expectation expectation;
  /// Absent when the message is ignored.
  std::optional<Answer> answer;
};

struct SetPatience {
  milliseconds duration{0};
};

struct SetTimeLimit {
  milliseconds duration{0};
};

using Action =
    std::variant<Expect, ExpectInAnyOrder, Answer, Notify, Ask, SendMessage, WriteRaw, Flood, CloseStream, IgnoreSignal,
                 SetReading, Exit, Fork, Wait, Repeat, InOneWrite, InRun, Always, SetPatience, SetTimeLimit>;

struct Statement {
  SourcePlace place;
  /// As written, on one line, without comments.
  std::string text;
  Action action;
};

struct Scenario {
  std::string fileName;
  Block statements;
};

}  // namespace ormel::simulator
