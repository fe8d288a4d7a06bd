#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ormel {

/// Which revision of the server `OrmelStableCapabilityManifest` was audited against. It only tells: no call depends on
/// it.
///
/// *Thread safety*: may be used from any thread.
class OrmelSDKUpstreamBaseline {
  // The facts of an audit, to be recorded here together. They stand in as long as none has been recorded.
 public:
  /// The address of the server's public source repository.
  static constexpr std::string_view repositoryURL = "https://ormel.invalid/source";

  /// The 40 hexadecimal digits of the audited commit.
  static constexpr std::string_view commit = "0000000000000000000000000000000000000000";

  /// The day of the audit: year, month and day.
  static constexpr std::string_view auditedAt = "2026-09-28";

 private:
  static constexpr std::string_view releaseTag = "v0.0.0";

 public:
  OrmelSDKUpstreamBaseline() = delete;

  /// The scope of the audit, with what it left out, in sentences.
  static const std::vector<std::string>& notes();
};

}  // namespace ormel
