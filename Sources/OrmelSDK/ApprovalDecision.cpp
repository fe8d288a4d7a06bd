#include "OrmelSDK/ApprovalDecision.h"

#include "OrmelSDK/ApprovalDecisionTables.h"
#include "OrmelSDK/Coding/RecordCodec.h"

namespace ormel::coding {

namespace {

OrmelApprovalDecision decodeDecision(const JSONValue& value, const CodingPath&) { return value; }
JSONValue encodeDecision(const OrmelApprovalDecision& decision) { return decision.jsonValue; }

}  // namespace

}  // namespace ormel::coding

ORMEL_DEFINE_CODEC_BY(OrmelApprovalDecision, decodeDecision, encodeDecision)
