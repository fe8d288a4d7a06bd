#pragma once

#include <filesystem>

#include "ormel-simulator/Agent/AgentSettings.h"

namespace ormel::simulator {

/// The folder for the threads, made if need be; empty if none are to be kept.
///
/// Unless one was named it is a folder of the user's own under the temporary directory. There anybody could have put
/// something of that name first, so one that is a link, belongs to another user or is open to others is refused. Fails
/// with `Error`.
std::filesystem::path openStateFolder(const AgentSettings& settings);

/// The folder for the files of clients: the one that was named, or else one in the folder for the threads; empty if
/// there is neither.
std::filesystem::path folderForFiles(const AgentSettings& settings, const std::filesystem::path& stateFolder);

}  // namespace ormel::simulator
