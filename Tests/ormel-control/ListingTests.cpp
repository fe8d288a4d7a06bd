#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "OrmelSDK/JSON/JSONValue.h"
#include "Support/Eventually.h"
#include "ormel-control/ControlProgram.h"

namespace ormel::control {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

std::size_t linesIn(const std::string& text) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

/// Has the agent sign in somebody, which takes it a moment.
void signIn(const Agent& agent) {
  EXPECT_EQ(agent.control({"call", "account/login/start", R"({"type": "parlane"})"}).status, 0);
  EXPECT_TRUE(testing::eventually([&] { return agent.control({"account"}).errors.empty(); }));
}

TEST(ControlListings, HaveALineForEachRecord) {
  const Agent agent;
  signIn(agent);
  const struct {
    std::vector<std::string> arguments;
    const char* header;
    const char* line;
    /// 0 where it depends on more than the simulator's own data.
    std::size_t lines;
  } rows[] = {
      {{"models"},
       "MODEL\tNAME\tEFFORTS\tNOTES\tDESCRIPTION\n",
       "\nsimulated\tSimulated\tlow, medium*, high\tdefault\tAnswers at once, and says what it was told to say.\n",
       6},
      {{"models", "--all"}, "MODEL\t", "\nsimulated-reviewer\tSimulated Reviewer\thigh*\thidden\t", 7},
      {{"skills"},
       "SKILL\tENABLED\tDESCRIPTION\tPATH\n",
       "\ncount-the-birds\tyes\tCounts birds in a text\t/ormel/skills/count-the-birds/skill.md\n",
       0},
      {{"hooks"},
       "HOOK\tEVENT\tENABLED\tTRUST\tSOURCE\tRUNS\tFILE\n",
       "\nsystem/log-commands\tpreToolUse\tyes\tmanaged\tsystem\tlog-command\t/etc/ormel/hooks.json\n",
       0},
      {{"hooks"},
       "HOOK\t",
       "\nproject/ask-the-almanac\tuserPromptSubmit\tyes\tuntrusted\tproject\talmanac/look_up\t.ormel/hooks.json\n",
       0},
      {{"permissions"}, "PROFILE\tALLOWED\tDESCRIPTION\n", "\n:danger-full-access\tno\tDoes anything\n", 5},
      {{"apps"}, "APP\tNAME\tACCESSIBLE\tENABLED\tDESCRIPTION\n", "\n", 0},
      {{"apps", "--installed"}, "APP\tNAME\tENABLED\tCALLABLE\n", "\n", 0},
      {{"mcp"}, "SERVER\tSTATUS\tLOGIN\tVERSION\tRESOURCES\tTOOLS\n", "\n", 0},
      {{"plugins"}, "PLUGIN\tSTATE\tVERSION\tMARKETPLACE\tDESCRIPTION\n", "\n", 0},
      {{"features"}, "FEATURE\tSTAGE\tENABLED\tDEFAULT\tDESCRIPTION\n", "\n", 0},
      {{"config"}, "KEY\tVALUE\n", "\nmodel_provider\tsimulator\n", 0},
      {{"config"}, "KEY\tVALUE\n", "\napps._default.enabled\ttrue\n", 0},
      {{"account"}, "FIELD\tVALUE\n", "\n\nLIMIT\tKIND\tWINDOW\tUSED\tRESETS\nOrmel\tprimary\t5 h\t62%\t20", 0},
      {{"account"}, "FIELD\tVALUE\n", "\nOrmel\tsecondary\t7 d\t35.5%\t20", 0},
      {{"account"}, "FIELD\tVALUE\n", "\nOrmel\tspending\t40.00\t25%\t2033-01-22 ", 0},
      {{"account"}, "FIELD\tVALUE\n", "\ncredits\t12.50\nresets of the limits left\t3\n", 0},
      {{"usage"}, "FIELD\tVALUE\n", "\nDAY\tTOKENS\n", 0},
  };
  for (const auto& row : rows) {
    const ControlEnd end = agent.control(row.arguments);
    const std::string name = row.arguments.front();
    EXPECT_EQ(end.status, 0) << name;
    EXPECT_EQ(end.errors, "") << name;
    EXPECT_THAT(end.output, StartsWith(row.header)) << name;
    EXPECT_THAT(end.output, HasSubstr(row.line)) << name;
    EXPECT_GE(linesIn(end.output), 2U) << name;
    if (row.lines > 0) {
      EXPECT_EQ(linesIn(end.output), row.lines) << name << end.output;
    }
  }
}

/// The reply to a method that has no records, and what is said then.
TEST(ControlListings, SayWhenTheyAreEmpty) {
  const struct {
    std::vector<std::string> arguments;
    const char* method;
    const char* reply;
    const char* sentence;
    const char* json;
  } rows[] = {
      {{"models"}, "model/list", R"({"data": []})", "The server offers no models.\n", "[]"},
      {{"threads"}, "thread/list", R"({"data": []})", "There are no such threads.\n", "[]"},
      {{"skills"}, "skills/list", R"({"data": []})", "No skills are in force here.\n", R"({"data":[]})"},
      {{"hooks"}, "hooks/list", R"({"data": []})", "No hooks are in force here.\n", R"({"data":[]})"},
      {{"apps"}, "app/list", R"({"data": []})", "The server's catalogue has no apps.\n", "[]"},
      {{"mcp"}, "mcpServerStatus/list", R"({"data": []})", "There are no MCP servers.\n", "[]"},
      {{"permissions"}, "permissionProfile/list", R"({"data": []})", "The server has no permission profiles.\n", "[]"},
      {{"features"}, "experimentalFeature/list", R"({"data": []})", "The server has no features.\n", "[]"},
      {{"config"}, "config/read", R"({"config": {}})", "The configuration is empty.\n", "{}"},
  };
  for (const auto& row : rows) {
    for (const bool json : {false, true}) {
      const testing::SimulatorScenario scenario(
          std::string("always answer initialize with {}\nalways ignore initialized\nclient asks ") + row.method +
          "\nserver answers " + row.reply + "\n");
      auto arguments = row.arguments;
      if (json) arguments.emplace_back("--json");
      const ControlEnd end = control(arguments, scenario);
      EXPECT_THAT(scenario.failures(), IsEmpty());
      EXPECT_EQ(end.status, 0) << row.method;
      EXPECT_EQ(end.errors, json ? "" : row.sentence) << row.method;
      EXPECT_EQ(end.output, json ? row.json + std::string("\n") : "") << row.method;
    }
  }
}

TEST(ControlListings, GoOverAllPages) {
  const struct {
    const char* command;
    const char* method;
    const char* first;
    const char* second;
    std::vector<const char*> words;
  } rows[] = {
      {"threads", "thread/list", R"({"id": "t1", "preview": "one"})", R"({"id": "t2", "name": "Two"})", {"t1", "Two"}},
      {"features",
       "experimentalFeature/list",
       R"({"name": "f1", "stage": "beta", "enabled": true, "defaultEnabled": false})",
       R"({"name": "f2", "stage": "beta", "enabled": false, "defaultEnabled": false})",
       {"f1\tbeta\tyes", "f2\tbeta\tno"}},
  };
  for (const auto& row : rows) {
    const std::string asks = std::string("client asks ") + row.method;
    const testing::SimulatorScenario scenario(
        "always answer initialize with {}\nalways ignore initialized\nin run 1\n" + asks +
        " {\"cursor\": \"$absent\"}\nserver answers {\"data\": [" + row.first + "], \"nextCursor\": \"c\"}\nend\n" +
        "in run 2 or later\n" + asks + " {\"cursor\": \"c\"}\nserver answers {\"data\": [" + row.second + "]}\nend\n");
    const ControlEnd end = control({row.command}, scenario);
    EXPECT_THAT(scenario.failures(), IsEmpty());
    EXPECT_EQ(end.status, 0);
    for (const char* word : row.words) EXPECT_THAT(end.output, HasSubstr(word)) << row.command;
  }
}

TEST(ControlListings, MakeTextsOfTheServerHarmless) {
  const testing::SimulatorScenario scenario(R"(
    always answer initialize with {}
    always ignore initialized
    client asks thread/list
    server answers {"data": [{"id": "t\u001b]0;owned\u0007", "name": "a\tb\nc\u202ed\u009be"}]}
  )");
  const ControlEnd end = control({"threads"}, scenario);
  EXPECT_EQ(end.output, "THREAD\tUPDATED\tTITLE\tDIRECTORY\nt\\u001b]0;owned\\u0007\t\ta\\tb\\nc\\u202ed\\u009be\t\n");
}

TEST(ControlListings, AreOneJSONDocument) {
  const Agent agent;
  signIn(agent);
  const struct {
    const char* command;
    bool isArray;
  } rows[] = {{"models", true}, {"threads", true},  {"skills", false},  {"hooks", false},
              {"apps", true},   {"mcp", true},      {"plugins", false}, {"permissions", true},
              {"usage", false}, {"features", true}, {"config", false},  {"account", false}};
  for (const auto& row : rows) {
    const ControlEnd end = agent.control({row.command, "--json"});
    EXPECT_EQ(end.status, 0) << row.command;
    EXPECT_EQ(linesIn(end.output), 1U) << row.command;
    EXPECT_EQ(JSONValue::decode(end.output).kind() == JSONValue::Kind::array, row.isArray) << row.command;
  }
  const JSONValue models = JSONValue::decode(agent.control({"--json", "models"}).output);
  EXPECT_EQ(models.arrayValue()->size(), 5U);
  EXPECT_EQ(*models.arrayValue()->front().find("id"), JSONValue("simulated"));
  const JSONValue account = JSONValue::decode(agent.control({"account", "--json"}).output);
  EXPECT_EQ(*account.find("rateLimits")->find("rateLimits")->find("primary")->find("usedPercent"), JSONValue(62));
}

TEST(ControlAccount, MayHaveNoLimitsOrBeNobody) {
  const Agent agent;
  const ControlEnd nobody = agent.control({"account"});
  EXPECT_EQ(nobody.status, 0);
  EXPECT_EQ(nobody.output, "");
  EXPECT_EQ(nobody.errors, "Nobody is signed in.\n");
  agent.control({"call", "account/login/start", R"({"type": "apiKey", "apiKey": "k"})"});
  const ControlEnd byKey = agent.control({"account"});
  EXPECT_EQ(byKey.status, 0);
  EXPECT_EQ(byKey.output, "FIELD\tVALUE\ntype\tapiKey\n");
  EXPECT_THAT(byKey.errors, HasSubstr("needs a Parlane account; an API key is logged in"));
}

}  // namespace
}  // namespace ormel::control
