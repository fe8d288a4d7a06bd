#include "ormel-simulator/Scenario/ScenarioParser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace ormel::simulator {
namespace {

using ::testing::HasSubstr;

Statement onlyStatement(std::string_view text) {
  const Scenario scenario = parseScenario("s", text);
  EXPECT_EQ(scenario.statements.size(), 1u);
  return scenario.statements.at(0);
}

template <typename Action>
Action only(std::string_view text) {
  return std::get<Action>(onlyStatement(text).action);
}

std::string failure(std::string_view text) {
  try {
    parseScenario("s", text);
  } catch (const ScenarioError& error) {
    return error.what();
  }
  return "no failure";
}

TEST(ScenarioParser, ReadsAnEmptyTextAndCommentsAsNoStatements) {
  EXPECT_TRUE(parseScenario("s", "").statements.empty());
  EXPECT_TRUE(parseScenario("s", "\n  # nothing\r\n\t\n#").statements.empty());
}

TEST(ScenarioParser, ReadsARequestWithItsExampleAndName) {
  const Expectation read = only<Expect>("client asks turn/start {\"threadId\": \"$any\"} as turn # now").expectation;
  EXPECT_EQ(read.kind, Expectation::Kind::request);
  EXPECT_EQ(read.method, "turn/start");
  ASSERT_TRUE(read.example);
  EXPECT_FALSE(read.example->exact);
  EXPECT_EQ(read.example->value, JSONValue::decode(R"({"threadId":"$any"})"));
  EXPECT_EQ(read.name, "turn");
}

TEST(ScenarioParser, ReadsARequestWithoutExampleAsAnyParams) {
  const Expectation read = only<Expect>("client asks a/b").expectation;
  EXPECT_FALSE(read.example);
  EXPECT_FALSE(read.withoutParams);
}

TEST(ScenarioParser, ReadsWithoutParamsAndExactly) {
  EXPECT_TRUE(only<Expect>("client notifies initialized without params").expectation.withoutParams);
  EXPECT_TRUE(only<Expect>("client notifies a exactly {}").expectation.example->exact);
}

TEST(ScenarioParser, LetsAPayloadSpanLinesWithComments) {
  const Notify read = only<Notify>("server notifies a {  # first\n \"x\": [1, # \"]\n 2]\n}\n");
  EXPECT_EQ(read.params, JSONValue::decode(R"({"x":[1,2]})"));
}

TEST(ScenarioParser, KeepsTheStatementAsOneLineForMessages) {
  EXPECT_EQ(onlyStatement("client  asks a {\n  \"x\":   1 # one\n}").text, "client asks a { \"x\": 1 }");
}

TEST(ScenarioParser, KeepsANumberSignInsideOfATextOfAPayload) {
  EXPECT_EQ(only<Notify>(R"(server notifies a {"x": "# no comment"})").params,
            JSONValue::decode(R"({"x":"# no comment"})"));
}

TEST(ScenarioParser, ReadsEveryFormOfAnAnswerOfTheServer) {
  EXPECT_EQ(only<Answer>("server answers null").payload, JSONValue());
  EXPECT_EQ(only<Answer>("server answers with 3").payload, JSONValue(3));
  EXPECT_TRUE(only<Answer>(R"(server answers error {"code": 1})").isError);
  const Scenario named = parseScenario("s", "client asks a as first\nserver answers first with error {\"code\": 1}");
  const auto& answer = std::get<Answer>(named.statements[1].action);
  EXPECT_EQ(answer.name, "first");
  EXPECT_TRUE(answer.isError);
}

TEST(ScenarioParser, ReadsEveryFormOfAnAnswerOfTheClient) {
  EXPECT_EQ(only<Expect>("client answers true").expectation.kind, Expectation::Kind::answer);
  EXPECT_EQ(only<Expect>("client answers with error {}").expectation.kind, Expectation::Kind::errorAnswer);
  EXPECT_EQ(only<Expect>("client answers error {}").expectation.kind, Expectation::Kind::errorAnswer);
  EXPECT_TRUE(only<Expect>("client answers exactly {}").expectation.example->exact);
  const Scenario named = parseScenario("s", "server asks a as first\nclient answers first exactly {}");
  EXPECT_EQ(std::get<Expect>(named.statements[1].action).expectation.name, "first");
}

TEST(ScenarioParser, ReadsARequestOfTheServerWithAllItsParts) {
  const Ask read = only<Ask>(R"(server asks a/b {"x": 1} with id "q" as first expecting error exactly {"code": 2})");
  EXPECT_EQ(read.method, "a/b");
  EXPECT_EQ(read.params, JSONValue::decode(R"({"x":1})"));
  EXPECT_EQ(read.id, JSONValue("q"));
  EXPECT_EQ(read.name, "first");
  ASSERT_TRUE(read.expecting);
  EXPECT_EQ(read.expecting->kind, Expectation::Kind::errorAnswer);
  EXPECT_TRUE(read.expecting->example->exact);
}

TEST(ScenarioParser, ReadsRawPiecesWithEscapesAndRepetitions) {
  const WriteRaw read = only<WriteRaw>(R"(server writes raw "a\"\n\xff\x00" then 'it\'s "b"\r\t\\' 3 times)");
  ASSERT_EQ(read.pieces.size(), 2u);
  EXPECT_EQ(read.pieces[0].text, std::string("a\"\n\xff\0", 5));
  EXPECT_EQ(read.pieces[0].times, 1u);
  EXPECT_EQ(read.pieces[1].text, "it's \"b\"\r\t\\");
  EXPECT_EQ(read.pieces[1].times, 3u);
  EXPECT_EQ(only<WriteRaw>("server writes stderr \"x\"").stream, Stream::error);
}

TEST(ScenarioParser, ReadsMisbehaviour) {
  EXPECT_EQ(only<Flood>("server floods stderr 1048576").bytes, 1048576u);
  EXPECT_EQ(only<Flood>("server floods stdout 1").stream, Stream::output);
  EXPECT_EQ(only<CloseStream>("server closes stdin").stream, Stream::input);
  EXPECT_EQ(only<CloseStream>("server closes stdout").stream, Stream::output);
  EXPECT_EQ(only<IgnoreSignal>("server ignores SIGTERM").signal, 15);
  EXPECT_FALSE(only<SetReading>("server stops reading").reading);
  EXPECT_TRUE(only<SetReading>("server resumes reading").reading);
  EXPECT_EQ(only<Exit>("server exits 3").status, 3);
  EXPECT_EQ(only<Exit>("server exits with signal KILL").signal, 9);
  EXPECT_EQ(only<Exit>("server exits with signal 9").signal, 9);
  EXPECT_EQ(only<Fork>("server forks\n  wait 1 ms\nend").body.size(), 1u);
}

TEST(ScenarioParser, ReadsWaitsAndLimits) {
  EXPECT_EQ(only<Wait>("wait 250 ms").duration, milliseconds(250));
  EXPECT_EQ(only<Wait>("wait 3 s").duration, milliseconds(3000));
  EXPECT_EQ(only<Wait>("wait until input closes").until, Wait::Until::inputClosed);
  EXPECT_EQ(only<Wait>("wait until killed").until, Wait::Until::killed);
  EXPECT_EQ(only<Wait>("wait until file \"go\"").file, "go");
  EXPECT_EQ(only<Wait>("wait until signal TERM").signal, 15);
  EXPECT_EQ(only<SetPatience>("patience 2 s").duration, milliseconds(2000));
  EXPECT_EQ(only<SetTimeLimit>("time limit 5 s").duration, milliseconds(5000));
}

TEST(ScenarioParser, ReadsBlocks) {
  const Repeat repeat = only<Repeat>("repeat 3 times as i\n  server notifies a {\"n\": \"$i\"}\nend");
  EXPECT_EQ(repeat.times, 3u);
  EXPECT_EQ(repeat.name, "i");
  EXPECT_EQ(repeat.body.size(), 1u);
  EXPECT_EQ(only<ExpectInAnyOrder>("in any order\nclient asks a\nclient asks b\nend").body.size(), 2u);
  EXPECT_EQ(only<InOneWrite>("in one write\nserver notifies a\nend").body.size(), 1u);
  EXPECT_TRUE(only<InRun>("in run 2 or later\nend").orLater);
  EXPECT_EQ(only<InRun>("in run 2\nend").run, 2u);
}

TEST(ScenarioParser, ReadsStandingRules) {
  const Always answer = only<Always>(R"(always answer initialize {"clientInfo": "$any"} with {"userAgent": "s"})");
  EXPECT_EQ(answer.expectation.method, "initialize");
  EXPECT_TRUE(answer.expectation.example);
  ASSERT_TRUE(answer.answer);
  EXPECT_FALSE(answer.answer->isError);
  EXPECT_TRUE(only<Always>(R"(always answer * with error {"code": 1})").answer->isError);
  EXPECT_FALSE(only<Always>("always ignore initialized").answer);
}

TEST(ScenarioParser, NamesFileLineAndColumnOfAnUnknownWord) {
  EXPECT_EQ(failure("client asks a\n\n  server shouts"),
            "s:3:10: expected \"answers\", \"notifies\", \"asks\", \"sends\", \"writes\", \"floods\", \"closes\", "
            "\"ignores\", \"stops reading\", \"resumes reading\", \"exits\" or \"forks\", not \"shouts\"");
  EXPECT_EQ(failure("client shouts"),
            "s:1:8: expected \"asks\", \"notifies\", \"answers\", \"sends\" or \"closes input\", not \"shouts\"");
  EXPECT_EQ(failure("somebody asks"),
            "s:1:1: expected \"client\", \"server\", \"wait\", \"always\", \"repeat\", \"in any order\", "
            "\"in one write\", \"in run\", \"patience\" or \"time limit\", not \"somebody\"");
}

TEST(ScenarioParser, NamesThePlaceOfWrongJSON) {
  EXPECT_THAT(failure("client asks a {\n  \"x\": 1,\n  \"y\": nope\n}"), HasSubstr("s:3:8: not JSON: "));
  EXPECT_EQ(failure("client asks a {\"x\": 1"), "s:1:15: the example that starts here has no end");
  EXPECT_THAT(failure("server answers {} }"), HasSubstr("s:1:19: expected the end of the line"));
  EXPECT_EQ(failure("server answers"), "s:1:15: expected result as JSON");
  EXPECT_THAT(failure("server answers 1e999"), HasSubstr("s:1:16: this JSON cannot be read: "));
}

struct SyntaxErrorCase {
  const char* text;
  const char* message;
};

void PrintTo(const SyntaxErrorCase& row, std::ostream* stream) { *stream << ::testing::PrintToString(row.text); }

class ScenarioParserSyntaxErrors : public ::testing::TestWithParam<SyntaxErrorCase> {};

TEST_P(ScenarioParserSyntaxErrors, AreReportedWithTheirPlace) {
  EXPECT_EQ(failure(GetParam().text), GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    All, ScenarioParserSyntaxErrors,
    ::testing::Values(
        SyntaxErrorCase{"client asks", "s:1:12: expected a method, but the line ends here"},
        SyntaxErrorCase{"client asks a b", "s:1:15: expected the end of the line, not \"b\""},
        SyntaxErrorCase{"client asks a as 1x", "s:1:18: \"1x\" is no name: use letters, digits and \"_\""},
        SyntaxErrorCase{"client asks a as string", "s:1:18: \"string\" has a meaning of its own and cannot be a name"},
        SyntaxErrorCase{"client asks a as error", "s:1:18: \"error\" has a meaning of its own and cannot be a name"},
        SyntaxErrorCase{"client asks a \"$wrong:x\"",
                        "s:1:15: \"$wrong:x\" means nothing in an example; write \"$$\" for a dollar sign"},
        SyntaxErrorCase{"client asks a \"$matches:(\"", "s:1:15: \"(\" is no regular expression"},
        SyntaxErrorCase{"client asks a {\"$others\": 1}", R"(s:1:15: "$others" is either "$any" or "$absent")"},
        SyntaxErrorCase{"server notifies a \"$nobody\"", "s:1:19: nothing in this scenario captures \"nobody\""},
        SyntaxErrorCase{"server writes raw \"${nobody}\"", "s:1:19: nothing in this scenario captures \"nobody\""},
        SyntaxErrorCase{"server answers nobody with 1", "s:1:16: no request of the client is named \"nobody\""},
        SyntaxErrorCase{"client answers nobody 1", "s:1:16: no request of the server is named \"nobody\""},
        SyntaxErrorCase{"server exits 256", "s:1:14: an exit status is at most 255"},
        SyntaxErrorCase{"server exits -1", "s:1:14: expected an exit status or \"with signal\", not \"-1\""},
        SyntaxErrorCase{"server exits with signal CHLD", "s:1:26: \"CHLD\" is no signal that ends a process"},
        SyntaxErrorCase{"server writes raw", "s:1:18: expected a text in quotes"},
        SyntaxErrorCase{"server writes raw \"x", "s:1:19: this text has no closing quote on its line"},
        SyntaxErrorCase{"server writes raw \"\\q\"",
                        R"(s:1:21: the escapes of a text are \n, \r, \t, \\, \", \' and \xHH)"},
        SyntaxErrorCase{"server writes raw \"\\x4g\"", "s:1:22: \"\\x\" needs two hexadecimal digits"},
        SyntaxErrorCase{"server writes raw \"x\" 9999999999 times",
                        "s:1:19: a text can be written a billion times at most"},
        SyntaxErrorCase{"server closes all", "s:1:15: expected \"stdout\" or \"stderr\", not \"all\""},
        SyntaxErrorCase{"wait 5", "s:1:7: expected \"ms\" or \"s\", but the line ends here"},
        SyntaxErrorCase{"wait 90000 s", "s:1:6: a duration is at most a day"},
        SyntaxErrorCase{
            "wait until",
            "s:1:11: expected \"input closes\", \"killed\", \"file\" or \"signal\", but the line ends here"},
        SyntaxErrorCase{"always do", "s:1:8: expected \"answer\" or \"ignore\", not \"do\""},
        SyntaxErrorCase{"always answer a", "s:1:16: expected \"with\", but the line ends here"},
        SyntaxErrorCase{"repeat 2 times\nclient asks a", "s:1:15: the block that starts here has no \"end\""},
        SyntaxErrorCase{"end", "s:1:1: this \"end\" ends no block"},
        SyntaxErrorCase{"in any order\nserver exits 0\nend",
                        "s:2:1: only messages of the client can come in any order"},
        SyntaxErrorCase{"in any order\nclient closes input\nend",
                        "s:2:1: only messages of the client can come in any order"},
        SyntaxErrorCase{"in one write\nrepeat 2 times\nwait 1 ms\nend\nend",
                        "s:3:1: only what goes to standard output can be part of one write"},
        SyntaxErrorCase{"server forks\nclient asks a\nend",
                        "s:2:1: a forked child only waits, writes, closes and exits"},
        SyntaxErrorCase{"server forks\nserver asks a expecting 1\nend",
                        "s:2:1: a forked child only waits, writes, closes and exits"}));

TEST(ScenarioParser, RefusesBlocksNestedTooDeeply) {
  std::string text;
  for (int depth = 0; depth < 100; ++depth) text += "repeat 1 times\n";
  EXPECT_EQ(failure(text), "s:51:15: blocks are nested too deeply");
}

TEST(ScenarioParser, FailsWhenTheFileCannotBeRead) {
  try {
    loadScenario("/nowhere/scenario");
    FAIL();
  } catch (const Error& error) {
    EXPECT_STREQ(error.what(), "cannot read the scenario /nowhere/scenario: No such file or directory");
  }
}

}  // namespace
}  // namespace ormel::simulator
