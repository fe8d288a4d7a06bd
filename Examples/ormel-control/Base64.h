#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ormel::control {

/// The bytes that the text stands for; nothing if it is no Base64 with its padding.
std::optional<std::string> bytesOfBase64(std::string_view text);

}  // namespace ormel::control
