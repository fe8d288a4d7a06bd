#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <sstream>

#include "OrmelSDK/JSON/JSONValue.h"
#include "ormel-chat/ChatProgram.h"
#include "ormel-chat/ThreadTitle.h"

namespace ormel::chat {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::Not;
using ::testing::SizeIs;

/// Runs of the program whose conversations are kept in one place.
class ChatThreads : public ::testing::Test {
 protected:
  ChatEnd chat(std::vector<std::string> arguments, std::string_view input = "") const {
    auto environment = chatEnvironment();
    environment.push_back("ORMEL_SIMULATOR_STATE=" + state_->path().string());
    return ChatProgram(std::move(arguments), std::move(environment)).finish(input);
  }

  /// The lines of a listing.
  std::vector<std::string> listed() const {
    const ChatEnd end = chat({"--list"});
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.errors, "");
    std::vector<std::string> lines;
    std::istringstream output(end.output);
    for (std::string line; std::getline(output, line);) lines.push_back(line);
    return lines;
  }

  void forgetAll() { state_ = std::make_unique<testing::TemporaryDirectory>(); }

  static std::string idOf(const std::string& line) { return line.substr(0, line.find(' ')); }

 private:
  std::unique_ptr<testing::TemporaryDirectory> state_ = std::make_unique<testing::TemporaryDirectory>();
};

TEST_F(ChatThreads, AreListedByTheirFirstWordsOrTheirName) {
  EXPECT_THAT(listed(), IsEmpty());
  chat({}, "first things\nsecond things\n");
  chat({}, "other things\n/name The others\n");
  const auto lines = listed();
  ASSERT_THAT(lines, SizeIs(2));
  EXPECT_THAT(lines[0], MatchesRegex("[0-9a-f-]+  The others \\(just now\\)"));
  EXPECT_THAT(lines[1], MatchesRegex("[0-9a-f-]+  first things \\(just now\\)"));
}

TEST_F(ChatThreads, AreListedAsJSON) {
  chat({"hello"});
  const ChatEnd end = chat({"--list", "--json"});
  const JSONValue record = JSONValue::decode(end.output);
  EXPECT_EQ(*record.find("preview"), JSONValue("hello"));
  EXPECT_EQ(*record.find("id"), JSONValue(idOf(listed().at(0))));
}

TEST_F(ChatThreads, AreListedOverAllPages) {
  const testing::SimulatorScenario scenario(R"(
    always answer initialize with {}
    always ignore initialized
    in run 1
      client asks thread/list {"sortKey": "recency_at", "sortDirection": "desc", "cursor": "$absent"}
      server answers {"data": [{"id": "t1", "preview": "one\ntwo"}], "nextCursor": "c"}
    end
    in run 2 or later
      client asks thread/list {"sortKey": "recency_at", "cursor": "c"}
      server answers {"data": [{"id": "t2", "name": "Two"}, {"id": "t3"}]}
    end
  )");
  const ChatEnd end = ChatProgram({"--list"}, scenario.environment()).finish();
  EXPECT_EQ(end.output, "t1  one two\nt2  Two\nt3  (nothing was said)\n");
  EXPECT_EQ(end.status, 0);
  EXPECT_THAT(scenario.failures(), IsEmpty());
}

TEST_F(ChatThreads, FailToBeListedByAServerThatRefuses) {
  const testing::SimulatorScenario scenario(R"(
    always answer initialize with {}
    always ignore initialized
    client asks thread/list
    server answers with error {"code": -32601, "message": "Method not found"}
  )");
  for (const char* input : {"", "/threads\n"}) {
    const bool isCommand = *input != '\0';
    const ChatEnd end =
        ChatProgram(isCommand ? std::vector<std::string>{} : std::vector<std::string>{"--list"}, scenario.environment())
            .finish(input);
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.output, "");
    EXPECT_THAT(end.errors, HasSubstr("Method not found"));
  }
}

TEST_F(ChatThreads, AreNotListedTogetherWithAPromptOrAConversation) {
  EXPECT_EQ(chat({"--list", "hello"}).status, 1);
  EXPECT_EQ(chat({"--list", "--resume", "t"}).status, 1);
}

TEST_F(ChatThreads, AreShownDuringAConversation) {
  EXPECT_EQ(chat({}, "/threads\n").errors, "> /threads\nThe server keeps no conversations.\n");
  chat({}, "first things\n");
  EXPECT_THAT(chat({}, "second things\n/threads\n").errors,
              MatchesRegex("> second things\n\n> /threads\n[0-9a-f-]+  second things .just now.\n"
                           "[0-9a-f-]+  first things .just now.\n"));
}

