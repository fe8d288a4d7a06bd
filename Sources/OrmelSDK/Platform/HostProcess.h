#pragma once

#include <optional>
#include <string>

namespace ormel::detail {

/// A platform that the server is packaged for.
enum class HostPlatform { macOSArm64, linuxX64, linuxArm64 };

/// The platform that this code was built for.
HostPlatform hostPlatform() noexcept;

/// The environment of this process as the system keeps it, ended by a null pointer; null if there is none.
const char* const* environmentBlock() noexcept;

/// The variable `name` of this process, if it is set.
std::optional<std::string> environmentVariable(const std::string& name);

/// The path of the file that this process runs, if the system tells.
std::optional<std::string> executablePathOfThisProcess();

/// The user's home directory, if the user has one.
std::optional<std::string> homeDirectory();

}  // namespace ormel::detail
