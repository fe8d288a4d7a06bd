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

  // Copying and moving a variant is much code; it is compiled once, not in every file that does it.
  ReviewTarget();
  ReviewTarget(const ReviewTarget& other);
  ReviewTarget(ReviewTarget&& other) noexcept;
  ReviewTarget& operator=(const ReviewTarget& other);
  ReviewTarget& operator=(ReviewTarget&& other) noexcept;
  ~ReviewTarget();

  ReviewTarget(ReviewUncommittedChanges target);
  ReviewTarget(ReviewBaseBranch target);
  ReviewTarget(ReviewCommit target);
  ReviewTarget(ReviewCustom target);

  static ReviewTarget uncommittedChanges();
  static ReviewTarget baseBranch(std::string branch);
  static ReviewTarget commit(std::string sha, std::optional<std::string> title = std::nullopt);
  static ReviewTarget custom(std::string instructions);

  friend bool operator==(const ReviewTarget&, const ReviewTarget&);
  friend std::ostream& operator<<(std::ostream& stream, const ReviewTarget& value);
};

}  // namespace ormel
