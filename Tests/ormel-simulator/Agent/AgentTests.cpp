#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "OrmelSDK/Base/OrmelProcessError.h"
#include "OrmelSDK/Base/ThreadRunError.h"
#include "ormel-simulator/Agent/AgentConversation.h"

namespace ormel::simulator {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

TEST(AgentTurns, AnswerWithThoughtsAPlanAMessageAndTheTokensUsed) {
  const AgentConversation agent;
  const Thread thread = agent.startThread();
  StreamedTurn streamed = thread.runStreamed("hello there").get();
  const auto events = drain(streamed);

  ASSERT_EQ(eventsOf<ThreadStartedEvent>(events).size(), 1u);
  EXPECT_EQ(eventsOf<ThreadStartedEvent>(events)[0].threadID, thread.id());
  EXPECT_EQ(eventsOf<TurnStartedEvent>(events).size(), 1u);
  const auto items = completedItems(events);
  EXPECT_EQ(itemsOf<UserMessageItem>(items).size(), 1u);
  EXPECT_EQ(itemsOf<ReasoningItem>(items).size(), 1u);
  const auto plans = itemsOf<TodoListItem>(items);
  ASSERT_EQ(plans.size(), 1u);
  EXPECT_EQ(plans[0].items.size(), 3u);
  EXPECT_TRUE(plans[0].items[2].completed);
  EXPECT_THAT(finalText(events), StartsWith("You said: \"hello there\"."));
  const auto ends = eventsOf<TurnCompletedEvent>(events);
  ASSERT_EQ(ends.size(), 1u);
  EXPECT_GT(ends[0].usage.outputTokens, 0);
}

TEST(AgentTurns, StreamTheirMessageWordByWord) {
  const AgentConversation agent;
  StreamedTurn streamed = agent.startThread().runStreamed("Is it so?").get();
  std::vector<std::string> texts;
  for (const auto& event : eventsOf<ItemUpdatedEvent>(drain(streamed))) {
    if (const auto text = event.item.agentMessageText()) texts.emplace_back(*text);
  }
  ASSERT_GT(texts.size(), 10u);
  for (std::size_t place = 1; place < texts.size(); ++place) EXPECT_THAT(texts[place], StartsWith(texts[place - 1]));
}

TEST(AgentTurns, RememberWhatWasAskedBefore) {
  const AgentConversation agent;
  const Thread thread = agent.startThread();
  thread.run("the first thing").get();
  thread.run("the second thing").get();
  EXPECT_THAT(thread.run("the third thing").get().finalResponse,
              HasSubstr("You asked before: \"the first thing\", \"the second thing\"."));
}

TEST(AgentTurns, TakeAllPartsOfTheInput) {
  const AgentConversation agent;
  const Input input({UserInput::text("look at"), UserInput::image("https://example.com/a.png"),
                     UserInput::skill("painting", "/skills/painting")});
  EXPECT_THAT(agent.startThread().run(input).get().finalResponse,
              StartsWith("You said: \"look at (an image) (the skill painting)\"."));
}

TEST(AgentCommands, RunOnceTheyAreApproved) {
  AgentConversation agent;
  std::vector<CommandApprovalRequest> requests;
  agent.threadOptions.workingDirectory = "/work/here";
  agent.threadOptions.commandApprovalHandler = [&](const CommandApprovalRequest& request) {
    requests.push_back(request);
    return OrmelApprovalDecision::accept;
  };
  StreamedTurn streamed = agent.startThread().runStreamed("Please run `ls -la` for me").get();
  const auto events = drain(streamed);
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests[0].command, "ls -la");
  EXPECT_EQ(requests[0].workingDirectory, "/work/here");
  EXPECT_THAT(requests[0].availableDecisions,
              ElementsAre(OrmelApprovalDecision::accept, OrmelApprovalDecision::acceptForSession,
                          OrmelApprovalDecision::decline, OrmelApprovalDecision::cancel));
  const auto commands = itemsOf<CommandExecutionItem>(completedItems(events));
  ASSERT_EQ(commands.size(), 1u);
  EXPECT_EQ(commands[0].status, CommandExecutionStatus::completed);
  EXPECT_EQ(commands[0].exitCode, 0);
  EXPECT_THAT(std::string(commands[0].aggregatedOutput), HasSubstr("README.md"));
  std::vector<ThreadItem> updated;
  for (const auto& event : eventsOf<ItemUpdatedEvent>(events)) updated.push_back(event.item);
  EXPECT_GT(itemsOf<CommandExecutionItem>(updated).size(), 1u);
  EXPECT_THAT(finalText(events), HasSubstr("I ran \"ls -la\"; its exit code was 0."));
}

