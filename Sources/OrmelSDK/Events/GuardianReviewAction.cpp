#include "OrmelSDK/Events/GuardianReviewAction.h"

#include <string>
#include <string_view>
#include <utility>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Coding/TaggedVariant.h"

template <>
struct ormel::coding::EnumerationTable<ormel::GuardianCommandSource> {
  static constexpr auto rule = tolerant(GuardianCommandSource::unifiedExec);
  static constexpr Word<GuardianCommandSource> words[] = {
      {GuardianCommandSource::shell, "shell"},
      {GuardianCommandSource::unifiedExec, "unifiedExec"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::NetworkApprovalProtocol> {
  static constexpr auto rule = tolerant(NetworkApprovalProtocol::socks5Udp);
  static constexpr Word<NetworkApprovalProtocol> words[] = {
      {NetworkApprovalProtocol::http, "http"},
      {NetworkApprovalProtocol::https, "https"},
      {NetworkApprovalProtocol::socks5Tcp, "socks5Tcp"},
      {NetworkApprovalProtocol::socks5Udp, "socks5Udp"},
  };
};

template <>
struct ormel::coding::RecordTable<ormel::GuardianCommandReviewAction> {
  static constexpr Field fields[] = {
      required<&GuardianCommandReviewAction::source>("source"),
      required<&GuardianCommandReviewAction::command>("command"),
      required<&GuardianCommandReviewAction::cwd>("cwd"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::GuardianExecveReviewAction> {
  static constexpr Field fields[] = {
      required<&GuardianExecveReviewAction::source>("source"),
      required<&GuardianExecveReviewAction::program>("program"),
      required<&GuardianExecveReviewAction::argv>("argv"),
      required<&GuardianExecveReviewAction::cwd>("cwd"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::GuardianApplyPatchReviewAction> {
  static constexpr Field fields[] = {
      required<&GuardianApplyPatchReviewAction::cwd>("cwd"),
      required<&GuardianApplyPatchReviewAction::files>("files"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::GuardianNetworkAccessReviewAction> {
  static constexpr Field fields[] = {
      required<&GuardianNetworkAccessReviewAction::target>("target"),
      required<&GuardianNetworkAccessReviewAction::host>("host"),
      required<&GuardianNetworkAccessReviewAction::protocolType>("protocol"),
      required<&GuardianNetworkAccessReviewAction::port>("port"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::GuardianMcpToolCallReviewAction> {
  static constexpr Field fields[] = {
      required<&GuardianMcpToolCallReviewAction::server>("server"),
      required<&GuardianMcpToolCallReviewAction::toolName>("toolName", "tool_name"),
      optional<&GuardianMcpToolCallReviewAction::connectorID>("connectorId", "connector_id"),
      optional<&GuardianMcpToolCallReviewAction::connectorName>("connectorName", "connector_name"),
      optional<&GuardianMcpToolCallReviewAction::toolTitle>("toolTitle", "tool_title"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::GuardianRequestPermissionsReviewAction> {
  static constexpr Field fields[] = {
      optional<&GuardianRequestPermissionsReviewAction::reason>("reason"),
      required<&GuardianRequestPermissionsReviewAction::permissions>("permissions"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::GuardianWriteStdinReviewAction> {
  static constexpr Field fields[] = {
      required<&GuardianWriteStdinReviewAction::approvalID>("approvalId"),
      required<&GuardianWriteStdinReviewAction::processID>("processId"),
      required<&GuardianWriteStdinReviewAction::stdin_>("stdin"),
      required<&GuardianWriteStdinReviewAction::cwd>("cwd"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::GuardianUnknownReviewAction> {
  static constexpr Field fields[] = {
      required<&GuardianUnknownReviewAction::type>("type"),
  };
};

template <>
struct ormel::coding::VariantTable<ormel::GuardianApprovalReviewAction> : CasesOf<GuardianApprovalReviewAction> {
  static constexpr Case cases[] = {
      variantCase<GuardianCommandReviewAction>("command"),
      variantCase<GuardianExecveReviewAction>("execve"),
      variantCase<GuardianApplyPatchReviewAction>("applyPatch"),
      variantCase<GuardianNetworkAccessReviewAction>("networkAccess"),
      variantCase<GuardianMcpToolCallReviewAction>("mcpToolCall"),
      variantCase<GuardianRequestPermissionsReviewAction>("requestPermissions"),
      variantCase<GuardianWriteStdinReviewAction>("writeStdin"),
  };
  static GuardianApprovalReviewAction decodeUnknown(std::string_view type, const JSONValue& value,
                                                    const CodingPath& path);
  static JSONValue encodeUnknown(const GuardianApprovalReviewAction& action);
};

namespace ormel::coding {

GuardianApprovalReviewAction VariantTable<GuardianApprovalReviewAction>::decodeUnknown(std::string_view type,
                                                                                       const JSONValue&,
                                                                                       const CodingPath&) {
  return GuardianUnknownReviewAction{std::string(type)};
}

JSONValue VariantTable<GuardianApprovalReviewAction>::encodeUnknown(const GuardianApprovalReviewAction& action) {
  return Codec<GuardianUnknownReviewAction>::encode(std::get<GuardianUnknownReviewAction>(action.value));
}

}  // namespace ormel::coding

namespace ormel {

GuardianApprovalReviewAction::GuardianApprovalReviewAction() = default;
GuardianApprovalReviewAction::GuardianApprovalReviewAction(const GuardianApprovalReviewAction&) = default;
GuardianApprovalReviewAction::GuardianApprovalReviewAction(GuardianApprovalReviewAction&&) noexcept = default;
GuardianApprovalReviewAction& GuardianApprovalReviewAction::operator=(const GuardianApprovalReviewAction&) = default;
GuardianApprovalReviewAction& GuardianApprovalReviewAction::operator=(GuardianApprovalReviewAction&&) noexcept =
    default;
GuardianApprovalReviewAction::~GuardianApprovalReviewAction() = default;

GuardianApprovalReviewAction::GuardianApprovalReviewAction(GuardianCommandReviewAction action)
    : value(std::move(action)) {}
GuardianApprovalReviewAction::GuardianApprovalReviewAction(GuardianExecveReviewAction action)
    : value(std::move(action)) {}
GuardianApprovalReviewAction::GuardianApprovalReviewAction(GuardianApplyPatchReviewAction action)
    : value(std::move(action)) {}
GuardianApprovalReviewAction::GuardianApprovalReviewAction(GuardianNetworkAccessReviewAction action)
    : value(std::move(action)) {}
GuardianApprovalReviewAction::GuardianApprovalReviewAction(GuardianMcpToolCallReviewAction action)
    : value(std::move(action)) {}
GuardianApprovalReviewAction::GuardianApprovalReviewAction(GuardianRequestPermissionsReviewAction action)
    : value(std::move(action)) {}
GuardianApprovalReviewAction::GuardianApprovalReviewAction(GuardianWriteStdinReviewAction action)
    : value(std::move(action)) {}
GuardianApprovalReviewAction::GuardianApprovalReviewAction(GuardianUnknownReviewAction action)
    : value(std::move(action)) {}

}  // namespace ormel

ORMEL_DEFINE_ENUMERATION(GuardianCommandSource)
ORMEL_DEFINE_ENUMERATION(NetworkApprovalProtocol)
ORMEL_DEFINE_HOT_RECORD(GuardianCommandReviewAction)
ORMEL_DEFINE_HOT_RECORD(GuardianExecveReviewAction)
ORMEL_DEFINE_HOT_RECORD(GuardianApplyPatchReviewAction)
ORMEL_DEFINE_HOT_RECORD(GuardianNetworkAccessReviewAction)
ORMEL_DEFINE_HOT_RECORD(GuardianMcpToolCallReviewAction)
ORMEL_DEFINE_HOT_RECORD(GuardianRequestPermissionsReviewAction)
ORMEL_DEFINE_HOT_RECORD(GuardianWriteStdinReviewAction)
ORMEL_DEFINE_HOT_RECORD(GuardianUnknownReviewAction)
ORMEL_DEFINE_VARIANT(GuardianApprovalReviewAction)
