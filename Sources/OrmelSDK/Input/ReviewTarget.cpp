#include "OrmelSDK/Input/ReviewTarget.h"

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::EnumerationTable<ormel::ReviewDelivery> {
  static constexpr auto rule = closed;
  static constexpr Word<ReviewDelivery> words[] = {
      {ReviewDelivery::inline_, "inline"},
      {ReviewDelivery::detached, "detached"},
  };
};

/// A target is sent and never received, so it is only written.

namespace ormel::coding {

namespace {

JSONValue encodeReviewTarget(const ReviewTarget& target) {
  return visit(
      target, [](const ReviewUncommittedChanges&) { return JSONValue::object({{"type", "uncommittedChanges"}}); },
      [](const ReviewBaseBranch& base) { return JSONValue::object({{"type", "baseBranch"}, {"branch", base.branch}}); },
      [](const ReviewCommit& commit) {
        const JSONValue title = commit.title ? JSONValue(*commit.title) : JSONValue();
        return JSONValue::object({{"type", "commit"}, {"sha", commit.sha}, {"title", title}});
      },
      [](const ReviewCustom& custom) {
        return JSONValue::object({{"type", "custom"}, {"instructions", custom.instructions}});
      });
}

}  // namespace

}  // namespace ormel::coding

ORMEL_DEFINE_ENUMERATION(ReviewDelivery)
ORMEL_DEFINE_EQUALITY(ReviewUncommittedChanges)
ORMEL_DEFINE_EQUALITY(ReviewBaseBranch)
ORMEL_DEFINE_EQUALITY(ReviewCommit)
ORMEL_DEFINE_EQUALITY(ReviewCustom)
ORMEL_DEFINE_EQUALITY(ReviewTarget)
ORMEL_DEFINE_PRINTED_BY(ReviewTarget, encodeReviewTarget)