TEST_F(ChatThreads, AreResumedByNumberByIDOrNotAtAll) {
  const struct {
    const char* lines;
    bool isResumed;
  } rows[] = {{"/resume\n2\nand now?\n", true},
              {"/resume\nID\nand now?\n", true},
              {"/resume ID\nand now?\n", true},
              {"/resume\n\nand now?\n", false},
              {"/resume\n77\nand now?\n", false}};
  for (const auto& row : rows) {
    forgetAll();
    chat({}, "first things\n");
    chat({}, "second things\n");
    std::string lines = row.lines;
    const auto place = lines.find("ID");
    if (place != std::string::npos) lines.replace(place, 2, idOf(listed().at(1)));
    const ChatEnd end = chat({}, lines);
    EXPECT_EQ(end.status, 0) << row.lines;
    const bool recalls = end.output.find("You asked before: \"first things\"") != std::string::npos;
    EXPECT_EQ(recalls, row.isResumed) << row.lines << end.output << end.errors;
    EXPECT_THAT(end.output, HasSubstr("You ask: \"and now?\"")) << row.lines;
  }
}

TEST_F(ChatThreads, AreOfferedWithNumbers) {
  chat({}, "first things\n");
  chat({}, "second things\n");
  EXPECT_THAT(
      chat({}, "/resume\n1\n").errors,
      MatchesRegex(
          "> /resume\n\n▌ Which conversation[?][^\n]*\n▌       1\\. . [0-9a-f-]+ - second things .just now.\n"
          "▌       2\\. . [0-9a-f-]+ - first things .just now.\n▌ Your choice: 1\nGoing on with [0-9a-f-]+\\.\n"));
}

TEST_F(ChatThreads, ThatAreUnknownAreNotResumed) {
  const ChatEnd end = chat({}, "hello\n/resume nonsense\nstill there?\n");
  EXPECT_THAT(end.errors, HasSubstr("thread not found: nonsense"));
  EXPECT_THAT(end.output, HasSubstr("You asked before: \"hello\"."));
}

TEST_F(ChatThreads, AreForkedWithTheCopyGoingOn) {
  const ChatEnd end = chat({}, "hello\n/fork\nonly in the copy\n");
  EXPECT_EQ(end.status, 0);
  EXPECT_THAT(end.output, HasSubstr("You asked before: \"hello\"."));
  EXPECT_THAT(end.errors, HasSubstr("Going on in the copy "));
  const auto lines = listed();
  ASSERT_THAT(lines, SizeIs(2));
  EXPECT_THAT(end.errors, HasSubstr("Going on in the copy " + idOf(lines[0])));
  EXPECT_THAT(chat({"--resume", idOf(lines[1]), "and here?"}).output, Not(HasSubstr("only in the copy")));
}

TEST_F(ChatThreads, AreArchivedWithANewOneGoingOn) {
  const ChatEnd end = chat({}, "hello\n/archive\nwho are you?\n");
  EXPECT_EQ(end.status, 0);
  EXPECT_THAT(end.output, AllOf(HasSubstr("You ask: \"who are you?\""), Not(HasSubstr("You asked before"))));
  const auto lines = listed();
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_THAT(lines[0], HasSubstr("who are you?"));
}

TEST_F(ChatThreads, HaveToBeThereToBeNamedForkedOrArchived) {
  for (const char* command : {"/name x", "/fork", "/archive"}) {
    const ChatEnd end = chat({}, command + std::string("\n"));
    EXPECT_EQ(end.errors, std::string("> ") + command + "\nThere is no conversation yet.\n");
    EXPECT_EQ(end.status, 0);
  }
  EXPECT_THAT(chat({}, "hello\n/name\n").errors, HasSubstr("/name needs a text.\n"));
}

TEST(ChatThreadTitle, TellsTheAge) {
  constexpr double now = 1'000'000;
  const struct {
    double secondsAgo;
    const char* age;
  } rows[] = {{-5, "just now"},  {59, "just now"},    {60, "1 min ago"},  {3599, "59 min ago"},
              {3600, "1 h ago"}, {86399, "23 h ago"}, {86400, "1 d ago"}, {now, ""}};
  for (const auto& row : rows) {
    OrmelThreadRecord thread;
    thread.updatedAt = now - row.secondsAgo;
    EXPECT_EQ(ageOf(thread, now), row.age) << row.secondsAgo;
    thread.recencyAt = now - 120;
    EXPECT_EQ(ageOf(thread, now), "2 min ago");
  }
}

}  // namespace
}  // namespace ormel::chat
