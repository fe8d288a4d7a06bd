#include "OrmelSDK/Input/UserInput.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using namespace ormel;

UserInput decodedInput(std::string_view text) { return decode<UserInput>(JSONValue::decode(text)); }

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

TEST(Input, IsMadeOfWhatAnApplicationHas) {
  const std::string string("text");
  const Input expected(string);
  EXPECT_EQ(Input("text"), expected);
  EXPECT_EQ(Input(std::string_view("text")), expected);
  EXPECT_EQ(Input(SharedText("text")), expected);
  const auto taken = [](Input input) { return input; };
  EXPECT_EQ(taken(std::string_view("text")), expected);
  EXPECT_EQ(taken(SharedText("text")), expected);
  const UserInput part = UserInput::localImage("/a.png");
  EXPECT_EQ(taken(part), Input::from({part}));
}

}  // namespace
