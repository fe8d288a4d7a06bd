#pragma once

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/Coding/RecordCoding.h"

// The part of the server's protocol that this library covers, for an application or its tests to query. Every
// enumeration and record here has a JSON form.
namespace ormel {

/// How the server declares a method.
enum class OrmelCapabilityStability { stable, experimental, legacy };
std::ostream& operator<<(std::ostream& stream, const OrmelCapabilityStability& value);

/// How far a method has come at one of its users.
enum class OrmelCapabilityStatus {
  implemented,
  /// Kept for servers of other versions, and not meant for new code.
  compatibilityOnly,
  notIntegrated,
  notExposed,
  /// There is nothing to do there.
  notApplicable,
};
std::ostream& operator<<(std::ostream& stream, const OrmelCapabilityStatus& value);

/// How a method is tested.
enum class OrmelCapabilityTestStatus { integrationTested, unitTested, notTested };
std::ostream& operator<<(std::ostream& stream, const OrmelCapabilityTestStatus& value);

/// The coverage of one method or notification of the protocol.
struct OrmelCapabilityManifestEntry {
  /// The name on the wire.
  std::string method;
  OrmelCapabilityStability stability = OrmelCapabilityStability::stable;
  /// The status in this library.
  OrmelCapabilityStatus sdkStatus = OrmelCapabilityStatus::notIntegrated;
  /// The status in the host application.
  OrmelCapabilityStatus kestrionStatus = OrmelCapabilityStatus::notIntegrated;
  /// The status in the host's user interface.
  OrmelCapabilityStatus uiStatus = OrmelCapabilityStatus::notIntegrated;
  OrmelCapabilityTestStatus testStatus = OrmelCapabilityTestStatus::notTested;
  friend bool operator==(const OrmelCapabilityManifestEntry&, const OrmelCapabilityManifestEntry&);
  friend std::ostream& operator<<(std::ostream& stream, const OrmelCapabilityManifestEntry& value);
};

/// The table of what is covered. It only tells: no call depends on it.
///
/// *Thread safety*: all functions may be called from any thread.
class OrmelStableCapabilityManifest {
 public:
  OrmelStableCapabilityManifest() = delete;

  /// One row for each method; never changes.
  static const std::vector<OrmelCapabilityManifestEntry>& entries();

  /// The row of the method of exactly this name.
  static std::optional<OrmelCapabilityManifestEntry> entry(std::string_view method);

  /// The methods that a schema of the server should have: all but those that are kept for compatibility only.
  static std::span<const std::string_view> stableSchemaTokens() noexcept;
};

}  // namespace ormel

template <>
struct std::hash<ormel::OrmelCapabilityManifestEntry> {
  std::size_t operator()(const ormel::OrmelCapabilityManifestEntry& entry) const noexcept;
};
