#pragma once

#include <iosfwd>

#include "OrmelSDK/Base/NeverDestroyed.h"
#include "OrmelSDK/Coding/OpenVocabulary.h"
#include "OrmelSDK/Coding/RecordCoding.h"

// The choices that threads and turns share. Their JSON form is a bare string, the one that `rawValue` gives.
namespace ormel {

/// Limits the files that the commands of a thread may touch.
enum class SandboxMode { readOnly, workspaceWrite, dangerFullAccess };
std::ostream& operator<<(std::ostream& stream, const SandboxMode& value);

/// The reviewer that decides about approvals.
enum class ApprovalsReviewer { user, autoReview, guardianSubagent };
std::ostream& operator<<(std::ostream& stream, const ApprovalsReviewer& value);

/// The tone of the agent's messages.
enum class Personality { none, friendly, pragmatic };
std::ostream& operator<<(std::ostream& stream, const Personality& value);

/// The reason why a session started.
enum class ThreadStartSource { startup, clear };
std::ostream& operator<<(std::ostream& stream, const ThreadStartSource& value);

/// The party that a thread was made for.
enum class ThreadSource { user, subagent, memoryConsolidation };
std::ostream& operator<<(std::ostream& stream, const ThreadSource& value);

/// Whether the agent may search the web, and where the results come from.
enum class WebSearchMode { disabled, cached, live };
std::ostream& operator<<(std::ostream& stream, const WebSearchMode& value);

/// How much of the model's reasoning is summarised.
enum class ModelReasoningSummary { auto_, concise, detailed, none };
std::ostream& operator<<(std::ostream& stream, const ModelReasoningSummary& value);

/// How long the model's answers are.
enum class ModelVerbosity { low, medium, high };
std::ostream& operator<<(std::ostream& stream, const ModelVerbosity& value);

/// How the agent works with the user. Read from a string, or from an object whose `mode` is that string.
enum class CollaborationMode { defaultMode, plan };
std::ostream& operator<<(std::ostream& stream, const CollaborationMode& value);

/// How much the model thinks before it answers.
struct ModelReasoningEffort : OpenVocabulary {
  using OpenVocabulary::OpenVocabulary;

  static const ModelReasoningEffort& none;
  static const ModelReasoningEffort& minimal;
  static const ModelReasoningEffort& low;
  static const ModelReasoningEffort& medium;
  static const ModelReasoningEffort& high;
  static const ModelReasoningEffort& xhigh;
  static const ModelReasoningEffort& max;
  static const ModelReasoningEffort& ultra;
};
std::ostream& operator<<(std::ostream& stream, const ModelReasoningEffort& value);

inline const ModelReasoningEffort& ModelReasoningEffort::none = detail::neverDestroyed<ModelReasoningEffort>("none");
inline const ModelReasoningEffort& ModelReasoningEffort::minimal =
    detail::neverDestroyed<ModelReasoningEffort>("minimal");
inline const ModelReasoningEffort& ModelReasoningEffort::low = detail::neverDestroyed<ModelReasoningEffort>("low");
inline const ModelReasoningEffort& ModelReasoningEffort::medium =
    detail::neverDestroyed<ModelReasoningEffort>("medium");
inline const ModelReasoningEffort& ModelReasoningEffort::high = detail::neverDestroyed<ModelReasoningEffort>("high");
inline const ModelReasoningEffort& ModelReasoningEffort::xhigh = detail::neverDestroyed<ModelReasoningEffort>("xhigh");
inline const ModelReasoningEffort& ModelReasoningEffort::max = detail::neverDestroyed<ModelReasoningEffort>("max");
inline const ModelReasoningEffort& ModelReasoningEffort::ultra = detail::neverDestroyed<ModelReasoningEffort>("ultra");

/// How quickly, and at what price, the model is served.
struct ServiceTier : OpenVocabulary {
  using OpenVocabulary::OpenVocabulary;

  static const ServiceTier& fast;
  static const ServiceTier& flex;
};
std::ostream& operator<<(std::ostream& stream, const ServiceTier& value);

inline const ServiceTier& ServiceTier::fast = detail::neverDestroyed<ServiceTier>("fast");
inline const ServiceTier& ServiceTier::flex = detail::neverDestroyed<ServiceTier>("flex");

}  // namespace ormel
