#include "OrmelSDK/Handlers/ParlaneAuthTokens.h"

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Handlers/ParlaneAuthTokensTables.h"

namespace ormel::coding {

namespace {

// What is printed ends up in logs.
JSONValue encodeWithoutSecret(const ParlaneAuthTokensRefreshResponse& response) {
  ParlaneAuthTokensRefreshResponse shown = response;
  if (!shown.accessToken.empty()) shown.accessToken = "<secret>";
  return encodeRecord(shown);
}

}  // namespace

}  // namespace ormel::coding

ORMEL_DEFINE_ENUMERATION(ParlaneAuthTokensRefreshReason)
ORMEL_DEFINE_PRINTED_RECORD(ParlaneAuthTokensRefreshRequest)
ORMEL_DEFINE_PRINTED_BY(ParlaneAuthTokensRefreshResponse, encodeWithoutSecret)
