#include "SimulatorMemory.h"

#include <stdlib.h>

#include <filesystem>
#include <system_error>

namespace ormel::chat {

namespace {

constexpr const char* folderVariable = "ORMEL_SIMULATOR_STATE";

}  // namespace

SimulatorMemory::SimulatorMemory() {
  if (::getenv(folderVariable)) return;
  std::string folder = (std::filesystem::temp_directory_path() / "ormel-chat-XXXXXX").string();
  if (!::mkdtemp(folder.data())) return;
  ::setenv(folderVariable, folder.c_str(), 1);
  folder_ = std::move(folder);
}

SimulatorMemory::~SimulatorMemory() {
  std::error_code ignored;
  if (!folder_.empty()) std::filesystem::remove_all(folder_, ignored);
}

}  // namespace ormel::chat
