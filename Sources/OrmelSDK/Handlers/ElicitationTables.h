#pragma once

#include <array>
#include <tuple>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Coding/TaggedVariant.h"
#include "OrmelSDK/Handlers/Elicitation.h"

template <>
struct ormel::coding::EnumerationTable<ormel::McpServerElicitationAction> {
  static constexpr auto words = closed(std::array{Word{McpServerElicitationAction::accept, "accept"},
                                                  Word{McpServerElicitationAction::decline, "decline"},
                                                  Word{McpServerElicitationAction::cancel, "cancel"}});
};
ORMEL_DECLARE_ENUMERATION(McpServerElicitationAction)

// The request and the response have no JSON form; their tables are for printing.

template <>
struct ormel::coding::RecordTable<ormel::McpServerElicitationForm> {
  static constexpr auto fields = std::tuple(required<&McpServerElicitationForm::message>("message"),
                                            required<&McpServerElicitationForm::requestedSchema>("requestedSchema"),
                                            optional<&McpServerElicitationForm::metadata>("metadata"));
};

template <>
struct ormel::coding::RecordTable<ormel::McpServerURLElicitation> {
  static constexpr auto fields =
      std::tuple(required<&McpServerURLElicitation::message>("message"), required<&McpServerURLElicitation::url>("url"),
                 required<&McpServerURLElicitation::elicitationID>("elicitationID"),
                 optional<&McpServerURLElicitation::metadata>("metadata"));
};

template <>
struct ormel::coding::VariantTable<ormel::McpServerElicitationMode> {
  static constexpr auto cases =
      std::tuple(variantCase<McpServerFormElicitation, RecordTable<McpServerElicitationForm>>("form"),
                 variantCase<McpServerVelnorFormElicitation, RecordTable<McpServerElicitationForm>>("velnorForm"),
                 variantCase<McpServerURLElicitation>("url"));
};
ORMEL_DECLARE_PRINTED(McpServerElicitationMode)

template <>
struct ormel::coding::RecordTable<ormel::McpServerElicitationRequest> {
  static constexpr auto fields = std::tuple(required<&McpServerElicitationRequest::threadID>("threadID"),
                                            optional<&McpServerElicitationRequest::turnID>("turnID"),
                                            required<&McpServerElicitationRequest::serverName>("serverName"),
                                            required<&McpServerElicitationRequest::mode>("mode"));
};
ORMEL_DECLARE_PRINTED(McpServerElicitationRequest)

template <>
struct ormel::coding::RecordTable<ormel::McpServerElicitationResponse> {
  static constexpr auto fields = std::tuple(required<&McpServerElicitationResponse::action>("action"),
                                            optional<&McpServerElicitationResponse::content>("content"),
                                            optional<&McpServerElicitationResponse::metadata>("metadata"));
};
ORMEL_DECLARE_PRINTED(McpServerElicitationResponse)
