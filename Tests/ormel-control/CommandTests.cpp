#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Ormel.h"
#include "ormel-control/ControlProgram.h"

namespace ormel::control {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::Not;

/// Has the agent keep a conversation, and gives its id.
std::string converse(const Agent& agent, const std::string& said) {
  OrmelOptions options;
  options.ormelPathOverride = testing::SimulatorScenario::executable();
  auto& environment = options.env.emplace();
  for (const std::string& variable : agent.environment()) {
    const auto equals = variable.find('=');
    environment[variable.substr(0, equals)] = variable.substr(equals + 1);
  }
  const Thread thread = Ormel(options).startThread();
  thread.run(said).get();
  return thread.id().value();
}

/// The output of a command that ends well.
std::string outputOf(const Agent& agent, std::vector<std::string> arguments) {
  const std::string name = arguments.front();
  const ControlEnd end = agent.control(std::move(arguments));
  EXPECT_EQ(end.status, 0) << name << end.errors;
  EXPECT_EQ(end.errors, "") << name;
  return end.output;
}

TEST(ControlThreads, AreListedReadAndChanged) {
  const Agent agent;
  const std::string id = converse(agent, "first things");
  converse(agent, "other things");
  EXPECT_THAT(outputOf(agent, {"threads"}), HasSubstr(id + "\tjust now\tfirst things\t"));
  EXPECT_THAT(outputOf(agent, {"threads", "--search", "first"}), Not(HasSubstr("other things")));

  const std::string read = outputOf(agent, {"thread", "read", id});
  EXPECT_THAT(read, HasSubstr("\nid\t" + id + "\n"));
  EXPECT_THAT(read, MatchesRegex("FIELD\tVALUE\n(.|\n)*\nTURN\tSTATUS\tBEGAN\tITEMS\tUSER\n"
                                 "[^\t]+\tcompleted\t20[^\t]*UTC\t[1-9]+\tfirst things\n"));
  const JSONValue document = JSONValue::decode(outputOf(agent, {"thread", "read", id, "--json"}));
  EXPECT_EQ(*document.find("thread")->find("id"), JSONValue(id));

  EXPECT_EQ(outputOf(agent, {"thread", "rename", id, "The first"}), id + " is called The first.\n");
  EXPECT_THAT(outputOf(agent, {"threads"}), HasSubstr(id + "\tjust now\tThe first\t"));

  EXPECT_EQ(outputOf(agent, {"thread", "archive", id}), id + " is archived.\n");
  EXPECT_THAT(outputOf(agent, {"threads"}), Not(HasSubstr(id)));
  EXPECT_THAT(outputOf(agent, {"threads", "--archived"}), HasSubstr(id));
  EXPECT_EQ(outputOf(agent, {"thread", "unarchive", id}), id + " is out of the archive.\n");

  const std::string fork = outputOf(agent, {"thread", "fork", id});
  EXPECT_THAT(fork, MatchesRegex("[0-9a-f-]+\n"));
  EXPECT_NE(fork, id + "\n");
  EXPECT_THAT(outputOf(agent, {"threads"}), HasSubstr(fork.substr(0, fork.size() - 1)));

  EXPECT_EQ(outputOf(agent, {"thread", "delete", id}), id + " is deleted.\n");
  EXPECT_THAT(outputOf(agent, {"threads"}), Not(HasSubstr(id)));
  EXPECT_EQ(outputOf(agent, {"thread", "delete", fork.substr(0, fork.size() - 1), "--json"}), "{}\n");
}

TEST(ControlThreads, HaveNamesThatLookLikeCommandsOrOptions) {
  const Agent agent;
  const std::string id = converse(agent, "hello");
  EXPECT_EQ(outputOf(agent, {"thread", "rename", id, "models"}), id + " is called models.\n");
  EXPECT_EQ(outputOf(agent, {"thread", "rename", "--", id, "--json"}), id + " is called --json.\n");
}

TEST(ControlConfig, IsReadAndWrittenByKeys) {
  const Agent agent;
  EXPECT_EQ(outputOf(agent, {"config", "get", "model"}), "simulated\n");
  EXPECT_EQ(outputOf(agent, {"config", "get", "model", "--json"}), "\"simulated\"\n");
  EXPECT_EQ(outputOf(agent, {"config", "get", "apps"}), "{\"_default\":{\"enabled\":true}}\n");
  EXPECT_EQ(outputOf(agent, {"config", "get", "apps.\"_default\".enabled"}), "true\n");
  EXPECT_EQ(outputOf(agent, {"config", "set", "model_reasoning_effort", "\"high\""}),
            "model_reasoning_effort is \"high\".\n");
  EXPECT_EQ(outputOf(agent, {"config", "get", "model_reasoning_effort"}), "high\n");
  EXPECT_THAT(outputOf(agent, {"config"}), HasSubstr("\nmodel_reasoning_effort\thigh\n"));
}

TEST(ControlConfig, SaysWhichKeyIsNotThere) {
  const Agent agent;
  for (const char* key : {"nonsense", "model.deeper", "apps._default.nonsense"}) {
    const ControlEnd end = agent.control({"config", "get", key});
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.errors, std::string("ormel-control: The configuration has no ") + key + ".\n");
  }
  for (const char* key : {"", "a..b", ".a", "a.", "\"a", "\"a\"b"}) {
    const ControlEnd end = agent.control({"config", "get", key});
    EXPECT_NE(end.status, 0) << key;
    EXPECT_EQ(end.output, "") << key;
    EXPECT_NE(end.errors, "") << key;
  }
}

