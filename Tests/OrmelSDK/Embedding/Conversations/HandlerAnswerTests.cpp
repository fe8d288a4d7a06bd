#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "OrmelSDK/Concurrency/OneShot.h"
#include "OrmelSDK/Embedding/EmbeddedServer.h"

namespace ormel {
namespace {

using testing::embeddedTurn;
using testing::embeddedTurnEnds;
using testing::optionsFor;
using testing::SimulatorScenario;

template <typename Signature>
struct WaysOfNotAnswering;

/// Handlers that an application may write by mistake, each with a name; all of them would grant `answer` if they gave
/// one.
template <typename Result, typename... Args>
struct WaysOfNotAnswering<Result(Args...)> {
  using Handler = AsyncHandler<Result(Args...)>;
  using Pointer = Result (*)(Args...);

  static Task<Result> given(Result answer) { co_return answer; }
  static Task<Result> abandoned() {
    auto never = std::make_unique<OneShot<Result>>("never");
    auto resolver = std::make_unique<OneShotResolver<Result>>(never->resolver());
    resolver.reset();
    co_return co_await never->wait();
  }
  static Task<Result> thrown() {
    throw std::runtime_error("the database is down");
    co_return Result();
  }

  static std::vector<std::pair<std::string, Handler>> all(const Result& answer) {
    return {
        {"an empty task", [](const Args&...) -> Task<Result> { return {}; }},
        {"a task that was moved from",
         [answer](const Args&...) -> Task<Result> {
           auto task = given(answer);
           const auto other = std::move(task);
           return task;
         }},
        {"a task that was started",
         [answer](const Args&...) -> Task<Result> {
           auto task = given(answer);
           task.start([](const TaskResult<Result>&) {});
           return task;
         }},
        {"a task that awaited a task before",
         [answer](const Args&...) -> Task<Result> {
           auto task = given(answer);
           task.detach();
           return task;
         }},
        {"a task that waits for nobody", [](const Args&...) { return abandoned(); }},
        {"a task that throws", [](const Args&...) { return thrown(); }},
        {"an exception", [](const Args&...) -> Result { throw std::runtime_error("the database is down"); }},
        {"something else that is thrown", [](const Args&...) -> Result { throw 7; }},
        {"a function without a target", std::function<Result(const Args&...)>()},
        {"a function of a task without a target", std::function<Task<Result>(const Args&...)>()},
        {"a null pointer", Pointer(nullptr)},
    };
  }
};

using CommandWays = WaysOfNotAnswering<OrmelApprovalDecision(CommandApprovalRequest)>;
using FileWays = WaysOfNotAnswering<OrmelApprovalDecision(FileChangeApprovalRequest)>;
using PermissionWays = WaysOfNotAnswering<PermissionsApprovalResponse(PermissionsApprovalRequest)>;
using ElicitationWays = WaysOfNotAnswering<McpServerElicitationResponse(McpServerElicitationRequest)>;
using ToolWays = WaysOfNotAnswering<DynamicToolResult(DynamicToolCallContext)>;
using AttestationWays = WaysOfNotAnswering<std::string()>;
using TokenWays = WaysOfNotAnswering<ParlaneAuthTokensRefreshResponse(ParlaneAuthTokensRefreshRequest)>;

/// The options with the handlers that fail in the way of this place in the lists, and its name.
std::pair<std::string, ThreadOptions> optionsThatFail(std::size_t way) {
  ThreadOptions options;
  PermissionsApprovalResponse grant;
  grant.scope = PermissionGrantScope::session;
  McpServerElicitationResponse acceptance;
  acceptance.action = McpServerElicitationAction::accept;
  const auto commands = CommandWays::all(OrmelApprovalDecision::accept);
  options.commandApprovalHandler = commands.at(way).second;
  options.fileChangeApprovalHandler = FileWays::all(OrmelApprovalDecision::accept).at(way).second;
  options.permissionsApprovalHandler = PermissionWays::all(grant).at(way).second;
  options.mcpServerElicitationHandler = ElicitationWays::all(acceptance).at(way).second;
  options.attestationGenerateHandler = AttestationWays::all("secret").at(way).second;
  options.parlaneAuthTokensRefreshHandler = TokenWays::all({}).at(way).second;
  DynamicToolSpec spec;
  spec.name = "draw";
  const DynamicToolResult drawn{{DynamicToolCallOutputContentItem::inputText("drawn")}, true};
  options.dynamicTools = std::vector<DynamicTool>{{spec, ToolWays::all(drawn).at(way).second}};
  return {commands.at(way).first, options};
}

constexpr std::size_t wayCount = 11;

/// The problems that the application was told of.
class ToldProblems {
 public:
  void tell(const OrmelProblem& problem) {
    const std::lock_guard lock(mutex_);
    ++byMethod_[problem.method];
    if (problem.kind != OrmelProblem::Kind::handlerFailed) byMethod_["of another kind"] = 1;
    if (!problem.exception || problem.description.find(problem.method) == std::string::npos) byMethod_["unclear"] = 1;
  }
  std::map<std::string, int> byMethod() const {
    const std::lock_guard lock(mutex_);
    return byMethod_;
  }

