#include "OrmelSDK/AppServerRun/Payloads/AppServerInputPayload.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Support/PayloadChecks.h"

namespace {

using namespace ormel;
using detail::appServerInputItems;
using tests::json;

TEST(AppServerInputItems, GiveATextAsOnePart) {
  EXPECT_EQ(appServerInputItems("hello"), json(R"([{"type":"text","text":"hello"}])"));
  EXPECT_EQ(appServerInputItems(""), json(R"([{"type":"text","text":""}])"));
}

TEST(AppServerInputItems, GiveNoPartsForNone) { EXPECT_EQ(appServerInputItems(Input::from({})), json("[]")); }

TEST(AppServerInputItems, GiveEachPartInItsFormAndOrder) {
  const UserInputTextElement named = {{0, 4}, "@name"};
  const UserInputTextElement unnamed = {{4, 7}, std::nullopt};
  const Input input = Input::from({
      UserInput::mention("m", "/m"),
      UserInput::text("plain"),
      UserInput::textElements("marked", {named, unnamed}),
      UserInput::textElements("unmarked", {}),
      UserInput::image("https://i"),
      UserInput::image("https://i", ImageDetail::high),
      UserInput::localImage("/i"),
      UserInput::localImage("/i", ImageDetail::original),
      UserInput::skill("s", "/s"),
  });
  EXPECT_EQ(appServerInputItems(input), json(R"([
    {"type": "mention", "name": "m", "path": "/m"},
    {"type": "text", "text": "plain"},
    {"type": "text", "text": "marked", "text_elements": [
      {"byteRange": {"start": 0, "end": 4}, "placeholder": "@name"},
      {"byteRange": {"start": 4, "end": 7}}]},
    {"type": "text", "text": "unmarked"},
    {"type": "image", "url": "https://i"},
    {"type": "image", "url": "https://i", "detail": "high"},
    {"type": "localImage", "path": "/i"},
    {"type": "localImage", "path": "/i", "detail": "original"},
    {"type": "skill", "name": "s", "path": "/s"}])"));
}

TEST(BuildAdditionalContextObject, GivesNothingWithoutEntries) {
  EXPECT_EQ(detail::buildAdditionalContextObject(std::nullopt), std::nullopt);
  EXPECT_EQ(detail::buildAdditionalContextObject(std::map<std::string, AdditionalContextEntry>()), std::nullopt);
}

TEST(BuildAdditionalContextObject, GivesEachEntryUnderItsName) {
  const std::map<std::string, AdditionalContextEntry> entries = {{"page", {"<html>", AdditionalContextKind::untrusted}},
                                                                 {"", {"", AdditionalContextKind::application}}};
  EXPECT_EQ(detail::buildAdditionalContextObject(entries),
            json(R"({"page":{"value":"<html>","kind":"untrusted"},"":{"value":"","kind":"application"}})"));
}

TEST(BuildEnvironmentArray, TellsNoEnvironmentsFromNothingStated) {
  EXPECT_EQ(detail::buildEnvironmentArray(std::nullopt), std::nullopt);
  EXPECT_EQ(detail::buildEnvironmentArray(std::vector<TurnEnvironment>()), json("[]"));
}

TEST(BuildEnvironmentArray, GivesEachEnvironmentInOrder) {
  EXPECT_EQ(detail::buildEnvironmentArray(std::vector<TurnEnvironment>{{"e2", "/two"}, {"e1", ""}}),
            json(R"([{"environmentId":"e2","cwd":"/two"},{"environmentId":"e1","cwd":""}])"));
}

}  // namespace
