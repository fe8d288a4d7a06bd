#include "OrmelSDK/Management/UpstreamBaseline.h"

#include <iterator>

#include "OrmelSDK/Base/NeverDestroyed.h"

namespace ormel {

namespace {

/// The scope of the audit.
constexpr std::string_view notesOnScope[] = {
    // NOLINTNEXTLINE(bugprone-suspicious-missing-comma): long notes go over several lines.
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

}  // namespace

const std::vector<std::string>& OrmelSDKUpstreamBaseline::notes() {
  static const auto& notes = detail::neverDestroyed<std::vector<std::string>>([] {
    std::vector<std::string> all;
    all.push_back("The table was audited on " + std::string(auditedAt) +
                  " against the server's app-server source at commit " + std::string(commit) + ", release " +
                  std::string(releaseTag) + ".");
    all.insert(all.end(), std::begin(notesOnScope), std::end(notesOnScope));
    return all;
  }());
  return notes;
}

}  // namespace ormel
