#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/AppServerRun/Framing/AppServerRPCError.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Ormel.h"
#include "OrmelSDK/OrmelControlSession.h"
#include "Support/RunTranscript.h"
#include "Support/SimulatorScenario.h"

namespace ormel::testing {

/// The outcome of a call as JSON: its record, its list of records, or null when there is nothing to return.
template <typename Record>
JSONValue outcomeOf(Task<Record> call) {
  return encode(call.get());
}

template <typename Record>
JSONValue outcomeOf(Task<std::vector<Record>> call) {
  std::vector<JSONValue> records;
  for (const Record& record : call.get()) records.push_back(encode(record));
  return JSONValue::array(records);
}

inline JSONValue outcomeOf(Task<void> call) {
  call.get();
  return {};
}

/// Makes a call on an object. A lambda without captures that returns the call becomes one.
template <typename Object>
class CallMaker {
 public:
  CallMaker(std::nullptr_t = nullptr) {}

  template <typename Function>
  CallMaker(Function) : make_([](const Object& object) { return outcomeOf(Function()(object)); }) {}

  explicit operator bool() const { return make_ != nullptr; }
  JSONValue operator()(const Object& object) const { return make_(object); }

 private:
  JSONValue (*make_)(const Object&) = nullptr;
};

/// A management call: the line that it sends, the result that the server answers with, and who makes it.
struct CallRow {
  /// As the request of a client that has only shaken hands before, which has the id 2.
  const char* line;
  const char* result;
  /// Either may be missing, as an object need not have the operation.
  CallMaker<Ormel> ofOrmel;
  CallMaker<OrmelControlSession> ofSession;
  /// The outcome, as `outcomeOf` tells it.
  const char* outcome;
};

/// Rows whose outcome is the result as it stands, unless another one is given.

template <typename Function>
CallRow onOrmel(const char* line, const char* result, const char* outcome, Function make) {
  return {line, result, make, nullptr, outcome};
}

template <typename Function>
CallRow onOrmel(const char* line, const char* result, Function make) {
  return onOrmel(line, result, result, make);
}

template <typename Function>
CallRow onSession(const char* line, const char* result, const char* outcome, Function make) {
  return {line, result, nullptr, make, outcome};
}

template <typename Function>
CallRow onSession(const char* line, const char* result, Function make) {
  return onSession(line, result, result, make);
}

/// `make` is generic: both objects have the operation, in the same form.
template <typename Function>
CallRow onBoth(const char* line, const char* result, const char* outcome, Function make) {
  return {line, result, make, make, outcome};
}

template <typename Function>
CallRow onBoth(const char* line, const char* result, Function make) {
  return onBoth(line, result, result, make);
}

/// The front door of the simulator that plays the scenario.
inline Ormel ormelPlaying(const SimulatorScenario& scenario) {
  OrmelOptions options;
  options.ormelPathOverride = SimulatorScenario::executable();
  options.env = scenario.wholeEnvironment();
  return Ormel(options);
}

/// The part of a scenario that a client's own messages need.
inline constexpr const char* handshake = "always answer initialize with {}\nalways ignore initialized\n";

inline SimulatorScenario answering(const std::string& method, const std::string& result) {
  return SimulatorScenario(handshake + ("always answer " + method + " with " + result + "\n"));
}

/// Makes the call on a session of its own.
inline JSONValue makeInSession(const CallMaker<OrmelControlSession>& make, const Ormel& ormel) {
  const auto session = ormel.makeControlSession();
  JSONValue outcome = make(session);
  session.close().get();
  return outcome;
}

inline std::string methodOf(const CallRow& row) {
  const JSONValue request = JSONValue::decode(row.line);
  return std::string(*request.find("method")->stringValue());
}

/// Makes the row's call on a simulator of its own, and holds the line that this receives, and what comes of its answer,
/// against the row's.
template <typename Make>
void expectCall(const CallRow& row, Make make) {
  const SimulatorScenario scenario = answering(methodOf(row), row.result);
  JSONValue outcome;
  const std::string failure = failureOf([&] { outcome = make(ormelPlaying(scenario)); });
  EXPECT_EQ(failure, "no failure");
  const auto lines = scenario.receivedLines();
  EXPECT_EQ(lines.empty() ? "" : lines.back(), row.line);
  EXPECT_EQ(lines.size(), 3U);
  if (failure == "no failure") {
    EXPECT_EQ(outcome, JSONValue::decode(row.outcome));
  }
  for (const std::string& text : scenario.failures()) ADD_FAILURE() << text;
}

/// Makes each call, with real processes and pipes.
inline void expectCalls(std::span<const CallRow> rows) {
  for (const CallRow& row : rows) {
    if (row.ofOrmel) {
      SCOPED_TRACE(std::string("of Ormel: ") + row.line);
      expectCall(row, row.ofOrmel);
    }
    if (row.ofSession) {
      SCOPED_TRACE(std::string("of the session: ") + row.line);
      expectCall(row, [&row](const Ormel& ormel) { return makeInSession(row.ofSession, ormel); });
    }
  }
}

/// The name of the record that the result of a method is read as.
using ReplyRecords = std::map<std::string, std::string, std::less<>>;

/// Makes the call on a server that answers with an array, which is no record, and on one that refuses it.
template <typename Make>
void expectFailures(const std::string& method, const std::string& mismatch, Make make) {
  const SimulatorScenario odd = answering(method, "[]");
  EXPECT_EQ(failureOf([&] { make(ormelPlaying(odd)); }), "stream error: " + mismatch);
  EXPECT_EQ(odd.processesStarted(), 1U);

  const SimulatorScenario refusing = answering(method, R"(error {"code":-32099,"message":"not today","data":{"a":1}})");
  try {
    make(ormelPlaying(refusing));
    ADD_FAILURE() << "no failure when refused";
  } catch (const AppServerRPCError& error) {
    EXPECT_EQ(error, AppServerRPCError::fromJSONValue(
                         JSONValue::decode(R"({"code":-32099,"message":"not today","data":{"a":1}})")));
  } catch (...) {
    ADD_FAILURE() << inWords(std::current_exception());
  }
  EXPECT_EQ(refusing.processesStarted(), 1U);
}

/// Each call needs an object of its own record as the result, and hands on the server's error. Every method has an
/// entry in `records`, and every entry a row.
inline void expectFailures(std::span<const CallRow> rows, const ReplyRecords& records) {
  auto left = records;
  for (const CallRow& row : rows) {
    SCOPED_TRACE(row.line);
    const std::string method = methodOf(row);
    const auto record = records.find(method);
    ASSERT_NE(record, records.end());
    left.erase(method);
    const std::string mismatch = "App-server decode error at $: type mismatch for " + record->second + ": Expected " +
                                 record->second + " but found an array.";
    if (row.ofOrmel) {
      expectFailures(method, "App-server RPC " + method + " failed: " + mismatch, row.ofOrmel);
    }
    if (row.ofSession) {
      expectFailures(method, mismatch, [&row](const Ormel& ormel) { makeInSession(row.ofSession, ormel); });
    }
  }
  for (const auto& [method, record] : left) ADD_FAILURE() << "No row calls " << method;
}

}  // namespace ormel::testing
