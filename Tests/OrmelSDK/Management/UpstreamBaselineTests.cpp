#include "OrmelSDK/Management/UpstreamBaseline.h"

#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Baseline = ormel::OrmelSDKUpstreamBaseline;

constexpr std::string_view expectedNotesOnScope[] = {
    "The 0.158 audit adds asynchronous agent questions (request_user_input_async), transient safety-buffering notices, "
    "the stable velnorForm elicitation mode, guardian writeStdin reviews, and file-referenced image inputs; it drops "
    "the removed thread/rollback API. Unknown guardian action types and elicitation modes now degrade instead of "
    "failing a turn.",
    "Thread attachments, gateway OAuth, plugin reconcile, and experimental user verification, memory status, and "
    "rollout compression are not integrated.",
    "OrmelStableCapabilityManifest.entries is the machine-readable source of truth for shipped stable support and "
    "compatibility-only protocol handling.",
    "The safety slice includes typed fail-closed command, file-change, and permission approvals; resolved-request "
    "cancellation; exact capability negotiation; structured RPC errors; and canonical reasoning, review, and "
    "compaction decoding.",
    "The model-control slice uses stable model/list, permissionProfile/list, and configRequirements/read data end to "
    "end for modalities, specialty, multi-agent capability, retirement metadata, reasoning, service tiers, "
    "personality, managed permission profiles, approval policy, and full-access gating.",
    "The integration slice uses stable app catalog and runtime state, plugin policy metadata, skill, MCP runtime/auth "
    "status, MCP elicitation, forward-compatible lifecycle hooks, and config write surfaces with structured composer "
    "mentions that match the current CLI trigger contract.",
    "The account slice includes stable Parlane and API-key login, logout, rate limits, spend-control exhaustion, "
    "usage, reset credits, workspace messages, and account invalidation notifications without persisting credentials.",
    "The lifecycle slice includes streamed inline review and compaction, persisted and ephemeral forks, rename, "
    "archive, unarchive, hard delete, status, feedback, hook management, and built-in composer commands routed to the "
    "same native actions.",
    "thread/items/list is experimental upstream and is retained only as a non-exposed compatibility path. Current "
    "turn/item envelopes are decoded directly and the legacy alias is bounded to unknown-method fallback.",
    "Browser control, scheduled tasks, realtime voice and audio, memories, and other experimental or internal-only "
    "surfaces are intentionally excluded.",
    "An SDK wrapper alone does not imply Kestrion integration or UI parity; OrmelStableCapabilityManifest records each "
    "completed stable vertical slice.",
};

bool hasForm(std::string_view text, const char* form) { return std::regex_match(std::string(text), std::regex(form)); }

TEST(UpstreamBaseline, HasFactsOfTheRightForm) {
  EXPECT_TRUE(hasForm(Baseline::repositoryURL, "https://[a-z0-9.-]+(/[A-Za-z0-9._~-]+)+")) << Baseline::repositoryURL;
  EXPECT_TRUE(hasForm(Baseline::commit, "[0-9a-f]{40}")) << Baseline::commit;
  EXPECT_EQ(Baseline::auditedAt, "2026-09-28");
}

TEST(UpstreamBaseline, SaysFirstWhatWasAudited) {
  const std::string& first = Baseline::notes().at(0);
  EXPECT_NE(first.find("app-server source"), std::string::npos) << first;
  EXPECT_NE(first.find(Baseline::commit), std::string::npos) << first;
  EXPECT_NE(first.find(Baseline::auditedAt), std::string::npos) << first;
  EXPECT_TRUE(std::regex_search(first, std::regex("release [a-z-]*v?[0-9]+(\\.[0-9]+)+"))) << first;
  EXPECT_TRUE(hasForm(first, "[A-Z][^!?]*\\.")) << first;
  EXPECT_EQ(first.find(". "), std::string::npos) << "more than one sentence: " << first;
}

TEST(UpstreamBaseline, KeepsItsNotesInOrder) {
  const auto& notes = Baseline::notes();
  ASSERT_EQ(notes.size(), 12u);
  EXPECT_EQ(std::vector<std::string>(notes.begin() + 1, notes.end()),
            std::vector<std::string>(std::begin(expectedNotesOnScope), std::end(expectedNotesOnScope)));
}

}  // namespace
