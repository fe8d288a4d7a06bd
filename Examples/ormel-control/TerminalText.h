#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Text of the server on its way to a terminal.
namespace ormel::control {

/// The text on one line, with all that could steer a terminal or turn its text around written as an escape sequence:
/// `\n`, `\t`, `\r`, else `\u` and four digits.
std::string onOneLine(std::string_view text);

/// The same with line feeds and tabs as they are.
std::string onManyLines(std::string_view text);

/// The JSON text with the characters that `onOneLine` escapes as escape sequences of JSON: it stays the same value.
std::string harmlessJSON(std::string_view json);

/// How many columns of a terminal the text takes. It holds no control characters.
std::size_t columnsOf(std::string_view text);

/// At most so many columns of the text; where it is longer, the last is "…". Characters stay whole, together with the
/// marks that belong to them.
std::string cutTo(std::size_t columns, std::string_view text);

}  // namespace ormel::control
