#pragma once

#include <array>
#include <tuple>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Input/ApprovalMode.h"

template <>
struct ormel::coding::EnumerationTable<ormel::ApprovalMode::Policy> {
  static constexpr auto words = closed(std::array{
      Word{ApprovalMode::Policy::never, "never"}, Word{ApprovalMode::Policy::onRequest, "on-request"},
      Word{ApprovalMode::Policy::onFailure, "on-failure"}, Word{ApprovalMode::Policy::untrusted, "untrusted"}});
};

template <>
struct ormel::coding::RecordTable<ormel::GranularApprovalMode> {
  static constexpr auto fields = std::tuple(required<&GranularApprovalMode::sandboxApproval>("sandbox_approval"),
                                            required<&GranularApprovalMode::rules>("rules"),
                                            required<&GranularApprovalMode::skillApproval>("skill_approval"),
                                            required<&GranularApprovalMode::requestPermissions>("request_permissions"),
                                            required<&GranularApprovalMode::mcpElicitations>("mcp_elicitations"));
};
ORMEL_DECLARE_CODEC(GranularApprovalMode)
ORMEL_DECLARE_CODEC(ApprovalMode)
