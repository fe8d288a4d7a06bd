#include "OrmelSDK/Input/ReviewTarget.h"

#include <utility>

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

namespace ormel {

ReviewTarget::ReviewTarget() = default;
ReviewTarget::ReviewTarget(const ReviewTarget&) = default;
ReviewTarget::ReviewTarget(ReviewTarget&&) noexcept = default;
ReviewTarget& ReviewTarget::operator=(const ReviewTarget&) = default;
ReviewTarget& ReviewTarget::operator=(ReviewTarget&&) noexcept = default;
ReviewTarget::~ReviewTarget() = default;

ReviewTarget::ReviewTarget(ReviewUncommittedChanges target) : value(target) {}
ReviewTarget::ReviewTarget(ReviewBaseBranch target) : value(std::move(target)) {}
ReviewTarget::ReviewTarget(ReviewCommit target) : value(std::move(target)) {}
ReviewTarget::ReviewTarget(ReviewCustom target) : value(std::move(target)) {}

ReviewTarget ReviewTarget::uncommittedChanges() { return {}; }
ReviewTarget ReviewTarget::baseBranch(std::string branch) { return ReviewBaseBranch{std::move(branch)}; }
ReviewTarget ReviewTarget::commit(std::string sha, std::optional<std::string> title) {
  return ReviewCommit{std::move(sha), std::move(title)};
}
ReviewTarget ReviewTarget::custom(std::string instructions) { return ReviewCustom{std::move(instructions)}; }

}  // namespace ormel

ORMEL_DEFINE_ENUMERATION(ReviewDelivery)
ORMEL_DEFINE_EQUALITY(ReviewUncommittedChanges)
ORMEL_DEFINE_EQUALITY(ReviewBaseBranch)
ORMEL_DEFINE_EQUALITY(ReviewCommit)
ORMEL_DEFINE_EQUALITY(ReviewCustom)
ORMEL_DEFINE_EQUALITY(ReviewTarget)
ORMEL_DEFINE_PRINTED_BY(ReviewTarget, encodeReviewTarget)
