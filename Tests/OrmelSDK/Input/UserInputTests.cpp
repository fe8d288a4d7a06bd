#include "OrmelSDK/Input/UserInput.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "Support/RecordChecks.h"

namespace {

using namespace ormel;

UserInput decodedInput(std::string_view text) { return decode<UserInput>(JSONValue::decode(text)); }

std::string failureOf(std::string_view text) {
  try {
    (void)decodedInput(text);
  } catch (const DecodingError& error) {
    return error.what();
  }
  return "decoded";
}

TEST(UserInput, FollowsItsTables) {
  tests::checkRecord<UserInputTextByteRange>(R"({"start":1,"end":2})");
  tests::checkRecord<UserInputTextElement>(R"({"byteRange":{"start":1,"end":2},"placeholder":"p"})");
}

TEST(UserInput, WritesEachCaseUnderItsType) {
  const std::pair<UserInput, std::string_view> cases[] = {
      {UserInput::text("x"), R"({"type":"text","text":"x"})"},
      {UserInput::textElements("x", {{{0, 1}, "p"}}),
       R"({"type":"text","text":"x","text_elements":[{"byteRange":{"start":0,"end":1},"placeholder":"p"}]})"},
      {UserInput::image("u"), R"({"type":"image","url":"u"})"},
      {UserInput::image("u", ImageDetail::high), R"({"type":"image","url":"u","detail":"high"})"},
      {UserInput::localImage("/a", ImageDetail::original), R"({"type":"localImage","path":"/a","detail":"original"})"},
      {UserInput::skill("n", "/s"), R"({"type":"skill","name":"n","path":"/s"})"},
      {UserInput::mention("n", "/m"), R"({"type":"mention","name":"n","path":"/m"})"},
  };
  for (const auto& [input, text] : cases) {
    EXPECT_EQ(encode(input), JSONValue::decode(text));
    EXPECT_EQ(decodedInput(text), input);
  }
}

TEST(UserInput, TakesATextWithoutMarkedRangesAsPlain) {
  EXPECT_EQ(decodedInput(R"({"type":"text","text":"x","textElements":[]})"), UserInput::text("x"));
  EXPECT_EQ(decodedInput(R"({"type":"text","text":"x","text_elements":null})"), UserInput::text("x"));
}

TEST(UserInput, WritesNoEmptyElementList) {
  EXPECT_EQ(encode(UserInput::textElements("x", {})), JSONValue::decode(R"({"type":"text","text":"x"})"));
}

TEST(UserInput, ReadsMarkedRangesWithoutAPlaceholder) {
  EXPECT_EQ(decodedInput(R"({"type":"text","text":"x","text_elements":[{"byteRange":{"start":0,"end":1}}]})"),
            UserInput::textElements("x", {{{0, 1}, std::nullopt}}));
}

TEST(UserInput, PrefersTheCamelCaseElements) {
  EXPECT_EQ(decodedInput(R"({"type":"text","text":"x","textElements":[{"byteRange":{"start":1,"end":2}}],
                             "text_elements":[{"byteRange":{"start":3,"end":4}}]})"),
            UserInput::textElements("x", {{{1, 2}, std::nullopt}}));
}

TEST(UserInput, ReadsTheOldSpellingOfALocalImageAndWritesTheNew) {
  const UserInput input = decodedInput(R"({"type":"local_image","path":"/a.png"})");
  EXPECT_EQ(input, UserInput::localImage("/a.png"));
  EXPECT_EQ(encode(input), JSONValue::decode(R"({"type":"localImage","path":"/a.png"})"));
}

TEST(UserInput, FailsWithoutWhatItsCaseRequires) {
  for (const std::string_view text :
       {R"({"type":"text"})", R"({"type":"image"})", R"({"type":"localImage"})", R"({"type":"skill","name":"n"})",
        R"({"type":"skill","path":"p"})", R"({"type":"mention","name":"n"})", R"({"type":"mention","path":"p"})"}) {
    EXPECT_THROW(decodedInput(text), DecodingError) << text;
  }
  EXPECT_EQ(failureOf("{}"), "No value is associated with the key 'type'.");
  EXPECT_EQ(failureOf(R"({"type":3})"), "Expected String but found a number.");
  EXPECT_EQ(failureOf("[]"), "Expected UserInput but found an array.");
}

TEST(UserInput, NamesATypeThatItDoesNotKnow) {
  EXPECT_EQ(failureOf(R"({"type":"audio"})"), "Unknown user input type: audio");
}

TEST(UserInput, RefusesAnUnknownImageDetail) {
  EXPECT_EQ(failureOf(R"({"type":"image","url":"u","detail":"low"})"),
            "Cannot initialize ImageDetail from invalid String value low");
}

TEST(UserInput, RefusesRangesThatAreNoIntegers) {
  EXPECT_EQ(failureOf(R"({"type":"text","text":"x","text_elements":[{"byteRange":{"start":0.5,"end":1}}]})"),
            "The number 0.5 does not fit in Int.");
  EXPECT_EQ(failureOf(R"({"type":"text","text":"x","text_elements":[{"byteRange":{"start":0,"end":1e19}}]})"),
            "The number 1e+19 does not fit in Int.");
}

TEST(LossyUserInput, DropsWhatDoesNotDecode) {
  std::vector<UserInput> kept;
  for (const auto& lossy : std::vector{
           decode<LossyUserInput>(JSONValue::decode(R"({"type":"text","text":"a"})")),
           decode<LossyUserInput>(JSONValue::decode(R"({"type":"audio"})")),
           decode<LossyUserInput>(JSONValue::decode(R"({"type":"image","url":"u","detail":"low"})")),
           decode<LossyUserInput>(JSONValue::decode("3")),
           decode<LossyUserInput>(JSONValue::decode(R"({"type":"text","text":"b"})")),
       }) {
    if (lossy.value) kept.push_back(*lossy.value);
  }
  EXPECT_EQ(kept, (std::vector{UserInput::text("a"), UserInput::text("b")}));
}

TEST(Input, IsMadeFromATextOrAListOfParts) {
  const Input text = "hello";
  EXPECT_EQ(text, Input(std::string("hello")));
  EXPECT_EQ(Input::from({UserInput::text("hello")}), Input(std::vector{UserInput::text("hello")}));
  EXPECT_FALSE(text == Input::from({UserInput::text("hello")}));
  EXPECT_EQ(visit(
                text, [](const std::string& only) { return only.size(); },
                [](const std::vector<UserInput>& parts) { return parts.size(); }),
            5u);
}

TEST(UserInput, StreamsInOneReadableLine) {
  std::ostringstream stream;
  stream << UserInput::text("x") << ' ' << ImageDetail::high;
  EXPECT_EQ(stream.str(), R"(UserInput {"type":"text","text":"x"} ImageDetail "high")");
}

TEST(Input, StreamsInOneReadableLine) {
  std::ostringstream stream;
  stream << Input("x") << ' ' << Input::from({UserInput::mention("n", "p")}) << ' ' << UserInputSkill{"n", "p"};
  EXPECT_EQ(stream.str(),
            R"(Input "x" Input [{"type":"mention","name":"n","path":"p"}] UserInputSkill {"name":"n","path":"p"})");
}

}  // namespace
