#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ormel::simulator {

std::string base64Of(std::string_view bytes);

/// The bytes; nothing if the text is not Base64 with its padding.
std::optional<std::string> bytesOfBase64(std::string_view text);

}  // namespace ormel::simulator
