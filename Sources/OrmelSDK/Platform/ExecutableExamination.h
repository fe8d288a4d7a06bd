#pragma once

#include <string>
#include <string_view>

#include "OrmelSDK/Base/FailureCause.h"

namespace ormel::detail {

/// Looks at a path as the system would when it starts a program there: is there a file, may it be executed, is it made
/// for this machine, and is its interpreter there. `searchPath` is the `PATH` in which a script that names its
/// interpreter by way of "env" has it looked up.
///
/// It is for telling people why something did not start, and refuses nothing: a system can be set up to run programs of
/// other machines. The contents of a file that may be executed and not read count as usable.
ExecutableFinding examineExecutable(const std::string& path, std::string_view searchPath);

}  // namespace ormel::detail
