#include "OrmelSDK/Input/ThreadChoices.h"

#include <gtest/gtest.h>

#include <sstream>

#include "Support/CodingChecks.h"

namespace {

using namespace ormel;

TEST(ThreadChoices, HaveExactlyTheirWords) {
  tests::checkWords<SandboxMode>({{SandboxMode::readOnly, "read-only"},
                                  {SandboxMode::workspaceWrite, "workspace-write"},
                                  {SandboxMode::dangerFullAccess, "danger-full-access"}});
  tests::checkWords<ApprovalsReviewer>({{ApprovalsReviewer::user, "user"},
                                        {ApprovalsReviewer::autoReview, "auto_review"},
                                        {ApprovalsReviewer::guardianSubagent, "guardian_subagent"}});
  tests::checkWords<Personality>(
      {{Personality::none, "none"}, {Personality::friendly, "friendly"}, {Personality::pragmatic, "pragmatic"}});
  tests::checkWords<ThreadStartSource>({{ThreadStartSource::startup, "startup"}, {ThreadStartSource::clear, "clear"}});
  tests::checkWords<ThreadSource>({{ThreadSource::user, "user"},
                                   {ThreadSource::subagent, "subagent"},
                                   {ThreadSource::memoryConsolidation, "memory_consolidation"}});
  tests::checkWords<WebSearchMode>(
      {{WebSearchMode::disabled, "disabled"}, {WebSearchMode::cached, "cached"}, {WebSearchMode::live, "live"}});
  tests::checkWords<ModelReasoningSummary>({{ModelReasoningSummary::auto_, "auto"},
                                            {ModelReasoningSummary::concise, "concise"},
                                            {ModelReasoningSummary::detailed, "detailed"},
                                            {ModelReasoningSummary::none, "none"}});
  tests::checkWords<ModelVerbosity>(
      {{ModelVerbosity::low, "low"}, {ModelVerbosity::medium, "medium"}, {ModelVerbosity::high, "high"}});
  tests::checkWords<CollaborationMode>(
      {{CollaborationMode::defaultMode, "default"}, {CollaborationMode::plan, "plan"}});
}

TEST(ThreadChoices, RefuseEveryOtherSpelling) {
  tests::checkStrictness<SandboxMode>("SandboxMode", {"readOnly", "read_only", "Read-Only", ""});
  tests::checkStrictness<ApprovalsReviewer>("ApprovalsReviewer", {"autoReview", "auto-review", " user"});
  tests::checkStrictness<Personality>("Personality", {"None", "neutral"});
  tests::checkStrictness<ThreadStartSource>("ThreadStartSource", {"Startup", "resume"});
  tests::checkStrictness<ThreadSource>("ThreadSource", {"memoryConsolidation", "User"});
  tests::checkStrictness<WebSearchMode>("WebSearchMode", {"Live", "on"});
  tests::checkStrictness<ModelReasoningSummary>("ModelReasoningSummary", {"auto_", "Auto"});
  tests::checkStrictness<ModelVerbosity>("ModelVerbosity", {"LOW", "max"});
}

TEST(CollaborationMode, IsReadFromAnObjectTooAndWrittenAsAWord) {
  EXPECT_EQ(decode<CollaborationMode>(JSONValue::decode(R"({"mode":"plan"})")), CollaborationMode::plan);
  EXPECT_EQ(decode<CollaborationMode>(JSONValue::decode(R"({"mode":"default","settings":{"x":1}})")),
            CollaborationMode::defaultMode);
  EXPECT_EQ(encode(CollaborationMode::plan), JSONValue("plan"));
}

TEST(CollaborationMode, NamesTheModeThatItDoesNotKnow) {
  EXPECT_EQ(tests::failureOf<CollaborationMode>(R"("pair")"), "Unknown collaboration mode: pair");
  EXPECT_EQ(tests::failureOf<CollaborationMode>(R"({"mode":"pair"})"), "Unknown collaboration mode: pair");
}

TEST(CollaborationMode, FailsWithoutAWord) {
  EXPECT_EQ(tests::failureOf<CollaborationMode>("{}"), "No value is associated with the key 'mode'.");
  EXPECT_EQ(tests::failureOf<CollaborationMode>(R"({"mode":3})"), "Expected String but found a number.");
  EXPECT_THROW(decode<CollaborationMode>(JSONValue::decode(R"({"mode":null})")), DecodingError);
  EXPECT_THROW(decode<CollaborationMode>(JSONValue()), DecodingError);
}

TEST(OpenVocabularies, KnowTodaysWordsAndCarryAnyOther) {
  tests::checkVocabulary<ModelReasoningEffort>({{ModelReasoningEffort::none, "none"},
                                                {ModelReasoningEffort::minimal, "minimal"},
                                                {ModelReasoningEffort::low, "low"},
                                                {ModelReasoningEffort::medium, "medium"},
                                                {ModelReasoningEffort::high, "high"},
                                                {ModelReasoningEffort::xhigh, "xhigh"},
                                                {ModelReasoningEffort::max, "max"},
                                                {ModelReasoningEffort::ultra, "ultra"}});
  tests::checkVocabulary<ServiceTier>({{ServiceTier::fast, "fast"}, {ServiceTier::flex, "flex"}});
  EXPECT_EQ(tests::decoded<ModelReasoningEffort>(R"("custom-effort")").rawValue, "custom-effort");
  EXPECT_NE(ModelReasoningEffort("High"), ModelReasoningEffort::high);
}

TEST(ThreadChoices, StreamInOneReadableLine) {
  std::ostringstream stream;
  stream << ApprovalsReviewer::autoReview << ' ' << ServiceTier::flex;
  EXPECT_EQ(stream.str(), R"(ApprovalsReviewer "auto_review" ServiceTier "flex")");
}

}  // namespace
