#include "OrmelSDK/Events/GuardianReviewAction.h"

#include <string>

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Events/GuardianReviewActionTables.h"

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

ORMEL_DEFINE_ENUMERATION(GuardianCommandSource)
ORMEL_DEFINE_ENUMERATION(NetworkApprovalProtocol)
ORMEL_DEFINE_RECORD(GuardianCommandReviewAction)
ORMEL_DEFINE_RECORD(GuardianExecveReviewAction)
ORMEL_DEFINE_RECORD(GuardianApplyPatchReviewAction)
ORMEL_DEFINE_RECORD(GuardianNetworkAccessReviewAction)
ORMEL_DEFINE_RECORD(GuardianMcpToolCallReviewAction)
ORMEL_DEFINE_RECORD(GuardianRequestPermissionsReviewAction)
ORMEL_DEFINE_RECORD(GuardianWriteStdinReviewAction)
ORMEL_DEFINE_RECORD(GuardianUnknownReviewAction)
ORMEL_DEFINE_VARIANT(GuardianApprovalReviewAction)
