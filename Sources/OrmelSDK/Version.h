#pragma once

/// The version of the library that the headers belong to. The build takes its version from here.
///
/// The macros serve `#if`; the constants serve everything else. Both are known when the application is compiled, and
/// need no linking.

#define ORMEL_VERSION_MAJOR 0
#define ORMEL_VERSION_MINOR 1
#define ORMEL_VERSION_PATCH 0

/// One number for comparisons: `#if ORMEL_VERSION >= ORMEL_MAKE_VERSION(0, 2, 0)`.
#define ORMEL_MAKE_VERSION(major, minor, patch) ((major) * 10000 + (minor) * 100 + (patch))
#define ORMEL_VERSION ORMEL_MAKE_VERSION(ORMEL_VERSION_MAJOR, ORMEL_VERSION_MINOR, ORMEL_VERSION_PATCH)

/// Number of the binary interface: the one in the name of the shared library, `libOrmelSDK.so.1`. Programs and
/// libraries of different numbers cannot be linked with each other.
#define ORMEL_ABI_VERSION 1

namespace ormel {

/// The parts of the version, as in semantic versioning.
inline constexpr int versionMajor = ORMEL_VERSION_MAJOR;
inline constexpr int versionMinor = ORMEL_VERSION_MINOR;
inline constexpr int versionPatch = ORMEL_VERSION_PATCH;

/// The number of the binary interface.
inline constexpr int abiVersion = ORMEL_ABI_VERSION;

namespace detail {

#define ORMEL_DETAIL_TEXT_OF(value) #value
#define ORMEL_DETAIL_DOTTED(major, minor, patch) \
  ORMEL_DETAIL_TEXT_OF(major) "." ORMEL_DETAIL_TEXT_OF(minor) "." ORMEL_DETAIL_TEXT_OF(patch)
inline constexpr const char* dottedVersion =
    ORMEL_DETAIL_DOTTED(ORMEL_VERSION_MAJOR, ORMEL_VERSION_MINOR, ORMEL_VERSION_PATCH);
#undef ORMEL_DETAIL_DOTTED
#undef ORMEL_DETAIL_TEXT_OF

}  // namespace detail

/// The version as text, such as "0.1.0".
inline constexpr const char* versionText = detail::dottedVersion;

}  // namespace ormel