TEST(AgentCommands, ListFilesWhenTheUserSaysSo) {
  AgentConversation agent;
  agent.threadOptions.commandApprovalHandler = [](const CommandApprovalRequest& request) {
    EXPECT_EQ(request.command, "ls");
    return OrmelApprovalDecision::accept;
  };
  EXPECT_THAT(agent.startThread().run("List files, please").get().finalResponse, HasSubstr("README.md"));
}

TEST(AgentCommands, DoNotRunWhenTheyAreDeclined) {
  const AgentConversation agent;
  const Turn turn = agent.startThread().run("run rm -rf /").get();
  const auto commands = itemsOf<CommandExecutionItem>(turn);
  ASSERT_EQ(commands.size(), 1u);
  EXPECT_EQ(commands[0].status, CommandExecutionStatus::declined);
  EXPECT_EQ(turn.finalResponse, "You declined \"rm -rf /\", so I did not run it.");
}

TEST(AgentCommands, EndTheTurnWhenTheyAreCancelled) {
  AgentConversation agent;
  agent.threadOptions.commandApprovalHandler = [](const CommandApprovalRequest&) {
    return OrmelApprovalDecision::cancel;
  };
  const Turn turn = agent.startThread().run("run ls").get();
  EXPECT_EQ(itemsOf<CommandExecutionItem>(turn).at(0).status, CommandExecutionStatus::declined);
  EXPECT_EQ(turn.finalResponse, "");
}

TEST(AgentCommands, AreNotAskedForAgainOnceApprovedForTheSession) {
  AgentConversation agent;
  int asked = 0;
  agent.threadOptions.commandApprovalHandler = [&](const CommandApprovalRequest&) {
    ++asked;
    return OrmelApprovalDecision::acceptForSession;
  };
  const Thread thread = agent.startThread();
  thread.run("run ls").get();
  EXPECT_EQ(itemsOf<CommandExecutionItem>(thread.run("run make").get()).at(0).status,
            CommandExecutionStatus::completed);
  EXPECT_EQ(asked, 1);
}

TEST(AgentCommands, AreNotAskedForWhereThePolicyIsNever) {
  AgentConversation agent;
  agent.threadOptions.approvalPolicy = ApprovalMode::never;
  const Turn turn = agent.startThread().run("run false").get();
  EXPECT_EQ(itemsOf<CommandExecutionItem>(turn).at(0).status, CommandExecutionStatus::failed);
  EXPECT_EQ(itemsOf<CommandExecutionItem>(turn).at(0).exitCode, 1);
}

TEST(AgentCommands, GiveAsMuchOutputAsTheyAreAskedFor) {
  const AgentConversation agent;
  StreamedTurn streamed = agent.startThread().runStreamed("big 2").get();
  std::size_t longest = 0;
  for (const ThreadEvent& event : streamed.events) {
    const auto* updated = std::get_if<ItemUpdatedEvent>(&event.value);
    const auto* command = updated ? std::get_if<CommandExecutionItem>(&updated->item.value) : nullptr;
    if (command) longest = std::max(longest, std::string_view(command->aggregatedOutput).size());
  }
  EXPECT_EQ(longest, 2u * 1024 * 1024);
}

TEST(AgentFileChanges, AreMadeOnceTheyAreApproved) {
  AgentConversation agent;
  std::vector<FileChangeApprovalRequest> requests;
  agent.threadOptions.fileChangeApprovalHandler = [&](const FileChangeApprovalRequest& request) {
    requests.push_back(request);
    return OrmelApprovalDecision::accept;
  };
  const Thread thread = agent.startThread();
  const Turn edited = thread.run("edit src/main.cpp to be faster").get();
  const Turn written = thread.run("write \"new file.txt\"").get();
  ASSERT_EQ(requests.size(), 2u);
  const FileUpdateChange update{"src/main.cpp", PatchChangeKind::update};
  EXPECT_THAT(requests[0].changes, ElementsAre(update));
  EXPECT_THAT(requests[1].changes, ElementsAre(FileUpdateChange{"new file.txt", PatchChangeKind::add}));
  const auto changes = itemsOf<FileChangeItem>(edited);
  ASSERT_EQ(changes.size(), 1u);
  EXPECT_EQ(changes[0].status, PatchApplyStatus::completed);
  EXPECT_THAT(changes[0].changes, ElementsAre(update));
  EXPECT_EQ(edited.finalResponse, "I have edited src/main.cpp, or would have.");
  EXPECT_EQ(written.finalResponse, "I have written new file.txt, or would have.");
}

