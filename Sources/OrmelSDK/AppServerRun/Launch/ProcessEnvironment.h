#pragma once

#include <map>
#include <string>

namespace ormel::detail::ProcessEnvironment {

/// The variables of this process.
std::map<std::string, std::string> current();

/// The variables of a block that a null pointer ends. An entry is split at its first "=", one without is skipped,
/// and of a name that occurs twice the later value stands.
std::map<std::string, std::string> fromBlock(const char* const* block);

}  // namespace ormel::detail::ProcessEnvironment
