#pragma once

#include <iosfwd>
#include <utility>

#include "OrmelSDK/Base/NeverDestroyed.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel {

/// The answer to a request for approval. Any JSON value can be one, so that what a server offers passes through
/// unchanged; the usual ones are constants. Its JSON form is the value itself.
struct OrmelApprovalDecision {
  JSONValue jsonValue;

  OrmelApprovalDecision() = default;
  OrmelApprovalDecision(JSONValue decision) : jsonValue(std::move(decision)) {}

  static const OrmelApprovalDecision& accept;
  static const OrmelApprovalDecision& acceptForSession;
  static const OrmelApprovalDecision& decline;
  static const OrmelApprovalDecision& cancel;

  friend bool operator==(const OrmelApprovalDecision&, const OrmelApprovalDecision&);
  friend std::ostream& operator<<(std::ostream& stream, const OrmelApprovalDecision& value);
};

inline const OrmelApprovalDecision& OrmelApprovalDecision::accept =
    detail::neverDestroyed<OrmelApprovalDecision>(JSONValue("accept"));
inline const OrmelApprovalDecision& OrmelApprovalDecision::acceptForSession =
    detail::neverDestroyed<OrmelApprovalDecision>(JSONValue("acceptForSession"));
inline const OrmelApprovalDecision& OrmelApprovalDecision::decline =
    detail::neverDestroyed<OrmelApprovalDecision>(JSONValue("decline"));
inline const OrmelApprovalDecision& OrmelApprovalDecision::cancel =
    detail::neverDestroyed<OrmelApprovalDecision>(JSONValue("cancel"));

}  // namespace ormel