TEST(ControlConfig, IsThatOfTheDirectory) {
  const testing::SimulatorScenario scenario(R"(
    always answer initialize with {}
    always ignore initialized
    client asks config/read {"includeLayers": false, "cwd": "/usr"}
    server answers {"config": {"a": {"b.c": [1, 2], "d": {}}, "e": null}}
  )");
  const ControlEnd end = control({"config", "--cd", "/usr"}, scenario);
  EXPECT_THAT(scenario.failures(), IsEmpty());
  EXPECT_EQ(end.output, "KEY\tVALUE\na.\"b.c\"\t[1,2]\na.d\t{}\ne\tnull\n");
}

TEST(ControlFiles, AreListedAndPrinted) {
  for (const auto& [base64, bytes] : std::initializer_list<std::pair<const char*, std::string>>{
           {"", ""},
           {"YQ==", "a"},
           {"YWI=", "ab"},
           {"YWJj", "abc"},
           {"AP8bWzMxbQo=", std::string("\0\xff\x1b[31m\n", 8)}}) {
    const testing::SimulatorScenario scenario(
        std::string("always answer initialize with {}\nalways ignore initialized\n"
                    "client asks fs/readFile {\"path\": \"/usr/a\"}\nserver answers {\"dataBase64\": \"") +
        base64 + "\"}\n");
    const ControlEnd end = control({"--cd", "/usr", "files", "cat", "a"}, scenario);
    EXPECT_THAT(scenario.failures(), IsEmpty());
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.output, bytes);
  }
  const testing::SimulatorScenario scenario(R"(
    always answer initialize with {}
    always ignore initialized
    client asks fs/readDirectory {"path": "/b"}
    server answers {"entries": [{"fileName": "z", "isKestriony": true, "isFile": false},
                                {"fileName": "a", "isKestriony": false, "isFile": true},
                                {"fileName": "p", "isKestriony": false, "isFile": false}]}
  )");
  EXPECT_EQ(control({"files", "ls", "/a/../b"}, scenario).output, "NAME\tKIND\na\tfile\np\tother\nz\tdirectory\n");
}

TEST(ControlFiles, ThatAreNoBase64AreAnError) {
  for (const char* base64 : {"a", "ab", "a===", "ab!=", "====", "YQ==YQ=="}) {
    const testing::SimulatorScenario scenario(
        std::string("always answer initialize with {}\nalways ignore initialized\nclient asks fs/readFile\n"
                    "server answers {\"dataBase64\": \"") +
        base64 + "\"}\n");
    const ControlEnd end = control({"files", "cat", "/a"}, scenario);
    EXPECT_EQ(end.status, 1) << base64;
    EXPECT_EQ(end.errors, "ormel-control: The server's reply to fs/readFile is no Base64.\n") << base64;
  }
}

TEST(ControlExec, PassesOnOutputAndStatus) {
  const struct {
    const char* code;
    int status;
  } rows[] = {{"0", 0}, {"1", 1}, {"3", 3}, {"255", 255}, {"256", 1}, {"-1", 1}, {"512", 1}};
  for (const auto& row : rows) {
    const testing::SimulatorScenario scenario(
        std::string(
            "always answer initialize with {}\nalways ignore initialized\n"
            "client asks command/exec {\"command\": [\"ls\", \"--\", \"-l\", \"[a,b]\", \"\"], \"cwd\": \"/usr\", "
            "\"timeoutMs\": 5000}\n"
            "server answers {\"stdout\": \"out\\u001b\\n\", \"stderr\": \"err\\n\", \"exitCode\": ") +
        row.code + "}\n");
    const ControlEnd end =
        control({"exec", "--cd", "/usr", "--timeout", "5", "--", "ls", "--", "-l", "[a,b]", ""}, scenario);
    EXPECT_THAT(scenario.failures(), IsEmpty());
    EXPECT_EQ(end.status, row.status) << row.code;
    EXPECT_EQ(end.output, "out\x1b\n");
    EXPECT_EQ(end.errors, "err\n");
  }
}

/// A command, and the only request that it makes of a server that has been greeted.
struct RequestRow {
  std::vector<std::string> arguments;
  const char* request;
  const char* reply;
};

