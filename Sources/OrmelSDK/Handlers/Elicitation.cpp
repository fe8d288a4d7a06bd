#include "OrmelSDK/Handlers/Elicitation.h"

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

ORMEL_DEFINE_ENUMERATION(McpServerElicitationAction)
ORMEL_DEFINE_CASE(McpServerElicitationForm)
ORMEL_DEFINE_CASE(McpServerURLElicitation)
ORMEL_DEFINE_EQUALITY(McpServerFormElicitation)
ORMEL_DEFINE_EQUALITY(McpServerVelnorFormElicitation)
ORMEL_DEFINE_EQUALITY(McpServerElicitationMode)
ORMEL_DEFINE_PRINTED_BY(McpServerElicitationMode, encodeVariant)
ORMEL_DEFINE_PRINTED_RECORD(McpServerElicitationRequest)
ORMEL_DEFINE_PRINTED_RECORD(McpServerElicitationResponse)
