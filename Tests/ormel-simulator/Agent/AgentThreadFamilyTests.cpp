#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "OrmelSDK/AppServerRun/Framing/AppServerRPCError.h"
#include "OrmelSDK/Records/EmptyResponses.h"
#include "OrmelSDK/Records/ThreadRecords.h"
#include "OrmelSDK/Records/ThreadTurnRecords.h"
#include "Support/RunTranscript.h"
#include "ormel-simulator/Agent/AgentConversation.h"

namespace ormel::simulator {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

/// The library's calls on an agent that keeps threads; each is a process of its own.
class ThreadFamily : public ::testing::Test {
 protected:
  std::string startedThread(const std::vector<std::string>& prompts) const {
    const Thread thread = agent.startThread();
    for (const std::string& prompt : prompts) thread.run(prompt).get();
    return thread.id().value();
  }

  std::vector<std::string> listed(const ListThreadsParams& params) const {
    std::vector<std::string> ids;
    for (const OrmelThreadRecord& record : ormel.listThreads(params).get().data) ids.push_back(record.id);
    return ids;
  }

  OrmelThreadRecord read(const std::string& thread) const {
    ReadThreadParams params;
    params.includeTurns = true;
    return ormel.readThread(thread, params).get().thread;
  }

  template <typename Call>
  static std::string refusal(Call call) {
    try {
      call();
    } catch (const AppServerRPCError& error) {
      return error.what();
    }
    return "no refusal";
  }

