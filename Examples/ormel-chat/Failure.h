#pragma once

#include <exception>

namespace ormel::chat {

/// Tells on standard error why the program ends.
void tellFailure(const std::exception& error);

}  // namespace ormel::chat
