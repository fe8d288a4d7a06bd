#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace ormel::control {

/// The shells that scripts can be made for.
std::vector<std::string> completionShells();

/// The script that completes command lines of the program in the shell, made from the declaration of its commands, so
/// that it knows all of them.
std::string completionScript(const std::string& shell, const CLI::App& program);

}  // namespace ormel::control
