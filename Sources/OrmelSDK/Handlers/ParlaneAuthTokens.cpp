#include "OrmelSDK/Handlers/ParlaneAuthTokens.h"

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::EnumerationTable<ormel::ParlaneAuthTokensRefreshReason> {
  static constexpr auto rule = closed;
  static constexpr Word<ParlaneAuthTokensRefreshReason> words[] = {
      {ParlaneAuthTokensRefreshReason::unauthorized, "unauthorized"},
  };
};

// The request and the response have no JSON form; their tables are for printing.

template <>
struct ormel::coding::RecordTable<ormel::ParlaneAuthTokensRefreshRequest> {
  static constexpr Field fields[] = {
      printed<&ParlaneAuthTokensRefreshRequest::reason>("reason"),
      printed<&ParlaneAuthTokensRefreshRequest::previousAccountID>("previousAccountID"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ParlaneAuthTokensRefreshResponse> {
  static constexpr Field fields[] = {
      required<&ParlaneAuthTokensRefreshResponse::accessToken>("accessToken"),
      required<&ParlaneAuthTokensRefreshResponse::parlaneAccountID>("parlaneAccountID"),
      optional<&ParlaneAuthTokensRefreshResponse::parlanePlanType>("parlanePlanType"),
  };
};

namespace ormel::coding {

namespace {

// A printed response ends up in logs.
JSONValue encodeWithoutSecret(const ParlaneAuthTokensRefreshResponse& response) {
  ParlaneAuthTokensRefreshResponse shown = response;
  if (!shown.accessToken.empty()) shown.accessToken = "<secret>";
  return encodeFromTable(shown);
}

}  // namespace

}  // namespace ormel::coding

ORMEL_DEFINE_ENUMERATION(ParlaneAuthTokensRefreshReason)
ORMEL_DEFINE_PRINTED_RECORD(ParlaneAuthTokensRefreshRequest)
ORMEL_DEFINE_EQUALITY(ParlaneAuthTokensRefreshResponse)
ORMEL_CHECK_TABLE(ParlaneAuthTokensRefreshResponse, RecordTable)
ORMEL_DEFINE_PRINTED_BY(ParlaneAuthTokensRefreshResponse, encodeWithoutSecret)