TEST(AgentFileChanges, AreNotMadeWhenTheyAreDeclined) {
  const AgentConversation agent;
  const Turn turn = agent.startThread().run("edit").get();
  EXPECT_EQ(itemsOf<FileChangeItem>(turn).at(0).status, PatchApplyStatus::declined);
  EXPECT_EQ(turn.finalResponse, "You declined, so I have not edited notes.txt.");
}

std::string questionsID(StreamedTurn& streamed) {
  while (const auto event = streamed.events.nextBlocking()) {
    const auto* started = std::get_if<ItemStartedEvent>(&event->value);
    const auto* call = started ? std::get_if<McpToolCallItem>(&started->item.value) : nullptr;
    if (call && call->tool == "request_user_input") return call->id;
  }
  throw std::runtime_error("no question came");
}

TEST(AgentQuestions, AreAnsweredByTheUser) {
  const AgentConversation agent;
  const Thread thread = agent.startThread();
  StreamedTurn streamed = thread.runStreamed("ask me").get();
  const std::string id = questionsID(streamed);
  thread.submitRequestUserInput(id, {{"language", {"C++"}}, {"size", {"Small", "with tests"}}}).get();
  const auto events = drain(streamed);
  const auto calls = itemsOf<McpToolCallItem>(completedItems(events));
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0].arguments.find("questions")->arrayValue()->size(), 2u);
  EXPECT_EQ(finalText(events), "You chose: language C++, size Small and with tests.");
}

TEST(AgentSteering, IsWovenIntoTheAnswer) {
  const AgentConversation agent;
  const Thread thread = agent.startThread();
  StreamedTurn streamed = thread.runStreamed("ask me").get();
  const std::string id = questionsID(streamed);
  thread.steer("make it blue").get();
  thread.submitRequestUserInput(id, {{"language", {"C++"}}}).get();
  EXPECT_EQ(finalText(drain(streamed)), "You (You add: \"make it blue\". I do so.) chose: language C++, size nothing.");
}

DynamicTool tool(std::optional<std::string> namespace_, const std::string& name) {
  const JSONValue schema = JSONValue::decode(
      R"({"type":"object","properties":{"city":{"type":"string"},"days":{"type":"integer"}},"required":["city"]})");
  return DynamicTool{
      DynamicToolSpec{std::move(namespace_), name, "A tool", schema, false}, [](const DynamicToolCallContext& context) {
        if (context.tool == "broken") throw std::runtime_error("it is broken");
        const std::string place = context.namespace_.value_or("") + "/" + context.tool;
        return DynamicToolResult{
            {DynamicToolCallOutputContentItem::inputText(place + context.arguments.find("city")->encode())}, true};
      }};
}

TEST(AgentTools, AreCalledWithArgumentsOfTheirSchema) {
  AgentConversation agent;
  agent.threadOptions.dynamicTools = {tool(std::nullopt, "weather"), tool(std::nullopt, "broken")};
  const Thread thread = agent.startThread();
  const Turn turn = thread.run("use tool").get();
  const auto calls = itemsOf<DynamicToolCallItem>(turn);
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0].status, DynamicToolCallStatus::completed);
  EXPECT_EQ(turn.finalResponse, "The tool weather says: /weather\"city for: use tool\"");
  const Turn failed = thread.run("use tool broken now").get();
  EXPECT_EQ(itemsOf<DynamicToolCallItem>(failed).at(0).status, DynamicToolCallStatus::failed);
  EXPECT_EQ(failed.finalResponse, "The tool broken failed: it is broken");
}

TEST(AgentTools, AreFoundInTheirNamespace) {
  AgentConversation agent;
  agent.threadOptions.dynamicTools = {tool("maps", "route")};
  EXPECT_THAT(agent.startThread().run("use tool").get().finalResponse, StartsWith("The tool route says: maps/route"));
}

TEST(AgentTools, AreMissedWhenThereAreNone) {
  EXPECT_EQ(AgentConversation().startThread().run("use tool").get().finalResponse, "You have given me no tool.");
}

