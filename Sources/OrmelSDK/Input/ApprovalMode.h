#pragma once

#include <iosfwd>
#include <optional>
#include <string_view>
#include <variant>

#include "OrmelSDK/Base/NeverDestroyed.h"
#include "OrmelSDK/Base/Visit.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel {

/// Which kinds of request reach the user, each switched by itself.
struct GranularApprovalMode {
  bool sandboxApproval = false;
  bool rules = false;
  bool skillApproval = false;
  bool requestPermissions = false;
  bool mcpElicitations = false;
  friend bool operator==(const GranularApprovalMode&, const GranularApprovalMode&) = default;
  friend std::ostream& operator<<(std::ostream& stream, const GranularApprovalMode& value);
};

/// When the server asks for an approval.
///
/// Its JSON form: the raw value, or an object with the one member `granular`. Anything else fails with
/// `DecodingError` and "Unsupported approval policy".
struct ApprovalMode {
  /// The policies that are a single word.
  enum class Policy {
    never,
    onRequest,
    /// Retired. It is sent as `onRequest`, which it also reads as, so that only code makes it.
    onFailure,
    untrusted,
  };

  std::variant<Policy, GranularApprovalMode> value = Policy::untrusted;

  constexpr ApprovalMode() = default;
  constexpr ApprovalMode(Policy policy) : value(policy) {}
  constexpr ApprovalMode(GranularApprovalMode granularMode) : value(granularMode) {}

  static const ApprovalMode& never;
  static const ApprovalMode& onRequest;
  static const ApprovalMode& onFailure;
  static const ApprovalMode& untrusted;
  static ApprovalMode granular(GranularApprovalMode granularMode) { return granularMode; }

  /// The policy that a word stands for: none for "granular", which says nothing by itself, and for unknown words.
  static std::optional<ApprovalMode> fromRawValue(std::string_view rawValue);

  /// The word of the case; valid for ever.
  std::string_view rawValue() const;

  /// The form that is sent to the server, which no longer knows "on-failure".
  JSONValue jsonValue() const;

  friend bool operator==(const ApprovalMode&, const ApprovalMode&) = default;
  friend std::ostream& operator<<(std::ostream& stream, const ApprovalMode& value);
};

inline const ApprovalMode& ApprovalMode::never = detail::neverDestroyed<ApprovalMode>(Policy::never);
inline const ApprovalMode& ApprovalMode::onRequest = detail::neverDestroyed<ApprovalMode>(Policy::onRequest);
inline const ApprovalMode& ApprovalMode::onFailure = detail::neverDestroyed<ApprovalMode>(Policy::onFailure);
inline const ApprovalMode& ApprovalMode::untrusted = detail::neverDestroyed<ApprovalMode>(Policy::untrusted);

}  // namespace ormel
