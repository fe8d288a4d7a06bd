#include "OrmelSDK/AppServerRun/Launch/OrmelBinaryLocator.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <initializer_list>
#include <iterator>
#include <unordered_set>
#include <utility>

#include "OrmelSDK/AppServerRun/Launch/PathList.h"
#include "OrmelSDK/Platform/FileTests.h"
#include "OrmelSDK/Text/TrimmedText.h"

namespace ormel::detail {

namespace {

constexpr std::string_view binaryFileName = "ormel";
constexpr std::string_view entrypointName = "ormel.js";
constexpr std::string_view packageManifest = "ormel-package.json";
constexpr std::string_view supportDirectory = "ormel-path";
constexpr std::string_view scopeDirectory = "@velnor";

// In the order of `HostPlatform`.
constexpr std::array<OrmelPackageNames, 3> packageNamesByPlatform = {{
    {"aarch64-apple-darwin", "ormel-darwin-arm64"},
    {"x86_64-unknown-linux-musl", "ormel-linux-x64"},
    {"aarch64-unknown-linux-musl", "ormel-linux-arm64"},
}};

std::string joined(std::string path, std::initializer_list<std::string_view> components) {
  for (const auto component : components) {
    if (!path.ends_with('/')) path += '/';
    path += component;
  }
  return path;
}

// The directory that remains when `components` are taken off the end of `path`, if `path` ends with them.
std::optional<std::string> directoryAbove(std::initializer_list<std::string_view> components, const std::string& path) {
  std::string_view rest = path;
  for (auto component = std::rbegin(components); component != std::rend(components); ++component) {
    if (!rest.ends_with(*component)) return std::nullopt;
    rest.remove_suffix(component->size());
    if (!rest.ends_with('/')) return std::nullopt;
    rest.remove_suffix(1);
  }
  return std::string(rest);
}

}  // namespace

OrmelPackageNames OrmelPackageNames::of(HostPlatform platform) noexcept {
  return packageNamesByPlatform[static_cast<std::size_t>(platform)];
}

LocatorInputs LocatorInputs::ofThisProcess() {
  LocatorInputs inputs;
  inputs.environmentVariable = ormel::detail::environmentVariable;
  inputs.homeDirectory = ormel::detail::homeDirectory();
  if (const auto program = executablePathOfThisProcess()) {
    inputs.resourceDirectory = resourceDirectoryOfProgram(*program);
  }
  inputs.packageNames = OrmelPackageNames::of(hostPlatform());
  return inputs;
}

std::optional<std::string> resourceDirectoryOfProgram(const std::string& executablePath) {
  const auto folder = std::filesystem::path(executablePath).parent_path();
  const bool inBundle = folder.filename() == "MacOS" && folder.parent_path().filename() == "Contents";
  const std::string directory = joined(folder.parent_path().string(),
                                       {inBundle ? std::string_view("Resources") : std::string_view("share/ormel")});
  return isDirectory(directory) ? std::optional(directory) : std::nullopt;
}

OrmelBinaryResolution OrmelBinaryLocator::resolveOrmelBinary(const std::optional<std::string>& overridePath) const {
  if (overridePath && !trimmed(*overridePath).empty() && isExecutableFile(*overridePath)) {
    return resolutionOf(*overridePath, true);
  }
  if (const auto named = environmentValue(std::string(overrideVariableName)); named && isExecutableFile(*named)) {
    return resolutionOf(*named, false);
  }
  const std::string binaryName(binaryFileName);
  const auto bundled = bundledOrmelResolution(binaryName);
  const auto candidates =
      ormelPathCandidates(binaryName, bundled ? std::optional(bundled->executablePath) : std::nullopt);
  if (candidates.empty()) return {.executablePath = binaryName, .pathDirectories = {}};
  if (bundled && candidates.front() == bundled->executablePath) return *bundled;
  return resolutionOf(candidates.front(), false);
}

OrmelBinaryResolution OrmelBinaryLocator::resolutionOf(const std::string& executable, bool selectedOverride) const {
  auto resolution = normalizeOrmelEntrypoint(executable);
  if (!resolution) resolution = nativeOrmelResolution(executable);
  if (!resolution) resolution = OrmelBinaryResolution{.executablePath = executable, .pathDirectories = {}};
  resolution->selectedOverride = selectedOverride;
  return *std::move(resolution);
}

std::optional<std::string> OrmelBinaryLocator::environmentValue(const std::string& forKey) const {
  const auto value = inputs_.environmentVariable ? inputs_.environmentVariable(forKey) : std::nullopt;
  if (!value || trimmed(*value).empty()) return std::nullopt;
  return std::string(trimmed(*value));
}

std::vector<std::string> OrmelBinaryLocator::existingDirectories(const std::vector<std::string>& paths) {
  std::vector<std::string> existing;
  std::ranges::copy_if(paths, std::back_inserter(existing), isDirectory);
  return existing;
}

std::optional<OrmelBinaryResolution> OrmelBinaryLocator::normalizeOrmelEntrypoint(const std::string& at) const {
  const auto above =
      directoryAbove({"node_modules", scopeDirectory, binaryFileName, "bin", entrypointName}, resolvedPath(at));
  if (!above) return std::nullopt;
  const auto& names = inputs_.packageNames;
  const std::string root =
      joined(*above, {"node_modules", scopeDirectory, names.platformPackage, "vendor", names.targetTriple});
  const std::string native = joined(root, {"bin", binaryFileName});
  if (!isExecutableFile(native)) return std::nullopt;
  return OrmelBinaryResolution{.executablePath = native,
                               .pathDirectories = existingDirectories({joined(root, {supportDirectory})})};
}

std::optional<OrmelBinaryResolution> OrmelBinaryLocator::nativeOrmelResolution(const std::string& at) const {
  const std::string_view triple = inputs_.packageNames.targetTriple;
  const std::string path = resolvedPath(at);
  const auto above = directoryAbove({"vendor", triple, "bin", binaryFileName}, path);
  if (!above) return std::nullopt;
  return OrmelBinaryResolution{
      .executablePath = path,
      .pathDirectories = existingDirectories({joined(*above, {"vendor", triple, supportDirectory})})};
}

std::optional<OrmelBinaryResolution> OrmelBinaryLocator::bundledOrmelResolution(const std::string& binaryName) const {
  if (!inputs_.resourceDirectory) return std::nullopt;
  const std::string root = joined(*inputs_.resourceDirectory, {"vendor", inputs_.packageNames.targetTriple});
  const std::string packaged = joined(root, {"bin", binaryName});
  if (isExecutableFile(packaged) && isReadableFile(joined(root, {packageManifest}))) {
    return OrmelBinaryResolution{.executablePath = packaged,
                                 .pathDirectories = existingDirectories({joined(root, {supportDirectory})})};
  }
  const std::string plain = joined(root, {"ormel", binaryName});
  if (!isExecutableFile(plain)) return std::nullopt;
  return OrmelBinaryResolution{.executablePath = plain,
                               .pathDirectories = existingDirectories({joined(root, {"path"})})};
}

std::vector<SearchedPlace> OrmelBinaryLocator::usualPlaces(const std::string& binaryName,
                                                           const std::optional<std::string>& bundledPath) const {
  constexpr std::string_view installation = "usual installation";
  std::vector<SearchedPlace> places;
  if (bundledPath) places.push_back({"resources of the application", *bundledPath});
  const std::string searchPath = environmentValue("PATH").value_or("");
  for (const auto directory : pathListParts(searchPath)) {
    places.push_back({"PATH", joined(std::string(directory), {binaryName})});
  }
  const auto& home = inputs_.homeDirectory;
  if (home) places.push_back({installation, joined(*home, {".bun", "bin", binaryName})});
  places.push_back({installation, inputs_.rootDirectory + "/opt/homebrew/bin/" + binaryName});
  places.push_back({installation, inputs_.rootDirectory + "/usr/local/bin/" + binaryName});
  if (home) {
    for (const auto& version : directoryEntries(joined(*home, {".nvm", "versions", "node"}))) {
      places.push_back({installation, joined(version, {"bin", binaryName})});
    }
  }
  return places;
}

std::vector<std::string> OrmelBinaryLocator::ormelPathCandidates(const std::string& binaryName,
                                                                 const std::optional<std::string>& bundledPath) const {
  std::unordered_set<std::string> seen;
  std::vector<std::string> paths;
  for (auto& place : usualPlaces(binaryName, bundledPath)) {
    if (seen.insert(place.path).second && isExecutableFile(place.path)) paths.push_back(std::move(place.path));
  }
  return paths;
}

std::vector<SearchedPlace> OrmelBinaryLocator::searchedPlaces(const std::optional<std::string>& overridePath) const {
  std::vector<SearchedPlace> places;
  if (overridePath && !trimmed(*overridePath).empty()) places.push_back({overrideOptionName, *overridePath});
  if (auto named = environmentValue(std::string(overrideVariableName))) {
    places.push_back({overrideVariableName, *std::move(named)});
  }
  const std::string binaryName(binaryFileName);
  const auto bundled = bundledOrmelResolution(binaryName);
  for (auto& place : usualPlaces(binaryName, bundled ? std::optional(bundled->executablePath) : std::nullopt)) {
    places.push_back(std::move(place));
  }
  std::unordered_set<std::string> seen;
  std::erase_if(places, [&seen](const SearchedPlace& place) { return !seen.insert(place.path).second; });
  return places;
}

}  // namespace ormel::detail