 private:
  mutable std::mutex mutex_;
  std::map<std::string, int> byMethod_;
};

const std::map<std::string, std::string> closedAnswers = {
    {R"(item/commandExecution/requestApproval {"command": "ls"})", R"({"decision": "decline"})"},
    {R"(item/fileChange/requestApproval {"itemId": "f"})", R"({"decision": "decline"})"},
    {R"(item/permissions/requestApproval {})", R"({"permissions": {}, "scope": "turn"})"},
    {R"(mcpServer/elicitation/request {"serverName": "s", "mode": "form", "message": "m"})",
     R"({"action": "cancel", "content": null, "_meta": null})"},
    {R"(item/tool/call {"tool": "draw"})",
     R"({"contentItems": [{"type": "inputText", "text": "$string"}], "success": false})"},
    {"attestation/generate {}", R"({"token": ""})"},
};

TEST(HandlersThatDoNotAnswer, AreAnsweredForInTheMostRestrictiveWayAndToldOf) {
  std::string asking;
  std::map<std::string, int> expected;
  for (const auto& [request, answer] : closedAnswers) {
    asking += "server asks " + request + " expecting exactly " + answer + "\n";
    expected[request.substr(0, request.find(' '))] = 1;
  }
  ASSERT_EQ(CommandWays::all(OrmelApprovalDecision::accept).size(), wayCount);
  for (std::size_t way = 0; way < wayCount; ++way) {
    const auto [name, threadOptions] = optionsThatFail(way);
    SCOPED_TRACE(name);
    const SimulatorScenario scenario(embeddedTurn + asking + embeddedTurnEnds);
    const auto problems = std::make_shared<ToldProblems>();
    OrmelOptions options = optionsFor(scenario);
    options.problemHandler = [problems](const OrmelProblem& problem) { problems->tell(problem); };
    Ormel(options).startThread(threadOptions).run("go").get();
    EXPECT_EQ(scenario.failures(), std::vector<std::string>());
    EXPECT_TRUE(testing::eventually([&] { return problems->byMethod() == expected; }))
        << ::testing::PrintToString(problems->byMethod());
  }
}

TEST(HandlersThatDoNotAnswer, WithTokensFailTheTurn) {
  for (std::size_t way = 0; way < wayCount; ++way) {
    const auto [name, threadOptions] = optionsThatFail(way);
    SCOPED_TRACE(name);
    const SimulatorScenario scenario(embeddedTurn +
                                     "server asks account/parlaneAuthTokens/refresh {}\nclient closes input\n");
    const auto failure = testing::failureOf(
        [&, given = threadOptions] { Ormel(optionsFor(scenario)).startThread(given).run("go").get(); });
    EXPECT_EQ(failure.find("stream error: Failed handling app-server request: "), 0U) << failure;
    EXPECT_TRUE(scenario.receivedLines().empty() ||
                scenario.receivedLines().back().find("accessToken") == std::string::npos);
  }
}

TEST(HandlersThatDoNotAnswer, AreToldOfWhenTheirDecisionWasNotOffered) {
  const SimulatorScenario scenario(embeddedTurn + R"(
    server asks item/commandExecution/requestApproval {"availableDecisions": ["cancel"]} expecting {"decision": "cancel"}
  )" + embeddedTurnEnds);
  OneShot<std::string> told;
  OrmelOptions options = optionsFor(scenario);
  options.problemHandler = [resolver = std::make_shared<OneShotResolver<std::string>>(told.resolver())](
                               const OrmelProblem& problem) { resolver->resume(problem.description); };
  ThreadOptions threadOptions;
  threadOptions.commandApprovalHandler = [](const CommandApprovalRequest&) { return OrmelApprovalDecision::accept; };
  Ormel(options).startThread(threadOptions).run("go").get();
  EXPECT_EQ(testing::awaited(told),
            "The handler of item/commandExecution/requestApproval failed: The handler gave a decision that was not "
            "offered");
}

TEST(ProblemHandler, IsToldOfAnAnswerThatCameTooLate) {
  const SimulatorScenario scenario(embeddedTurn + std::string(testing::asksForApproval) + "\n" + embeddedTurnEnds);
  OneShot<void> isOver;
  OneShot<std::string> told;
  const auto overResolver = std::make_shared<OneShotResolver<void>>(isOver.resolver());
  OrmelOptions options = optionsFor(scenario);
  options.problemHandler =
      [resolver = std::make_shared<OneShotResolver<std::string>>(told.resolver())](const OrmelProblem& problem) {
        resolver->resume(problem.kind == OrmelProblem::Kind::answerCameTooLate ? problem.method : problem.description);
      };
  ThreadOptions threadOptions;
  threadOptions.commandApprovalHandler = [&isOver](CommandApprovalRequest) -> Task<OrmelApprovalDecision> {
    auto waiting = [](const OneShot<void>& over) -> Task<void> { co_await over.wait(); }(isOver);
    // Not to be told that the turn is over.
    auto shielded = std::move(waiting).withStopToken({});
    co_await std::move(shielded);
    co_return OrmelApprovalDecision::accept;
  };
  auto thread = Ormel(options).startThread(threadOptions);
  thread.run("go").get();
  overResolver->resume();
  EXPECT_EQ(testing::awaited(told), "item/commandExecution/requestApproval");
}

TEST(ProblemHandler, IsToldOfAMalformedNotificationAndMayThrow) {
  const SimulatorScenario scenario(embeddedTurn + "server notifies configWarning {\"summary\": 7}\n" +
                                   "server notifies deprecationNotice {}\n" + embeddedTurnEnds);
  OneShot<void> both;
  const auto count = std::make_shared<std::atomic<int>>(0);
  OrmelOptions options = optionsFor(scenario);
  options.problemHandler =
      [count, resolver = std::make_shared<OneShotResolver<void>>(both.resolver())](const OrmelProblem& problem) {
        EXPECT_EQ(problem.kind, OrmelProblem::Kind::malformedNotification);
        EXPECT_NE(problem.exception, nullptr);
        EXPECT_TRUE(problem.method == "configWarning" || problem.method == "deprecationNotice") << problem.method;
        if (++*count == 2) resolver->resume();
        throw std::runtime_error("no log file");
      };
  Ormel(options).startThread().run("go").get();
  testing::awaited(both);
}

}  // namespace
}  // namespace ormel