TEST(AgentForms, ShowWhatTheUserFilledIn) {
  AgentConversation agent;
  agent.threadOptions.mcpServerElicitationHandler = [](const McpServerElicitationRequest& request) {
    EXPECT_EQ(request.serverName, "weather");
    EXPECT_TRUE(std::holds_alternative<McpServerFormElicitation>(request.mode.value));
    McpServerElicitationResponse response;
    response.action = McpServerElicitationAction::accept;
    response.content = JSONValue::object({{"city", "Oslo"}});
    return response;
  };
  const Thread thread = agent.startThread();
  EXPECT_EQ(thread.run("mcp").get().finalResponse, "The form says: {\"city\":\"Oslo\"}");
  EXPECT_EQ(thread.run("a form").get().finalResponse, "The form says: {\"city\":\"Oslo\"}");
}

TEST(AgentForms, AreCancelledWhereNobodyFillsThemIn) {
  EXPECT_EQ(AgentConversation().startThread().run("form").get().finalResponse, "You did not fill in the form: cancel.");
}

TEST(AgentPermissions, AreUsedAsTheyAreGranted) {
  AgentConversation agent;
  agent.threadOptions.permissionsApprovalHandler = [](const PermissionsApprovalRequest& request) {
    PermissionsApprovalResponse response;
    response.permissions.network = request.permissions.network;
    response.scope = PermissionGrantScope::session;
    return response;
  };
  EXPECT_EQ(agent.startThread().run("permissions").get().finalResponse, "You granted: network, for the session.");
  EXPECT_EQ(AgentConversation().startThread().run("permissions").get().finalResponse, "You granted nothing.");
}

TEST(AgentTokens, AreTakenFromTheApplication) {
  AgentConversation agent;
  agent.threadOptions.parlaneAuthTokensRefreshHandler = [](const ParlaneAuthTokensRefreshRequest& request) {
    EXPECT_EQ(request.previousAccountID, "account-1");
    ParlaneAuthTokensRefreshResponse response;
    response.accessToken = "secret";
    response.parlaneAccountID = "account-2";
    return response;
  };
  agent.threadOptions.attestationGenerateHandler = [] { return std::string("token-7"); };
  const Thread thread = agent.startThread();
  EXPECT_EQ(thread.run("sign in").get().finalResponse, "You are signed in to the account account-2.");
  EXPECT_EQ(thread.run("attest").get().finalResponse, "You gave me the attestation token-7.");
}

TEST(AgentTokens, AreMissedWhereTheApplicationHasNone) {
  const AgentConversation agent;
  EXPECT_EQ(agent.startThread().run("attest").get().finalResponse, "You gave me no attestation.");
  EXPECT_THROW(agent.startThread().run("sign in").get(), ThreadRunError);
}

TEST(AgentTools, OfTheWebAndOfServersAreOnlyShown) {
  const AgentConversation agent;
  const Thread thread = agent.startThread();
  const auto searches = itemsOf<WebSearchItem>(thread.run("search old maps").get());
  ASSERT_EQ(searches.size(), 1u);
  EXPECT_EQ(searches[0].query, "old maps");
  StreamedTurn streamed = thread.runStreamed("look up aardvark").get();
  const auto events = drain(streamed);
  std::vector<ThreadItem> updated;
  for (const auto& event : eventsOf<ItemUpdatedEvent>(events)) updated.push_back(event.item);
  const auto progress = itemsOf<McpToolCallItem>(updated);
  ASSERT_EQ(progress.size(), 2u);
  EXPECT_EQ(progress[1].progressMessage, "volume 2");
  const auto calls = itemsOf<McpToolCallItem>(completedItems(events));
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0].status, McpToolCallStatus::completed);
  EXPECT_EQ(calls[0].result->content.at(0).find("text")->stringValue(), "aardvark is in volume 2");
}

TEST(AgentTurns, FailWhenTheUserSaysSo) {
  const AgentConversation agent;
  const Thread thread = agent.startThread();
  try {
    thread.run("fail").get();
    FAIL() << "the turn did not fail";
  } catch (const ThreadRunError& error) {
    EXPECT_EQ(error, ThreadRunError::turnFailed("The turn failed, as you asked"));
  }
  EXPECT_THAT(thread.run("go on").get().finalResponse, HasSubstr("You asked before: \"fail\"."));
}

