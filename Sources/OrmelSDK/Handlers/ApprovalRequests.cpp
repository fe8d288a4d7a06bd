#include "OrmelSDK/Handlers/ApprovalRequests.h"

#include "OrmelSDK/Coding/RecordCodec.h"

// The requests and the response have no JSON form; their tables are for printing.

template <>
struct ormel::coding::RecordTable<ormel::CommandApprovalRequest> {
  static constexpr Field fields[] = {
      printed<&CommandApprovalRequest::kind>("kind"),
      printed<&CommandApprovalRequest::approvalID>("approvalID"),
      printed<&CommandApprovalRequest::environmentID>("environmentID"),
      printed<&CommandApprovalRequest::threadID>("threadID"),
      printed<&CommandApprovalRequest::turnID>("turnID"),
      printed<&CommandApprovalRequest::itemID>("itemID"),
      printed<&CommandApprovalRequest::command>("command"),
      printed<&CommandApprovalRequest::workingDirectory>("workingDirectory"),
      printed<&CommandApprovalRequest::reason>("reason"),
      printed<&CommandApprovalRequest::commandActions>("commandActions"),
      printed<&CommandApprovalRequest::additionalPermissions>("additionalPermissions"),
      printed<&CommandApprovalRequest::availableDecisions>("availableDecisions"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::FileChangeApprovalRequest> {
  static constexpr Field fields[] = {
      printed<&FileChangeApprovalRequest::threadID>("threadID"),
      printed<&FileChangeApprovalRequest::turnID>("turnID"),
      printed<&FileChangeApprovalRequest::itemID>("itemID"),
      printed<&FileChangeApprovalRequest::reason>("reason"),
      printed<&FileChangeApprovalRequest::grantRoot>("grantRoot"),
      printed<&FileChangeApprovalRequest::changes>("changes"),
      printed<&FileChangeApprovalRequest::availableDecisions>("availableDecisions"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::PermissionsApprovalRequest> {
  static constexpr Field fields[] = {
      printed<&PermissionsApprovalRequest::threadID>("threadID"),
      printed<&PermissionsApprovalRequest::turnID>("turnID"),
      printed<&PermissionsApprovalRequest::itemID>("itemID"),
      printed<&PermissionsApprovalRequest::reason>("reason"),
      printed<&PermissionsApprovalRequest::permissions>("permissions"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::PermissionsApprovalResponse> {
  static constexpr Field fields[] = {
      printed<&PermissionsApprovalResponse::permissions>("permissions"),
      printed<&PermissionsApprovalResponse::scope>("scope"),
  };
};

ORMEL_DEFINE_VOCABULARY(CommandApprovalKind)
ORMEL_DEFINE_PRINTED_RECORD(CommandApprovalRequest)
ORMEL_DEFINE_PRINTED_RECORD(FileChangeApprovalRequest)
ORMEL_DEFINE_PRINTED_RECORD(PermissionsApprovalRequest)
ORMEL_DEFINE_PRINTED_RECORD(PermissionsApprovalResponse)
