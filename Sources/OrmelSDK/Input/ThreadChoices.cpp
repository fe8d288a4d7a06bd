#include "OrmelSDK/Input/ThreadChoices.h"

#include <string>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::EnumerationTable<ormel::SandboxMode> {
  static constexpr auto rule = closed;
  static constexpr Word<SandboxMode> words[] = {
      {SandboxMode::readOnly, "read-only"},
      {SandboxMode::workspaceWrite, "workspace-write"},
      {SandboxMode::dangerFullAccess, "danger-full-access"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::ApprovalsReviewer> {
  static constexpr auto rule = closed;
  static constexpr Word<ApprovalsReviewer> words[] = {
      {ApprovalsReviewer::user, "user"},
      {ApprovalsReviewer::autoReview, "auto_review"},
      {ApprovalsReviewer::guardianSubagent, "guardian_subagent"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::Personality> {
  static constexpr auto rule = closed;
  static constexpr Word<Personality> words[] = {
      {Personality::none, "none"},
      {Personality::friendly, "friendly"},
      {Personality::pragmatic, "pragmatic"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::ThreadStartSource> {
  static constexpr auto rule = closed;
  static constexpr Word<ThreadStartSource> words[] = {
      {ThreadStartSource::startup, "startup"},
      {ThreadStartSource::clear, "clear"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::ThreadSource> {
  static constexpr auto rule = closed;
  static constexpr Word<ThreadSource> words[] = {
      {ThreadSource::user, "user"},
      {ThreadSource::subagent, "subagent"},
      {ThreadSource::memoryConsolidation, "memory_consolidation"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::WebSearchMode> {
  static constexpr auto rule = closed;
  static constexpr Word<WebSearchMode> words[] = {
      {WebSearchMode::disabled, "disabled"},
      {WebSearchMode::cached, "cached"},
      {WebSearchMode::live, "live"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::ModelReasoningSummary> {
  static constexpr auto rule = closed;
  static constexpr Word<ModelReasoningSummary> words[] = {
      {ModelReasoningSummary::auto_, "auto"},
      {ModelReasoningSummary::concise, "concise"},
      {ModelReasoningSummary::detailed, "detailed"},
      {ModelReasoningSummary::none, "none"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::ModelVerbosity> {
  static constexpr auto rule = closed;
  static constexpr Word<ModelVerbosity> words[] = {
      {ModelVerbosity::low, "low"},
      {ModelVerbosity::medium, "medium"},
      {ModelVerbosity::high, "high"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::CollaborationMode> {
  static constexpr auto rule = closed;
  static constexpr Word<CollaborationMode> words[] = {
      {CollaborationMode::defaultMode, "default"},
      {CollaborationMode::plan, "plan"},
  };
};

namespace ormel::coding {

namespace {

void decodeCollaborationMode(CollaborationMode& into, const JSONValue& value, const CodingPath& path) {
  const JSONValue* const mode = value.objectValue() ? value.find("mode") : &value;
  if (!mode) failMissingKey("mode", path);
  const CodingPath modePath = mode == &value ? path : path.at("mode");
  const std::string_view text = textOf(*mode, modePath);
  const auto found = enumerationCase<CollaborationMode>(text);
  if (!found) failCorrupted("Unknown collaboration mode: " + std::string(text), modePath);
  into = *found;
}

}  // namespace

}  // namespace ormel::coding

ORMEL_DEFINE_ENUMERATION(SandboxMode)
ORMEL_DEFINE_ENUMERATION(ApprovalsReviewer)
ORMEL_DEFINE_ENUMERATION(Personality)
ORMEL_DEFINE_ENUMERATION(ThreadStartSource)
ORMEL_DEFINE_ENUMERATION(ThreadSource)
ORMEL_DEFINE_ENUMERATION(WebSearchMode)
ORMEL_DEFINE_ENUMERATION(ModelReasoningSummary)
ORMEL_DEFINE_ENUMERATION(ModelVerbosity)
ORMEL_DEFINE_ENUMERATION_BY(CollaborationMode, decodeCollaborationMode)
ORMEL_DEFINE_VOCABULARY(ModelReasoningEffort)
ORMEL_DEFINE_VOCABULARY(ServiceTier)
