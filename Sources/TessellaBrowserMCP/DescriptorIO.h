#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string_view>

namespace ormel::detail {

/// `read(2)`, tried again when a signal interrupts it.
ssize_t readRetrying(int descriptor, char* bytes, std::size_t count) noexcept;

/// `write(2)`, tried again when a signal interrupts it.
ssize_t writeRetrying(int descriptor, std::string_view bytes) noexcept;

/// Reads what is there, at least one byte, waiting for it also where the descriptor was handed over in non-blocking
/// mode. 0 at the end, -1 with `errno` on failure.
ssize_t readWaiting(int descriptor, char* bytes, std::size_t count) noexcept;

/// Writes everything, waiting for room also where the descriptor was handed over in non-blocking mode. False with
/// `errno` on failure.
bool writeAllWaiting(int descriptor, std::string_view bytes) noexcept;

}  // namespace ormel::detail
