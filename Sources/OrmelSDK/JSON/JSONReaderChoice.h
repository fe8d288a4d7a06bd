#pragma once

namespace ormel::detail {

/// Whether `JSONTapeReader` may be used with this release of simdjson. It depends on members and memory layouts that
/// simdjson does not document and may change in any release, so only releases it was tested with are listed.
constexpr bool tapeLayoutIsKnown(int major, int minor, int revision) noexcept {
  return major == 3 && minor == 0 && revision == 1;
}

/// Set by the build option ORMEL_JSON_PUBLIC_INTERFACE: use `JSONDocumentReader` with every release.
#ifdef ORMEL_JSON_PUBLIC_INTERFACE
inline constexpr bool onlyPublicInterface = true;
#else
inline constexpr bool onlyPublicInterface = false;
#endif

}  // namespace ormel::detail