TEST(AgentTurns, GoOnAfterErrorsAndWarnings) {
  const AgentConversation agent;
  const Thread thread = agent.startThread();
  StreamedTurn error = thread.runStreamed("error").get();
  const auto errorEvents = drain(error);
  ASSERT_EQ(eventsOf<ThreadErrorEvent>(errorEvents).size(), 1u);
  EXPECT_EQ(eventsOf<ThreadErrorEvent>(errorEvents)[0].message, "The model could not be reached");
  EXPECT_EQ(finalText(errorEvents), "There was an error, but I tried again and am here.");
  StreamedTurn warning = thread.runStreamed("warn me").get();
  const auto warnings = eventsOf<ThreadWarningEvent>(drain(warning));
  ASSERT_EQ(warnings.size(), 1u);
  EXPECT_EQ(warnings[0].message, "This is only a simulation");
  EXPECT_EQ(warnings[0].threadID, thread.id());
}

TEST(AgentTurns, TakeTheWordThatComesFirst) {
  const AgentConversation agent;
  EXPECT_EQ(agent.startThread().run("Warn me of the error, do not ask").get().finalResponse, "You have been warned.");
}

TEST(AgentTurns, TakeOnlyWholeWords) {
  const AgentConversation agent;
  EXPECT_THAT(agent.startThread().run("the forms of credit in the jungle").get().finalResponse,
              StartsWith("You said:"));
}

/// Reads until the message has begun.
void awaitMessage(StreamedTurn& streamed) {
  for (const ThreadEvent& event : streamed.events) {
    const auto* updated = std::get_if<ItemUpdatedEvent>(&event.value);
    if (updated && updated->item.agentMessageText()) return;
  }
  throw std::runtime_error("no message came");
}

TEST(AgentInterrupts, EndASlowTurn) {
  const AgentConversation agent(AgentConversation::State::kept);
  const Thread thread = agent.startThread();
  StreamedTurn streamed = thread.runStreamed("slow").get();
  awaitMessage(streamed);
  thread.interrupt().get();
  try {
    drain(streamed);
    FAIL() << "the turn was not aborted";
  } catch (const OrmelProcessError& error) {
    EXPECT_EQ(error.kind(), OrmelProcessError::Kind::aborted);
  }
  EXPECT_THAT(agent.receivedMethods(), Contains("turn/interrupt"));
  EXPECT_EQ(agent.sentMethods().back(), "turn/completed");
  EXPECT_THAT(thread.run("go on").get().finalResponse, HasSubstr("You asked before: \"slow\"."));
}

TEST(AgentInterrupts, FollowAnAbortSignal) {
  const AgentConversation agent;
  const AbortController controller;
  TurnOptions options;
  options.signal = controller.signal;
  StreamedTurn streamed = agent.startThread().runStreamed("slow", options).get();
  awaitMessage(streamed);
  controller.abort();
  EXPECT_THROW(drain(streamed), OrmelProcessError);
}

TEST(AgentInterrupts, WithdrawAQuestion) {
  const AgentConversation agent;
  const Thread thread = agent.startThread();
  StreamedTurn streamed = thread.runStreamed("ask me").get();
  questionsID(streamed);
  thread.interrupt().get();
  EXPECT_THROW(drain(streamed), OrmelProcessError);
  EXPECT_THAT(agent.sentMethods(), Contains("serverRequest/resolved"));
}

TEST(AgentSteering, ReachesASlowTurn) {
  const AgentConversation agent;
  const Thread thread = agent.startThread();
  StreamedTurn streamed = thread.runStreamed("slow").get();
  awaitMessage(streamed);
  thread.steer("hurry up").get();
  for (const ThreadEvent& event : streamed.events) {
    const auto* updated = std::get_if<ItemUpdatedEvent>(&event.value);
    const auto text = updated ? updated->item.agentMessageText() : std::nullopt;
    if (text && std::string_view(*text).find("(You add: \"hurry up\". I do so.)") != std::string_view::npos) return;
  }
  FAIL() << "the steering did not come through";
}

TEST(AgentCrashes, AreReportedAndTheThreadGoesOnFromItsState) {
  const AgentConversation agent(AgentConversation::State::kept);
  const Thread thread = agent.startThread();
  thread.run("remember me").get();
  try {
    thread.run("crash").get();
    FAIL() << "it did not crash";
  } catch (const Error& error) {
    EXPECT_THAT(error.what(), HasSubstr("the agent crashed, as you asked"));
  }
  const Turn turn = thread.run("again").get();
  EXPECT_THAT(turn.finalResponse, AllOf(HasSubstr("You asked before: \"remember me\"."), Not(HasSubstr("\"crash\""))));
}

