#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "OrmelSDK/Base/Visit.h"
#include "OrmelSDK/Coding/RecordCoding.h"

namespace ormel {

/// Where a review takes place. Its JSON form is a bare string.
enum class ReviewDelivery {
  /// The review takes place in the thread that is reviewed.
  inline_,
  /// The review takes place in a thread of its own.
  detached,
};
std::ostream& operator<<(std::ostream& stream, const ReviewDelivery& value);

/// The changes against another branch.
struct ReviewBaseBranch {
  std::string branch;
  friend bool operator==(const ReviewBaseBranch&, const ReviewBaseBranch&);
};

/// The changes of one commit.
struct ReviewCommit {
  std::string sha;
  /// The first line of its message, if known.
  std::optional<std::string> title;
  friend bool operator==(const ReviewCommit&, const ReviewCommit&);
};

/// Anything that the instructions name.
struct ReviewCustom {
  std::string instructions;
  friend bool operator==(const ReviewCustom&, const ReviewCustom&);
};

/// The changes in the working directory that are not committed.
struct ReviewUncommittedChanges {
  friend bool operator==(const ReviewUncommittedChanges&, const ReviewUncommittedChanges&);
};

/// The subject of a review. Use `visit` to tell the cases apart. It is only sent, and its cases have no JSON form.
struct ReviewTarget {
  std::variant<ReviewUncommittedChanges, ReviewBaseBranch, ReviewCommit, ReviewCustom> value;

  ReviewTarget() = default;
  ReviewTarget(ReviewUncommittedChanges target) : value(target) {}
  ReviewTarget(ReviewBaseBranch target) : value(std::move(target)) {}
  ReviewTarget(ReviewCommit target) : value(std::move(target)) {}
  ReviewTarget(ReviewCustom target) : value(std::move(target)) {}

  static ReviewTarget uncommittedChanges() { return {}; }
  static ReviewTarget baseBranch(std::string branch) { return ReviewBaseBranch{std::move(branch)}; }
  static ReviewTarget commit(std::string sha, std::optional<std::string> title = std::nullopt) {
    return ReviewCommit{std::move(sha), std::move(title)};
  }
  static ReviewTarget custom(std::string instructions) { return ReviewCustom{std::move(instructions)}; }

  friend bool operator==(const ReviewTarget&, const ReviewTarget&);
  friend std::ostream& operator<<(std::ostream& stream, const ReviewTarget& value);
};

}  // namespace ormel
