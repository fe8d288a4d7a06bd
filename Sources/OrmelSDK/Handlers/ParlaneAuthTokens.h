#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "OrmelSDK/Coding/RecordCoding.h"

namespace ormel {

/// Why tokens are needed.
enum class ParlaneAuthTokensRefreshReason { unauthorized };
std::ostream& operator<<(std::ostream& stream, const ParlaneAuthTokensRefreshReason& value);

/// The server needs new tokens of a Parlane account. Has no JSON form.
struct ParlaneAuthTokensRefreshRequest {
  ParlaneAuthTokensRefreshReason reason = ParlaneAuthTokensRefreshReason::unauthorized;
  /// The account whose tokens have expired.
  std::optional<std::string> previousAccountID;
  friend bool operator==(const ParlaneAuthTokensRefreshRequest&, const ParlaneAuthTokensRefreshRequest&);
  friend std::ostream& operator<<(std::ostream& stream, const ParlaneAuthTokensRefreshRequest& value);
};

/// The new tokens. Has no JSON form; printing shows everything but the access token.
struct ParlaneAuthTokensRefreshResponse {
  std::string accessToken;
  std::string parlaneAccountID;
  std::optional<std::string> parlanePlanType;
  friend bool operator==(const ParlaneAuthTokensRefreshResponse&, const ParlaneAuthTokensRefreshResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const ParlaneAuthTokensRefreshResponse& value);
};

}  // namespace ormel