TEST(AgentState, LetsAnotherProcessResumeAThread) {
  const AgentConversation agent(AgentConversation::State::kept);
  std::string id;
  {
    const Thread thread = agent.startThread();
    thread.run("the old question").get();
    id = thread.id().value();
  }
  const Turn turn = agent.ormel().resumeThread(id).run("the new question").get();
  EXPECT_THAT(turn.finalResponse, HasSubstr("You asked before: \"the old question\"."));
}

TEST(AgentState, KnowsNoThreadOfAnotherProcessWithoutAFolder) {
  const AgentConversation agent;
  const std::string id = "00000000-0000-0000-0000-000000000000";
  try {
    agent.ormel().resumeThread(id).run("hello").get();
    FAIL() << "it was resumed";
  } catch (const Error& error) {
    EXPECT_THAT(error.what(), HasSubstr("thread not found: " + id));
  }
}

TEST(AgentReviews, ReportTheirFindings) {
  const AgentConversation agent;
  const Thread thread = agent.startThread();
  thread.run("hello").get();
  StreamedTurn streamed = thread.startReviewStreamed(ReviewTarget::baseBranch("main")).get();
  const auto events = drain(streamed);
  const auto items = completedItems(events);
  ASSERT_EQ(itemsOf<EnteredReviewModeItem>(items).size(), 1u);
  EXPECT_EQ(itemsOf<EnteredReviewModeItem>(items)[0].review, "changes against main");
  EXPECT_EQ(itemsOf<ExitedReviewModeItem>(items).size(), 1u);
  EXPECT_THAT(finalText(events), StartsWith("Reviewed the changes against main: one remark."));
  EXPECT_EQ(eventsOf<TurnCompletedEvent>(events).size(), 1u);
}

TEST(AgentCompactions, ShortenWhatTheAgentRemembers) {
  const AgentConversation agent;
  const Thread thread = agent.startThread();
  thread.run("long ago").get();
  StreamedTurn streamed = thread.compactStreamed().get();
  const auto events = drain(streamed);
  EXPECT_EQ(itemsOf<ContextCompactionItem>(completedItems(events)).size(), 1u);
  EXPECT_EQ(eventsOf<TurnCompletedEvent>(events).size(), 1u);
  thread.run("not long ago").get();
  EXPECT_THAT(thread.run("now").get().finalResponse,
              AllOf(HasSubstr("You asked before: \"not long ago\"."), Not(HasSubstr("\"long ago\""))));
}

TEST(AgentSideConversations, KnowTheConversationAndLeaveNoTrace) {
  const AgentConversation agent;
  const Thread thread = agent.startThread();
  thread.run("the main thing").get();
  StreamedTurn streamed = thread.runSideConversationStreamed("by the way", "Be brief").get();
  EXPECT_THAT(finalText(drain(streamed)), AllOf(HasSubstr("You asked before: \"the main thing\"."),
                                                HasSubstr("My instructions are: \"Be brief\".")));
  EXPECT_THAT(thread.run("back again").get().finalResponse,
              AllOf(HasSubstr("You asked before: \"the main thing\"."), Not(HasSubstr("by the way"))));
}

TEST(AgentAnswers, AreJSONWhenTheUserSaysSo) {
  const Turn turn = AgentConversation().startThread().run("json please").get();
  const JSONValue answer = JSONValue::decode(turn.finalResponse);
  EXPECT_EQ(*answer.find("answer"), JSONValue("An answer to: json please"));
}

TEST(AgentAnswers, FollowAnOutputSchema) {
  const AgentConversation agent;
  TurnOptions options;
  options.outputSchema = {
      {"type", "object"},
      {"properties", JSONValue::decode(R"({"title":{"type":"string"},"count":{"type":"integer","minimum":7}})")},
      {"required", JSONValue::array({"title", "count"})}};
  const Turn turn = agent.startThread().run("describe it", options).get();
  EXPECT_EQ(JSONValue::decode(turn.finalResponse),
            JSONValue::object({{"title", "title for: describe it"}, {"count", 7}}));
}

}  // namespace
}  // namespace ormel::simulator