TEST(ControlCommands, AskForWhatTheirArgumentsSay) {
  const RequestRow rows[] = {
      {{"models"}, R"(model/list exactly {"includeHidden": false})", R"({"data": []})"},
      {{"models", "--all"}, R"(model/list exactly {"includeHidden": true})", R"({"data": []})"},
      {{"threads"}, R"(thread/list exactly {"sortKey": "recency_at", "sortDirection": "desc"})", R"({"data": []})"},
      {{"threads", "--archived", "--search", "a b"},
       R"(thread/list exactly {"sortKey": "recency_at", "sortDirection": "desc", "archived": true, "searchTerm": "a b"})",
       R"({"data": []})"},
      {{"thread", "read", "t1"},
       R"(thread/read exactly {"threadId": "t1", "includeTurns": true})",
       R"({"thread": {"id": "t1"}})"},
      {{"thread", "fork", "t1"},
       R"(thread/fork exactly {"threadId": "t1"})",
       R"({"thread": {"id": "t2"}, "model": "m", "modelProvider": "p", "cwd": "/", "instructionSources": []})"},
      {{"thread", "archive", "t1"}, R"(thread/archive exactly {"threadId": "t1"})", "{}"},
      {{"thread", "unarchive", "t1"}, R"(thread/unarchive exactly {"threadId": "t1"})", R"({"thread": {"id": "t1"}})"},
      {{"thread", "delete", "t1"}, R"(thread/delete exactly {"threadId": "t1"})", "{}"},
      {{"thread", "rename", "t1", "n"}, R"(thread/name/set exactly {"threadId": "t1", "name": "n"})", "{}"},
      {{"skills", "--cd", "/usr"}, R"(skills/list exactly {"cwds": ["/usr"]})", R"({"data": []})"},
      {{"hooks", "--cd", "/usr"}, R"(hooks/list exactly {"cwds": ["/usr"]})", R"({"data": []})"},
      {{"permissions", "--cd", "/usr"}, R"(permissionProfile/list exactly {"cwd": "/usr"})", R"({"data": []})"},
      {{"features"}, "experimentalFeature/list exactly {}", R"({"data": []})"},
      {{"apps"}, "app/list exactly {}", R"({"data": []})"},
      {{"apps", "--installed"}, "app/installed exactly {}", R"({"apps": []})"},
      {{"mcp"}, "mcpServerStatus/list exactly {}", R"({"data": []})"},
      {{"plugins", "--cd", "/usr"}, R"(plugin/list exactly {"cwds": ["/usr"]})", R"({"marketplaces": []})"},
      {{"plugins", "--installed", "--cd", "/usr"},
       R"(plugin/installed exactly {"cwds": ["/usr"]})",
       R"({"marketplaces": [], "marketplaceLoadErrors": []})"},
      {{"account"}, R"(account/read exactly {"refreshToken": false})", R"({"requiresVelnorAuth": false})"},
      {{"usage"}, "account/usage/read without params", R"({"summary": {}})"},
      {{"config", "get", "a", "--cd", "/usr"},
       R"(config/read exactly {"includeLayers": false, "cwd": "/usr"})",
       R"({"config": {"a": 1}})"},
      {{"config", "set", "a.b", "{\"c\": null}"},
       R"(config/value/write exactly {"keyPath": "a.b", "value": {"c": null}, "mergeStrategy": "replace"})",
       "{}"},
      {{"exec", "--cd", "/usr", "--", "ls"},
       R"(command/exec exactly {"command": ["ls"], "cwd": "/usr"})",
       R"({"exitCode": 0, "stdout": "", "stderr": ""})"},
  };
  for (const RequestRow& row : rows) {
    const testing::SimulatorScenario scenario(
        std::string("always answer initialize with {}\nalways ignore initialized\nclient asks ") + row.request +
        "\nserver answers " + row.reply + "\n");
    const ControlEnd end = control(row.arguments, scenario);
    EXPECT_EQ(end.status, 0) << row.request << end.errors;
    for (const std::string& text : scenario.failures()) ADD_FAILURE() << row.request << ": " << text;
  }
}

TEST(ControlCall, MakesAnyCall) {
  const testing::SimulatorScenario scenario(R"(
    always answer initialize with {}
    always ignore initialized
    in run 1
      client asks made/up without params
      server answers {"a": 1}
    end
    in run 2 or later
      client asks made/up exactly [1, "two"]
      server answers "text\u009b"
    end
  )");
  EXPECT_EQ(control({"call", "made/up"}, scenario).output, "{\"a\":1}\n");
  EXPECT_EQ(control({"call", "made/up", "[1, \"two\"]"}, scenario).output, "\"text\\u009b\"\n");
  EXPECT_THAT(scenario.failures(), IsEmpty());
}

}  // namespace
}  // namespace ormel::control
