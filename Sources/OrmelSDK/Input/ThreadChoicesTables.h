#pragma once

#include <array>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Input/ThreadChoices.h"

template <>
struct ormel::coding::EnumerationTable<ormel::SandboxMode> {
  static constexpr auto words =
      closed(std::array{Word{SandboxMode::readOnly, "read-only"}, Word{SandboxMode::workspaceWrite, "workspace-write"},
                        Word{SandboxMode::dangerFullAccess, "danger-full-access"}});
};
ORMEL_DECLARE_ENUMERATION(SandboxMode)

template <>
struct ormel::coding::EnumerationTable<ormel::ApprovalsReviewer> {
  static constexpr auto words =
      closed(std::array{Word{ApprovalsReviewer::user, "user"}, Word{ApprovalsReviewer::autoReview, "auto_review"},
                        Word{ApprovalsReviewer::guardianSubagent, "guardian_subagent"}});
};
ORMEL_DECLARE_ENUMERATION(ApprovalsReviewer)

template <>
struct ormel::coding::EnumerationTable<ormel::Personality> {
  static constexpr auto words =
      closed(std::array{Word{Personality::none, "none"}, Word{Personality::friendly, "friendly"},
                        Word{Personality::pragmatic, "pragmatic"}});
};
ORMEL_DECLARE_ENUMERATION(Personality)

template <>
struct ormel::coding::EnumerationTable<ormel::ThreadStartSource> {
  static constexpr auto words =
      closed(std::array{Word{ThreadStartSource::startup, "startup"}, Word{ThreadStartSource::clear, "clear"}});
};
ORMEL_DECLARE_ENUMERATION(ThreadStartSource)

template <>
struct ormel::coding::EnumerationTable<ormel::ThreadSource> {
  static constexpr auto words =
      closed(std::array{Word{ThreadSource::user, "user"}, Word{ThreadSource::subagent, "subagent"},
                        Word{ThreadSource::memoryConsolidation, "memory_consolidation"}});
};
ORMEL_DECLARE_ENUMERATION(ThreadSource)

template <>
struct ormel::coding::EnumerationTable<ormel::WebSearchMode> {
  static constexpr auto words =
      closed(std::array{Word{WebSearchMode::disabled, "disabled"}, Word{WebSearchMode::cached, "cached"},
                        Word{WebSearchMode::live, "live"}});
};
ORMEL_DECLARE_ENUMERATION(WebSearchMode)

template <>
struct ormel::coding::EnumerationTable<ormel::ModelReasoningSummary> {
  static constexpr auto words =
      closed(std::array{Word{ModelReasoningSummary::auto_, "auto"}, Word{ModelReasoningSummary::concise, "concise"},
                        Word{ModelReasoningSummary::detailed, "detailed"}, Word{ModelReasoningSummary::none, "none"}});
};
ORMEL_DECLARE_ENUMERATION(ModelReasoningSummary)

template <>
struct ormel::coding::EnumerationTable<ormel::ModelVerbosity> {
  static constexpr auto words = closed(std::array{
      Word{ModelVerbosity::low, "low"}, Word{ModelVerbosity::medium, "medium"}, Word{ModelVerbosity::high, "high"}});
};
ORMEL_DECLARE_ENUMERATION(ModelVerbosity)

template <>
struct ormel::coding::EnumerationTable<ormel::CollaborationMode> {
  static constexpr auto words =
      closed(std::array{Word{CollaborationMode::defaultMode, "default"}, Word{CollaborationMode::plan, "plan"}});
};
ORMEL_DECLARE_ENUMERATION(CollaborationMode)
