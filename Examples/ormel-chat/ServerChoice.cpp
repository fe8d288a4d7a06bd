#include "ServerChoice.h"

#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <system_error>
#include <utility>

#include "OrmelSDK/Base/Error.h"

namespace ormel::chat {

namespace {

namespace fs = std::filesystem;

std::optional<fs::path> resolved(const fs::path& path) {
  std::error_code error;
  fs::path found = fs::canonical(path, error);
  if (error || fs::is_directory(found)) return std::nullopt;
  return found;
}

/// Where this program lies: its name as it was started, looked up like the shell did.
std::optional<fs::path> ownExecutable(const std::string& ownName) {
  if (ownName.find('/') != std::string::npos) return resolved(ownName);
  const char* path = std::getenv("PATH");
  std::istringstream directories(path ? path : "");
  for (std::string directory; std::getline(directories, directory, ':');) {
    if (auto found = resolved(fs::path(directory.empty() ? "." : directory) / ownName)) return found;
  }
  return std::nullopt;
}

Ormel using_(const std::string& path) {
  OrmelOptions options;
  options.ormelPathOverride = path;
  return Ormel(std::move(options));
}

}  // namespace

ServerChoice chooseServer(const std::optional<std::string>& namedServer, const std::string& ownName) {
  if (namedServer) {
    Ormel ormel = using_(*namedServer);
    if (ormel.options().selectedOrmelPathOverride) return {ormel};
    throw Error(*namedServer + " is no executable file", ormel.searchProblem());
  }
  Ormel found;
  if (found.executablePath() != "ormel") return {found};
  if (const auto own = ownExecutable(ownName)) {
    const Ormel simulator = using_((own->parent_path() / "ormel-simulator").string());
    if (simulator.options().selectedOrmelPathOverride) return {simulator, true};
  }
  throw Error("No ormel server was found. Install one, or name it with --server.", found.searchProblem());
}

}  // namespace ormel::chat
