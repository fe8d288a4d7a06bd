#pragma once

#include <sys/stat.h>

#include <string>

namespace ormel::simulator {

/// Milliseconds since the epoch, with their fraction.
double modificationMilliseconds(const struct stat& found) noexcept;

/// The same for when the folder's entry was made; where the file system does not know, the earliest time that it does.
double creationMilliseconds(int folder, const std::string& name, const struct stat& found) noexcept;

}  // namespace ormel::simulator
