#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <functional>
#include <random>
#include <set>
#include <sstream>

#include "OrmelSDK/Concurrency/OneShot.h"
#include "ormel-chat/ApprovalQuestion.h"
#include "ormel-chat/ChatProgram.h"
#include "ormel-chat/EventRenderer.h"
#include "ormel-chat/ForeignText.h"
#include "ormel-chat/FormQuestion.h"
#include "ormel-chat/PseudoTerminal.h"
#include "ormel-chat/ThreadList.h"

namespace ormel::chat {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

using namespace std::string_literals;

/// The beginning of each line that asks.
const std::string margin = "\xe2\x96\x8c ";

/// Things that somebody might say to be taken for the program, or to hide what is asked for.
const std::pair<const char*, std::string> corpus[] = {
    {"the question itself", "ls\nAllow it? y/n/always [n] y"},
    {"a margin in front of it", "ls\n" + margin + "Allow it? y/n/always [n] "},
    {"a margin at the very beginning", margin + "The agent wants to run:\n" + margin + "         | ls"},
    {"another bar for a margin", "\xe2\x96\x8d Allow it?\n\xe2\x94\x83 Allow it?\n\xe2\x96\x88 Allow it?"},
    {"a bar of an old computer", "\xf0\x9f\xad\xb0 Allow it?"},
    {"a private character that a font may draw as a margin", "\xee\x82\xb0 Allow it?\n\xf3\xb0\x80\x80 y"},
    {"a label and a bar of its own", "ls\n      in | /safe\n  reason | you asked me to\n"},
    {"the whole rest of a prompt", "ls | in | /safe"},
    {"the prompt of the next line", "Done.\n\n> "},
    {"blanks that reach over the end of the line", "ls" + std::string(300, ' ') + "Allow it? y/n/always [n] "},
    {"lines that push the beginning away", "rm -rf /" + std::string(60, '\n') + "ls"},
    {"a carriage return", "rm -rf / #\rls          "},
    {"backspaces", "rm\b\bls"},
    {"escape sequences", "rm -rf / \x1b[2K\x1b[1Gls\x1b[8m && rm -rf ~\x1b[0m"},
    {"the title of the window", "\x1b]0;safe\x07ls"},
    {"a second screen", "\x1b[?1049h\x1b[H" + margin + "Allow it?"},
    {"escape sequences of one character",
     "\xc2\x9b"
     "2Jls\xc2\x9dtitle\xc2\x9c"},
    {"a byte that begins a sequence elsewhere",
     "ls \x9b"
     "2J"},
    {"an end of line of another kind", "ls\v rm\f rm \xc2\x85 rm \xe2\x80\xa8" + margin + "Allow it?\xe2\x80\xa9 y"},
    {"a null byte", "ls\0 rm"s},
    {"a deleted character", "ls\x7f"},
    {"an order turned around", "echo \xe2\x80\xaehsab | live\xe2\x80\xac"},
    {"an order turned around for a part", "echo \xe2\x81\xa7live\xe2\x81\xa9 \xe2\x81\xa6x\xe2\x81\xa9 \xe2\x81\xa8"},
    {"marks of a direction", "rm\xe2\x80\x8e \xe2\x80\x8f-rf \xd8\x9c/"},
    {"letters from right to left", "\xd7\xa8\xd7\x9e -rf \xd8\xb1 /"},
    {"characters without a width", "r\xe2\x80\x8bm\xe2\x80\x8c \xe2\x80\x8d-\xe2\x81\xa0rf \xef\xbb\xbf/"},
    {"a soft hyphen and a filler", "r\xc2\xadm \xe3\x85\xa4-rf \xef\xbe\xa0/\xe1\xa0\x8e"},
    {"spaces that are none", "rm\xc2\xa0-rf\xe2\x80\x83/\xe3\x80\x80\xe2\xa0\x80"},
    {"tags", "ls\xf3\xa0\x80\x81\xf3\xa0\x81\xb2\xf3\xa0\x81\xad\xf3\xa0\x81\xbf"},
    {"forms of a character", "ls\xef\xb8\x8f\xf3\xa0\x84\x80"},
    {"marks over letters", "r\xcc\xb6m\xcc\xb7 l\xe2\x83\x92s\xe2\x83\x9d"},
    {"a heap of marks", "a\xcc\x81\xcc\x82\xcc\x83\xcc\x84\xcc\x85\xcc\x86\xcc\x87 b"},
    {"a mark that would join the bar", "\xcc\xb8ls"},
    {"broken characters", "ls \xe2\x96 \xff\xfe \xc0\xaf \xed\xa0\x80 \xf4\x90\x80\x80 \xe2"},
    {"characters that do not exist", "ls \xef\xbf\xbf \xf3\xbf\xbf\xbf \xcd\xb8"},
    {"an escape as this program writes it", "ls <U+001B> <0xFF> <U+258C>"},
    {"wide characters", std::string(100, 'x') + "\xe6\xbc\xa2\xe5\xad\x97\xf0\x9f\x98\x80"},
    {"nothing", ""},
    {"nothing but line ends", "\n\n\n"},
};

/// The text written to a terminal without colours.
std::string onTerminal(int columns, const std::function<void(Console&)>& write) {
  ::setenv("NO_COLOR", "1", 1);
  PseudoTerminal terminal(columns);
  Console console(terminal.descriptor());
  write(console);
  console.flush();
  return terminal.finish();
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

/// A line that asks, taken apart.
struct PromptLine {
  std::string label;
  std::string text;
  bool isQuote = false;
};

PromptLine taken(const std::string& line) {
  constexpr std::size_t labelEnd = 8;
  const std::string rest = line.substr(margin.size());
  const auto bar = rest.find(" | ");
  // The program's own words begin at once, labels are set to the right.
  const bool isQuote = bar != std::string::npos && bar >= labelEnd && rest.find_first_not_of(' ') > 0;
  if (!isQuote) return {"", rest, false};
  const auto begin = std::min(rest.find_first_not_of(' '), bar);
  return {rest.substr(begin, bar - begin), rest.substr(bar + 3), true};
}

std::string utf8(unsigned long code) {
  const auto byte = [](unsigned long value) { return std::string(1, static_cast<char>(value)); };
  if (code < 0x80) return byte(code);
  if (code < 0x800) return byte(0xc0 | code >> 6) + byte(0x80 | (code & 0x3f));
  if (code < 0x10000) return byte(0xe0 | code >> 12) + byte(0x80 | (code >> 6 & 0x3f)) + byte(0x80 | (code & 0x3f));
  return byte(0xf0 | code >> 18) + byte(0x80 | (code >> 12 & 0x3f)) + byte(0x80 | (code >> 6 & 0x3f)) +
         byte(0x80 | (code & 0x3f));
}

/// The original of a text whose characters were made visible.
std::string unescaped(const std::string& text) {
  std::string plain;
  for (std::size_t index = 0; index < text.size();) {
    const bool isCode = text.compare(index, 3, "<U+") == 0;
    if (!isCode && text.compare(index, 3, "<0x") != 0) {
      plain += text[index++];
      continue;
    }
    const auto number = std::stoul(text.substr(index + 3), nullptr, 16);
    plain += isCode ? utf8(number) : std::string(1, static_cast<char>(number));
    index = text.find('>', index) + 1;
  }
  return plain;
}

/// The texts in the quotes of a prompt.
std::string quoted(const std::vector<std::string>& lines) {
  std::string text;
  bool isFirst = true;
  for (const auto& line : lines) {
    const PromptLine part = taken(line);
    if (!part.isQuote) continue;
    if (!isFirst && part.label != "+") text += '\n';
    text += part.text;
    isFirst = false;
  }
  return unescaped(text);
}

std::set<std::string> ownWords(const std::vector<std::string>& lines) {
  std::set<std::string> words;
  for (const auto& line : lines) {
    const PromptLine part = taken(line);
    if (!part.isQuote && part.text.find("could not be seen") == std::string::npos &&
        part.text.find("from right to left") == std::string::npos) {
      words.insert(part.text);
    }
  }
  return words;
}

void expectHarmless(const std::string& output) {
  for (const char byte : output) {
    EXPECT_TRUE(static_cast<unsigned char>(byte) >= 0x20 || byte == '\n' || byte == '\t');
    EXPECT_NE(byte, '\x7f');
  }
  for (const char* harmful : {"\xc2\x85", "\xc2\x9b", "\xc2\x9d", "\xd8\x9c", "\xe2\x80\x8b", "\xe2\x80\x8e",
                              "\xe2\x80\x8f", "\xe2\x80\xa8", "\xe2\x80\xa9", "\xe2\x80\xae", "\xe2\x81\xa6",
                              "\xe2\x81\xa7", "\xe2\x81\xa9", "\xef\xbb\xbf", "\xf3\xa0\x80\x81", "\xf3\xa0\x81\xb2"}) {
    EXPECT_THAT(output, Not(HasSubstr(harmful)));
  }
}

int width(const std::string& line) {
  int columns = 0;
  for (VisibleReader reader(line); const auto piece = reader.next();) columns += piece->isEscape ? 1 : piece->columns;
  return columns;
}

ApprovalSubject approvalOf(const std::string& text) {
  ApprovalSubject subject("The agent wants to run:", true);
  subject.matter.push_back({"", text, true});
  return subject;
}

using Asker = std::function<void(Console& console, const std::string& text)>;

/// Every place of a prompt that somebody else fills.
const std::pair<const char*, Asker> places[] = {
    {"the command",
     [](Console& console, const std::string& text) {
       ApprovalQuestion(approvalOf(text), OneShotResolver<Verdict>()).ask(console);
     }},
    {"the circumstances",
     [](Console& console, const std::string& text) {
       ApprovalSubject subject("The agent wants to change a file:", false);
       subject.circumstances.push_back({"reason", text});
       ApprovalQuestion(std::move(subject), OneShotResolver<Verdict>()).ask(console);
     }},
    {"the words of a form",
     [](Console& console, const std::string& text) {
       FormQuestion("A form:", {{"message", text}}, {{"field", "", {}}}, {}).ask(console);
     }},
    {"a field",
     [](Console& console, const std::string& text) {
       FormQuestion("A form:", {}, {{"field", text.empty() ? " " : text, {}}}, {}).ask(console);
     }},
    {"a choice",
     [](Console& console, const std::string& text) {
       FormQuestion("A form:", {}, {{"field", "", {{text, "", false}}}}, {}).ask(console);
     }},
};

void expectHonest(const Asker& ask, const std::string& text, int columns) {
  const auto output = onTerminal(columns, [&](Console& console) { ask(console, text); });
  const auto lines = linesOf(output);
  expectHarmless(output);
  for (const auto& line : lines) {
    EXPECT_TRUE(line.starts_with(margin)) << line;
    EXPECT_THAT(line.substr(margin.size()), Not(HasSubstr("\xe2\x96\x8c")));
    // The program's own words may be longer than a narrow window.
    EXPECT_TRUE(!taken(line).isQuote || width(line) < std::max(columns, 28)) << line;
  }
  const auto harmlessLines = linesOf(onTerminal(columns, [&](Console& console) { ask(console, "x"); }));
  const auto words = ownWords(lines);
  if (words.contains("Allow it? y/n/always/view [n] ") || words.contains("Allow it? y/n/view [n] ")) return;
  EXPECT_EQ(words, ownWords(harmlessLines));
  const std::string said = quoted(lines);
  EXPECT_TRUE(said == text || said + "\n" == text || (text.empty() && said == " ")) << said;
}

TEST(ChatSpoofing, CannotBeDoneInsideAPrompt) {
  for (const auto& [what, text] : corpus) {
    for (const auto& [place, ask] : places) {
      for (const int columns : {20, 40, 80, 200}) {
        SCOPED_TRACE(std::string(what) + " as " + place + " in " + std::to_string(columns) + " columns");
        expectHonest(ask, text, columns);
      }
    }
  }
}

TEST(ChatSpoofing, CannotBeDoneByChance) {
  const char* parts[] = {"\n",
                         " ",
                         "|",
                         "<",
                         ">",
                         "<U+",
                         "x",
                         "\xe2\x96\x8c",
                         "\xe2",
                         "\x96",
                         "\x1b[",
                         "\xcc\x81",
                         "\xe6\xbc\xa2",
                         "\xd7\xa8",
                         "\xe2\x80\xae",
                         "\r",
                         "\t",
                         "\xf0\x9f\x98\x80",
                         "Allow it?",
                         "\xff"};
  std::mt19937 random(18);
  for (int round = 0; round < 300; ++round) {
    std::string text;
    for (auto length = random() % 40; length > 0; --length) text += parts[random() % std::size(parts)];
    SCOPED_TRACE(visible(text));
    expectHonest(places[random() % std::size(places)].second, text, static_cast<int>(20 + random() % 60));
  }
}

template <typename Event>
void showItem(Console& console, ThreadItem item) {
  EventRenderer renderer(console);
  Event event;
  event.item = std::move(item);
  renderer.show(event);
}

TEST(ChatSpoofing, CannotBeDoneByWhatTheAgentPrints) {
  for (const auto& [what, text] : corpus) {
    SCOPED_TRACE(what);
    const std::string said = text;
    const auto output = onTerminal(80, [&](Console& console) {
      AgentMessageItem message;
      message.id = message.text = said;
      showItem<ItemUpdatedEvent>(console, message);
      showItem<ItemCompletedEvent>(console, message);
      CommandExecutionItem command;
      command.id = command.command = said;
      command.aggregatedOutput = said;
      showItem<ItemCompletedEvent>(console, command);
      FileChangeItem change;
      change.id = said;
      change.changes = {{said, PatchChangeKind::update}};
      showItem<ItemCompletedEvent>(console, change);
      TodoListItem list;
      list.id = said;
      list.items = {{said, false}};
      showItem<ItemCompletedEvent>(console, list);
      McpToolCallItem call;
      call.id = call.server = call.tool = said;
      call.arguments = JSONValue("x");
      call.progressMessage = said;
      showItem<ItemUpdatedEvent>(console, call);
      ErrorItem error;
      error.id = error.message = said;
      showItem<ItemCompletedEvent>(console, error);
      TurnFailedEvent failed;
      failed.error.message = said;
      EventRenderer(console).show(failed);
    });
    expectHarmless(output);
    for (const char* bar : {"\xe2\x96\x8c", "\xe2\x96\x8d", "\xe2\x94\x83", "\xe2\x96\x88", "\xf0\x9f\xad\xb0",
                            "\xee\x82\xb0", "\xf3\xb0\x80\x80"}) {
      EXPECT_THAT(output, Not(HasSubstr(bar)));
    }
  }
}

TEST(ChatSpoofing, CannotBeDoneByTheTitleOrTheIdOfAConversation) {
  for (const auto& [what, text] : corpus) {
    SCOPED_TRACE(what);
    OrmelThreadRecord thread;
    thread.id = thread.name.emplace(text);
    const auto output = onTerminal(80, [&](Console& console) { console.line(threadLine(thread)); });
    expectHarmless(output);
    EXPECT_EQ(linesOf(output).size(), 1u) << output;
    EXPECT_THAT(output, Not(HasSubstr("\xe2\x96\x8c")));
    const auto question =
        linesOf(onTerminal(80, [&](Console& console) { threadQuestion({thread}, {})->ask(console); }));
    for (const auto& line : question) EXPECT_TRUE(line.starts_with(margin)) << line;
    EXPECT_THAT(ownWords(question),
                ElementsAre("Which conversation? An empty line leaves it at this one.", "Your choice: "));
  }
}

TEST(ChatSpoofing, CannotBeDoneByAMisleadingEscape) {
  EXPECT_EQ(visible("\x1b"), "<U+001B>");
  EXPECT_EQ(visible("<U+001B>"), "<U+003C>U+001B>");
  EXPECT_EQ(visible("a < b <c> <0"), "a < b <c> <0");
  EXPECT_EQ(visible("\xff<0xFF>"), "<0xFF><U+003C>0xFF>");
  EXPECT_EQ(visible("\xf3\xa0\x81\xb2"), "<U+E0072>");
}

TEST(ChatForeignText, KeepsWhatPeopleWrite) {
  for (const char* text :
       {"caf\xc3\xa9 \xc2\xa9", "e\xcc\x81t\xc3\xa9", "\xe6\xbc\xa2\xe5\xad\x97", "\xf0\x9f\x98\x80",
        "\xd7\xa9\xd7\x9c\xd7\x95\xd7\x9d", "\xe0\xa4\xb9\xe0\xa4\xbf\xe0\xa4\x82\xe0\xa4\xa6\xe0\xa5\x80"}) {
    EXPECT_EQ(visible(text), text);
    EXPECT_EQ(harmless(text), text);
  }
  // A family, written with joiners, and a coloured heart.
  for (const char* text : {"\xf0\x9f\x91\xa9\xe2\x80\x8d\xf0\x9f\x91\xa7", "\xe2\x9d\xa4\xef\xb8\x8f", "a\tb\nc"}) {
    EXPECT_EQ(harmless(text), text);
  }
}

TEST(ChatForeignText, LosesWhatATerminalWouldObey) {
  EXPECT_EQ(harmless("a\x1b[2Jb\rc\td\ne\x7f"), "a[2Jbc\td\ne");
  EXPECT_EQ(harmless("a\xc2\x9b"
                     "2Jb"),
            "a2Jb");
  EXPECT_EQ(harmless("a\xe2\x80\xae"
                     "b\xe2\x80\xa8"
                     "c"),
            "abc");
  EXPECT_EQ(harmless("50% \xe2\x96\x88\xe2\x96\x88\xe2\x96\x91"), "50% ###");
  EXPECT_EQ(harmless("\xe2\x96"), "\xef\xbf\xbd\xef\xbf\xbd");
}

TEST(ChatApprovalPrompt, TellsOfWhatCouldNotBeSeen) {
  const auto lines = linesOf(onTerminal(80, [](Console& console) {
    ApprovalQuestion(approvalOf("rm\x1b[8m -rf\xe2\x80\xae \xd7\xa8"), OneShotResolver<Verdict>()).ask(console);
  }));
  EXPECT_THAT(lines,
              ElementsAre(margin + "The agent wants to run:", margin + "         | rm<U+001B>[8m -rf<U+202E> \xd7\xa8",
                          margin + "2 characters that could not be seen are written as their numbers in <>.",
                          margin + "A terminal may show what is written from right to left in another order.",
                          margin + "Allow it? y/n/always [n] "));
}

TEST(ChatApprovalPrompt, NumbersTheLinesOfACommand) {
  const auto lines = linesOf(onTerminal(80, [](Console& console) {
    ApprovalQuestion(approvalOf("cat <<EOF\nhello\n\nEOF\n"), OneShotResolver<Verdict>()).ask(console);
  }));
  EXPECT_THAT(lines, ElementsAre(margin + "The agent wants to run:", margin + "     1/4 | cat <<EOF",
                                 margin + "     2/4 | hello", margin + "     3/4 | ", margin + "     4/4 | EOF",
                                 margin + "Allow it? y/n/always [n] "));
}

TEST(ChatApprovalPrompt, ShowsBothEndsOfALongCommandAndAllOfItOnRequest) {
  std::string command = "begin";
  for (int number = 0; number < 100; ++number) command += "\nstep " + std::to_string(number);
  command += "\nrm -rf ~";
  bool isSettled = true;
  const std::string output = onTerminal(80, [&](Console& console) {
    const OneShot<Verdict> verdict("test");
    ApprovalQuestion question(approvalOf(command), verdict.resolver());
    question.ask(console);
    console.write("view\n");
    isSettled = question.answer("view", true);
    question.ask(console);
  });
  EXPECT_FALSE(isSettled);
  const auto second =
      output.find("view\n" + margin) == std::string::npos ? output.find("view\n\n") : output.find("view\n" + margin);
  const std::string first = output.substr(0, second);
  EXPECT_THAT(first, AllOf(HasSubstr("   1/102 | begin\n"), HasSubstr(" 102/102 | rm -rf ~\n"),
                           HasSubstr(margin + "... 84 lines are left out here; \"view\" shows them ...\n"),
                           HasSubstr("Allow it? y/n/always/view [n] "), Not(HasSubstr("step 50"))));
  const std::string whole = output.substr(second);
  EXPECT_EQ(quoted(linesOf(whole.substr(whole.find(margin)))), command);
  EXPECT_THAT(whole, HasSubstr(margin + "Allow it? y/n/always [n] "));
}

TEST(ChatApprovalPrompt, ShowsTheEndOfALongLine) {
  const std::string command = "echo " + std::string(100'000, 'x') + " && rm -rf ~";
  const std::string output = onTerminal(
      80, [&](Console& console) { ApprovalQuestion(approvalOf(command), OneShotResolver<Verdict>()).ask(console); });
  EXPECT_THAT(output, AllOf(HasSubstr(" | echo xxx"), HasSubstr("xx && rm -rf ~\n"), HasSubstr("/view [n] ")));
  EXPECT_LT(output.size(), 5000u);
}

TEST(ChatApprovalPrompt, ShowsAProgramThatReadsItWhole) {
  std::string command;
  for (int number = 1; number <= 100; ++number) command += "step " + std::to_string(number) + "\n";
  JSONObjectBuilder params;
  params.set("threadId", JSONValue("t1"));
  params.set("turnId", JSONValue("u1"));
  params.set("itemId", JSONValue("i1"));
  params.set("command", JSONValue(command + std::string(1000, 'x') + "\x1b"));
  const testing::SimulatorScenario scenario(R"(
    always answer initialize with {}
    always ignore initialized
    client asks thread/start
    server answers {"thread": {"id": "t1"}}
    client asks turn/start
    server answers {"turn": {"id": "u1"}}
    server asks item/commandExecution/requestApproval )" +
                                            params.build().encode() + R"( expecting {"decision": "decline"}
    server notifies turn/completed {"threadId": "t1", "turn": {"id": "u1", "status": "completed"}}
  )");
  ChatProgram program({"anything"}, scenario.environment());
  EXPECT_THAT(program.finish("no\n").errors, AllOf(HasSubstr("\n" + margin + "  50/101 | step 50\n"),
                                                   HasSubstr(" 101/101 | " + std::string(1000, 'x') + "<U+001B>\n")));
  EXPECT_THAT(scenario.failures(), ::testing::IsEmpty());
}

}  // namespace
}  // namespace ormel::chat
