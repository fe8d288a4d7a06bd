#pragma once

#include <array>
#include <string_view>
#include <tuple>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/TaggedVariant.h"
#include "OrmelSDK/Events/GuardianReviewAction.h"
#include "OrmelSDK/Handlers/PermissionProfileTables.h"

template <>
struct ormel::coding::EnumerationTable<ormel::GuardianCommandSource> {
  static constexpr auto words = tolerant(
      GuardianCommandSource::unifiedExec,
      std::array{Word{GuardianCommandSource::shell, "shell"}, Word{GuardianCommandSource::unifiedExec, "unifiedExec"}});
};
ORMEL_DECLARE_ENUMERATION(GuardianCommandSource)

template <>
struct ormel::coding::EnumerationTable<ormel::NetworkApprovalProtocol> {
  static constexpr auto words =
      tolerant(NetworkApprovalProtocol::socks5Udp,
               std::array{Word{NetworkApprovalProtocol::http, "http"}, Word{NetworkApprovalProtocol::https, "https"},
                          Word{NetworkApprovalProtocol::socks5Tcp, "socks5Tcp"},
                          Word{NetworkApprovalProtocol::socks5Udp, "socks5Udp"}});
};
ORMEL_DECLARE_ENUMERATION(NetworkApprovalProtocol)

template <>
struct ormel::coding::RecordTable<ormel::GuardianCommandReviewAction> {
  static constexpr auto fields = std::tuple(required<&GuardianCommandReviewAction::source>("source"),
                                            required<&GuardianCommandReviewAction::command>("command"),
                                            required<&GuardianCommandReviewAction::cwd>("cwd"));
};
ORMEL_DECLARE_CODEC(GuardianCommandReviewAction)

template <>
struct ormel::coding::RecordTable<ormel::GuardianExecveReviewAction> {
  static constexpr auto fields = std::tuple(required<&GuardianExecveReviewAction::source>("source"),
                                            required<&GuardianExecveReviewAction::program>("program"),
                                            required<&GuardianExecveReviewAction::argv>("argv"),
                                            required<&GuardianExecveReviewAction::cwd>("cwd"));
};
ORMEL_DECLARE_CODEC(GuardianExecveReviewAction)

template <>
struct ormel::coding::RecordTable<ormel::GuardianApplyPatchReviewAction> {
  static constexpr auto fields = std::tuple(required<&GuardianApplyPatchReviewAction::cwd>("cwd"),
                                            required<&GuardianApplyPatchReviewAction::files>("files"));
};
ORMEL_DECLARE_CODEC(GuardianApplyPatchReviewAction)

template <>
struct ormel::coding::RecordTable<ormel::GuardianNetworkAccessReviewAction> {
  static constexpr auto fields = std::tuple(required<&GuardianNetworkAccessReviewAction::target>("target"),
                                            required<&GuardianNetworkAccessReviewAction::host>("host"),
                                            required<&GuardianNetworkAccessReviewAction::protocolType>("protocol"),
                                            required<&GuardianNetworkAccessReviewAction::port>("port"));
};
ORMEL_DECLARE_CODEC(GuardianNetworkAccessReviewAction)

template <>
struct ormel::coding::RecordTable<ormel::GuardianMcpToolCallReviewAction> {
  static constexpr auto fields =
      std::tuple(required<&GuardianMcpToolCallReviewAction::server>("server"),
                 required<&GuardianMcpToolCallReviewAction::toolName>("toolName", "tool_name"),
                 optional<&GuardianMcpToolCallReviewAction::connectorID>("connectorId", "connector_id"),
                 optional<&GuardianMcpToolCallReviewAction::connectorName>("connectorName", "connector_name"),
                 optional<&GuardianMcpToolCallReviewAction::toolTitle>("toolTitle", "tool_title"));
};
ORMEL_DECLARE_CODEC(GuardianMcpToolCallReviewAction)

template <>
struct ormel::coding::RecordTable<ormel::GuardianRequestPermissionsReviewAction> {
  static constexpr auto fields =
      std::tuple(optional<&GuardianRequestPermissionsReviewAction::reason>("reason"),
                 required<&GuardianRequestPermissionsReviewAction::permissions>("permissions"));
};
ORMEL_DECLARE_CODEC(GuardianRequestPermissionsReviewAction)

template <>
struct ormel::coding::RecordTable<ormel::GuardianWriteStdinReviewAction> {
  static constexpr auto fields = std::tuple(required<&GuardianWriteStdinReviewAction::approvalID>("approvalId"),
                                            required<&GuardianWriteStdinReviewAction::processID>("processId"),
                                            required<&GuardianWriteStdinReviewAction::stdin_>("stdin"),
                                            required<&GuardianWriteStdinReviewAction::cwd>("cwd"));
};
ORMEL_DECLARE_CODEC(GuardianWriteStdinReviewAction)

template <>
struct ormel::coding::RecordTable<ormel::GuardianUnknownReviewAction> {
  static constexpr auto fields = std::tuple(required<&GuardianUnknownReviewAction::type>("type"));
};
ORMEL_DECLARE_CODEC(GuardianUnknownReviewAction)

template <>
struct ormel::coding::VariantTable<ormel::GuardianApprovalReviewAction> {
  static constexpr auto cases =
      std::tuple(variantCase<GuardianCommandReviewAction>("command"), variantCase<GuardianExecveReviewAction>("execve"),
                 variantCase<GuardianApplyPatchReviewAction>("applyPatch"),
                 variantCase<GuardianNetworkAccessReviewAction>("networkAccess"),
                 variantCase<GuardianMcpToolCallReviewAction>("mcpToolCall"),
                 variantCase<GuardianRequestPermissionsReviewAction>("requestPermissions"),
                 variantCase<GuardianWriteStdinReviewAction>("writeStdin"));
  static GuardianApprovalReviewAction decodeUnknown(std::string_view type, const JSONValue& value,
                                                    const CodingPath& path);
  static JSONValue encodeUnknown(const GuardianApprovalReviewAction& action);
};
ORMEL_DECLARE_CODEC(GuardianApprovalReviewAction)
