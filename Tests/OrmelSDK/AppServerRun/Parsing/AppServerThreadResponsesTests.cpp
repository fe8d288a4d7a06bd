#include "OrmelSDK/AppServerRun/Parsing/AppServerThreadResponses.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>

#include "OrmelSDK/Base/ThreadRunError.h"

namespace {

using namespace ormel;

template <typename Parse>
void expectStreamError(Parse parse, std::string_view text, const std::string& message) {
  try {
    (void)parse(text);
    ADD_FAILURE() << "parsed " << text;
  } catch (const ThreadRunError& error) {
    EXPECT_EQ(error, ThreadRunError::streamError(message)) << text;
  }
}

ThreadStartedEvent started(std::string_view response) {
  return detail::parseThreadStartedEvent(JSONValue::decode(response));
}

ThreadStartedEvent ofThread(std::string_view thread) {
  const JSONValue object = JSONValue::decode(thread);
  return detail::parseThreadStartedEvent(*object.objectValue());
}

std::string turnID(std::string_view response) { return detail::parseTurnID(JSONValue::decode(response)); }

TEST(ParseThreadStartedEvent, ReadsAResponse) {
  EXPECT_EQ(started(R"({"thread":{"id":"t","forkedFromId":"f"},"instructionSources":["/a","/b"],"model":"m"})"),
            (ThreadStartedEvent{"t", "f", {"/a", "/b"}}));
  EXPECT_EQ(started(R"({"thread":{"id":"t"}})"), (ThreadStartedEvent{"t", std::nullopt, {}}));
}

TEST(ParseThreadStartedEvent, FailsWithoutAThreadObjectInTheResponse) {
  for (const auto* text :
       {"null", "[]", "\"t\"", "{}", R"({"thread":null})", R"({"thread":"t"})", R"({"thread":[]})", R"({"id":"t"})"}) {
    expectStreamError(started, text, "Invalid thread response from app-server");
  }
}

TEST(ParseThreadStartedEvent, FailsWithoutAnIDInTheThreadObject) {
  for (const auto* text : {"{}", R"({"id":null})", R"({"id":1})", R"({"ID":"t"})"}) {
    const std::string message = "Invalid thread object from app-server";
    expectStreamError(ofThread, text, message);
    expectStreamError(started, R"({"thread":)" + std::string(text) + "}", message);
  }
}

TEST(ParseThreadStartedEvent, AcceptsAnEmptyID) { EXPECT_EQ(ofThread(R"({"id":""})").threadID, ""); }

TEST(ParseThreadStartedEvent, ReadsTheOriginOfAForkUnderBothSpellings) {
  EXPECT_EQ(ofThread(R"({"id":"t","forkedFromId":"a","forked_from_id":"b"})").forkedFromID, "a");
  EXPECT_EQ(ofThread(R"({"id":"t","forked_from_id":"b"})").forkedFromID, "b");
  EXPECT_EQ(ofThread(R"({"id":"t","forkedFromId":null,"forked_from_id":"b"})").forkedFromID, "b");
  EXPECT_EQ(ofThread(R"({"id":"t","forkedFromId":1,"forked_from_id":"b"})").forkedFromID, "b");
  EXPECT_EQ(ofThread(R"({"id":"t","forkedFromId":1,"forked_from_id":2})").forkedFromID, std::nullopt);
  EXPECT_EQ(ofThread(R"({"id":"t","forkedFromId":"","forked_from_id":"b"})").forkedFromID, "");
}

TEST(ParseThreadStartedEvent, ReadsNoInstructionSourcesFromTheThreadObject) {
  EXPECT_TRUE(ofThread(R"({"id":"t","instructionSources":["/a"]})").instructionSources.empty());
  EXPECT_TRUE(started(R"({"thread":{"id":"t","instructionSources":["/a"]}})").instructionSources.empty());
}

TEST(ParseThreadStartedEvent, ReadsInstructionSourcesUnderBothSpellings) {
  using Sources = std::vector<std::string>;
  const auto sources = [](std::string_view members) {
    return started(R"({"thread":{"id":"t"},)" + std::string(members) + "}").instructionSources;
  };
  EXPECT_EQ(sources(R"("instructionSources":["/a"],"instruction_sources":["/b"])"), Sources{"/a"});
  EXPECT_EQ(sources(R"("instruction_sources":["/b"])"), Sources{"/b"});
  EXPECT_EQ(sources(R"("instructionSources":null,"instruction_sources":["/b"])"), Sources{"/b"});
  EXPECT_EQ(sources(R"("instructionSources":"/a","instruction_sources":["/b"])"), Sources{"/b"});
  EXPECT_EQ(sources(R"("instructionSources":[],"instruction_sources":["/b"])"), Sources{});
  EXPECT_EQ(sources(R"("instructionSources":{},"instruction_sources":"/b")"), Sources{});
}

TEST(ParseThreadStartedEvent, SkipsInstructionSourcesThatAreNoTexts) {
  EXPECT_EQ(started(R"({"thread":{"id":"t"},"instructionSources":["/a",1,null,["/x"],{"p":"/y"},"/b",""]})")
                .instructionSources,
            (std::vector<std::string>{"/a", "/b", ""}));
}

TEST(ParseTurnID, ReadsTheIDOfTheTurn) {
  EXPECT_EQ(detail::parseTurnID(JSONValue::decode(R"({"turn":{"id":"u","items":[]}})")), "u");
  EXPECT_EQ(detail::parseTurnID(JSONValue::decode(R"({"turn":{"id":""}})")), "");
}

TEST(ParseTurnID, FailsWithoutATurnThatHasOne) {
  for (const auto* text : {"null", "[]", "\"u\"", "{}", R"({"turn":null})", R"({"turn":"u"})", R"({"turn":{}})",
                           R"({"turn":{"id":null}})", R"({"turn":{"id":7}})", R"({"id":"u"})", R"({"turnId":"u"})"}) {
    expectStreamError(turnID, text, "Invalid turn/start response from app-server");
  }
}

}  // namespace
