#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "OrmelSDK/Platform/HostProcess.h"

namespace ormel::detail {

/// The option and the variable by which a server is named.
inline constexpr std::string_view overrideOptionName = "ormelPathOverride (--server)";
inline constexpr std::string_view overrideVariableName = "KESTRION_ORMEL_PATH";

/// Where the server executable is, and what it needs on its `PATH`.
struct OrmelBinaryResolution {
  /// The path to run, or the bare name "ormel" when nothing was found.
  std::string executablePath;
  /// Directories to put ahead of the child's `PATH`.
  std::vector<std::string> pathDirectories;
  /// Whether the caller's override was used.
  bool selectedOverride = false;

  friend bool operator==(const OrmelBinaryResolution&, const OrmelBinaryResolution&) = default;
};

/// How the server's package is named on a platform.
struct OrmelPackageNames {
  std::string_view targetTriple;
  std::string_view platformPackage;

  static OrmelPackageNames of(HostPlatform platform) noexcept;
};

/// The surroundings that the locator searches; by default the machine as it is.
struct LocatorInputs {
  static LocatorInputs ofThisProcess();

  std::function<std::optional<std::string>(const std::string& name)> environmentVariable;
  std::optional<std::string> homeDirectory;
  std::optional<std::string> resourceDirectory;
  /// Stands ahead of the installation directories that have a fixed place; empty for the machine's own.
  std::string rootDirectory;
  OrmelPackageNames packageNames{};
};

/// Where a program keeps its resources: "Resources" in a bundle, "share/ormel" beside "bin" elsewhere. Empty if
/// there is no such directory.
std::optional<std::string> resourceDirectoryOfProgram(const std::string& executablePath);

/// A path at which the executable may be, and why it is looked at.
struct SearchedPlace {
  std::string_view origin;
  std::string path;
};

/// Finds the server executable: a path that the caller names, one that the environment names, the application's own
/// resources, then the places where it is usually installed. A script entry point leads on to the native executable
/// of its package.
///
/// It never fails: at worst the result is the bare name, and the launch fails.
class OrmelBinaryLocator {
 public:
  OrmelBinaryLocator() : OrmelBinaryLocator(LocatorInputs::ofThisProcess()) {}
  explicit OrmelBinaryLocator(LocatorInputs inputs) : inputs_(std::move(inputs)) {}

  OrmelBinaryResolution resolveOrmelBinary(const std::optional<std::string>& overridePath) const;

  /// The variable without the white space around it; one that is empty then counts as unset.
  std::optional<std::string> environmentValue(const std::string& forKey) const;

  /// Those of `paths` that are directories, in order.
  static std::vector<std::string> existingDirectories(const std::vector<std::string>& paths);

  /// The native executable that belongs to the script entry point at `at`, if it is one of an installed package.
  std::optional<OrmelBinaryResolution> normalizeOrmelEntrypoint(const std::string& at) const;

  /// The executable at `at` itself, if it is the native one of an installed package.
  std::optional<OrmelBinaryResolution> nativeOrmelResolution(const std::string& at) const;

  /// The executable among the application's resources, if there is one.
  std::optional<OrmelBinaryResolution> bundledOrmelResolution(const std::string& binaryName) const;

  /// The executable files to choose from, best first, each once.
  std::vector<std::string> ormelPathCandidates(const std::string& binaryName,
                                               const std::optional<std::string>& bundledPath) const;

  /// All paths at which an executable is looked for, best first, each once. Among the executable files the
  /// first is the one that is chosen.
  std::vector<SearchedPlace> searchedPlaces(const std::optional<std::string>& overridePath) const;

  /// The choice that an executable file at a path leads to.
  OrmelBinaryResolution resolutionOf(const std::string& executable, bool selectedOverride) const;

 private:
  std::vector<SearchedPlace> usualPlaces(const std::string& binaryName,
                                         const std::optional<std::string>& bundledPath) const;

  LocatorInputs inputs_;
};

}  // namespace ormel::detail
