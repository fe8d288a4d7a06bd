#include "OrmelSDK/Handlers/Elicitation.h"

#include <utility>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Coding/TaggedVariant.h"

template <>
struct ormel::coding::EnumerationTable<ormel::McpServerElicitationAction> {
  static constexpr auto rule = closed;
  static constexpr Word<McpServerElicitationAction> words[] = {
      {McpServerElicitationAction::accept, "accept"},
      {McpServerElicitationAction::decline, "decline"},
      {McpServerElicitationAction::cancel, "cancel"},
  };
};

// The request and the response have no JSON form; their tables are for printing.

template <>
struct ormel::coding::RecordTable<ormel::McpServerElicitationForm> {
  static constexpr Field fields[] = {
      required<&McpServerElicitationForm::message>("message"),
      required<&McpServerElicitationForm::requestedSchema>("requestedSchema"),
      optional<&McpServerElicitationForm::metadata>("metadata"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::McpServerURLElicitation> {
  static constexpr Field fields[] = {
      required<&McpServerURLElicitation::message>("message"),
      required<&McpServerURLElicitation::url>("url"),
      required<&McpServerURLElicitation::elicitationID>("elicitationID"),
      optional<&McpServerURLElicitation::metadata>("metadata"),
  };
};

template <>
struct ormel::coding::VariantTable<ormel::McpServerElicitationMode> : CasesOf<McpServerElicitationMode> {
  static constexpr Case cases[] = {
      variantCase<McpServerFormElicitation, RecordCoder<McpServerElicitationForm>>("form"),
      variantCase<McpServerVelnorFormElicitation, RecordCoder<McpServerElicitationForm>>("velnorForm"),
      variantCase<McpServerURLElicitation>("url"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::McpServerElicitationRequest> {
  static constexpr Field fields[] = {
      printed<&McpServerElicitationRequest::threadID>("threadID"),
      printed<&McpServerElicitationRequest::turnID>("turnID"),
      printed<&McpServerElicitationRequest::serverName>("serverName"),
      printed<&McpServerElicitationRequest::mode>("mode"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::McpServerElicitationResponse> {
  static constexpr Field fields[] = {
      printed<&McpServerElicitationResponse::action>("action"),
      printed<&McpServerElicitationResponse::content>("content"),
      printed<&McpServerElicitationResponse::metadata>("metadata"),
  };
};

namespace ormel {

McpServerElicitationMode::McpServerElicitationMode() = default;
McpServerElicitationMode::McpServerElicitationMode(const McpServerElicitationMode&) = default;
McpServerElicitationMode::McpServerElicitationMode(McpServerElicitationMode&&) noexcept = default;
McpServerElicitationMode& McpServerElicitationMode::operator=(const McpServerElicitationMode&) = default;
McpServerElicitationMode& McpServerElicitationMode::operator=(McpServerElicitationMode&&) noexcept = default;
McpServerElicitationMode::~McpServerElicitationMode() = default;

McpServerElicitationMode::McpServerElicitationMode(McpServerFormElicitation mode) : value(std::move(mode)) {}
McpServerElicitationMode::McpServerElicitationMode(McpServerVelnorFormElicitation mode) : value(std::move(mode)) {}
McpServerElicitationMode::McpServerElicitationMode(McpServerURLElicitation mode) : value(std::move(mode)) {}

McpServerElicitationMode McpServerElicitationMode::form(std::string message, JSONValue requestedSchema,
                                                        std::optional<JSONValue> metadata) {
  return McpServerFormElicitation{{std::move(message), std::move(requestedSchema), std::move(metadata)}};
}
McpServerElicitationMode McpServerElicitationMode::velnorForm(std::string message, JSONValue requestedSchema,
                                                              std::optional<JSONValue> metadata) {
  return McpServerVelnorFormElicitation{{std::move(message), std::move(requestedSchema), std::move(metadata)}};
}
McpServerElicitationMode McpServerElicitationMode::url(std::string message, std::string url, std::string elicitationID,
                                                       std::optional<JSONValue> metadata) {
  return McpServerURLElicitation{std::move(message), std::move(url), std::move(elicitationID), std::move(metadata)};
}

}  // namespace ormel

ORMEL_DEFINE_ENUMERATION(McpServerElicitationAction)
ORMEL_DEFINE_CASE(McpServerElicitationForm)
ORMEL_DEFINE_CASE(McpServerURLElicitation)
ORMEL_DEFINE_EQUALITY(McpServerFormElicitation)
ORMEL_DEFINE_EQUALITY(McpServerVelnorFormElicitation)
ORMEL_DEFINE_EQUALITY(McpServerElicitationMode)
ORMEL_DEFINE_PRINTED_BY(McpServerElicitationMode, encodeVariant)
ORMEL_DEFINE_PRINTED_RECORD(McpServerElicitationRequest)
ORMEL_DEFINE_PRINTED_RECORD(McpServerElicitationResponse)
