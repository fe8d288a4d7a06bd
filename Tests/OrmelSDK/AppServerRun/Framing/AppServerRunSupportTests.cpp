#include "OrmelSDK/AppServerRun/Framing/AppServerRunSupport.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using ormel::DecodingContext;
using ormel::DecodingError;
using ormel::Error;
using ormel::JSONValue;
using ormel::detail::appServerProtocolErrorDescription;
using ormel::detail::decodeJSONValue;
using ormel::detail::decodingErrorDescription;
using ormel::detail::isUnknownMethodCompatibilityError;

DecodingContext contextAt(std::vector<std::string> path, std::string description) {
  DecodingContext context(std::move(description));
  context.codingPath = std::move(path);
  return context;
}

TEST(DecodeJSONValue, ReadsAnyValueAtTheTopLevel) {
  EXPECT_EQ(decodeJSONValue("{\"id\":1}"), JSONValue::object({{"id", 1}}));
  EXPECT_EQ(decodeJSONValue("null"), JSONValue());
}

TEST(DecodeJSONValue, FailsWithTheDecodersError) { EXPECT_THROW(decodeJSONValue("{"), DecodingError); }

TEST(AppServerProtocolErrorDescription, NamesTheTypeOfAMismatch) {
  const auto error = DecodingError::typeMismatch("String", contextAt({"item", "text"}, "found a number"));
  EXPECT_EQ(appServerProtocolErrorDescription(error),
            "App-server decode error at item.text: type mismatch for String: found a number");
}

TEST(AppServerProtocolErrorDescription, NamesTheTypeOfAMissingValue) {
  const auto error = DecodingError::valueNotFound("ThreadTurn", contextAt({"turn"}, "found null"));
  EXPECT_EQ(appServerProtocolErrorDescription(error),
            "App-server decode error at turn: missing value for ThreadTurn: found null");
}

TEST(AppServerProtocolErrorDescription, NamesAMissingKeyAndThePathToIt) {
  const auto error = DecodingError::keyNotFound("x", contextAt({"a", "b"}, "no such key"));
  EXPECT_EQ(appServerProtocolErrorDescription(error), "App-server decode error at a.b: missing key 'x': no such key");
}

TEST(AppServerProtocolErrorDescription, ShowsTheTopLevelAsADollarSign) {
  const auto error = DecodingError::dataCorrupted(DecodingContext("not what it should be"));
  EXPECT_EQ(appServerProtocolErrorDescription(error),
            "App-server decode error at $: data corrupted: not what it should be");
}

TEST(AppServerProtocolErrorDescription, DescribesALineThatIsNotJSON) {
  try {
    decodeJSONValue("{\"a\":}");
    FAIL() << "the text was accepted";
  } catch (const DecodingError& error) {
    const std::string underlying = error.context().underlyingError->description();
    EXPECT_EQ(appServerProtocolErrorDescription(error),
              "App-server decode error at $: data corrupted: The given data was not valid JSON. (" + underlying + ")");
  }
}

TEST(AppServerProtocolErrorDescription, IsTheOwnDescriptionOfAnyOtherError) {
  EXPECT_EQ(appServerProtocolErrorDescription(Error("broken")), "broken");
  EXPECT_EQ(appServerProtocolErrorDescription(std::runtime_error("broken too")), "broken too");
}

TEST(DecodingErrorDescription, LeavesOutEmptyElementsOfThePath) {
  EXPECT_EQ(decodingErrorDescription("k", contextAt({"", "a", "", "b", ""}, "d")),
            "App-server decode error at a.b: k: d");
  EXPECT_EQ(decodingErrorDescription("k", contextAt({"", ""}, "d")), "App-server decode error at $: k: d");
}

TEST(DecodingErrorDescription, AppendsTheUnderlyingError) {
  auto context = contextAt({"a"}, "d");
  context.underlyingError = std::make_shared<Error>("the cause");
  EXPECT_EQ(decodingErrorDescription("k", context), "App-server decode error at a: k: d (the cause)");
}

TEST(IsUnknownMethodCompatibilityError, DecidesByTheCodeFirst) {
  EXPECT_TRUE(isUnknownMethodCompatibilityError(-32601, "anything"));
  EXPECT_FALSE(isUnknownMethodCompatibilityError(-32602, "unknown method"));
}

TEST(IsUnknownMethodCompatibilityError, LooksForThreePhrasesInAnInvalidRequestInAnyCase) {
  EXPECT_TRUE(isUnknownMethodCompatibilityError(-32600, "Unknown Method `x`"));
  EXPECT_TRUE(isUnknownMethodCompatibilityError(-32600, "METHOD NOT FOUND"));
  EXPECT_TRUE(isUnknownMethodCompatibilityError(-32600, "this is not supported here"));
  EXPECT_FALSE(isUnknownMethodCompatibilityError(-32600, "thread not found"));
  EXPECT_FALSE(isUnknownMethodCompatibilityError(-32600, ""));
}

}  // namespace
