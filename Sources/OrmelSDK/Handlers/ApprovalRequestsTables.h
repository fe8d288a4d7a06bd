#pragma once

#include <array>
#include <tuple>

#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Handlers/ApprovalDecisionTables.h"
#include "OrmelSDK/Handlers/ApprovalRequests.h"
#include "OrmelSDK/Handlers/PermissionProfileTables.h"
#include "OrmelSDK/Items/FileChangeItemsTables.h"

// The requests and the response have no JSON form; their tables are for printing.

template <>
struct ormel::coding::RecordTable<ormel::CommandApprovalRequest> {
  static constexpr auto fields = std::tuple(
      required<&CommandApprovalRequest::kind>("kind"), optional<&CommandApprovalRequest::approvalID>("approvalID"),
      optional<&CommandApprovalRequest::environmentID>("environmentID"),
      required<&CommandApprovalRequest::threadID>("threadID"), required<&CommandApprovalRequest::turnID>("turnID"),
      required<&CommandApprovalRequest::itemID>("itemID"), optional<&CommandApprovalRequest::command>("command"),
      optional<&CommandApprovalRequest::workingDirectory>("workingDirectory"),
      optional<&CommandApprovalRequest::reason>("reason"),
      required<&CommandApprovalRequest::commandActions>("commandActions"),
      required<&CommandApprovalRequest::additionalPermissions>("additionalPermissions"),
      required<&CommandApprovalRequest::availableDecisions>("availableDecisions"));
};
ORMEL_DECLARE_PRINTED(CommandApprovalRequest)

template <>
struct ormel::coding::RecordTable<ormel::FileChangeApprovalRequest> {
  static constexpr auto fields = std::tuple(
      required<&FileChangeApprovalRequest::threadID>("threadID"),
      required<&FileChangeApprovalRequest::turnID>("turnID"), required<&FileChangeApprovalRequest::itemID>("itemID"),
      optional<&FileChangeApprovalRequest::reason>("reason"),
      optional<&FileChangeApprovalRequest::grantRoot>("grantRoot"),
      required<&FileChangeApprovalRequest::changes>("changes"),
      required<&FileChangeApprovalRequest::availableDecisions>("availableDecisions"));
};
ORMEL_DECLARE_PRINTED(FileChangeApprovalRequest)

template <>
struct ormel::coding::RecordTable<ormel::PermissionsApprovalRequest> {
  static constexpr auto fields = std::tuple(required<&PermissionsApprovalRequest::threadID>("threadID"),
                                            required<&PermissionsApprovalRequest::turnID>("turnID"),
                                            required<&PermissionsApprovalRequest::itemID>("itemID"),
                                            optional<&PermissionsApprovalRequest::reason>("reason"),
                                            required<&PermissionsApprovalRequest::permissions>("permissions"));
};
ORMEL_DECLARE_PRINTED(PermissionsApprovalRequest)

template <>
struct ormel::coding::RecordTable<ormel::PermissionsApprovalResponse> {
  static constexpr auto fields = std::tuple(required<&PermissionsApprovalResponse::permissions>("permissions"),
                                            required<&PermissionsApprovalResponse::scope>("scope"));
};
ORMEL_DECLARE_PRINTED(PermissionsApprovalResponse)
