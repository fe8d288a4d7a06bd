#include "OrmelSDK/Handlers/ApprovalDecision.h"

#include "OrmelSDK/Coding/Codec.h"
#include "OrmelSDK/Coding/RecordCodec.h"

namespace ormel::coding {

namespace {

void decodeDecision(OrmelApprovalDecision& into, const JSONValue& value, const CodingPath& path) {
  Codec<JSONValue>::decodeInto(into.jsonValue, value, path);
}

JSONValue encodeDecision(const OrmelApprovalDecision& decision) { return decision.jsonValue; }

}  // namespace

}  // namespace ormel::coding

ORMEL_DEFINE_EQUALITY(OrmelApprovalDecision)
ORMEL_DEFINE_CODEC_BY(OrmelApprovalDecision, decodeDecision, encodeDecision)
