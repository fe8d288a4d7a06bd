#pragma once

#include <array>
#include <tuple>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Handlers/ParlaneAuthTokens.h"

template <>
struct ormel::coding::EnumerationTable<ormel::ParlaneAuthTokensRefreshReason> {
  static constexpr auto words = closed(std::array{Word{ParlaneAuthTokensRefreshReason::unauthorized, "unauthorized"}});
};
ORMEL_DECLARE_ENUMERATION(ParlaneAuthTokensRefreshReason)

// The request and the response have no JSON form; their tables are for printing.

template <>
struct ormel::coding::RecordTable<ormel::ParlaneAuthTokensRefreshRequest> {
  static constexpr auto fields =
      std::tuple(required<&ParlaneAuthTokensRefreshRequest::reason>("reason"),
                 optional<&ParlaneAuthTokensRefreshRequest::previousAccountID>("previousAccountID"));
};
ORMEL_DECLARE_PRINTED(ParlaneAuthTokensRefreshRequest)

template <>
struct ormel::coding::RecordTable<ormel::ParlaneAuthTokensRefreshResponse> {
  static constexpr auto fields =
      std::tuple(required<&ParlaneAuthTokensRefreshResponse::accessToken>("accessToken"),
                 required<&ParlaneAuthTokensRefreshResponse::parlaneAccountID>("parlaneAccountID"),
                 optional<&ParlaneAuthTokensRefreshResponse::parlanePlanType>("parlanePlanType"));
};
ORMEL_DECLARE_PRINTED(ParlaneAuthTokensRefreshResponse)