  AgentConversation agent{AgentConversation::State::kept};
  const Ormel ormel = agent.ormel();
};

TEST_F(ThreadFamily, ListsByEveryFilter) {
  const std::string first = startedThread({"Paint the Fence"});
  agent.threadOptions.workingDirectory = "/usr";
  const std::string second = startedThread({"mow the lawn", "and the hedge"});
  ormel.setThreadName(second, "Garden").get();

  const struct {
    const char* about;
    std::vector<std::string> expected;
    std::function<void(ListThreadsParams&)> set;
  } rows[] = {
      {"newest first", {second, first}, [](auto&) {}},
      {"oldest first", {first, second}, [](auto& params) { params.sortDirection = ThreadSortDirection::asc; }},
      {"the directory", {second}, [](auto& params) { params.cwd = {"/usr", "/bin"}; }},
      {"another directory", {}, [](auto& params) { params.cwd = {"/bin"}; }},
      {"the provider", {second, first}, [](auto& params) { params.modelProviders = {"simulator"}; }},
      {"another provider", {}, [](auto& params) { params.modelProviders = {"other"}; }},
      {"the source", {second, first}, [](auto& params) { params.sourceKinds = {ThreadSourceKind::appServer}; }},
      {"another source", {}, [](auto& params) { params.sourceKinds = {ThreadSourceKind::cli}; }},
      {"the archive", {}, [](auto& params) { params.archived = true; }},
      {"a word in other letters", {first}, [](auto& params) { params.searchTerm = "fence"; }},
      {"a word of a later turn", {second}, [](auto& params) { params.searchTerm = "HEDGE"; }},
      {"a name", {second}, [](auto& params) { params.searchTerm = "garden"; }},
      {"no such word", {}, [](auto& params) { params.searchTerm = "roof"; }},
      {"the index alone", {second, first}, [](auto& params) { params.useStateDBOnly = true; }},
  };
  for (const auto& row : rows) {
    ListThreadsParams params;
    row.set(params);
    EXPECT_EQ(listed(params), row.expected) << row.about;
  }
}

TEST_F(ThreadFamily, ListsBySortKeys) {
  const std::string first = startedThread({"one"});
  const std::string second = startedThread({"two"});
  const std::string third = startedThread({"three"});
  ormel.resumeThread(second).run("more").get();
  ormel.setThreadName(first, "changed last").get();
  ListThreadsParams params;
  params.sortKey = ThreadSortKey::createdAt;
  EXPECT_THAT(listed(params), ElementsAre(third, second, first));
  params.sortKey = ThreadSortKey::recencyAt;
  EXPECT_THAT(listed(params), ElementsAre(second, third, first));
  params.sortKey = ThreadSortKey::updatedAt;
  EXPECT_THAT(listed(params), ElementsAre(first, second, third));
}

TEST_F(ThreadFamily, ListsPageByPageAlsoWhenThreadsGoInBetween) {
  std::vector<std::string> threads;
  for (int count = 0; count < 5; ++count) threads.insert(threads.begin(), startedThread({"hello"}));
  ListThreadsParams params;
  params.limit = 2;
  const ThreadListResponse first = ormel.listThreads(params).get();
  ASSERT_THAT(first.data, SizeIs(2));
  EXPECT_EQ(first.data[1].id, threads[1]);
  // The page after it begins where this one ended, whatever has become of the thread there.
  ormel.deleteThread(threads[1]).get();
  params.cursor = first.nextCursor;
  const ThreadListResponse second = ormel.listThreads(params).get();
  ASSERT_THAT(second.data, SizeIs(2));
  EXPECT_EQ(second.data[0].id, threads[2]);
  EXPECT_EQ(second.data[1].id, threads[3]);
  params.cursor = second.nextCursor;
  const ThreadListResponse third = ormel.listThreads(params).get();
  ASSERT_THAT(third.data, SizeIs(1));
  EXPECT_EQ(third.data[0].id, threads[4]);
  EXPECT_FALSE(third.nextCursor);

  params.cursor = second.backwardsCursor;
  params.sortDirection = ThreadSortDirection::asc;
  EXPECT_THAT(listed(params), ElementsAre(threads[0]));
  params.cursor = "gibberish";
  EXPECT_THAT(refusal([&] { listed(params); }), HasSubstr("cursor is none that was given out"));
  params.cursor.reset();
  params.limit = 0;
  EXPECT_THAT(refusal([&] { listed(params); }), HasSubstr("limit must be a whole number from 1 on"));
}

TEST_F(ThreadFamily, ListsWhatAProcessHasLoaded) {
  const std::string thread = startedThread({"hello"});
  EXPECT_THAT(ormel.listLoadedThreads().get().data, IsEmpty());
  EXPECT_EQ(ormel.unsubscribeThread(thread).get().status, "notLoaded");
}

TEST_F(ThreadFamily, ReadsWithTurnsOrWithout) {
  const Thread conversation = agent.startThread();
  conversation.run("one").get();
  EXPECT_THAT(testing::failureOf([&] { conversation.run("fail").get(); }), StartsWith("turn failed: "));
  const std::string thread = conversation.id().value();
  const OrmelThreadRecord brief = ormel.readThread(thread).get().thread;
  EXPECT_EQ(brief.preview, "one");
  EXPECT_EQ(brief.path, agent.statePath() + "/" + thread + ".json");
  EXPECT_THAT(brief.turns, IsEmpty());
  const OrmelThreadRecord whole = read(thread);
  ASSERT_THAT(whole.turns, SizeIs(2));
  EXPECT_EQ(whole.turns[1].status, ThreadTurnStatus::failed);
}

TEST_F(ThreadFamily, ForksUpToATurnAndWithOtherChoices) {
  const std::string thread = startedThread({"one", "two"});
  ForkThreadParams params;
  params.lastTurnID = read(thread).turns[0].id;
  params.model = "large";
  params.workingDirectory = "/usr";
  params.approvalPolicy = ApprovalMode::never;
  params.sandboxMode = SandboxMode::readOnly;
  params.threadSource = ThreadSource::subagent;
  const ThreadForkResponse fork = ormel.forkThread(thread, params).get();
  EXPECT_EQ(fork.model, "large");
  EXPECT_EQ(fork.cwd, "/usr");
  EXPECT_EQ(fork.approvalPolicy, ApprovalMode::never);
  EXPECT_EQ(fork.sandbox, JSONValue("read-only"));
  const OrmelThreadRecord kept = read(fork.thread.id);
  EXPECT_EQ(kept.forkedFromID, thread);
  EXPECT_EQ(kept.threadSource, "subagent");
  EXPECT_THAT(kept.turns, SizeIs(1));
  EXPECT_EQ(ormel.resumeThread(fork.thread.id).run("on").get().finalResponse,
            "You said: \"on\". I have read it with care. You asked before: \"one\".");
  params.lastTurnID = "none";
  EXPECT_THAT(refusal([&] { ormel.forkThread(thread, params).get(); }), HasSubstr("turn not found: none"));
}

TEST_F(ThreadFamily, KeepsAnEphemeralForkToTheProcess) {
  const std::string thread = startedThread({"one"});
  ForkThreadParams params;
  params.ephemeral = true;
  const std::string fork = ormel.forkThread(thread, params).get().thread.id;
  EXPECT_THAT(listed(ListThreadsParams()), ElementsAre(thread));
  EXPECT_THAT(refusal([&] { ormel.readThread(fork).get(); }),
              HasSubstr("thread not found: " + fork + "; the simulator remembers 1 thread in " + agent.statePath()));
}

TEST_F(ThreadFamily, ArchivesAndDeletes) {
  const std::string thread = startedThread({"one"});
  ListThreadsParams archive;
  archive.archived = true;
  ormel.archiveThread(thread).get();
  EXPECT_THAT(listed(ListThreadsParams()), IsEmpty());
  EXPECT_THAT(listed(archive), ElementsAre(thread));
  EXPECT_EQ(ormel.unarchiveThread(thread).get().thread.id, thread);
  EXPECT_THAT(listed(ListThreadsParams()), ElementsAre(thread));
  ormel.deleteThread(thread).get();
  EXPECT_THAT(listed(ListThreadsParams()), IsEmpty());
  EXPECT_FALSE(std::filesystem::exists(agent.statePath() + "/" + thread + ".json"));
}

TEST_F(ThreadFamily, RemembersNameMetadataAndSettings) {
  const std::string thread = startedThread({"one"});
  ormel.setThreadName(thread, "A name").get();
  EXPECT_EQ(read(thread).name, "A name");
  EXPECT_THAT(refusal([&] { ormel.setThreadName(thread, "").get(); }), HasSubstr("name must be a text"));

  UpdateThreadMetadataParams metadata;
  EXPECT_FALSE(ormel.updateThreadMetadata(thread, metadata).get().thread.gitInfo);
  metadata.gitInfo.emplace();
  metadata.gitInfo->branch = ThreadMetadataStringUpdate("main");
  metadata.gitInfo->sha = ThreadMetadataStringUpdate("abc");
  ormel.updateThreadMetadata(thread, metadata).get();
  metadata.gitInfo->branch = ThreadMetadataStringUpdate();
  metadata.gitInfo->sha = ThreadMetadataStringUpdate::clear();
  metadata.gitInfo->originURL = ThreadMetadataStringUpdate("git@host:x");
  const auto updated = ormel.updateThreadMetadata(thread, metadata).get().thread.gitInfo;
  EXPECT_EQ(updated, (OrmelThreadGitInfo{std::nullopt, "main", "git@host:x"}));
  EXPECT_EQ(read(thread).gitInfo, updated);

  UpdateThreadSettingsParams settings;
  settings.workingDirectory = "/usr";
  settings.model = "large";
  settings.serviceTier = ServiceTierUpdate(ServiceTier{"fast"});
  ormel.updateThreadSettings(thread, settings).get();
  EXPECT_EQ(read(thread).cwd, "/usr");
  EXPECT_EQ(ormel.forkThread(thread).get().model, "large");
  EXPECT_EQ(ormel.forkThread(thread).get().serviceTier, "fast");
  UpdateThreadSettingsParams cleared;
  cleared.serviceTier = ServiceTierUpdate::clear();
  ormel.updateThreadSettings(thread, cleared).get();
  EXPECT_FALSE(ormel.forkThread(thread).get().serviceTier);
}

TEST_F(ThreadFamily, RunsAUsersCommandAndTakesInWhatItIsTold) {
  const std::string thread = startedThread({"one"});
  ormel.runThreadShellCommand(thread, "false").get();
  const auto turns = read(thread).turns;
  ASSERT_THAT(turns, SizeIs(2));
  const auto commands = itemsOf<CommandExecutionItem>(turns[1].items);
  ASSERT_THAT(commands, SizeIs(1));
  EXPECT_EQ(commands[0].command, "false");
  EXPECT_EQ(commands[0].exitCode, 1);
  EXPECT_THAT(refusal([&] { ormel.runThreadShellCommand(thread, "").get(); }), HasSubstr("command must be a text"));

  ormel
      .injectThreadItems(thread, {JSONValue::decode(R"({"type":"message","role":"user","content":[
      {"type":"input_text","text":"the sky is green"}]})")})
      .get();
  EXPECT_THAT(ormel.resumeThread(thread).run("well").get().finalResponse,
              HasSubstr("I was told besides: \"the sky is green\"."));

  ormel.approveGuardianDeniedAction(thread, JSONValue::object({{"id", "g1"}})).get();
  EXPECT_THAT(refusal([&] { ormel.approveGuardianDeniedAction(thread, "g1").get(); }), HasSubstr("event must be"));
}

TEST_F(ThreadFamily, ListsTurnsInPagesAndViews) {
  const std::string thread = startedThread({"one", "two", "three"});
  ListThreadTurnsParams params;
  params.limit = 2;
  const auto newest = ormel.listThreadTurns(thread, params).get();
  ASSERT_THAT(newest.data, SizeIs(2));
  EXPECT_THAT(newest.data[0].items, SizeIs(3));
  params.cursor = newest.nextCursor;
  const auto oldest = ormel.listThreadTurns(thread, params).get();
  ASSERT_THAT(oldest.data, SizeIs(1));
  EXPECT_FALSE(oldest.nextCursor);
  EXPECT_EQ(oldest.data[0].id, read(thread).turns[0].id);

  ListThreadTurnsParams ascending;
  ascending.sortDirection = ThreadTurnSortDirection::asc;
  ascending.itemsView = ThreadTurnItemsView::summary;
  const auto summaries = ormel.listThreadTurns(thread, ascending).get().data;
  ASSERT_THAT(summaries, SizeIs(3));
  EXPECT_EQ(summaries[0].id, oldest.data[0].id);
  EXPECT_EQ(summaries[0].itemsView, ThreadTurnItemsView::summary);
  ASSERT_THAT(summaries[0].items, SizeIs(2));
  EXPECT_TRUE(std::holds_alternative<UserMessageItem>(summaries[0].items[0].value));
  EXPECT_TRUE(summaries[0].items[1].agentMessageText());
  ascending.itemsView = ThreadTurnItemsView::notLoaded;
  EXPECT_THAT(ormel.listThreadTurns(thread, ascending).get().data[0].items, IsEmpty());
}

TEST_F(ThreadFamily, ListsItemsAlsoAsAnOlderServerWould) {
  const std::string thread = startedThread({"one"});
  const std::string turn = read(thread).turns[0].id;
  ListThreadTurnItemsParams params;
  params.limit = 2;
  const auto modern = ormel.listThreadTurnItems(thread, turn, params).get();
  ASSERT_THAT(modern.data, SizeIs(2));
  EXPECT_EQ(modern.data[0].turnID, turn);
  EXPECT_TRUE(std::holds_alternative<UserMessageItem>(modern.data[0].item.value));
  agent.environment["ORMEL_SIMULATOR_WITHOUT"] = "thread/items/list,model/list";
  EXPECT_EQ(agent.ormel().listThreadTurnItems(thread, turn, params).get(), modern);
  EXPECT_EQ(agent.receivedMethods().back(), "thread/turns/items/list");
  params.cursor = modern.nextCursor;
  EXPECT_THAT(ormel.listThreadTurnItems(thread, turn, params).get().data, SizeIs(1));
  EXPECT_THAT(refusal([&] { ormel.listThreadTurnItems(thread, "none").get(); }), HasSubstr("turn not found: none"));
}

TEST_F(ThreadFamily, KeepsAGoal) {
  const std::string thread = startedThread({"one"});
  EXPECT_FALSE(ormel.readThreadGoal(thread).get().goal);
  EXPECT_FALSE(ormel.clearThreadGoal(thread).get().cleared);
  EXPECT_THAT(refusal([&] { ormel.setThreadGoal(thread).get(); }), HasSubstr("objective must be given"));
  SetThreadGoalParams params;
  params.objective = "Finish";
  params.tokenBudget = ThreadGoalTokenBudgetUpdate(1000);
  const ThreadGoal set = ormel.setThreadGoal(thread, params).get().goal;
  EXPECT_EQ(set.threadID, thread);
  EXPECT_EQ(set.objective, "Finish");
  EXPECT_EQ(set.status, ThreadGoalStatus::active);
  EXPECT_EQ(set.tokenBudget, 1000);
  EXPECT_EQ(set.tokensUsed, 0);
  EXPECT_EQ(ormel.readThreadGoal(thread).get().goal, set);

  ormel.resumeThread(thread).run("on").get();
  SetThreadGoalParams later;
  later.status = ThreadGoalStatus::complete;
  later.tokenBudget = ThreadGoalTokenBudgetUpdate::clear();
  const ThreadGoal done = ormel.setThreadGoal(thread, later).get().goal;
  EXPECT_EQ(done.objective, "Finish");
  EXPECT_EQ(done.status, ThreadGoalStatus::complete);
  EXPECT_FALSE(done.tokenBudget);
  EXPECT_GT(done.tokensUsed, 0);
  later.status = ThreadGoalStatus::unknown;
  EXPECT_THAT(refusal([&] { ormel.setThreadGoal(thread, later).get(); }), HasSubstr("a goal has no status unknown"));
  EXPECT_TRUE(ormel.clearThreadGoal(thread).get().cleared);
  EXPECT_FALSE(ormel.readThreadGoal(thread).get().goal);
}

TEST_F(ThreadFamily, StartsAReview) {
  const std::string thread = startedThread({"one"});
  EXPECT_EQ(ormel.startReview(thread, ReviewTarget::uncommittedChanges()).get().reviewThreadID, thread);
  StartReviewParams params;
  params.delivery = ReviewDelivery::detached;
  EXPECT_NE(ormel.startReview(thread, ReviewTarget::uncommittedChanges(), params).get().reviewThreadID, thread);
}

TEST_F(ThreadFamily, SummarizesByIDOrFile) {
  const std::string thread = startedThread({"one"});
  GetConversationSummaryParams params;
  params.conversationID = thread;
  const JSONValue summary = ormel.getConversationSummary(params).get().summary;
  EXPECT_EQ(*summary.find("preview"), JSONValue("one"));
  params.conversationID.reset();
  params.rolloutPath = read(thread).path;
  EXPECT_EQ(ormel.getConversationSummary(params).get().summary, summary);
  params.rolloutPath = "/etc/passwd";
  EXPECT_THAT(refusal([&] { ormel.getConversationSummary(params).get(); }), HasSubstr("no thread is kept in /etc"));
  EXPECT_THAT(refusal([&] { ormel.getConversationSummary().get(); }), HasSubstr("must be given"));
}

TEST_F(ThreadFamily, TellsASessionWhatBecomesOfThreads) {
  const std::string thread = startedThread({"one"});
  const OrmelControlSession session = ormel.makeControlSession();
  auto notifications = session.notifications().get();
  const auto next = [&] {
    while (auto notification = notifications.nextBlocking()) {
      if (auto told = notification->threadLifecycleNotification()) return *told;
    }
    throw std::runtime_error("the notifications ended");
  };
  session.setThreadName(thread, "Named").get();
  EXPECT_EQ(next(), (OrmelThreadLifecycleNotification{ThreadNameUpdatedNotification{thread, "Named"}}));
  session.archiveThread(thread).get();
  EXPECT_EQ(next(), (OrmelThreadLifecycleNotification{ThreadArchivedNotification{thread}}));
  session.unarchiveThread(thread).get();
  EXPECT_EQ(next(), (OrmelThreadLifecycleNotification{ThreadUnarchivedNotification{thread}}));
  session.compactThread(thread).get();
  EXPECT_EQ(next(), (OrmelThreadLifecycleNotification{ThreadCompactedNotification{thread}}));
  const std::string fork = session.forkThread(thread).get().thread.id;
  session.deleteThread(fork).get();
  EXPECT_EQ(next(), (OrmelThreadLifecycleNotification{ThreadDeletedNotification{fork}}));
  session.close().get();
}

}  // namespace
}  // namespace ormel::simulator
